#include "hwdef/model/HHDFHwDefFile.h"

#include "hwdef/model/BomList.h"
#include "platform/HSTStringUtils.h"

HHDFHwDefFile::HHDFHwDefFile(const std::string& path) : file_(path) {}

HHDFHwDefFile::HHDFHwDefFile(std::string&& path) : file_(std::move(path)) {}

HHDFHwDefFile::HHDFHwDefFile(const HHDFHwDefFile& other)
    : file_(other.getFile()),
      fileType_(other.fileType_),
      bdFileType_(other.bdFileType_),
      hwDefFilePath_(other.hwDefFilePath_),
      hwSrcDB_(other.hwSrcDB_),
      extras_(other.extras_ ? std::make_unique<Extras>(*other.extras_) : nullptr)
{
}

HHDFHwDefFile::~HHDFHwDefFile() = default;

std::string HHDFHwDefFile::getFile() const
{
    std::string path;
    file_.getCanonicalName(path);
    return path;
}

std::string HHDFHwDefFile::getFileName() const
{
    return std::string(fileName());
}

std::string_view HHDFHwDefFile::fileName() const
{
    return file_.name();
}

bool HHDFHwDefFile::setHierPath(const std::string& path)
{
    if (path.empty()) {
        return false;
    }
    extras().hierPath = path;
    return true;
}

bool HHDFHwDefFile::setHwDefFilePath(const std::string& path)
{
    if (path.empty()) {
        return false;
    }
    hwDefFilePath_ = std::make_shared<const std::string>(path);
    return true;
}

void HHDFHwDefFile::setHwSrcDB(const std::string& srcDb)
{
    if (list_ && srcDb.empty() && !hwSrcDB_.empty()) {
        list_->srcDbEmptied(*this);
    } else if (list_ && !srcDb.empty() && hwSrcDB_.empty()) {
        list_->srcDbFilled();
    }
    hwSrcDB_ = srcDb;
}

bool HHDFHwDefFile::addFileAttr(const std::string& name, const std::string& value)
{
    if (name.empty() || value.empty()) {
        return false;
    }
    extras().fileAttrs[name] = value;
    return true;
}

bool HHDFHwDefFile::operator==(const HHDFHwDefFile& other) const
{
    return HSTStringUtils::iequals(getFile(), other.getFile()) && fileType_ == other.fileType_ &&
           bdFileType_ == other.bdFileType_ && HSTStringUtils::iequals(hierPath(), other.hierPath()) &&
           HSTStringUtils::iequals(getHwDefFilePath(), other.getHwDefFilePath()) &&
           HSTStringUtils::iequals(hwSrcDB_, other.hwSrcDB_);
}

HHDFHwDefFile::Extras& HHDFHwDefFile::extras() const
{
    if (!extras_) {
        extras_ = std::make_unique<Extras>();
    }
    return *extras_;
}
