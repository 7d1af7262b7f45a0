#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// The digests that a BOM records, by member name. Opening records one an entry, and most definitions
/// are never asked for any: what is recorded is only noted, one text behind the other, until then.
class FileDigests {
public:
    /// Records a digest, the empty text included, in place of an earlier one of that name.
    void set(std::string_view name, std::string_view digest);
    /// Replaces all.
    void assign(const std::map<std::string, std::string>& digests);
    /// All digests by name. The first call after set() sorts in what was noted.
    const std::map<std::string, std::string>& all() const;

private:
    /// Where the two texts of a note end.
    struct Note {
        std::size_t nameEnd;
        std::size_t digestEnd;
    };

    mutable std::string texts_;
    mutable std::vector<Note> notes_;
    mutable std::map<std::string, std::string> digests_;
};
