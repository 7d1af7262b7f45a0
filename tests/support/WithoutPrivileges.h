#pragma once

#include <string>

namespace support {

/// While it lives, permissions bind this process even when it is root's, and nothing can be made or
/// removed in the directory `readOnly`.
class WithoutPrivileges {
public:
    explicit WithoutPrivileges(const std::string& readOnly);
    ~WithoutPrivileges();
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
    std::string readOnly_;
    unsigned mode_;
    unsigned user_;
};

}  // namespace support
