#include "hwdef/container/MemberEntry.h"

#include "hwdef/model/HHDFHwDefImp.h"

std::string MemberEntry::name() const
{
    return file_ != nullptr ? file_->getFileName() : driver_->getRelativeName();
}

std::string MemberEntry::diskPath() const
{
    return file_ != nullptr ? file_->getFile() : driver_->getFilePath();
}

std::string MemberEntry::archive() const
{
    return file_ != nullptr ? file_->getHwDefFilePath() : driver_->getHwDefFilePath();
}

std::string MemberEntry::origin() const
{
    const std::string container = archive();
    return container.empty() ? diskPath() : container;
}

bool MemberEntry::hasSameSource(const MemberEntry& other) const
{
    const std::string container = archive();
    if (container != other.archive()) {
        return false;
    }
    return container.empty() ? diskPath() == other.diskPath() : name() == other.name();
}

void forEachMember(const HHDFHwDefImp& def, const std::function<void(const MemberEntry&)>& visit)
{
    for (const HHDFHwDefFile* file : def.bom.slots()) {
        if (file != nullptr) {
            visit(MemberEntry(*file));
        }
    }
    for (const auto& [name, records] : def.drivers.files()) {
        for (const HHDFHwDefDriver& record : records) {
            visit(MemberEntry(record));
        }
    }
}
