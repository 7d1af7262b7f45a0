#pragma once

#include <string>

#include "platform/File.h"

namespace platform {

/// A file that takes the place of another one when it is whole.
///
/// Bytes go to a temporary file beside the target; commit() renames it over the target, and until
/// then the target stands untouched. A target that is a link stays a link: what it points to is
/// replaced. An existing target's permissions are kept; a new file gets 0666 less the umask. Without
/// commit() the destructor removes the temporary file.
class ReplacementFile {
public:
    /// Throws FileError when the temporary file can't be made, or when the target exists and is no
    /// regular file.
    explicit ReplacementFile(const std::string& target);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    /// The temporary file, open for reading and writing, empty at first.
    File& file() { return file_; }

    /// Closes the temporary file and puts it in the target's place. Throws FileError; the target is
    /// then as it was.
    void commit();

private:
    std::string target_;
    std::string temporary_;
    File file_;
};

}  // namespace platform
