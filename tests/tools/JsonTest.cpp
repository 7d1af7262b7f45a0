// The JSON of every verb, held against its manual.
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <map>
#include <set>
#include <sstream>

#include "support/Container.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"
#include "tools/Command.h"
#include "tools/Designs.h"

using support::TempDir;
using tools::CommandRun;
using tools::runCommand;

namespace {

/// Path of a member to its type, for one verb.
using Schema = std::map<std::string, std::string>;

/// The tables of the manual by the headings above them.
std::map<std::string, Schema> manual()
{
    std::istringstream text(support::readFile(HWDEF_JSON_MANUAL));
    std::map<std::string, Schema> schemas;
    std::string heading;
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("## ")) {
            heading = line.substr(3);
        } else if (line.starts_with("| `")) {
            const std::size_t end = line.find("` | ");
            schemas[heading][line.substr(3, end - 3)] =
                line.substr(end + 4, line.find(" |", end + 4) - end - 4);
        }
    }
    return schemas;
}

std::string typeOf(const rapidjson::Value& value)
{
    return value.IsObject()   ? "object"
           : value.IsArray()  ? "array"
           : value.IsString() ? "string"
           : value.IsNumber() ? "number"
           : value.IsBool()   ? "boolean"
                              : "null";
}

/// Holds documents against a schema, and remembers which of its members they had.
class Check {
public:
    explicit Check(Schema schema) : schema_(std::move(schema)) {}

    void look(const rapidjson::Value& object, const std::string& prefix)
    {
        for (const auto& member : object.GetObject()) {
            const std::string name = prefix + member.name.GetString();
            lookAt(member.value, schema_.contains(name) ? name : prefix + "*");
        }
    }

    std::string unseen() const
    {
        std::string names;
        for (const auto& [name, type] : schema_) {
            names += seen_.contains(name) ? "" : name + " ";
        }
        return names;
    }

private:
    void lookAt(const rapidjson::Value& value, const std::string& path)
    {
        seen_.insert(path);
        const std::string type = typeOf(value);
        EXPECT_TRUE(schema_[path] == type || schema_[path].find(type + " or ") == 0 ||
                    schema_[path].find(" or " + type) != std::string::npos)
            << path << " is of the type " << type << ", the manual says \"" << schema_[path] << "\"";
        if (value.IsObject()) {
            look(value, path + ".");
        } else if (value.IsArray()) {
            for (const auto& element : value.GetArray()) {
                lookAt(element, path + "[]");
            }
        }
    }

    Schema schema_;
    std::set<std::string> seen_;
};

rapidjson::Document jsonOf(const std::string& dir, const std::vector<std::string>& words)
{
    std::vector<std::string> all = words;
    all.emplace_back("--json");
    const CommandRun run = runCommand(dir, all);
    EXPECT_LE(run.exitCode, 1);
    rapidjson::Document document;
    document.Parse(run.out.c_str());
    EXPECT_FALSE(document.HasParseError()) << run.out << run.error;
    return document;
}

/// Expects that these runs of a verb write what the manual says, and among them everything that it says.
void expectAsInManual(const std::string& dir, const std::vector<std::vector<std::string>>& runs)
{
    const std::string verb = runs.front().front();
    Schema schema = manual()[verb];
    const Schema common = manual()["Every document"];
    schema.insert(common.begin(), common.end());
    Check check(schema);
    for (const auto& words : runs) {
        const rapidjson::Document document = jsonOf(dir, words);
        ASSERT_TRUE(document.IsObject());
        check.look(document, "");
        EXPECT_EQ(document["schema"].GetInt(), 1);
        EXPECT_EQ(document["verb"].GetString(), verb);
    }
    EXPECT_EQ(check.unseen(), "");
}

class Json : public testing::Test {
protected:
    Json()
    {
        tools::writeDesign(dir_.path());
        tools::writePartial(dir_.path());
        tools::writeOther(dir_.path());
    }

    const std::string& dir() const { return dir_.path(); }

    TempDir dir_;
};

}  // namespace

TEST_F(Json, ofLookingIsAsInTheManual)
{
    expectAsInManual(dir(), {{"info", "design.hdf"}});
    expectAsInManual(dir(), {{"list", "design.hdf"}, {"list", "other.hdf", "-a"}});
    expectAsInManual(dir(), {{"cat", "design.hdf", "top.hwh"}});
    expectAsInManual(dir(), {{"extract", "design.hdf", "-C", "out"}});
    expectAsInManual(dir(), {{"drivers", "design.hdf", "-C", "out"}});
    expectAsInManual(dir(), {{"partitions", "partial.hdf"}});
    expectAsInManual(dir(), {{"params", "design.hdf", "PS_CONFIG"}});
    expectAsInManual(dir(), {{"help"}, {"help", "list"}});
}

