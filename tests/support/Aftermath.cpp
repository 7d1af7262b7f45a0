#include "support/Aftermath.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zip.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <set>

#include "platform/ComMsgMgr.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/EndRecord.h"

namespace support {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t modeDigits = 4;

void putFile(const std::string& path, const std::string& modeAndContent)
{
    fs::remove(path);
    writeFile(path, modeAndContent.substr(modeDigits));
    fs::permissions(path,
                    static_cast<fs::perms>(std::stoul(modeAndContent.substr(0, modeDigits), nullptr, 8)));
}

std::map<std::string, Members> membersOf(const std::string& dir, const Files& files)
{
    std::map<std::string, Members> all;
    for (const auto& [name, content] : files) {
        if (content.compare(modeDigits, 2, "PK") == 0) {
            all.emplace(name, membersByLibzip(dir + "/" + name).value());
        }
    }
    return all;
}

std::set<std::string> namesOf(std::initializer_list<const Files*> sets)
{
    std::set<std::string> names;
    for (const Files* files : sets) {
        for (const auto& [name, content] : *files) {
            names.insert(name);
        }
    }
    return names;
}

void removeEmptyDirectories(const std::string& dir)
{
    for (const fs::directory_entry& entry : fs::directory_iterator(dir)) {
        if (entry.is_directory()) {
            removeEmptyDirectories(entry.path().string());
            if (fs::is_empty(entry.path())) {
                fs::remove(entry.path());
            }
        }
    }
}

template <typename Map>
bool sameAt(const Map& left, const Map& right, const std::string& name)
{
    const auto l = left.find(name);
    const auto r = right.find(name);
    return l == left.end() || r == right.end() ? l == left.end() && r == right.end() : l->second == r->second;
}

bool isTemporary(const std::string& name)
{
    const std::string file = fs::path(name).filename().string();
    return file.compare(0, 7, ".hwdef-") == 0 && fs::path(file).extension() == ".tmp";
}

}  // namespace

Files filesIn(const std::string& dir)
{
    Files files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(dir)) {
        if (entry.is_directory()) {
            continue;
        }
        char mode[modeDigits + 1];
        std::snprintf(mode, sizeof mode, "%04o",
                      static_cast<unsigned>(entry.status().permissions() & fs::perms::mask) & 07777U);
        files[entry.path().string().substr(dir.size() + 1)] = mode + readFile(entry.path().string());
    }
    return files;
}

std::optional<Members> membersByLibzip(const std::string& path)
{
    const std::unique_ptr<zip_t, void (*)(zip_t*)> archive(
        zip_open(path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, nullptr), zip_discard);
    if (archive == nullptr) {
        return {};
    }
    Members members;
    const auto count = static_cast<zip_uint64_t>(zip_get_num_entries(archive.get(), 0));
    for (zip_uint64_t i = 0; i < count; ++i) {
        zip_stat_t status;
        const std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> file(zip_fopen_index(archive.get(), i, 0),
                                                                     zip_fclose);
        if (zip_stat_index(archive.get(), i, 0, &status) != 0 || file == nullptr) {
            return {};
        }
        // One byte more than there is: the read that finds the end is the one that checks the CRC.
        std::string content(status.size + 1, '\0');
        if (zip_fread(file.get(), content.data(), status.size) != static_cast<zip_int64_t>(status.size) ||
            zip_fread(file.get(), content.data() + status.size, 1) != 0) {
            return {};
        }
        members.emplace_back(status.name, content.substr(0, status.size));
    }
    return members;
}

std::optional<Members> membersByUs(const std::string& path)
{
    try {
        const iostreams::zip::ArchiveReader reader(path);
        Members members;
        for (const auto& entry : reader.entries()) {
            members.emplace_back(entry.name, reader.read(entry, entry.size));
        }
        return members;
    } catch (const HEXAll&) {
        return {};
    }
}

bool hasDebris(const std::string& path)
{
    const platform::File file = platform::File::open(path, O_RDONLY);
    return iostreams::zip::findEndRecord(file).end != file.size();
}

TmpdirVariable::TmpdirVariable(const std::string& value)
{
    const char* const earlier = std::getenv("TMPDIR");
    earlier_ = earlier != nullptr ? earlier : "";
    if (fs::is_directory(value)) {
        ::setenv("TMPDIR", value.c_str(), 1);
    }
}

TmpdirVariable::~TmpdirVariable()
{
    if (earlier_.empty()) {
        ::unsetenv("TMPDIR");
    } else {
        ::setenv("TMPDIR", earlier_.c_str(), 1);
    }
}

Aftermath::Aftermath(const Operation& operation) : operation_(operation), dir_(base_ / "work dir")
{
    fs::create_directories(scratch());
    inScratch_.emplace(scratch());
    log_.reserve(256 * 1024);

    fs::create_directories(dir_);
    operation_.prepare(dir_);
    before_ = filesIn(dir_);
    oldMembers_ = membersOf(dir_, before_);
    const Outcome undisturbed = run();
    EXPECT_FALSE(undisturbed.isReported()) << operation_.name << ": " << undisturbed.messages;
    text_ = undisturbed.result.value_or("");
    after_ = filesIn(dir_);
    newMembers_ = membersOf(dir_, after_);
    reset();
}

