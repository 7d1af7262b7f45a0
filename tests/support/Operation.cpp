#include "support/Operation.h"

#include <filesystem>
#include <ostream>

#include "hwdef/container/HHDFHwDefArchive.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/ComMsgMgr.h"
#include "platform/HEXAll.h"
#include "support/BomDocument.h"
#include "support/Container.h"
#include "support/LargeOperations.h"
#include "support/TempDir.h"

namespace support {

namespace {

using Types = HHDFHwDefFileTypes;
using Utils = HHDFHwDefUtils;
using Result = std::optional<std::string>;

Result ifTrue(bool done)
{
    return done ? Result("done") : std::nullopt;
}

void writeInputs(const std::string& dir)
{
    writeFile(dir + "/in/a.bit", "content of a");
    writeFile(dir + "/in/b.elf", textBytes(3000, 1));
    writeFile(dir + "/in/p.json", "{\"refName\": \"u1\", \"key\": \"value\"}");
    writeFile(dir + "/tree/drivers/ip/src/x.c", "source");
    writeFile(dir + "/tree/drivers/ip/data/x.mdd", "description");
}

/// Those of a container whose archive carries a digest, and a BOM named "hwdef.xml".
void setVersions(HHDFHwDef& def)
{
    def.setMajorVersion(1);
    def.setMinorVersion(3);
    def.setModeType(Types::PRE_SYNTHESIS);
}

void addInputs(HHDFHwDef& def, const std::string& dir)
{
    setVersions(def);
    def.addFileToBom(dir + "/in/a.bit", Types::BIT);
    def.addFileToBom(dir + "/in/b.elf", Types::ELF);
    def.addFileToBom(dir + "/in/p.json", Types::POWER_DATA);
    def.addDriverFileToBom("ip", dir + "/tree", "drivers/ip/src/x.c", "");
    def.addDriverFileToBom("ip", dir + "/tree", "drivers/ip/data/x.mdd", "");
}

/// A container at DIR/design.hdf of the inputs, which stay on disk.
void writeDesign(const std::string& dir)
{
    writeInputs(dir);
    const auto def = Utils::createHDF(dir + "/design.hdf");
    addInputs(*def, dir);
    def->write(true);
}

/// A container at DIR/design.hdf that records the digests of its members, and they are right.
void writeDigestedDesign(const std::string& dir)
{
    const Members members = {{"a.bit", "content of a"}, {"b.elf", textBytes(3000, 1)}};
    const auto write = [&](const HHDFHwDef::Texts& digests, const std::string& overall) {
        std::string elements;
        for (const auto& [name, content] : members) {
            const auto found = digests.find(name);
            elements += "<File Type=\"BIT\" Name=\"" + name + "\" DIGEST=\"" +
                        (found == digests.end() ? "" : found->second) + "\"/>";
        }
        Members all = members;
        all.insert(
            all.begin(),
            {"hwdef.xml", bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"" + overall + "\"", elements)});
        writeArchive(dir + "/design.hdf", all);
    };
    write({}, "");
    std::string overall;
    HHDFHwDef::Texts digests;
    Utils::getHDF(dir + "/design.hdf")->calculateDigest(overall, digests);
    write(digests, overall);
}

/// A container at DIR/design.hdf that lists an unpacked tree of driver sources, a link among them.
void writeDriverSources(const std::string& dir)
{
    writeArchive(dir + "/design.hdf",
                 {{"hwdef.xml", bomDocument("Version=\"1\" Minor=\"0\"",
                                            "<File Type=\"DRIVER_SRC\" Name=\"sources\"/>")}});
    writeFile(dir + "/design/sources/driver with a long name/x.c", "source");
    writeFile(dir + "/design/sources/driver with a long name/y.c", "source");
    std::filesystem::create_symlink("driver with a long name/x.c", dir + "/design/sources/link");
}

Result openedDriverSources(const std::string& dir)
{
    const auto def = Utils::getHDF(dir + "/design.hdf");
    if (!def) {
        return {};
    }
    HHDFHwDef::Texts sources;
    def->getDriverFiles(sources);
    std::string text;
    for (const auto& [name, path] : sources) {
        text += name + ": " + path + "\n";
    }
    return text;
}

Result opened(const std::string& dir, bool checkIntegrity)
{
    const auto def = Utils::getHDF(dir + "/design.hdf", checkIntegrity);
    return def ? Result(entriesOf(*def) + driversOf(*def)) : std::nullopt;
}

Result packageNew(const std::string& dir)
{
    const auto def = Utils::createHDF(dir + "/new.hdf");
    if (!def) {
        return {};
    }
    addInputs(*def, dir);
    return ifTrue(def->write(true));
}

Result packageOver(const std::string& dir)
{
    const auto def = Utils::createHDF(dir + "/design.hdf");
    if (!def) {
        return {};
    }
    setVersions(*def);
    def->addFileToBom(dir + "/in/a.bit", Types::BIT);
    return ifTrue(def->write(true));
}

Result packageFromArchive(const std::string& dir)
{
    const auto def = Utils::createHDF(dir + "/new.hdf");
    if (!def) {
        return {};
    }
    def->addFileToBom(dir + "/core.zip/inner.bit", Types::BIT);
    return ifTrue(def->write(true));
}

Result exportTo(const std::string& dir, const std::string& name)
{
    const auto def = Utils::getHDF(dir + "/design.hdf");
    return ifTrue(def && def->write(dir + "/" + name));
}

Result unzipDrivers(const std::string& dir)
{
    const auto def = Utils::getHDF(dir + "/design.hdf");
    return ifTrue(def && def->unzipDrivers(dir + "/out"));
}

Result build(const std::string& dir, const std::string& name)
{
    const Utils::Attributes attributes = {{"key", "value"}};
    return ifTrue(Utils::writeHDF(dir + "/" + name,
                                  {{dir + "/in/a.bit", Types::BIT}, {dir + "/in/b.elf", Types::ELF}}, true,
                                  {{dir + "/in/a.bit", attributes}}, attributes));
}

Result merge(const std::string& dir)
{
    const auto first = Utils::getHDF(dir + "/design.hdf");
    const auto second = Utils::getHDF(dir + "/other.hdf");
    if (!first || !second) {
        return {};
    }
    const auto merged = Utils::getMrgdHDF({first.get(), second.get()}, dir + "/merged.hdf");
    return ifTrue(merged && merged->write(true));
}

/// Takes over the members of an archive, one of which is replaced by a later one.
Result edit(const std::string& dir)
{
    const std::string path = dir + "/design.hdf";
    try {
        const HHDFHwDefArchive archive(path);
        std::vector<HHDFHwDefArchive::Part> parts;
        for (const auto& member : archive.members()) {
            parts.push_back({member.name, ""});
        }
        parts.push_back({"a.bit", dir + "/more"});
        HHDFHwDefArchive::write(path, parts, &archive, archive.comment(), archive.hasDigest());
        return "done";
    } catch (const HEXAll& error) {
        ComMsgMgr::sendMessage(error.what(), false);
        return {};
    }
}

Result readMember(const std::string& dir)
{
    const std::string content = Utils::getFileBufferFromHDF("b.elf", dir + "/design.hdf");
    return content.empty() ? std::nullopt : Result(content);
}

Result readParameters(const std::string& dir)
{
    std::string name;
    Utils::Attributes attributes;
    const bool found = Utils::getSWParamInfo("POWER_DATA", dir + "/design.hdf", name, attributes);
    // A file that can't be read gives true and empty outputs.
    return found && !name.empty() ? Result(name + " " + attributes["key"]) : std::nullopt;
}

void writeDesignAnd(const std::string& dir, const std::string& name, const std::string& content)
{
    writeDesign(dir);
    writeFile(dir + "/" + name, content);
}

std::vector<Operation> writingOperations()
{
    return {
        {"packageNew", writeInputs, packageNew},
        {"packageOver", writeDesign, packageOver},
        {"packageOpened", [](auto& dir) { writeDesignAnd(dir, "more", "one file more"); }, packageOpened},
        {"packageFromArchive",
         [](auto& dir) {
             writeArchive(dir + "/core.zip", {{"inner.bit", "inner content"}});
         },
         packageFromArchive},
        {"exportToNewArchive", writeDesign, [](auto& dir) { return exportTo(dir, "out.dsa"); }},
        {"exportToOldArchive",
         [](auto& dir) {
             writeDesign(dir);
             writeArchive(dir + "/out.dsa", {{"hwdef.xml", "<Project/>"}, {"kept", "content that stays"}});
         },
         [](auto& dir) { return exportTo(dir, "out.dsa"); }},
        {"exportToDirectory", [](auto& dir) { writeDesignAnd(dir, "out/a.bit", "old content of a"); },
         [](auto& dir) { return exportTo(dir, "out"); }},
        {"buildNew", writeInputs, [](auto& dir) { return build(dir, "new.hdf"); }},
        {"buildOver", writeDesign, [](auto& dir) { return build(dir, "design.hdf"); }},
        {"merge",
         [](auto& dir) {
             writeDesign(dir);
             writeArchive(dir + "/other.hdf", {{"hwdef.xml", bomOfFiles("3", {"o"})}, {"o", "content of o"}});
         },
         merge},
        {"edit", [](auto& dir) { writeDesignAnd(dir, "more", "another content of a"); }, edit},
    };
}

std::vector<Operation> memberOperations()
{
    return {
        {"append", [](auto& dir) { writeDesignAnd(dir, "more", "content of a new member"); },
         [](auto& dir) { return ifTrue(Utils::writeFileToHDF(dir + "/more", "more", dir + "/design.hdf")); }},
        {"appendToNew", writeInputs,
         [](auto& dir) { return ifTrue(Utils::writeFileToHDF(dir + "/in/a.bit", "a", dir + "/new.hdf")); }},
        {"appendReplacing", [](auto& dir) { writeDesignAnd(dir, "more", "another content of a"); },
         [](auto& dir) {
             return ifTrue(Utils::writeFileToHDF(dir + "/more", "a.bit", dir + "/design.hdf"));
         }},
        {"appendLarge", [](auto& dir) { writeDesignAnd(dir, "more", randomBytes(300000, 2)); },
         [](auto& dir) { return ifTrue(Utils::writeFileToHDF(dir + "/more", "more", dir + "/design.hdf")); }},
        {"copyMember",
         [](auto& dir) {
             writeDesign(dir);
             writeArchive(dir + "/from.zip", {{"m", "content of m"}});
         },
         [](auto& dir) {
             return ifTrue(Utils::writeFileFromHDFToHDF("m", dir + "/from.zip", "n", dir + "/design.hdf"));
         }},
        {"copyLargeMember",
         [](auto& dir) {
             writeDesign(dir);
             writeArchive(dir + "/from.zip", {{"m", randomBytes(100000, 3)}});
         },
         [](auto& dir) {
             return ifTrue(Utils::writeFileFromHDFToHDF("m", dir + "/from.zip", "n", dir + "/design.hdf"));
         }},
        {"extract", [](auto& dir) { writeDesignAnd(dir, "out/b", "old content of b"); },
         [](auto& dir) {
             return ifTrue(Utils::writeFileFromHDF(dir + "/out/b", "b.elf", dir + "/design.hdf"));
         },
         false},
        {"extractToNewDirectory", writeDesign,
         [](auto& dir) {
             return ifTrue(
                 Utils::writeFileFromHDFToDir("b.elf", dir + "/design.hdf", "deep/b", dir + "/out"));
         },
         false},
        {"unzipDrivers", [](auto& dir) { writeDesignAnd(dir, "out/drivers/ip/src/x.c", "old source"); },
         unzipDrivers},
    };
}

std::vector<Operation> readingOperations()
{
    return {
        {"open", writeDesign, [](auto& dir) { return opened(dir, false); }},
        {"openCheckingTheArchive", writeDesign, [](auto& dir) { return opened(dir, true); }},
        {"openCheckingTheMembers", writeDigestedDesign, [](auto& dir) { return opened(dir, true); }},
        {"openWithDriverSources", writeDriverSources, openedDriverSources},
        {"readMember", writeDesign, readMember},
        {"readParameters", writeDesign, readParameters},
    };
}

}  // namespace

std::optional<std::string> packageOpened(const std::string& dir)
{
    const auto def = Utils::getHDF(dir + "/design.hdf");
    if (!def) {
        return {};
    }
    // Not a second time when an earlier process was killed right behind its last step.
    if (!def->isBomFileExistsWithName("more")) {
        def->addFileToBom(dir + "/more", Types::BIT);
    }
    return ifTrue(def->write(true));
}

const std::vector<Operation>& operations()
{
    static const std::vector<Operation> all = [] {
        std::vector<Operation> list = writingOperations();
        for (const auto& more : {memberOperations(), readingOperations(), largeOperations()}) {
            list.insert(list.end(), more.begin(), more.end());
        }
        return list;
    }();
    return all;
}

std::ostream& operator<<(std::ostream& out, const Operation& operation)
{
    return out << operation.name;
}

}  // namespace support
