#pragma once

#include <string>

#include "platform/Buffer.h"
#include "platform/iostreams/Deflater.h"
#include "platform/iostreams/NewMember.h"

namespace iostreams::zip {

/// Turns files into members, one after the other, through buffers that all of them share.
///
/// Content that deflate makes smaller is deflated, other content stored; the same content always
/// gives the same bytes. A file counts as long as it was when it was opened; when it shrinks while it
/// is read, what was read counts.
class MemberWriter final : public NewMember {
public:
    /// Content up to this size is read, and compressed, as a whole when it is opened.
    static constexpr std::size_t CHUNK_BYTES = 256 * 1024;

    MemberWriter();

    /// Each of these begins a new member in place of the one before, and throws SourceError when it
    /// can't; there is then no member to write.
    /// A file on disk, which must be a regular one.
    void openFile(const std::string& source, std::string name);
    /// A file that is open for reading.
    void openFile(platform::File source, std::string name);
    /// Up to CHUNK_BYTES in memory; they are copied.
    void openBytes(std::string_view content, std::string name);

    std::string_view name() const override { return name_; }
    std::uint64_t maxBytes() const override;
    bool isReadFrom(const platform::File& file) const override;
    Entry write(BufferedOutput& out) override;

private:
    void begin(std::string name);
    std::string_view readChunk(std::uint64_t offset);
    void packWhole(std::string_view content);
    std::uint64_t estimateSaving(std::string_view chunk);

    void startPass(BufferedOutput& out);
    void endPass(BufferedOutput& out, const Entry& entry);
    bool store(BufferedOutput& out, bool watch);
    bool deflate(BufferedOutput& out);
    void tellProgress(std::uint64_t handledBytes);

    std::string name_;
    platform::File source_;        ///< open when the content is larger than a chunk
    Entry entry_;                  ///< of the member as far as it is known
    std::uint64_t toldBytes_ = 0;  ///< of the content, to whoever watches
    platform::Buffer chunk_;
    std::string packed_;     ///< a small member's data when deflated
    std::string_view data_;  ///< a small member's data, in `chunk_` or `packed_`
    std::string header_;
    std::string sample_;
    Deflater deflater_;
};

}  // namespace iostreams::zip
