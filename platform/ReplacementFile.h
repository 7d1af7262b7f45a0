#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "platform/File.h"

namespace platform {

/// A file that takes the place of another one when it is whole.
///
/// Bytes go to a temporary file beside the target; commit() renames it over the target, and until
/// then the target stands untouched. Without commit() the destructor removes the temporary file.
/// Nothing is flushed to the disk: the promise is about failures and ends of the process, not about
/// a loss of power.
class ReplacementFile {
public:
    /// What becomes of a target that is a link.
    enum class Links {
        FOLLOWED,  ///< it stays a link; what it points to is replaced
        REPLACED,  ///< it is replaced itself; what it points to stays untouched
    };

    /// The new file gets the permissions `mode`, exactly; without `mode` those of the target when it
    /// is a file, else 0666 less the umask. At no time are they wider.
    ///
    /// Throws FileError when the temporary file can't be made, or when the target exists and is no
    /// regular file.
    explicit ReplacementFile(const std::string& target, Links links = Links::FOLLOWED,
                             std::optional<mode_t> mode = {});
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    /// The temporary file, open for reading and writing, empty at first.
    File& file() { return file_; }

    /// Closes the temporary file and puts it in the target's place. Throws FileError; the target is
    /// then as it was.
    void commit();

private:
    void openTemporary(std::optional<mode_t> mode);

    std::string target_;
    std::string temporary_;
    File file_;
};

}  // namespace platform
