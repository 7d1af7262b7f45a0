#pragma once

#include <ios>
#include <memory>
#include <ostream>
#include <string>

#include "platform/Export.h"

/// A standard output stream onto a file; an existing file is replaced from its start.
///
/// Like a standard file stream it reports failure by its state: failbit when the file can't be
/// opened, badbit when a write fails. The destructor closes.
class HWDEF_API HUTFileWriteStream : public std::ostream {
public:
    explicit HUTFileWriteStream(const std::string& path, std::ios_base::openmode mode = std::ios_base::out);
    ~HUTFileWriteStream() override;

    /// True while the file is open.
    bool is_open() const;
    /// Writes what is buffered and closes; sets failbit when that fails or nothing is open.
    void close();

private:
    class Buffer;
    std::unique_ptr<Buffer> buffer_;
};
