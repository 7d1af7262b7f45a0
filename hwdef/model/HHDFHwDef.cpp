#include "hwdef/model/HHDFHwDef.h"

#include <boost/filesystem/exception.hpp>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/ComMsgMgr.h"
#include "platform/HEXAll.h"

namespace {

/// The definition's data, or null after the reason was sent when it can't be made.
std::unique_ptr<HHDFHwDefImp> makeImplementation(const std::string& path, HHDFHwDef* owner)
{
    try {
        return std::make_unique<HHDFHwDefImp>(path, owner);
    } catch (const HEXAll& error) {
        ComMsgMgr::sendMessage(error.what(), false);
    } catch (const boost::filesystem::filesystem_error& error) {
        ComMsgMgr::sendMessage(error.what(), false);
    }
    return nullptr;
}

/// A field of the data, or `missing` when there is none.
template <typename Field>
const Field& fieldOr(const HHDFHwDefImp* data, Field HHDFHwDefImp::*field, const Field& missing)
{
    return data ? data->*field : missing;
}

/// Assigns a field of the data; false when there is none.
template <typename Field>
bool assign(HHDFHwDefImp* data, Field HHDFHwDefImp::*field, const Field& value)
{
    if (!data) {
        return false;
    }
    data->*field = value;
    return true;
}

}  // namespace

HHDFHwDef::HHDFHwDef(const std::string& path) : implementation_(makeImplementation(path, this)) {}

HHDFHwDef::HHDFHwDef(std::unique_ptr<HHDFHwDefImp> implementation)
    : implementation_(std::move(implementation))
{
}

HHDFHwDef::~HHDFHwDef() = default;

const std::string& HHDFHwDef::getToolVersion() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::toolVersion, emptyText_);
}

bool HHDFHwDef::setToolVersion(const std::string& version)
{
    return assign(implementation(), &HHDFHwDefImp::toolVersion, version);
}

const std::string& HHDFHwDef::getBoard() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::board, emptyText_);
}

bool HHDFHwDef::setBoard(const std::string& board)
{
    return assign(implementation(), &HHDFHwDefImp::board, board);
}

const std::string& HHDFHwDef::getPart() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::part, emptyText_);
}

bool HHDFHwDef::setPart(const std::string& part)
{
    return assign(implementation(), &HHDFHwDefImp::part, part);
}

const std::string& HHDFHwDef::getArch() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::arch, emptyText_);
}

bool HHDFHwDef::setArch(const std::string& arch)
{
    return assign(implementation(), &HHDFHwDefImp::arch, arch);
}

const std::string& HHDFHwDef::getPackage() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::package, emptyText_);
}

bool HHDFHwDef::setPackage(const std::string& package)
{
    return assign(implementation(), &HHDFHwDefImp::package, package);
}

const std::string& HHDFHwDef::getDevice() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::device, emptyText_);
}

bool HHDFHwDef::setDevice(const std::string& device)
{
    return assign(implementation(), &HHDFHwDefImp::device, device);
}

const std::string& HHDFHwDef::getSpeed() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::speed, emptyText_);
}

bool HHDFHwDef::setSpeed(const std::string& speed)
{
    return assign(implementation(), &HHDFHwDefImp::speed, speed);
}

const std::string& HHDFHwDef::getBaseBoard() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::baseBoard, emptyText_);
}

bool HHDFHwDef::setBaseBoard(const std::string& name)
{
    return assign(implementation(), &HHDFHwDefImp::baseBoard, name);
}

const std::string& HHDFHwDef::getHierTopModuleName() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::hierTopModuleName, emptyText_);
}

void HHDFHwDef::setHierTopModuleName(const std::string& name)
{
    implementation_->hierTopModuleName = name;
}

const std::uint32_t& HHDFHwDef::getMajorVersion() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::majorVersion, missingNumber_);
}

bool HHDFHwDef::setMajorVersion(std::uint32_t version)
{
    return assign(implementation(), &HHDFHwDefImp::majorVersion, version);
}

const std::uint32_t& HHDFHwDef::getMinorVersion() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::minorVersion, missingNumber_);
}

bool HHDFHwDef::setMinorVersion(std::uint32_t version)
{
    return assign(implementation(), &HHDFHwDefImp::minorVersion, version);
}

bool HHDFHwDef::doesHwdefHaveCDO() const
{
    const auto major = static_cast<std::int32_t>(getMajorVersion());
    const auto minor = static_cast<std::int32_t>(getMinorVersion());
    return major >= 1 && minor >= 4;
}

