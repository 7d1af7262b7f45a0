#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"

/// A container's archive as it lies on disk: its members, whatever its BOM says of them.
///
/// Opening reads the directory and no content. For one thread at a time. Extracting and writing report
/// their progress (platform/Progress.h); a cancelled call throws as a failing one does.
class HWDEF_API HHDFHwDefArchive {
public:
    /// What the archive's directory says of a member.
    struct Member {
        std::string name;               ///< bytes as stored
        std::uint64_t sizeBytes = 0;    ///< of the content
        std::uint64_t packedBytes = 0;  ///< as it is compressed in the archive
        std::uint32_t crc = 0;          ///< CRC-32 of the content
        std::int64_t modified = 0;      ///< seconds since 1970, the archive's local time taken for UTC
    };

    /// One member of an archive that is to be written.
    struct Part {
        std::string name;  ///< bytes as they will be stored
        std::string file;  ///< where its content lies on disk; empty for the present archive's member
    };

    /// A member that could not be extracted.
    struct Failure {
        std::string name;    ///< bytes as stored
        std::string reason;  ///< the text that extract() throws
    };

    /// Streams the content of members, of one after the other and of any archives, through one buffer of
    /// 64 KiB. For one thread at a time; reports no progress.
    class HWDEF_API Content {
    public:
        /// Without a member: only open() may follow.
        Content();
        ~Content();
        Content(const Content&) = delete;
        Content& operator=(const Content&) = delete;

        /// Begins a member, in place of the one before. The archive must stay until the next one is begun.
        /// Throws HEXAll when there is no such member or it can't be read; only open() may follow then.
        void open(const HHDFHwDefArchive& archive, const std::string& name);
        /// The next 64 KiB, fewer at the member's end and empty behind it; they stand until the next call.
        /// Size and CRC-32 are checked before the last ones are given: throws HEXAll when they differ, or
        /// the content can't be read.
        std::string_view next();

    private:
        class HWDEF_LOCAL Impl;
        std::unique_ptr<Impl> impl_;
    };

    /// Throws iostreams::device::detail::zip_exception when the path isn't a regular file or can't be
    /// read as an archive.
    explicit HHDFHwDefArchive(const std::string& path);
    ~HHDFHwDefArchive();
    HHDFHwDefArchive(const HHDFHwDefArchive&) = delete;
    HHDFHwDefArchive& operator=(const HHDFHwDefArchive&) = delete;

    /// The members in the archive's order; of a name that is listed twice only the one that counts.
    const std::vector<Member>& members() const;
    /// The member of that exact name; null when there is none. Cost: log n.
    const Member* find(const std::string& name) const;
    /// The archive's comment without the digest that it may end in.
    std::string comment() const;
    /// Whether an archive digest is recorded; HUTZip::checkIntegrity tells whether it holds.
    bool hasDigest() const;

    /// How many bytes stand in front of the first member, such as a program that unpacks the archive, and how
    /// many behind its end.
    /// @{
    std::uint64_t bytesInFront() const;
    std::uint64_t bytesBehind() const;
    /// @}

    /// Writes a member to the file of its name below `dir`, the working directory when that is empty;
    /// directories are made. It appears whole or not at all, and takes the place of a link. Throws HEXAll
    /// when there is no such member, its name leads out of `dir`, or it can't be read or written.
    void extract(const std::string& name, const std::string& dir) const;

    /// The same for many members as one call, whose progress is that of all of them. Those that can't be
    /// extracted are told in the order of the names, and the others are extracted all the same. Throws
    /// HEXAll only when it is cancelled; what was extracted before stays.
    std::vector<Failure> extractAll(const std::vector<std::string>& names, const std::string& dir) const;

    /// Writes the archive at `path`, or replaces it, as one of exactly these parts in this order, with the
    /// comment; of two parts of one name the later one stays. Parts without a file are taken from `present`,
    /// with headers, data and records byte for byte as they have them there, and so are the bytes in front of
    /// its members, not those between or behind them; it may be the archive that is replaced, and may be null
    /// when all parts have files. With `attachDigest` the archive digest is recorded. Throws HEXAll, what
    /// stood at the path is then as it was.
    static void write(const std::string& path, const std::vector<Part>& parts,
                      const HHDFHwDefArchive* present, const std::string& comment, bool attachDigest);

private:
    class HWDEF_LOCAL Impl;
    std::unique_ptr<Impl> impl_;
};
