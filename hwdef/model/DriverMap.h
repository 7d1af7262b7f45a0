#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "hwdef/model/HHDFHwDefDriver.h"

/// Driver name to its files in insertion order, with an index that answers "is this file already
/// there" without a walk.
class DriverMap {
public:
    using Files = std::vector<HHDFHwDefDriver>;

    const std::map<std::string, Files>& files() const { return files_; }

    /// Appends a record unless one with the same three texts is in the driver's list.
    void add(const std::string& name, HHDFHwDefDriver record);
    /// Sets or replaces a driver's list, repeats included.
    void replace(const std::string& name, Files records);
    /// Takes another map's content in place of the present one.
    void replaceAll(const std::map<std::string, Files>& files);

private:
    std::map<std::string, Files> files_;
    std::unordered_map<std::string, std::unordered_set<std::string>> present_;  // name to keys of its records
};
