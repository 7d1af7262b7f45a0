// Time of whole operations with ten times the entries.

#include <filesystem>

#include "Workloads.h"
#include "support/Design.h"

namespace bench {

namespace {

using Definition = std::shared_ptr<std::unique_ptr<HHDFHwDef>>;

std::unique_ptr<HHDFHwDef> opened(std::size_t count)
{
    auto definition = HHDFHwDefUtils::getHDF(manyContainer(count));
    require(definition != nullptr, "opening failed");
    return definition;
}

std::vector<HHDFHwDefFile*> filesIn(const HHDFHwDef& definition)
{
    std::vector<HHDFHwDefFile*> files;
    definition.getBomFiles(files);
    return files;
}

std::vector<std::string> names(std::size_t count)
{
    std::vector<std::string> names;
    for (const auto& [path, type] : filesOf(manyDir(), count)) {
        names.push_back(nameOf(path));
    }
    return names;
}

Task writeHdfTask(std::size_t count)
{
    const std::string path = workDir() + "/growth-new.hdf";
    const auto files = std::make_shared<Files>(filesOf(manyDir(), count));
    Task task;
    task.prepare = [=] { std::filesystem::remove(path); };
    task.run = [=] { require(HHDFHwDefUtils::writeHDF(path, *files, true, {}, {}), "packing failed"); };
    task.check = [=] {
        const auto definition = HHDFHwDefUtils::getHDF(path, true);
        require(definition != nullptr && filesIn(*definition).size() == count, "the container differs");
    };
    return task;
}

Task writeTask(std::size_t count)
{
    const std::string path = workDir() + "/growth-rewritten" + std::to_string(count) + ".hdf";
    std::filesystem::copy_file(manyContainer(count), path, std::filesystem::copy_options::overwrite_existing);
    const std::shared_ptr<HHDFHwDef> definition = HHDFHwDefUtils::getHDF(path);
    require(definition != nullptr, "opening failed");
    Task task;
    task.run = [=] { require(definition->write(true), "writing failed"); };
    task.check = [=] {
        const auto again = HHDFHwDefUtils::getHDF(path, true);
        require(again != nullptr && filesIn(*again).size() == count, "the container differs");
        const std::string last = names(count).back();
        require(HHDFHwDefUtils::getFileBufferFromHDF(last, path) == readFile(manyDir() + "/" + last),
                "the last member differs");
    };
    return task;
}

/// The second definition has half of its files in common with the first.
Task mergeTask(std::size_t count)
{
    const std::shared_ptr<HHDFHwDef> first = opened(count);
    const std::shared_ptr<HHDFHwDef> second = HHDFHwDefUtils::createHDF(workDir() + "/growth-second.hdf");
    const std::vector<HHDFHwDefFile*> files = filesIn(*first);
    for (std::size_t i = 0; i < count; ++i) {
        if (i % 2 == 0) {
            second->addFileToBom(files[i]);
        } else {
            second->addFileToBom("/elsewhere/" + files[i]->getFileName(), files[i]->getFileType());
        }
    }
    const auto merged = std::make_shared<std::unique_ptr<HHDFHwDef>>();
    Task task;
    task.prepare = [=] { merged->reset(); };
    task.run = [=] {
        *merged = HHDFHwDefUtils::getMrgdHDF({first.get(), second.get()}, workDir() + "/growth-merged.hdf");
    };
    task.check = [=] {
        require(filesIn(**merged).size() == count + count / 2, "another number of merged files");
    };
    return task;
}

Task stripTask(std::size_t count)
{
    const auto definition = std::make_shared<std::unique_ptr<HHDFHwDef>>();
    Task task;
    task.prepare = [=] { *definition = opened(count); };
    task.run = [=] { (*definition)->removeUnnecessaryFilesForQVA(); };
    task.check = [=] {
        std::size_t expected = 0;
        for (const HHDFHwDefFile* file : filesIn(*opened(count))) {
            expected += file->getFileType() != HHDFHwDefFileTypes::BD_TCL;
        }
        require(expected < count && filesIn(**definition).size() == expected,
                "another number of files is left");
    };
    return task;
}

Task attributesTask(std::size_t count)
{
    const auto definition = std::make_shared<std::unique_ptr<HHDFHwDef>>();
    const auto all = std::make_shared<std::vector<std::string>>(names(count));
    Task task;
    task.prepare = [=] { *definition = opened(count); };
    task.run = [=] {
        HHDFHwDef::Texts attributes = {{"ip_type", "SOFT"}};
        for (const std::string& name : *all) {
            (*definition)->addFileAttrs(name, attributes);
        }
    };
    task.check = [=] {
        for (const HHDFHwDefFile* file : filesIn(**definition)) {
            require(file->getFileAttrs().count("ip_type") == 1, "a file lacks the attribute");
        }
    };
    return task;
}

Task sourceDbTask(std::size_t count)
{
    const auto definition = std::make_shared<std::unique_ptr<HHDFHwDef>>();
    const auto files = std::make_shared<Files>(filesOf(manyDir(), count));
    Task task;
    task.prepare = [=] { *definition = design(workDir() + "/growth-db.hdf", *files); };
    task.run = [=] {
        for (const auto& [path, type] : *files) {
            (*definition)->setHwSrcDB(path, "blinky.db");
        }
    };
    task.check = [=] {
        for (const HHDFHwDefFile* file : filesIn(**definition)) {
            require(file->getHwSrcDB() == "blinky.db", "a file lacks the source database");
        }
    };
    return task;
}

struct Operation {
    const char* name;
    Task (*make)(std::size_t count);
    int runs;  ///< with the larger number of entries; ten times as many with the smaller one
};

constexpr Operation operations[] = {
    {"growth/open", openTask, 3},
    {"growth/writeHDF", writeHdfTask, 1},
    {"growth/merge", mergeTask, 3},
    {"growth/write", writeTask, 2},
    {"growth/removeUnnecessaryFilesForQVA", stripTask, 2},
    {"growth/addFileAttrs", attributesTask, 2},
    {"growth/setHwSrcDB", sourceDbTask, 2},
};

}  // namespace

void addGrowth()
{
    const std::size_t small = sizes()[1];
    const std::size_t large = sizes()[2];
    for (const Operation& operation : operations) {
        compare(operation.name, std::to_string(small), 10 * operation.runs,
                [=] { return operation.make(small); });
        compare(operation.name, std::to_string(large), operation.runs, [=] { return operation.make(large); });
    }
}

}  // namespace bench
