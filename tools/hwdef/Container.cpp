#include "Container.h"

#include <algorithm>
#include <array>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "CommandError.h"
#include "Messages.h"
#include "Text.h"
#include "platform/HXMLWInterface.h"

namespace fs = std::filesystem;

namespace {

using namespace std::string_view_literals;

struct Signature {
    std::size_t offset;
    std::string_view bytes;
    const char* kind;
};

constexpr Signature signatures[] = {
    {0, "PK\x03\x04"sv, "a zip archive"},
    {0, "PK\x05\x06"sv, "a zip archive"},
    {0,
     "\x7f"
     "ELF"sv,
     "an ELF file"},
    {0, "\x1f\x8b"sv, "a gzip file"},
    {0, "BZh"sv, "a bzip2 file"},
    {0,
     "\xfd"
     "7zXZ\0"sv,
     "an xz file"},
    {0, "\x28\xb5\x2f\xfd"sv, "a zstd file"},
    {0, "7z\xbc\xaf\x27\x1c"sv, "a 7z archive"},
    {0, "Rar!\x1a\x07"sv, "a rar archive"},
    {257, "ustar"sv, "a tar archive"},
    {0, "!<arch>\n"sv, "a static library or Debian package"},
    {0, "<?xml"sv, "an XML document"},
    {0, "\xef\xbb\xbf<?xml"sv, "an XML document"},
    {0, "%PDF-"sv, "a PDF document"},
    {0, "\x89PNG"sv, "a PNG picture"},
    {0, "\xff\xd8\xff"sv, "a JPEG picture"},
    {0, "SQLite format 3\0"sv, "an SQLite database"},
    {0, "#!"sv, "a script"},
};

std::string firstBytes(const std::string& path)
{
    std::array<char, 512> bytes{};
    std::ifstream file(path, std::ios::binary);
    file.read(bytes.data(), bytes.size());
    return {bytes.data(), static_cast<std::size_t>(file.gcount())};
}

std::string kindOfText(const std::string& bytes)
{
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    if (first == std::string::npos || printable(bytes).find("\\x00") != std::string::npos) {
        return "";
    }
    if (bytes[first] == '<') {
        return "an XML document";
    }
    if (bytes[first] == '{' || bytes[first] == '[') {
        return "a JSON document";
    }
    const bool isText = std::none_of(bytes.begin(), bytes.end(), [](char byte) {
        const auto value = static_cast<unsigned char>(byte);
        return value < 0x20 && byte != '\n' && byte != '\r' && byte != '\t' && byte != '\f';
    });
    return isText ? "a text file" : "";
}

std::string kindOfContent(const std::string& path)
{
    const std::string bytes = firstBytes(path);
    for (const Signature& signature : signatures) {
        if (bytes.size() >= signature.offset &&
            bytes.compare(signature.offset, signature.bytes.size(), signature.bytes) == 0) {
            return signature.kind;
        }
    }
    return kindOfText(bytes);
}

/// Names beside a path that doesn't exist.
std::vector<std::string> neighbours(const fs::path& path)
{
    constexpr std::size_t most = 1000;
    std::vector<std::string> names;
    std::error_code error;
    const fs::path dir = path.parent_path().empty() ? "." : path.parent_path();
    for (fs::directory_iterator entry(dir, error), end; !error && entry != end && names.size() < most;
         entry.increment(error)) {
        names.push_back(path.parent_path() / entry->path().filename());
    }
    return names;
}

CommandError failure(const std::string& path, const std::string& text)
{
    return CommandError((path.empty() ? "\"\"" : printable(path)) + ": " + text);
}

void checkContent(const std::string& path)
{
    const std::string kind = kindOf(path);
    if (kind == "an empty file") {
        throw failure(path, "this is " + kind + ", not a hardware definition container");
    }
    if (!std::ifstream(path)) {
        throw failure(path,
                      "the file can't be read: " + std::error_code(errno, std::generic_category()).message());
    }
}

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

/// What to say when the library can't open a file that can be read.
CommandError refusal(const std::string& path, HeldMessages& messages)
{
    const std::string kind = kindOf(path);
    const bool isNoArchive = kind != "a zip archive";
    const bool hasNoBom = std::any_of(messages.all().begin(), messages.all().end(),
                                      [](const ComMsg& message) { return message.id == "@64-4@%s"; });
    if (hasNoBom && isNoArchive) {
        return failure(path, (kind.empty() ? "the file begins with unknown bytes" : "this is " + kind) +
                                 ", not a hardware definition container");
    }
    if (!hasNoBom || messages.all().size() > 1) {
        messages.tellAll();
        return failure(path, "the container can't be opened; \"hwdef verify\" tells what is wrong with it");
    }
    return failure(path,
                   "this is a zip archive without a bill of materials that can be read (\"hwdef.xml\" or "
                   "\"sysdef.xml\" on its top level), not a hardware definition container, or a damaged one: "
                   "\"hwdef verify\" tells more");
}

std::unique_ptr<HHDFHwDef> tryToOpen(const std::string& path)
{
    try {
        return HHDFHwDefUtils::getHDF(path);
    } catch (const std::logic_error&) {
        throw failure(path, "the version in its bill of materials is no number");
    } catch (const boost::bad_lexical_cast&) {
        throw failure(path, "the number of dies in its bill of materials is no number");
    }
}

/// Nothing of a document of another version is read, which leaves a definition as empty as a new one.
void checkVersion(const Container& container)
{
    if (!container.files().empty() || !container.definition->getDriverFilesMap().empty()) {
        return;
    }
    HXMLWInterface document;
    document.readFromBuffer(HHDFHwDefUtils::getFileBufferFromHDF(container.bomName(), container.path));
    const HXMLWElement* const root = document.getRootElement();
    const char* const version = root == nullptr ? nullptr : root->getAttribute("Version");
    if (version == nullptr) {
        throw failure(container.path, "its bill of materials has no version");
    }
    if (std::string_view(version) != "1") {
        throw failure(container.path, "its bill of materials has version " + printable(version) +
                                          ", which this hwdef doesn't know");
    }
}

}  // namespace

