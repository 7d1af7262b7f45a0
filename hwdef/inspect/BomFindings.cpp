#include "hwdef/inspect/BomFindings.h"

#include <boost/filesystem/path.hpp>
#include <boost/lexical_cast/try_lexical_convert.hpp>
#include <stdexcept>

#include "hwdef/bom/BomNames.h"
#include "hwdef/bom/Elements.h"
#include "hwdef/container/SourceArchives.h"
#include "hwdef/model/HHDFHwDefFileTypes.h"
#include "platform/HSTStringUtils.h"
#include "platform/HUTFile.h"

using Types = HHDFHwDefFileTypes;
namespace attribute = bom::attribute;
namespace element = bom::element;
using bom::isNamed;
using bom::textOf;

namespace {

/// Whether a text is a number as the version attributes are read.
bool readsAsNumber(std::string_view text)
{
    try {
        static_cast<void>(std::stoi(std::string(text)));
        return true;
    } catch (const std::logic_error&) {
        return false;
    }
}

}  // namespace

void BomFindings::add(const Element& element, const char* id, const std::string& text)
{
    findings_.addInLine(document_.lineOf(element), id, bom_, text);
}

std::uint64_t BomFindings::mostBytes(const BomText& document)
{
    constexpr std::uint64_t bytesPerElement = 320;  // of tables: a name, a digest, a partition's module
    const HXMLWInterface::Size size = document.size();
    return size.elements * bytesPerElement + 3 * size.valueBytes;
}

bool BomFindings::look(BomListing& listing)
{
    const Element& root = *document_.root();
    if (!checkVersions(root)) {
        return false;
    }
    listing.minor = textOf(&root, attribute::MINOR);
    listing.overallDigest = textOf(&root, attribute::DIGEST);
    for (const Element* child : childrenOf(root)) {
        checkChild(*child, listing);
    }
    for (const auto& [name, driver] : drivers_) {
        if (!driver.hasDescription) {
            findings_.addInLine(driver.line, "driver.no-description", bom_,
                                "the driver " + shown(name) + " has no file with the extension \".mdd\"");
        }
    }
    return true;
}

bool BomFindings::checkVersions(const Element& root)
{
    const std::string_view version = textOf(&root, attribute::VERSION);
    if (!HSTStringUtils::iequals(version, "1")) {
        add(root, "bom.version",
            "\"Version\" is " + shown(version) + ", \"1\" is known: nothing of the document is read");
        return false;
    }
    if (!readsAsNumber(textOf(&root, attribute::MINOR))) {
        add(root, "bom.number",
            "\"Minor\" is " + shown(textOf(&root, attribute::MINOR)) + ", which is no number");
    }
    return true;
}

void BomFindings::checkChild(const Element& child, BomListing& listing)
{
    if (isNamed(&child, element::FILE)) {
        checkFile(child, listing);
    } else if (isNamed(&child, element::DRIVERS)) {
        checkDrivers(child, listing);
    } else if (isNamed(&child, element::PART)) {
        checkPart(child);
    }
}

void BomFindings::checkFile(const Element& file, BomListing& listing)
{
    const std::string fullName(textOf(&file, attribute::NAME));
    const std::string_view digest = textOf(&file, attribute::DIGEST);
    if (!digest.empty()) {
        listing.digests[fullName] = {std::string(digest), document_.lineOf(file)};
    }
    if (fullName.empty()) {
        add(file, "bom.no-name", "an entry has no \"Name\"; it is dropped");
        return;
    }
    // A member is known by the last component of its entry's name.
    const std::string name(HUTFile(fullName).name());
    checkVocabulary(file, name);
    if (Types::getHWHFileType(std::string(textOf(&file, attribute::TYPE))) == Types::DRIVER_SRC) {
        listing.sources.push_back(fullName + "/");
        return;
    }
    list(file, listing, fullName, name);
    if (listing.minor == "2" || !digest.empty()) {
        listing.digested.emplace(name, false);
    }
}

void BomFindings::list(const Element& file, BomListing& listing, const std::string& fullName,
                       const std::string& name)
{
    const std::uint64_t line = document_.lineOf(file);
    const auto [earlier, isNew] = listing.names.try_emplace(name, line);
    if (fullName != name) {
        listing.names.try_emplace(fullName, line);
    }
    if (!isNew) {
        add(file, "bom.listed-twice",
            shown(name) + " is listed here and in line " + std::to_string(earlier->second));
    } else if (archive_.find(name) == nullptr && archive_.find(fullName) == nullptr) {
        add(file, "bom.member-missing", shown(name) + " is listed, but the archive has no such member");
    }
}

void BomFindings::checkVocabulary(const Element& file, const std::string& name)
{
    const std::string type(textOf(&file, attribute::TYPE));
    const Types::HWHFileType known = Types::getHWHFileType(type);
    if (known == Types::UNKNOWN && type != Types::getHWHFileTypeStr(Types::UNKNOWN)) {
        add(file, "bom.unknown-type", shown(name) + " has the type " + shown(type) + ", which nobody knows");
    }
    const std::string role(textOf(&file, attribute::BD_TYPE));
    const bool hasRole = known == Types::HW_HANDOFF && !role.empty();
    if (hasRole && role != "UNKNOWN" && Types::getHWHBDType(role) == Types::UNKNOWN_BD) {
        add(file, "bom.unknown-role", shown(name) + " has the role " + shown(role) + ", which nobody knows");
    }
}

void BomFindings::checkDrivers(const Element& drivers, BomListing& listing)
{
    for (const Element* child : childrenOf(drivers)) {
        const auto place = drivers_.try_emplace(std::string(textOf(child, attribute::IP_VLNV))).first;
        if (place->second.line == 0) {
            place->second.line = document_.lineOf(*child);
        }
        for (const Element* file : childrenOf(*child)) {
            checkDriverFile(*file, listing, place->second);
        }
    }
}

void BomFindings::checkDriverFile(const Element& file, BomListing& listing, Driver& driver)
{
    const std::string path(textOf(&file, attribute::PATH));
    if (path.empty()) {
        add(file, "driver.no-path", "a driver's file has no \"PATH\"; it is dropped");
        return;
    }
    driver.hasDescription =
        driver.hasDescription || boost::filesystem::path(path).extension().native() == ".mdd";
    const std::string_view digest = textOf(&file, attribute::DIGEST);
    if (!digest.empty()) {
        listing.digests[path] = {std::string(digest), document_.lineOf(file)};
    }
    if (listing.minor == "2" || !digest.empty()) {
        listing.digested[path] = true;
    }
    const iostreams::zip::Entry* const entry = findDriverFile(archive_, path);
    if (entry != nullptr) {
        listing.names.try_emplace(std::string(entry->name), document_.lineOf(file));
    } else if (listing.names.try_emplace(path, document_.lineOf(file)).second) {
        add(file, "bom.member-missing",
            shown(path) + " is a driver's file, but the archive has no such member");
    }
}

void BomFindings::checkPart(const Element& part)
{
    for (const Element* child : childrenOf(part)) {
        int count = 0;
        const std::string_view value = textOf(child, attribute::VALUE);
        if (isNamed(child, element::NUM_OF_SLRS) && !boost::conversion::try_lexical_convert(value, count)) {
            add(*child, "bom.number", "the number of dies is " + shown(value) + ", which is no number");
        }
    }
}
