#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hwdef/inspect/HHDFInspect.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "platform/Progress.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using support::bomDocument;
using support::Members;
using support::TempDir;

namespace {

const std::string version = "Version='1' Minor='7'";
const std::string listsA = "<File Type='BIT' Name='a.bit'/>\n";

/// One difference a line: "kind section item/field: before > after", digests cut to four digits.
std::string linesOf(const std::vector<HHDFDifference>& differences)
{
    const auto shortened = [](const std::string& value) {
        const std::size_t comma = value.find(", ");
        return comma == 64 ? value.substr(0, 4) + value.substr(comma) : value;
    };
    std::string lines;
    for (const HHDFDifference& one : differences) {
        lines += std::string(one.kindName()) + " " + one.section + " " + one.item + "/" + one.field + ": " +
                 shortened(one.before) + " > " + shortened(one.after) + "\n";
    }
    return lines;
}

/// How two archives of these members differ. Checks that their content digests differ when they do.
std::string compared(const Members& first, const Members& second)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", first);
    support::writeArchive(dir / "b.hdf", second);
    std::vector<HHDFDifference> differences;
    EXPECT_TRUE(HHDFInspect::compare(dir / "a.hdf", dir / "b.hdf", differences));
    const std::string digest = HHDFInspect::contentDigest(dir / "a.hdf");
    EXPECT_EQ(digest.size(), 64u);
    EXPECT_EQ(HHDFInspect::contentDigest(dir / "b.hdf") == digest, differences.empty());
    return linesOf(differences);
}

/// The same for two BOMs beside the same files "a.bit" and "b.bit".
std::string comparedBoms(const std::string& first, const std::string& second)
{
    const auto members = [](const std::string& elements) {
        return Members{{"hwdef.xml", bomDocument(version, elements)}, {"a.bit", "A"}, {"b.bit", "B"}};
    };
    return compared(members(first), members(second));
}

std::string parameterFile(const std::string& members)
{
    return "{\"refName\": \"u1\", " + members + "}";
}

}  // namespace

TEST(Comparison, findsNoDifferenceInOrderCompressionTimesCommentsAndDigests)
{
    const TempDir dir;
    const std::string text(300, 't');
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument(version, listsA + "<File Type='ELF' Name='b.elf' src_db='x'/>"));
    zip.addStored("a.bit", "bits");
    zip.addDeflated("b.elf", text);
    zip.comment = "a comment";
    zip.write(dir / "a.hdf");
    support::writeArchive(
        dir / "b.hdf",
        {{"b.elf", text},
         {"a.bit", "bits"},
         {"hwdef.xml", bomDocument("Minor='7'   Version='1'", "<file Name='b.elf' Type='ELF'/>" + listsA)}});
    HUTZip::attachDigest(HUTFile(dir / "b.hdf"));
    std::vector<HHDFDifference> differences;

    EXPECT_TRUE(HHDFInspect::compare(dir / "a.hdf", dir / "b.hdf", differences));
    EXPECT_EQ(linesOf(differences), "");
    EXPECT_EQ(HHDFInspect::contentDigest(dir / "a.hdf"), HHDFInspect::contentDigest(dir / "b.hdf"));
    EXPECT_NE(HHDFInspect::fileDigest(dir / "a.hdf"), HHDFInspect::fileDigest(dir / "b.hdf"));
}

TEST(Comparison, tellsPropertiesResourcesAndAttributes)
{
    EXPECT_EQ(comparedBoms("<SYSTEMINFO PART='p1' LUT='9'/><USEDRESOURCES LUT='1'/>"
                           "<WDIATTRS><WDIATTR ATTRNAME='k' ATTRVAL='1'/></WDIATTRS>",
                           "<SYSTEMINFO PART='p2' LUT='9'/><USEDRESOURCES LUT='2'/>"
                           "<WDIATTRS><WDIATTR ATTRNAME='l' ATTRVAL='1'/></WDIATTRS><HIERARCHY Name='top'/>"),
              "removed attribute k/: 1 > \n"
              "added attribute l/:  > 1\n"
              "changed property part/: p1 > p2\n"
              "changed property top/:  > top\n"
              "changed resource used LUT/: 1 > 2\n");
}

TEST(Comparison, tellsFilesByContentTypeAndAttributes)
{
    EXPECT_EQ(compared({{"hwdef.xml", bomDocument(version, listsA + "<File Type='BIT' Name='b.bit'/>")},
                        {"a.bit", "old"},
                        {"b.bit", "b"}},
                       {{"hwdef.xml",
                         bomDocument(version,
                                     "<File Type='PDI' Name='a.bit'><FILEATTR ATTRNAME='k' ATTRVAL='v'/>"
                                     "</File><File Type='BIT' Name='c.bit'/>")},
                        {"a.bit", "newer"},
                        {"c.bit", "b"}}),
              "added file a.bit/attribute k:  > v\n"
              "changed file a.bit/content: cba0, 3 bytes > 804f, 5 bytes\n"
              "changed file a.bit/type: BIT > PDI\n"
              "removed file b.bit/: 3e23, 1 bytes > \n"
              "added file c.bit/:  > 3e23, 1 bytes\n");
}

TEST(Comparison, tellsHandoffsByRoleAndHierarchy)
{
    EXPECT_EQ(comparedBoms("<File Type='HW_HANDOFF' Name='a.bit' DESIGN_HIERARCHY='x'/>",
                           "<File Type='HW_HANDOFF' Name='a.bit' DESIGN_HIERARCHY='y' BD_TYPE='SCOPED_BD'/>"),
              "changed file a.bit/hierarchy: x > y\n"
              "changed file a.bit/role: DEFAULT_BD > SCOPED_BD\n");
}

