#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace support {

/// One operation of the library on a few small files in a directory, for tests that make each of its
/// steps fail.
struct Operation {
    std::string name;
    /// Writes the files that the operation works on into an empty directory.
    std::function<void(const std::string& dir)> prepare;
    /// Does it in a directory that was prepared, with definitions that live no longer. What it gave, as
    /// text; nothing when its result reports a failure.
    std::function<std::optional<std::string>(const std::string& dir)> run;
    /// Whether a failure to write shows by result or message; some operations are to tell of what they
    /// read only.
    bool tellsOfWrites = true;
};

/// Packaging, exports, additions, extractions, building, merging, opening and reading parameters.
const std::vector<Operation>& operations();

/// What some of them do: opens DIR/design.hdf, adds the file DIR/more when it isn't there yet, and writes it.
std::optional<std::string> packageOpened(const std::string& dir);

/// For the names of tests and their messages.
std::ostream& operator<<(std::ostream& out, const Operation& operation);

}  // namespace support
