#pragma once

#include <cstdint>

#include "platform/HEXAll.h"
#include "platform/iostreams/BufferedOutput.h"
#include "platform/iostreams/Entry.h"

namespace iostreams::zip {

/// What a new member is made of can't be read; `what()` says why in one sentence. Stays inside the
/// zip layer, whose interface reports it as a false result with a reason.
class SourceError : public HEXAll {
public:
    using HEXAll::HEXAll;
    ~SourceError() override;
};

/// What a member that is taken over has beside its data: the fixed time and mode of all members, or header,
/// data descriptor and record byte for byte as it has them where it comes from.
enum class Origin { FIXED, KEPT };

/// A member that is about to be written to an archive, its source being open.
class NewMember {
public:
    NewMember() = default;
    NewMember(const NewMember&) = delete;
    NewMember& operator=(const NewMember&) = delete;
    virtual ~NewMember();

    virtual std::string_view name() const = 0;
    /// The most bytes that write() puts out at any time, local header included.
    virtual std::uint64_t maxBytes() const = 0;
    /// Whether the source is that very file, of which an addition in place would change what is still
    /// to be read. Members of an archive stay as they are, and don't count.
    virtual bool isReadFrom(const platform::File&) const { return false; }
    /// Writes local header and data; the entry's offset is that of the header in the output's file,
    /// its name lives as long as this object stays unchanged, its record is empty, or the one that it keeps
    /// but for the offset. Throws SourceError, and FileError of the output; what was put out must then be
    /// taken back.
    virtual Entry write(BufferedOutput& out) = 0;
};

/// Throws SourceError for a name that no archive can hold: an empty one, or one of more than 65,535
/// bytes (APPNOTE 4.4.10).
void checkMemberName(std::string_view name);

}  // namespace iostreams::zip
