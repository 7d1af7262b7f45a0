#pragma once

#include <cstdint>
#include <string>

#include "platform/Export.h"

class HUTFile;

/// Archives as a whole.
///
/// The archive digest is a SHA-256 (FIPS 180-4) over every byte of the archive but itself: the zip
/// comment ends in "hwdef-sha256:" and 64 lower-case hexadecimal digits, these digits are the last
/// bytes of the file, and the digest is taken over all bytes before them.
class HWDEF_API HUTZip {
public:
    HUTZip() = delete;

    /// How compress treats the archive path; the values may be added up.
    enum ZIP_OPTIONS : std::uint32_t {
        ZIP_REPLACE = 0x02,    ///< an archive already there is replaced
        ZIP_NAME_ONLY = 0x20,  ///< the member is named by the file's last component, else by the path
        ZIP_DEFAULT = 0x22,
    };

    /// What checkIntegrity found.
    enum Integrity : int {
        INTACT = 0,        ///< the recorded digest is that of the bytes
        NO_DIGEST = 1,     ///< an archive without a digest
        WRONG_DIGEST = 2,  ///< the bytes have another digest than the recorded one
        UNREADABLE = 3,    ///< no regular file, not an archive, or it can't be read
        CANCELLED = 4,     ///< who watches the progress didn't want to know
    };

    /// Makes a fresh archive at `archive` with the one member `file`, replacing any old one when the
    /// new one is whole. Throws iostreams::device::detail::zip_exception, also for an old archive that
    /// must not be replaced; it then stays.
    static void compress(const HUTFile& archive, const std::string& file, std::uint32_t options);

    /// Records the digest of the archive's present bytes in its comment, in place of an earlier
    /// digest; other text of the comment is kept in front of it. The archive is replaced by a whole
    /// new one. Throws zip_exception.
    static void attachDigest(const HUTFile& archive);

    /// Compares the archive with its recorded digest, reading each byte once. Throws nothing.
    static int checkIntegrity(const HUTFile& archive);

    /// True when the archive holds the member; false for what can't be read as an archive.
    static bool containsFile(const HUTFile& archive, const std::string& member);
};