bool HHDFHwDef::isTIER() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::tier, false);
}

bool HHDFHwDef::setTIER(bool tier)
{
    return assign(implementation(), &HHDFHwDefImp::tier, tier);
}

int HHDFHwDef::getSLRNo() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::slrCount, -1);
}

bool HHDFHwDef::setSLRNo(int count)
{
    return assign(implementation(), &HHDFHwDefImp::slrCount, count);
}

bool HHDFHwDef::isIntegratedBoard() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::integratedBoard, false);
}

bool HHDFHwDef::setIntegratedBoard(bool integrated)
{
    return assign(implementation(), &HHDFHwDefImp::integratedBoard, integrated);
}

std::string HHDFHwDef::getBoardTopDir() const
{
    return implementation_->boardTopDir;
}

void HHDFHwDef::setBoardTopDir(const std::string& dir)
{
    implementation_->boardTopDir = dir;
}

std::string HHDFHwDef::getDriversTopDir() const
{
    return implementation_->driversTopDir;
}

void HHDFHwDef::setDriversTopDir(const std::string& dir)
{
    implementation_->driversTopDir = dir;
}

HHDFHwDef::ModeType HHDFHwDef::getModeType() const
{
    return fieldOr(implementation(), &HHDFHwDefImp::mode, HHDFHwDefFileTypes::MODE_UNSET);
}

bool HHDFHwDef::setModeType(const ModeType& mode)
{
    if (!implementation_) {
        return false;
    }
    implementation_->mode = mode;
    if (mode == HHDFHwDefFileTypes::PRE_SYNTHESIS) {
        implementation_->bomName = "hwdef.xml";
    } else if (mode == HHDFHwDefFileTypes::POST_SYNTHESIS) {
        implementation_->bomName = "sysdef.xml";
    }
    return true;
}

std::string HHDFHwDef::getModeName() const
{
    switch (getModeType()) {
        case HHDFHwDefFileTypes::PRE_SYNTHESIS:
            return "Pre-Synthesis";
        case HHDFHwDefFileTypes::POST_SYNTHESIS:
            return "Post-Synthesis";
        default:
            return {};
    }
}

const HHDFHwDef::HHDFResourceInfo& HHDFHwDef::getUsedResourceInfo() const
{
    return implementation_->usedResources;
}

void HHDFHwDef::setUsedResourceInfo(const HHDFResourceInfo& info)
{
    implementation_->usedResources = info;
}

const HHDFHwDef::HHDFResourceInfo& HHDFHwDef::getSystemResourceInfo() const
{
    return implementation_->systemResources;
}

void HHDFHwDef::setSystemResourceInfo(const HHDFResourceInfo& info)
{
    implementation_->systemResources = info;
}

const HHDFHwDef::Texts& HHDFHwDef::getBoardConnections() const
{
    return implementation_->boardConnections;
}

bool HHDFHwDef::setBoardConnections(const Texts& connections)
{
    return assign(implementation(), &HHDFHwDefImp::boardConnections, connections);
}

bool HHDFHwDef::addBoardConnections(std::string from, std::string to)
{
    if (!implementation_) {
        return false;
    }
    implementation_->boardConnections.emplace(std::move(from), std::move(to));
    return true;
}

const std::vector<std::pair<std::string, bool>>& HHDFHwDef::getJumpers() const
{
    return implementation_->jumpers;
}

bool HHDFHwDef::getJumpers(std::vector<std::pair<std::string, bool>>& jumpers) const
{
    if (!implementation_) {
        return false;
    }
    jumpers = implementation_->jumpers;
    return true;
}

bool HHDFHwDef::setJumpers(const std::vector<std::pair<std::string, bool>>& jumpers)
{
    return assign(implementation(), &HHDFHwDefImp::jumpers, jumpers);
}

void HHDFHwDef::updateJumpers(std::string name, bool value)
{
    if (implementation_) {
        implementation_->jumpers.emplace_back(std::move(name), value);
    }
}

void HHDFHwDef::getWDIAttrs(Texts& attrs) const
{
    if (implementation_) {
        attrs = implementation_->wdiAttrs;
    }
}

void HHDFHwDef::addWDIAttr(const std::string& name, const std::string& value)
{
    implementation_->wdiAttrs[name] = value;
}
