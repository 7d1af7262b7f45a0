#pragma once

#include <ios>
#include <memory>
#include <ostream>
#include <string>

#include "platform/Export.h"

/// A standard output stream onto a file; an existing file is replaced from its start, or continued
/// with the mode `app`. Positions can't be sought.
///
/// Like a standard file stream it reports failure by its state: failbit when the file can't be
/// opened, badbit when a write fails (what was buffered is then lost). The destructor closes, and
/// has no way to report; who needs to know calls close().
class HWDEF_API HUTFileWriteStream : public std::ostream {
public:
    /// Opens the file; is_open tells whether that was possible.
    explicit HUTFileWriteStream(const std::string& path, std::ios_base::openmode mode = std::ios_base::out);
    ~HUTFileWriteStream() override;

    /// True while the file is open.
    bool is_open() const;
    /// Writes what is buffered and closes; sets failbit when that fails or nothing is open. The file is
    /// closed in any case.
    void close();

private:
    class HWDEF_LOCAL Buffer;
    std::unique_ptr<Buffer> buffer_;
};
