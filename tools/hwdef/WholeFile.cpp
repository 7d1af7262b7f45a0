#include "WholeFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "CommandError.h"
#include "Text.h"

namespace fs = std::filesystem;

namespace {

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

/// `mode` is that of fopen(3). What was the matter; nothing when all was written.
std::error_code write(const std::string& path, const char* mode, std::string_view bytes)
{
    std::FILE* const file = std::fopen(path.c_str(), mode);
    if (file == nullptr) {
        return lastError();
    }
    std::error_code error;
    if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
        error = lastError();
    }
    if (std::fclose(file) != 0 && !error) {
        error = lastError();
    }
    return error;
}

std::error_code replace(const fs::path& target, const fs::file_status& status, std::string_view bytes)
{
    const std::string temporary = target.string() + "." + std::to_string(::getpid()) + ".tmp";
    std::error_code error = write(temporary, "wxb", bytes);
    if (error == std::errc::file_exists) {
        return error;  // it is somebody else's
    }
    if (!error && fs::exists(status)) {
        fs::permissions(temporary, status.permissions(), error);
    }
    if (!error) {
        fs::rename(temporary, target, error);
    }
    if (error) {
        std::error_code ignored;
        fs::remove(temporary, ignored);
    }
    return error;
}

}  // namespace

void writeWhole(const std::string& path, std::string_view bytes)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    const bool isFile = !fs::exists(status) || fs::is_regular_file(status) || fs::is_directory(status);
    const fs::path target = isFile && fs::exists(status) ? fs::canonical(path, error) : fs::path(path);
    error = isFile ? replace(target, status, bytes) : write(path, "wb", bytes);
    if (error) {
        throw CommandError(printable(path) + ": can't be written: " + error.message());
    }
}
