// Rewriting an opened container unchanged, against copying its bytes.

#include <filesystem>

#include "Workloads.h"
#include "support/Design.h"
#include "support/Libzip.h"

namespace bench {

namespace {

std::string target()
{
    return workDir() + "/rewritten-in-process.hdf";
}

void startOver()
{
    const auto overwrite = std::filesystem::copy_options::overwrite_existing;
    std::filesystem::copy_file(workDir() + "/mixed.hdf", target(), overwrite);
}

void checkTarget()
{
    const LibzipArchive archive = openLibzip(target());
    for (const auto& [path, type] : filesOf(workDir() + "/corpus/mixed")) {
        require(readLibzip(archive.get(), nameOf(path)) == readFile(path), nameOf(path) + " differs");
    }
}

Task rewriteTask()
{
    startOver();
    const std::shared_ptr<HHDFHwDef> definition = HHDFHwDefUtils::getHDF(target());
    require(definition != nullptr, "opening failed");
    return {{}, [=] { require(definition->write(true), "writing failed"); }, checkTarget};
}

Task copyTask()
{
    return {[] { std::filesystem::remove(target()); }, startOver, checkTarget};
}

}  // namespace

void addRewriting()
{
    compare("rewrite-opened", "hwdef", 20, rewriteTask);
    compare("rewrite-opened", "copy of the bytes", 20, copyTask);
}

}  // namespace bench
