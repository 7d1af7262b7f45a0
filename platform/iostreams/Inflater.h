#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace iostreams::zip {

/// Unpacks one raw deflate stream (RFC 1951) piece by piece. About 90 KiB of memory.
class Inflater {
public:
    Inflater();
    ~Inflater();
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// Begins a new stream, in place of the one before, whatever became of that.
    void restart();
    /// The packed bytes to go on with; only when needsInput(). They must stay until they are used.
    void feed(std::string_view input);
    bool needsInput() const;

    /// Unpacks into the buffer what the input gives; returns how many bytes. 0 means that the stream
    /// is finished or damaged, or needs input.
    std::size_t unpack(char* buffer, std::size_t size);
    /// True once the stream's last byte has been delivered.
    bool isFinished() const;
    /// Bytes of the input behind the end of the stream, once it is finished.
    std::size_t unusedBytes() const;
    /// What is wrong with the stream; null when nothing is.
    const char* damage() const { return damage_; }

private:
    struct State;
    std::unique_ptr<State> state_;
    const char* damage_ = nullptr;
};

}  // namespace iostreams::zip