Aftermath::~Aftermath() = default;

std::uint64_t Aftermath::largestBytes() const
{
    std::size_t largest = 0;
    for (const auto& [name, content] : after_) {
        largest = std::max(largest, content.size());
    }
    return largest;
}

void Aftermath::reset()
{
    for (const fs::directory_entry& entry : fs::directory_iterator(scratch())) {
        for (const fs::directory_entry& left : fs::directory_iterator(entry.path())) {
            fs::remove_all(left.path());
        }
    }
    const Files now = filesIn(dir_);
    for (const std::string& name : namesOf({&before_, &now})) {
        if (before_.count(name) == 0) {
            fs::remove(dir_ + "/" + name);
        } else if (!sameAt(before_, now, name)) {
            putFile(dir_ + "/" + name, before_.at(name));
        }
    }
    removeEmptyDirectories(dir_);
}

Aftermath::Outcome Aftermath::run(const std::function<void()>& begin, const std::function<void()>& end)
{
    const ComMsgMgr::Handler earlier = ComMsgMgr::setHandler([this](const ComMsg& message) {
        const std::size_t size = log_.size() + message.id.size() + message.text.size() + 2;
        if (size <= log_.capacity()) {
            log_.append(message.id).append(" ").append(message.text).append("\n");
        }
    });
    log_.clear();
    Outcome outcome;
    begin();
    try {
        outcome.result = operation_.run(dir_);
        end();
    } catch (const std::bad_alloc&) {
        end();
        outcome.ranOutOfMemory = true;
    } catch (const std::exception& error) {
        end();
        ADD_FAILURE() << operation_.name << " throws: " << error.what();
    }
    ComMsgMgr::setHandler(earlier);
    outcome.messages = log_;
    return outcome;
}

/// Whether an archive is the new one without some members, each of which a message tells of.
bool Aftermath::isNewButFor(const std::string& file, const std::string& messages) const
{
    const auto whole = newMembers_.find(file);
    const auto members = membersByLibzip(dir_ + "/" + file);
    if (whole == newMembers_.end() || !members || members != membersByUs(dir_ + "/" + file)) {
        return false;
    }
    const auto isIn = [](const Members& all, const auto& member) {
        return std::find(all.begin(), all.end(), member) != all.end();
    };
    return std::all_of(members->begin(), members->end(),
                       [&](const auto& member) { return isIn(whole->second, member); }) &&
           std::all_of(whole->second.begin(), whole->second.end(), [&](const auto& member) {
               return isIn(*members, member) || messages.find(member.first) != std::string::npos;
           });
}

void Aftermath::expectOldOrNew(const Outcome& outcome) const
{
    const Files now = filesIn(dir_);
    for (const std::string& name : namesOf({&before_, &after_, &now})) {
        EXPECT_TRUE(sameAt(now, before_, name) || sameAt(now, after_, name) ||
                    (!outcome.messages.empty() && isNewButFor(name, outcome.messages)))
            << operation_.name << ": " << name << " is neither old nor new\n"
            << outcome.messages;
    }
    if (outcome.isReported() || !operation_.tellsOfWrites) {
        return;
    }
    EXPECT_EQ(*outcome.result, text_) << operation_.name;
    EXPECT_TRUE(now == after_) << operation_.name << " doesn't tell that it failed";
}

void Aftermath::expectOldOrNewAfterDeath() const
{
    const Files now = filesIn(dir_);
    for (const std::string& name : namesOf({&before_, &after_, &now})) {
        if (isTemporary(name) || sameAt(now, before_, name) || sameAt(now, after_, name)) {
            continue;
        }
        const std::string path = dir_ + "/" + name;
        const auto members = membersByUs(path);
        const auto isState = [&](const std::map<std::string, Members>& all) {
            const auto state = all.find(name);
            return members && state != all.end() && state->second == *members;
        };
        EXPECT_TRUE(isState(oldMembers_) || isState(newMembers_))
            << operation_.name << ": " << name << " is neither old nor new";
        EXPECT_TRUE(!members || hasDebris(path) || membersByLibzip(path) == members)
            << operation_.name << ": libzip reads " << name << " in another way";
    }
}

void Aftermath::expectSuccessAfterDeath()
{
    const Outcome outcome = run();
    EXPECT_FALSE(outcome.isReported()) << operation_.name << ": " << outcome.messages;
    const Files now = filesIn(dir_);
    for (const std::string& name : namesOf({&after_, &now})) {
        EXPECT_TRUE(
            isTemporary(name) || sameAt(now, after_, name) ||
            (newMembers_.count(name) != 0 && membersByLibzip(dir_ + "/" + name) == newMembers_.at(name)))
            << operation_.name << ": " << name << " isn't new after a second run";
    }
}

void Aftermath::expectNoScratch() const
{
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(scratch())) {
        const fs::path path = entry.path().string().substr(scratch().size() + 1);
        // The scratch root and, in it, the directory of all directories for building stay.
        const auto depth = std::distance(path.begin(), path.end());
        EXPECT_TRUE(depth == 1 || (depth == 2 && path.filename() == "HWH"))
            << operation_.name << " leaves " << path;
    }
}

}  // namespace support
