#pragma once

#include <string>

/// Tells which names stay below a directory when a file is written under them.
class SafePath {
public:
    /// `dir` may be a link; it need not exist.
    explicit SafePath(const std::string& dir);

    /// Why a file must not be written under `name`: it is empty or absolute, has more than 65,535 bytes,
    /// climbs by "..", holds a null character, ends in a separator, or passes through (or is) a link that
    /// leaves the directory or leads nowhere; or what stands there can't be looked at. Empty when the
    /// name is safe.
    /// One status call per component.
    std::string objection(const std::string& name) const;

private:
    std::string dir_;        ///< links resolved; empty when nothing is there
    std::string objection_;  ///< to every name, when the directory can't be looked at
};
