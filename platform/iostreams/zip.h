#pragma once

#include <boost/iostreams/categories.hpp>

#include <ios>
#include <istream>
#include <memory>
#include <string>

#include "platform/Export.h"
#include "platform/HEXAll.h"

/// Members of zip archives as streams. A member is named by its path inside the archive; the member
/// always comes before the archive.
namespace iostreams {

namespace device {

namespace detail {

/// An archive that can't be read or written: `what()` names the archive, the member where there is
/// one, what was found and what was expected.
class HWDEF_API zip_exception : public HEXAll {
public:
    using HEXAll::HEXAll;
    ~zip_exception() override;
};

}  // namespace detail

/// A Boost.Iostreams source over one member. Copies share the open member.
class HWDEF_API file_source {
public:
    /// What Boost.Iostreams asks of a device.
    /// @{
    using char_type = char;
    struct category : boost::iostreams::source_tag, boost::iostreams::closable_tag {};
    /// @}

    /// Opens the member. An archive that doesn't exist, or that has no such member, leaves the
    /// source not open; an archive or member that can't be read throws zip_exception. The mode is
    /// accepted for callers' sake: members are always read byte for byte.
    file_source(const std::string& member, const std::string& archive,
                std::ios_base::openmode mode = std::ios_base::in);

    /// True when the member was found and opened.
    bool is_open() const;
    /// Reads up to `count` bytes; -1 at the end. Size and CRC-32 are checked when the end is
    /// reached: throws zip_exception when they are not what the directory says.
    std::streamsize read(char* buffer, std::streamsize count);
    /// Lets the member go, of all copies.
    void close();

private:
    class HWDEF_LOCAL Impl;
    std::shared_ptr<Impl> impl_;
};

/// A Boost.Iostreams sink that becomes one member of an archive when it is closed.
///
/// The archive is created when it doesn't exist; a member of the same name is replaced. The archive
/// changes at close() and not before; a sink whose last copy goes away unclosed changes nothing. Until
/// then the content is kept in memory, or, beyond 256 KiB, in a file without a name beside the archive.
class HWDEF_API file_sink {
public:
    /// What Boost.Iostreams asks of a device.
    /// @{
    using char_type = char;
    struct category : boost::iostreams::sink_tag, boost::iostreams::closable_tag {};
    /// @}

    /// Throws zip_exception when the archive exists but can't be read as one.
    file_sink(const std::string& member, const std::string& archive,
              std::ios_base::openmode mode = std::ios_base::out);

    /// True when the member is ready for writing: its name can be an archive's (1 to 65,535 bytes), it
    /// isn't closed and no write has failed.
    bool is_open() const;
    /// Takes all `count` bytes; throws zip_exception when they can't be kept.
    std::streamsize write(const char* buffer, std::streamsize count);
    /// Commits the member. Throws zip_exception; the archive is then as it was before. While an
    /// exception takes its stream away, and when a write has failed, it drops the member instead:
    /// what was written is not all.
    void close();

private:
    class HWDEF_LOCAL Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace device

/// A standard input stream over one member.
class HWDEF_API zip_istream : public std::istream {
public:
    /// Opens the member as file_source does, but reports every failure by is_open() and the
    /// stream's state. The encryption hint is accepted and not used: encrypted members can't be
    /// opened.
    zip_istream(const std::string& member, const std::string& archive, int hint);
    ~zip_istream() override;

    /// True when the member was found and opened, until close().
    bool is_open() const;
    /// Lets the member go.
    void close();

private:
    class HWDEF_LOCAL Buffer;
    std::unique_ptr<Buffer> buffer_;
};

namespace zip {

/// True when the archive holds the member; false, without an exception, for what can't be read as
/// an archive.
HWDEF_API bool is_file(const std::string& member, const std::string& archive);

}  // namespace zip

}  // namespace iostreams
