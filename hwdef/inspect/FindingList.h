#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "hwdef/inspect/HHDFFinding.h"

/// A name in double quotes as texts have it: control characters as \xNN, the end of a very long one left
/// out.
std::string shown(std::string_view name);

/// Findings as they are made; severity and advice come from one table by the identifier.
class FindingList {
public:
    explicit FindingList(std::vector<HHDFFinding>& findings) : findings_(findings) { findings_.clear(); }

    void add(const char* id, std::string_view member, std::string text);
    void addAt(std::uint64_t offset, const char* id, std::string_view member, std::string text);
    void addInLine(std::uint64_t line, const char* id, std::string_view member, std::string text);
    /// The severity of what was added last is another one than usual.
    void setSeverity(HHDFFinding::Severity severity);
    /// Tells how many more there were of each kind than are told one by one.
    void finish();

private:
    HHDFFinding* make(const char* id, std::string_view member, std::string text);

    std::vector<HHDFFinding>& findings_;
    HHDFFinding* last_ = nullptr;  // null when it was only counted
    struct Kind {
        std::uint64_t count = 0;
        std::size_t lastPlace = 0;
    };
    std::map<std::string_view, Kind> kinds_;
};
