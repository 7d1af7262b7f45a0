#pragma once

#include <string>
#include <utility>

#include "platform/HPAParamMgr.h"

namespace support {

/// A parameter that is set while this lives.
class Parameter {
public:
    Parameter(std::string name, const std::string& value) : name_(std::move(name))
    {
        HPAParamMgr::getParamMgr()->setValue(name_, value);
    }
    ~Parameter() { HPAParamMgr::getParamMgr()->removeValue(name_); }
    Parameter(const Parameter&) = delete;
    Parameter& operator=(const Parameter&) = delete;

private:
    std::string name_;
};

}  // namespace support