TEST_F(Json, ofChangingIsAsInTheManual)
{
    support::writeFile(dir_ / "top.bit", "new");
    expectAsInManual(dir(), {{"build", "-o", "new.hdf", "top.bit:BIT"}});
    expectAsInManual(dir(), {{"merge", "design.hdf", "new.hdf", "-o", "all.hdf"},
                             {"merge", "design.hdf", "new.hdf", "--dry-run"}});
    expectAsInManual(dir(), {{"explode", "design.hdf", "parts"}});
    expectAsInManual(dir(), {{"set", "design.hdf", "part=x"}});
    expectAsInManual(dir(), {{"add", "design.hdf", "top.bit:BIT", "-r"}});
    expectAsInManual(dir(), {{"remove", "design.hdf", "top.bit"}});
}

TEST_F(Json, ofInspectingIsAsInTheManual)
{
    tools::writeDamaged(dir());
    support::writeArchive(dir_ / "lacking.hdf", {{"hwdef.xml", support::bomOfFiles("7", {"missing.bit"})}});
    expectAsInManual(dir(), {{"verify", "damaged.hdf", "lacking.hdf", "other.hdf"},
                             {"verify", "--level", "quick", "design.hdf"}});
    support::writeFile(dir_ / "top.bit", "new");
    runCommand(dir(), {"build", "-o", "new.hdf", "top.bit:BIT"});
    expectAsInManual(dir(), {{"diff", "design.hdf", "new.hdf"},
                             {"diff", "new.hdf", "design.hdf"},
                             {"diff", "design.hdf", "design.hdf"}});
    expectAsInManual(dir(), {{"digest", "design.hdf"}});
    expectAsInManual(dir(), {{"report", "damaged.hdf", "-o", "r.html"}});
}

TEST_F(Json, ofEveryVerbIsInTheManual)
{
    std::istringstream verbs(runCommand(dir(), {"_complete", ""}).out);
    const auto schemas = manual();
    std::size_t count = 0;
    for (std::string verb; std::getline(verbs, verb);) {
        if (!verb.starts_with('-')) {
            EXPECT_TRUE(schemas.contains(verb)) << verb;
            ++count;
        }
    }
    EXPECT_EQ(count, 18U);
}

TEST_F(Json, ofVerifyingIsCompleteForTheOthersWhenAFileCantBeRead)
{
    const CommandRun run = runCommand(dir(), {"verify", "missing.hdf", "design.hdf", "--json"});
    EXPECT_EQ(run.exitCode, 2);
    rapidjson::Document document;
    document.Parse(run.out.c_str());
    ASSERT_TRUE(document.IsObject()) << run.out;
    EXPECT_FALSE(document["sound"].GetBool());
    ASSERT_EQ(document["containers"].Size(), 1U);
    EXPECT_STREQ(document["containers"][0]["container"].GetString(), "design.hdf");
}

TEST_F(Json, tellsValues)
{
    const auto info = jsonOf(dir(), {"info", "design.hdf"});
    EXPECT_STREQ(info["properties"]["part"].GetString(), "part-1");
    EXPECT_STREQ(info["integrity"].GetString(), "intact");
    EXPECT_EQ(info["resources"][1]["percent"].GetDouble(), 80.0);
    EXPECT_EQ(info["filesByType"]["BIT"].GetInt(), 1);
    const auto list = jsonOf(dir(), {"list", "design.hdf", "-t", "BIT"});
    EXPECT_EQ(list["files"].Size(), 1U);
    EXPECT_EQ(list["files"][0]["sizeBytes"].GetInt(), 5000);
    EXPECT_STREQ(list["files"][0]["attributes"]["compressed"].GetString(), "true");
    const auto partitions = jsonOf(dir(), {"partitions", "partial.hdf"});
    EXPECT_STREQ(partitions["partitions"][0]["defaultModule"].GetString(), "fir");
    EXPECT_TRUE(partitions["configurations"][0]["active"].GetBool());
    EXPECT_TRUE(partitions["configurations"][1]["cells"][1]["module"].IsNull());
}

TEST_F(Json, tellsBytesThatAreNoText)
{
    support::writeFile(dir_ / "x.bin", std::string("\xff\x00", 2));
    runCommand(dir(), {"build", "-o", "x.hdf", "x.bin:UNKNOWN"});
    const auto cat = jsonOf(dir(), {"cat", "x.hdf", "x.bin"});
    EXPECT_STREQ(cat["encoding"].GetString(), "base64");
    EXPECT_STREQ(cat["content"].GetString(), "/wA=");
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", support::bomOfFiles("0", {}));
    zip.addStored("a\xff", "y");
    zip.write(dir_ / "y.hdf");
    const auto list = jsonOf(dir(), {"list", "-a", "y.hdf"});
    ASSERT_TRUE(list.IsObject());
    EXPECT_STREQ(list["files"][1]["name"].GetString(), "a\xef\xbf\xbd");
}

TEST_F(Json, isLeftOutWhenAVerbFails)
{
    const CommandRun run = runCommand(dir(), {"cat", "design.hdf", "none", "--json"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.error, "hwdef: error: design.hdf: there is no member \"none\"\n");
}
