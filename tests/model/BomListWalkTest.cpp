// The BOM list held against one that walks for every question.

#include "hwdef/model/BomList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "platform/HSTStringUtils.h"

namespace {

HHDFHwDefFile* add(BomList& list, const std::string& path, const std::string& srcDb = {})
{
    auto file = std::make_unique<HHDFHwDefFile>(path);
    file->setHwSrcDB(srcDb);
    HHDFHwDefFile* added = file.get();
    list.add(std::move(file));
    return added;
}

/// What a BOM list must answer, by a walk for every question.
class NaiveList {
public:
    void add(HHDFHwDefFile* file) { files_.push_back(file); }
    void remove(const HHDFHwDefFile* file) { std::erase(files_, file); }
    const std::vector<HHDFHwDefFile*>& files() const { return files_; }

    HHDFHwDefFile* firstNamed(const std::string& name) const
    {
        for (HHDFHwDefFile* file : files_) {
            if (file && file->getFileName() == name) {
                return file;
            }
        }
        return nullptr;
    }

    HHDFHwDefFile* firstWithoutSrcDb(const std::string& name) const
    {
        for (HHDFHwDefFile* file : files_) {
            if (file && file->getHwSrcDB().empty() && HSTStringUtils::iequals(file->getFileName(), name)) {
                return file;
            }
        }
        return nullptr;
    }

private:
    std::vector<HHDFHwDefFile*> files_;
};

/// Does the same random things to a list and to a naive one, and holds their answers together.
class RandomWalk {
public:
    RandomWalk(unsigned seed, unsigned nameCount, unsigned removals)
        : random_(seed), nameCount_(nameCount), removals_(removals)
    {
    }

    void run(int steps)
    {
        for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE(step);
            change();
            ask();
        }
        std::vector<HHDFHwDefFile*> left = list_.slots();
        std::erase(left, nullptr);
        std::vector<HHDFHwDefFile*> expected = naive_.files();
        std::erase(expected, nullptr);
        EXPECT_EQ(left, expected);
    }

private:
    unsigned upTo(unsigned count) { return static_cast<unsigned>(random_() % count); }

    /// A name out of few, each in several cases.
    std::string anyName()
    {
        std::string name = "file" + std::to_string(upTo(nameCount_));
        for (std::size_t i = 0; i < 2; ++i) {
            name[i] = upTo(2) == 0 ? name[i] : static_cast<char>(name[i] - 'a' + 'A');
        }
        return name;
    }

    HHDFHwDefFile* anyEntry()
    {
        return naive_.files().empty() ? nullptr
                                      : naive_.files()[upTo(static_cast<unsigned>(naive_.files().size()))];
    }

    void change()
    {
        const unsigned choice = upTo(100);
        HHDFHwDefFile* entry = anyEntry();
        if (choice < 2) {
            list_.add(nullptr);
            naive_.add(nullptr);
        } else if (choice < removals_) {
            naive_.remove(entry);
            EXPECT_EQ(list_.remove(entry).release(), entry);
            removed_.emplace_back(entry);
        } else if (choice < removals_ + 20) {
            if (entry) {
                entry->setHwSrcDB(upTo(2) == 0 ? "db" : "");
            }
        } else {
            naive_.add(
                ::add(list_, "/d" + std::to_string(upTo(3)) + "/" + anyName(), upTo(4) == 0 ? "db" : ""));
        }
    }

    void ask()
    {
        const std::string name = anyName();
        const unsigned choice = upTo(4);
        if (choice == 0) {
            EXPECT_EQ(list_.firstNamed(name), naive_.firstNamed(name));
        } else if (choice == 1) {
            HHDFHwDefFile* found = list_.firstWithoutSrcDb(name);
            EXPECT_EQ(found, naive_.firstWithoutSrcDb(name));
            if (found && upTo(2) == 0) {
                found->setHwSrcDB("db");
            }
        }
    }

    std::mt19937 random_;
    unsigned nameCount_;
    unsigned removals_;
    BomList list_;
    NaiveList naive_;
    std::vector<std::unique_ptr<HHDFHwDefFile>> removed_;
};

}  // namespace

TEST(BomList, answersAsANaiveWalkWithFewNames)
{
    for (const unsigned seed : {1U, 2U, 3U, 4U}) {
        RandomWalk(seed, 3, 30).run(6000);
    }
}

TEST(BomList, answersAsANaiveWalkWithManyNames)
{
    RandomWalk(5, 300, 25).run(8000);
}

TEST(BomList, answersAsANaiveWalkWhenMostEntriesAreRemoved)
{
    RandomWalk(6, 3, 48).run(8000);
    RandomWalk(7, 50, 60).run(8000);
}

TEST(BomList, answersAsANaiveWalkOfAGrowingList)
{
    RandomWalk(8, 20, 3).run(6000);
}
