#include "CommandError.h"
#include "Container.h"
#include "Embedded.h"
#include "Text.h"
#include "Verb.h"

namespace {

class Digest : public Verb {
public:
    Digest()
        : Verb(100,
               {"digest",
                "Show what identifies a container's content",
                "Shows two digests. That of the content is the same for all containers between which \"hwdef "
                "diff\" finds no difference, however they are packed; that of the file is its SHA-256.",
                {{"hwdef digest design.hdf", "both digests"},
                 {"hwdef digest design.hdf | sed -n 's/^content //p'", "that of the content for a script"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        arguments.operand("FILE", Kind::CONTAINER, file_, "The container");
    }

    ExitCode run(Output& output) override;

private:
    std::string file_;
};

const Registration<Digest> registration;

ExitCode Digest::run(Output& output)
{
    openContainer(file_);  // tells best what is no container
    const std::string content = HHDFInspect::contentDigest(file_);
    const std::string file = content.empty() ? "" : HHDFInspect::fileDigest(file_);
    if (file.empty()) {
        throw CommandError(printable(file_) + ": can't be read to its end");
    }
    if (output.isJson()) {
        output.json().addRaw("digests", embedded(HHDFInspect::digestsToJson(file_, content, file), 1));
    } else {
        output.line("content " + content);
        output.line("file " + file);
    }
    return ExitCode::SOUND;
}

}  // namespace
