#pragma once

#include <string>
#include <vector>

#include "hwdef/inspect/HHDFFinding.h"
#include "platform/Export.h"

/// Looks into containers for people and programs. A class used as a namespace.
///
/// Nothing is unpacked to disk, and hostile containers are harmless: the limits of opening
/// (platform/Limits.h) bound what is taken into memory and how much is unpacked. What reads members
/// reports its progress and can be cancelled (platform/Progress.h).
class HWDEF_API HHDFInspect {
public:
    HHDFInspect() = delete;

    // --- Findings.

    enum class Level {
        QUICK,  ///< the archive's structure and the BOM: no member but the BOM is read
        FULL,   ///< and every byte: CRC-32 of members, recorded digests, the archive's digest
    };

    /// Of one kind of finding so many are told one by one; the last text then counts the rest.
    static constexpr std::size_t MOST_OF_A_KIND = 1000;

    /// Everything that is wrong with a container, found in one run: the archive first, then the BOM from
    /// its first line to its last, then the members. Severities are fixed but for "bom.digest", an error
    /// where opening with an integrity check looks at it (minor version 2), else a warning.
    ///
    /// Errors: "archive.not-archive", "archive.truncated", "archive.damaged" (its directory),
    /// "archive.duplicate-member", "archive.unsupported" (encrypted, or packed by another method),
    /// "archive.crc", "archive.member" (other damage of a member), "archive.too-large" (to be unpacked),
    /// "archive.digest"; "bom.missing", "bom.unreadable", "bom.too-large", "bom.xml", "bom.version",
    /// "bom.number", "bom.member-missing", "bom.digest"; "partition.unknown", "partition.unknown-module".
    /// Warnings: "archive.trailing-bytes", "archive.unsafe-name"; "bom.two" (documents),
    /// "bom.unknown-type", "bom.unknown-role", "bom.no-name", "bom.listed-twice", "bom.member-unlisted";
    /// "driver.no-path", "driver.no-description" (the rule check of writing); "partition.twice",
    /// "partition.unlisted-file", "partition.several-active".
    /// Notices: "archive.leading-bytes", "archive.no-digest" (an error where opening with an integrity
    /// check asks for one: minor version 3).
    ///
    /// False, after the reason was sent by ComMsgMgr::sendMessage, when the file can't be read at all or
    /// the call is cancelled. `findings` is replaced. Cost: linear in the directory, the BOM and, for FULL,
    /// the members.
    static bool verify(const std::string& path, Level level, std::vector<HHDFFinding>& findings);
};
