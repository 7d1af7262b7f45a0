#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace iostreams::zip {

/// Compresses one stream after the other to raw deflate (RFC 1951) at ISA-L's level 1, through
/// buffers that all of them share.
///
/// Input goes in by feed(), output comes out by drain() until that gives nothing more; then comes the
/// next input. The bytes of a stream depend on its input and on where that was cut into pieces.
class Deflater {
public:
    Deflater();
    ~Deflater();
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    /// Forgets the stream so far; the next input begins a new one.
    void restart();
    /// Takes the next piece of input, which must stay in place until drain() gives nothing more.
    /// Below 4 GiB; `last` ends the stream.
    void feed(std::string_view input, bool last);
    /// The next piece of output, valid until the next call; empty when more input is needed or the
    /// stream has ended.
    std::string_view drain();

    /// How many bytes `input` would take as a stream of its own; `atMost` at most, for the rest is
    /// not compressed once that many are there. The next stream must begin with restart().
    std::size_t trialSize(std::string_view input, std::size_t atMost);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace iostreams::zip