TEST(Comparison, tellsRepeatedEntriesWhateverTheirOrder)
{
    const std::string elf = "<File Type='ELF' Name='a.bit'/>";
    EXPECT_EQ(comparedBoms(listsA + elf, elf + listsA), "");
    EXPECT_EQ(comparedBoms(listsA + elf, listsA).find("removed file a.bit #2/: "), 0u);
}

TEST(Comparison, tellsMissingAndUnlistedMembers)
{
    EXPECT_EQ(compared({{"hwdef.xml", bomDocument(version, listsA)}, {"a.bit", "A"}, {"x", "X"}},
                       {{"hwdef.xml", bomDocument(version, listsA)}}),
              "changed file a.bit/content: 559a, 1 bytes > missing\n"
              "removed member x/: 4b68, 1 bytes > \n");
}

TEST(Comparison, tellsDrivers)
{
    const auto members = [](const std::string& file, const std::string& content) {
        return Members{
            {"hwdef.xml", bomDocument(version, "<DRIVERS><DRIVER IP_VLNV='ip'><File PATH='drivers/" + file +
                                                   "'/></DRIVER></DRIVERS>")},
            {"drivers/" + file, content}};
    };
    EXPECT_EQ(compared(members("x.c", "1"), members("x.c", "2")),
              "changed driver ip: drivers/x.c/content: 6b86, 1 bytes > d473, 1 bytes\n");
    EXPECT_EQ(compared(members("x.c", "1"), members("y.c", "1")),
              "removed driver ip: drivers/x.c/: 6b86, 1 bytes > \n"
              "added driver ip: drivers/y.c/:  > 6b86, 1 bytes\n");
}

TEST(Comparison, tellsPartitionsAndConfigurations)
{
    EXPECT_EQ(comparedBoms(
                  "<Instance_Paths><Reconfigurable_Partition Instance_Path='rp0' DEFALUT_CONFIG_RM='a'>"
                  "<File RM_NAME='a'/><File RM_NAME='b'/></Reconfigurable_Partition></Instance_Paths>"
                  "<PRConfigurations><PRConfiguration Name='c' Active='true'>"
                  "<PartitionInstMap Instance_Path='rp0' RM_NAME='a'/></PRConfiguration></PRConfigurations>",
                  "<Instance_Paths><Reconfigurable_Partition Instance_Path='rp0' DEFALUT_CONFIG_RM='b'>"
                  "<File RM_NAME='b'/></Reconfigurable_Partition></Instance_Paths>"
                  "<PRConfigurations><PRConfiguration Name='c'>"
                  "<GrayBoxInst Name='rp0'/></PRConfiguration></PRConfigurations>"),
              "changed configuration c/active: true > false\n"
              "removed configuration c/cell rp0: a > \n"
              "added configuration c/gray box rp0:  > present\n"
              "changed partition rp0/default: a > b\n"
              "removed partition rp0/module a: present > \n");
}

TEST(Comparison, tellsSoftwareParametersKeyByKey)
{
    const auto members = [](const std::string& content) {
        return Members{{"hwdef.xml", bomDocument(version, "<File Type='IO_DATA' Name='io.json'/>")},
                       {"io.json", content}};
    };
    EXPECT_EQ(compared(members(parameterFile("\"a\": \"1\", \"b\": \"2\"")),
                       members(parameterFile("\"b\": \"3\", \"c\": \"4\""))),
              "changed file io.json/content: 3486, 37 bytes > f9ab, 37 bytes\n"
              "removed parameter io.json/a: 1 > \n"
              "changed parameter io.json/b: 2 > 3\n"
              "added parameter io.json/c:  > 4\n");
    const std::string others = compared(members("{\"a\": \"1\"}"), members("{\"a\": \"2\"}"));
    EXPECT_EQ(others.find("parameter"), std::string::npos) << others;
}

TEST(Comparison, refusesWhatCantBeOpenedOrRead)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bomDocument(version, listsA)}, {"a.bit", "bits"}});
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument("Version='1' Minor='x'", ""));
    zip.write(dir / "number.hdf");
    zip.members.clear();
    zip.addStored("hwdef.xml", bomDocument("Version='2' Minor='0'", listsA));
    zip.write(dir / "version.hdf");
    zip.members.clear();
    zip.addStored("hwdef.xml", bomDocument(version, listsA));
    support::ZipMember& member = zip.addStored("a.bit", "bits");
    member.local.crc = member.listed.crc = 1;
    zip.write(dir / "crc.hdf");
    std::vector<HHDFDifference> differences(1);
    for (const char* name : {"missing.hdf", "number.hdf", "version.hdf", "crc.hdf"}) {
        const support::Messages messages;
        EXPECT_FALSE(HHDFInspect::compare(dir / "a.hdf", dir / name, differences));
        EXPECT_TRUE(differences.empty());
        EXPECT_EQ(HHDFInspect::contentDigest(dir / name), "");
        EXPECT_GE(messages.all().size(), 2u) << name;
    }
}

TEST(Comparison, canBeCancelled)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bomDocument(version, listsA)}, {"a.bit", "bits"}});
    const support::Messages messages;
    const platform::ProgressWatch watch([](const platform::Progress&) { return false; });
    std::vector<HHDFDifference> differences;

    EXPECT_FALSE(HHDFInspect::compare(dir / "a.hdf", dir / "a.hdf", differences));
    EXPECT_EQ(HHDFInspect::contentDigest(dir / "a.hdf"), "");
    EXPECT_EQ(HHDFInspect::fileDigest(dir / "a.hdf"), "");
    EXPECT_EQ(messages.all().size(), 3u);
}
