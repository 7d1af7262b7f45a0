#include "CommandError.h"
#include "Container.h"
#include "Embedded.h"
#include "Text.h"
#include "Verb.h"

namespace {

class Digest : public ContainerVerb {
public:
    Digest()
        : ContainerVerb(
              100,
              {"digest",
               "Show what identifies a container's content",
               "Shows two digests. That of the content is the same for all containers between which \"hwdef "
               "diff\" finds no difference, however they are packed; that of the file is its SHA-256.",
               {{"hwdef digest design.hdf", "both digests"},
                {"hwdef digest design.hdf | sed -n 's/^content //p'", "that of the content for a script"}}})
    {
    }

    ExitCode run(Output& output) override;
};

const Registration<Digest> registration;

ExitCode Digest::run(Output& output)
{
    openContainer(containerPath());  // tells best what is no container
    const std::string content = HHDFInspect::contentDigest(containerPath());
    const std::string file = content.empty() ? "" : HHDFInspect::fileDigest(containerPath());
    if (file.empty()) {
        throw CommandError(printable(containerPath()) + ": can't be read to its end");
    }
    if (output.isJson()) {
        output.json().addRaw("digests",
                             embedded(HHDFInspect::digestsToJson(containerPath(), content, file), 1));
    } else {
        output.line("content " + content);
        output.line("file " + file);
    }
    return ExitCode::SOUND;
}

}  // namespace
