#pragma once

#include <string>
#include <vector>

#include "hwdef/inspect/HHDFDifference.h"
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

    /// How much of a container is looked at.
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

    // --- Contents.

    /// What two containers mean differently, in order of section, item and field: properties, resources,
    /// attributes, BOM files by type, role, hierarchy, attributes and content, driver files, members that
    /// no BOM entry names, partitions, configurations. Of a software-parameter file whose content
    /// differs each parameter that does is told as well. Order, compression, times, comments, recorded
    /// digests, the BOM's text and name and the files' source databases (which name the container a file
    /// was first written to) are no differences.
    ///
    /// Contents are compared by their SHA-256, which `before` and `after` begin with. Of several entries
    /// with one name the later ones are told as "NAME #2" and so on, in the order of their other values.
    ///
    /// False, after the reason was sent, when one of the containers can't be opened or read, its BOM is of
    /// another version than "1", of which nothing is read, or the call is cancelled.
    static bool compare(const std::string& first, const std::string& second,
                        std::vector<HHDFDifference>& differences);

    /// What a container holds, as 64 hexadecimal digits: equal for two containers exactly when compare()
    /// finds no difference. Empty as compare() is false.
    ///
    /// It is the SHA-256 (FIPS 180-4) of the text "hwdef-content-1" and all facts in byte order: each is
    /// four texts (section, item, field, value), each text its length as 8 bytes, lowest first, and its
    /// bytes. docs/inspection.md lists the facts.
    static std::string contentDigest(const std::string& path);

    /// The SHA-256 of the file as it lies there; empty, after the reason was sent, when it can't be read.
    static std::string fileDigest(const std::string& path);

    // --- The same as JSON documents, for programs. docs/inspection.md describes them.

    /// Grows when a member of a document goes or changes its meaning, not when one is added.
    static constexpr unsigned JSON_VERSION = 1;

    /// The document of one result, with what it is the result of.
    /// @{
    static std::string toJson(const std::string& path, Level level, const std::vector<HHDFFinding>& findings);
    static std::string toJson(const std::string& first, const std::string& second,
                              const std::vector<HHDFDifference>& differences);
    static std::string digestsToJson(const std::string& path, const std::string& contentDigest,
                                     const std::string& fileDigest);
    /// @}
};
