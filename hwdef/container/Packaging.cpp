#include <algorithm>
#include <boost/filesystem/path.hpp>

#include "hwdef/container/ArchiveOutput.h"
#include "hwdef/container/MemberSource.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/ComMsgMgr.h"
#include "platform/HEXAll.h"
#include "platform/ProgressWork.h"
#include "platform/iostreams/ArchiveWriter.h"

using iostreams::zip::ArchiveWriter;

namespace {

bool isDriverDescription(const HHDFHwDefDriver& record)
{
    return boost::filesystem::path(record.getRelativeName()).extension().native() == ".mdd";
}

}  // namespace

bool HHDFHwDefImp::runDRC() const
{
    for (const auto& [name, records] : drivers.files()) {
        if (std::none_of(records.begin(), records.end(), isDriverDescription)) {
            ComMsgMgr::sendMsg("hdf", "@64-24@%s", 1, ComMsgMgr::WARNING, name.c_str());
        }
    }
    return true;
}

bool HHDFHwDefImp::packageHDFContainer(bool)
{
    const std::string bomPath = stageBom(*this);
    if (bomPath.empty()) {
        return false;
    }
    const platform::ProgressWork work(container->path());
    try {
        std::string path;
        container->getFullPath(path);
        ArchiveWriter archive(path, ArchiveWriter::Digest::ATTACHED);
        addAllMembers(*this, bomPath, path, archive);
        archive.commit();
        return true;
    } catch (const HEXAll& error) {
        ComMsgMgr::sendMessage(error.what(), false);
        return false;
    }
}

bool HHDFHwDef::write(bool flag)
{
    if (implementation_ == nullptr) {
        return false;
    }
    implementation_->runDRC();
    return implementation_->packageHDFContainer(flag);
}
