#pragma once

#include <cstdint>
#include <string>

/// Something about a container that should be otherwise.
struct HHDFFinding {
    /// How bad it is, in rising order.
    enum Severity {
        NOTICE = 0,   ///< worth knowing; nothing is wrong
        WARNING = 1,  ///< the container can be used, but is hardly what its maker meant
        ERROR = 2,    ///< some of the container can't be used, or isn't what it was
    };

    std::string id;              ///< the kind of finding, for programs: see HHDFInspect::verify
    Severity severity = NOTICE;  ///< how bad it is
    std::string member;          ///< the member it is about; empty when it is about the archive as a whole
    std::uint64_t offset = 0;    ///< a byte of the archive; 0 when unknown
    std::uint64_t line = 0;      ///< a line of the BOM document `member`, from 1; 0 when unknown
    std::string text;            ///< what was found, and what was expected
    std::string advice;          ///< what to do about it

    /// "notice", "warning" or "error".
    const char* severityName() const
    {
        return severity == ERROR ? "error" : severity == WARNING ? "warning" : "notice";
    }
};
