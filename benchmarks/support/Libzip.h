#pragma once

#include <zip.h>

#include <memory>
#include <string>

#include "support/Registry.h"

namespace bench {

struct LibzipClose {
    void operator()(zip_t* archive) const { zip_discard(archive); }
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};

using LibzipArchive = std::unique_ptr<zip_t, LibzipClose>;
using LibzipFile = std::unique_ptr<zip_file_t, LibzipClose>;

inline LibzipArchive openLibzip(const std::string& path)
{
    int error = 0;
    LibzipArchive archive(zip_open(path.c_str(), ZIP_RDONLY, &error));
    require(archive != nullptr, "libzip can't open " + path);
    return archive;
}

/// One member's content as libzip reads it.
inline std::string readLibzip(zip_t* archive, const std::string& member)
{
    zip_stat_t status;
    require(zip_stat(archive, member.c_str(), 0, &status) == 0, "libzip has no member " + member);
    const LibzipFile file(zip_fopen_index(archive, status.index, 0));
    require(file != nullptr, "libzip can't open member " + member);
    std::string content(status.size, '\0');
    require(zip_fread(file.get(), content.data(), status.size) == static_cast<zip_int64_t>(status.size),
            "libzip can't read member " + member);
    return content;
}

}  // namespace bench
