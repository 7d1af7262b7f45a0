#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "hwdef/model/HHDFHwDefDriver.h"

/// Driver name to its files in insertion order, with an index that answers "is this file already
/// there" without a walk.
class DriverMap {
public:
    using Files = std::vector<HHDFHwDefDriver>;

    DriverMap() = default;
    DriverMap(const DriverMap&) = delete;
    DriverMap& operator=(const DriverMap&) = delete;

    const std::map<std::string, Files>& files() const { return files_; }

    /// The driver's list, made when there is none; stays where it is. For add(): who has many records of
    /// one driver looks its name up once.
    Files& listOf(const std::string& name) { return files_[name]; }
    /// Appends a record to a driver's list unless one with the same three texts is in it.
    void add(Files& list, HHDFHwDefDriver record);
    void add(const std::string& name, HHDFHwDefDriver record) { add(listOf(name), std::move(record)); }
    /// Sets or replaces a driver's list, repeats included.
    void replace(const std::string& name, Files records);
    /// Takes another map's content in place of the present one.
    void replaceAll(const std::map<std::string, Files>& files);

private:
    static bool isSame(const HHDFHwDefDriver& left, const HHDFHwDefDriver& right);

    // Records by their place in one driver's list, hashed and compared by what stands there.
    struct PlaceHash {
        const Files* list;
        std::size_t operator()(std::uint32_t place) const;
    };
    struct PlaceEqual {
        const Files* list;
        bool operator()(std::uint32_t left, std::uint32_t right) const;
    };
    using Places = std::unordered_set<std::uint32_t, PlaceHash, PlaceEqual>;
    Places& placesOf(const Files& list);

    std::map<std::string, Files> files_;
    std::unordered_map<const Files*, Places> places_;  // of the long lists that were added to
};