std::string kindOf(const std::string& path)
{
    std::error_code error;
    switch (fs::status(path, error).type()) {
        case fs::file_type::directory:
            return "a directory";
        case fs::file_type::character:
        case fs::file_type::block:
            return "a device";
        case fs::file_type::fifo:
            return "a pipe";
        case fs::file_type::socket:
            return "a socket";
        default:
            break;
    }
    return fs::file_size(path, error) == 0 ? "an empty file" : kindOfContent(path);
}

void checkFile(const std::string& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found) {
        throw failure(path, "there is no such file" + didYouMean(path, neighbours(path)));
    }
    if (error) {
        throw failure(path, error.message());
    }
    if (status.type() != fs::file_type::regular) {
        throw failure(path, "this is " + kindOf(path) + ", not a hardware definition container");
    }
}

void checkDirectory(const std::string& path)
{
    if (path.empty()) {
        throw failure(path, "this can't be the path of a directory");
    }
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_directory(status)) {
        const std::string kind = kindOf(path);
        throw failure(path, "this is " + (kind.empty() ? "a file" : kind) + ", not a directory");
    }
}

std::vector<HHDFHwDefFile*> Container::files() const
{
    std::vector<HHDFHwDefFile*> files;
    definition->getBomFiles(files);
    return files;
}

std::string Container::bomName() const
{
    // Opening prefers this one as well.
    return archive->find("hwdef.xml") == nullptr ? "sysdef.xml" : "hwdef.xml";
}

bool Container::hasMode() const
{
    // Post-synthesis would have named the document otherwise.
    return bomName() != "hwdef.xml" || definition->getModeType() == HHDFHwDefFileTypes::PRE_SYNTHESIS;
}

const HHDFHwDefArchive::Member& Container::member(const std::string& name) const
{
    const HHDFHwDefArchive::Member* const found = archive->find(name);
    if (found == nullptr) {
        std::vector<std::string> names;
        for (const auto& present : archive->members()) {
            names.push_back(present.name);
        }
        throw failure(path, "there is no member \"" + printable(name) + "\"" + didYouMean(name, names));
    }
    return *found;
}

const HHDFHwDefArchive::Member* Container::driverMember(const HHDFHwDefDriver& file) const
{
    // The BOM has "drivers/" in front of names that are packed without it.
    const std::string dir = "drivers/";
    const std::string name = file.getRelativeName();
    const HHDFHwDefArchive::Member* const found = archive->find(name);
    const std::string other = name.starts_with(dir) ? name.substr(dir.size()) : dir + name;
    return found != nullptr ? found : archive->find(other);
}

Container openContainer(const std::string& path)
{
    checkFile(path);
    checkContent(path);
    HeldMessages messages;
    Container container = {path, tryToOpen(path), nullptr};
    if (container.definition == nullptr) {
        throw refusal(path, messages);
    }
    container.archive = std::make_unique<HHDFHwDefArchive>(path);
    messages.tellAll();
    checkVersion(container);
    return container;
}

std::vector<std::string> typeTokens()
{
    std::vector<std::string> tokens;
    for (unsigned type = 0; type <= HHDFHwDefFileTypes::UNKNOWN; ++type) {
        const auto token =
            HHDFHwDefFileTypes::getHWHFileTypeStr(static_cast<HHDFHwDefFileTypes::HWHFileType>(type));
        // Two types are written as another one.
        if (std::find(tokens.begin(), tokens.end(), token) == tokens.end()) {
            tokens.push_back(token);
        }
    }
    return tokens;
}

HHDFHwDefFileTypes::HWHFileType typeOf(const std::string& token)
{
    std::string upper = token;
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    const auto type = HHDFHwDefFileTypes::getHWHFileType(upper);
    if (type == HHDFHwDefFileTypes::UNKNOWN && upper != "UNKNOWN") {
        const std::string hint = didYouMean(token, typeTokens());
        throw CommandError("there is no file type \"" + printable(token) + "\"" +
                           (hint.empty() ? "; the types are " + joined(typeTokens()) : hint));
    }
    return type;
}

std::string typeToken(const HHDFHwDefFile& file)
{
    return HHDFHwDefFileTypes::getHWHFileTypeStr(file.getFileType());
}
