#include "platform/MessageCatalogue.h"

#include <algorithm>

namespace platform {

namespace {

constexpr CatalogueMessage catalogue[] = {
    {"@36-530@%s%s",
     "[%2: ]the software-parameter member[ \"%1\"] can't be opened; a member that can be read is expected",
     "a parameter file that the container lists as a member can't be opened for reading",
     "check that the container is whole, for example by testing it as a zip archive"},
    {"@64-4@%s",
     "[%1: ]neither \"hwdef.xml\" nor \"sysdef.xml\" was found; a zip archive that holds one of them is "
     "expected",
     "the file to open is no hardware definition container, or no zip archive at all",
     "check that the path names a container and that the file is whole"},
    {"@64-5@%s", "[%1: ]nothing was found there; an existing path is expected",
     "the container to open, or a directory of driver sources, doesn't exist",
     "check the path, and the working directory when it is relative"},
    {"@64-6@",
     "the definition has no container file; a definition made for the path of a container is expected",
     "a definition without a container file is asked to read one",
     "create the definition with the path of its container"},
    {"@64-10@", "the output path is empty; the path of the container to write is expected",
     "a container is to be built from files, and no output path is given", "pass the path of the container"},
    {"@64-11@%s", "the member[ \"%1\"] reads as empty; a BOM document is expected",
     "the BOM of the container to open has no bytes, can't be unpacked, or is beyond a limit to memory or "
     "time; "
     "a text in front says which",
     "write the container again, its BOM is damaged; when a limit is named and the container is trusted, "
     "raise it "
     "(platform/Limits.h)"},
    {"@64-12@%s", "[%1: ]no definition is given; at least one to merge is expected",
     "definitions are to be merged, and the list of them is empty", "pass at least one definition"},
    {"@64-13@", "the path of the merged container is empty; the path of the container to make is expected",
     "definitions are to be merged, and no output path is given", "pass the path of the container"},
    {"@64-14@%s",
     "[%1: ]a file exists at the output path and must not be overwritten; a free path is expected",
     "a container is to be built from files where a file exists, without leave to overwrite it",
     "choose another path, remove the file, or allow to overwrite it"},
    {"@64-15@%s", "[%1: ]the directory of the output path can't be written to; a writable one is expected",
     "a container is to be built from files in a directory without write permission",
     "choose another directory, or change its permissions"},
    {"@64-23@%s",
     "the digests of the content differ from those in the BOM; the same ones are expected[ (%1)]",
     "a container is opened with the integrity check, and its content was changed after it was written",
     "get the container again from its source; don't rely on its content"},
    {"@64-24@%s", "the driver[ \"%1\"] has no file with the extension \".mdd\"; at least one is expected",
     "a definition is written that has a driver without a driver description; writing goes on",
     "add the driver's \".mdd\" file, unless whoever reads the container can do without"},
    {"@64-25@",
     "the digest of the archive is missing or differs from its bytes; an archive as it was written is "
     "expected",
     "a container is opened with the integrity check, and the archive was changed after it was written",
     "get the container again from its source; don't rely on its content"},
    {"@64-26@",
     "the output path has another extension than \"dsa\"; \"dsa\" or an existing directory is expected",
     "a definition is exported to a path whose extension isn't known",
     "give the path the extension \"dsa\", or name an existing directory"},
    {"@64-27@%s",
     "[%1: ]the output path has no extension and is no directory; \"dsa\" or an existing directory is "
     "expected",
     "a definition is exported to a path without an extension that isn't a directory",
     "give the path the extension \"dsa\", or make the directory first"},
    {"@64-28@%s", "[%1: ]the scratch directory is still there; it was expected to be gone after its removal",
     "the scratch directory of a definition can't be removed",
     "remove the directory by hand once no process uses it"},
};

/// The argument that "%1" or "%2" at the start of `rest` stands for; null when it starts otherwise.
const std::string* placeholder(std::string_view rest, const std::vector<std::string>& args)
{
    static const std::string missing;
    if (rest.size() < 2 || rest[0] != '%' || rest[1] < '1' || rest[1] > '9') {
        return nullptr;
    }
    const auto index = static_cast<std::size_t>(rest[1] - '1');
    return index < args.size() ? &args[index] : &missing;
}

}  // namespace

std::span<const CatalogueMessage> messageCatalogue()
{
    return catalogue;
}

const CatalogueMessage* findMessage(std::string_view id)
{
    const auto* const found = std::find_if(std::begin(catalogue), std::end(catalogue),
                                           [&](const CatalogueMessage& message) { return message.id == id; });
    return found == std::end(catalogue) ? nullptr : found;
}

std::string fillIn(const CatalogueMessage& message, const std::vector<std::string>& args)
{
    std::string text;
    std::size_t partStart = 0;
    bool partComplete = true;
    for (std::size_t i = 0; i < message.text.size(); ++i) {
        if (const std::string* arg = placeholder(message.text.substr(i), args)) {
            text += *arg;
            partComplete = partComplete && !arg->empty();
            ++i;
        } else if (message.text[i] == '[') {
            partStart = text.size();
            partComplete = true;
        } else if (message.text[i] == ']') {
            text.resize(partComplete ? text.size() : partStart);
        } else {
            text += message.text[i];
        }
    }
    return text;
}

}  // namespace platform
