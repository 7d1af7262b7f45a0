#include <unistd.h>

#include <boost/archive/iterators/base64_from_binary.hpp>
#include <boost/archive/iterators/transform_width.hpp>

#include "CommandError.h"
#include "Container.h"
#include "ProgressLine.h"
#include "Text.h"
#include "Verb.h"
#include "platform/Limits.h"

namespace {

class Cat : public ContainerVerb {
public:
    Cat()
        : ContainerVerb(
              30,
              {"cat",
               "Write a member to standard output",
               "Writes the content of a member to standard output. Its checksum is checked at its end. As "
               "JSON, what isn't UTF-8 comes in base64.",
               {{"hwdef cat design.hdf hwdef.xml", "shows the bill of materials"},
                {"hwdef cat design.hdf top.bit | sha256sum", "the checksum of the bitstream"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        ContainerVerb::define(arguments);
        arguments.operand("MEMBER", Kind::MEMBER, member_,
                          "The name of a member, the bill of materials included");
    }

    ExitCode run(Output& output) override;

private:
    std::string member_;
};

const Registration<Cat> registration;

/// Base64 (RFC 4648, section 4).
std::string base64(const std::string& bytes)
{
    namespace iterators = boost::archive::iterators;
    using Encoder = iterators::base64_from_binary<iterators::transform_width<const char*, 6, 8>>;
    std::string text(Encoder(bytes.data()), Encoder(bytes.data() + bytes.size()));
    return text.append((3 - bytes.size() % 3) % 3, '=');
}

/// Gives the content to `take` piece by piece.
template <typename Take>
void read(const HHDFHwDefArchive& archive, const HHDFHwDefArchive::Member& member, Take take)
{
    HHDFHwDefArchive::Content content;
    content.open(archive, member.name);
    OwnWork work(member.sizeBytes);
    // A line on the same terminal would stand amid the content.
    const bool isTold = ::isatty(STDOUT_FILENO) == 0;
    for (std::string_view bytes; !(bytes = content.next()).empty();) {
        take(bytes);
        if (isTold) {
            work.advance(member.name, bytes.size());
        } else {
            OwnWork::endIfAsked();
        }
    }
}

ExitCode Cat::run(Output& output)
{
    const Container container = openContainer(containerPath());
    const auto& found = container.member(member_);
    if (!output.isJson()) {
        read(*container.archive, found, [](std::string_view bytes) { writeToStream(STDOUT_FILENO, bytes); });
        return ExitCode::SOUND;
    }
    const std::uint64_t most = platform::limits::maxMemberInMemory();
    if (found.sizeBytes > most) {
        throw CommandError(containerPath() + ": member \"" + printable(member_) + "\" has " +
                           readableSize(found.sizeBytes) +
                           ", too much for a JSON document; without --json it can be had");
    }
    std::string content;
    read(*container.archive, found, [&](std::string_view bytes) { content += bytes; });
    const bool isText = isUtf8(content);
    output.json().add("file", containerPath());
    output.json().add("member", member_);
    output.json().add("sizeBytes", found.sizeBytes);
    output.json().add("encoding", isText ? "utf-8" : "base64");
    output.json().add("content", isText ? content : base64(content));
    return ExitCode::SOUND;
}

}  // namespace
