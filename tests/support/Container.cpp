#include "support/Container.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <zip.h>

#include "support/TempDir.h"

namespace support {

void writeArchive(const std::string& path, const Members& members)
{
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    ASSERT_NE(archive, nullptr) << path << ": libzip error " << error;
    for (const auto& [name, content] : members) {
        zip_source_t* source = zip_source_buffer(archive, content.data(), content.size(), 0);
        const zip_int64_t index = zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_UTF_8);
        ASSERT_GE(index, 0) << path << ": " << zip_strerror(archive);
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0);
    }
    ASSERT_EQ(zip_close(archive), 0) << path << ": " << zip_strerror(archive);
}

void writeZeros(const std::string& path, const std::string& name, std::size_t size)
{
    const TempDir dir;
    writeFile(dir / "zeros", "");
    ASSERT_EQ(::truncate((dir / "zeros").c_str(), static_cast<off_t>(size)), 0);
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    ASSERT_NE(archive, nullptr) << path << ": libzip error " << error;
    zip_source_t* source = zip_source_file(archive, (dir / "zeros").c_str(), 0, -1);
    ASSERT_EQ(zip_file_add(archive, name.c_str(), source, 0), 0) << path << ": " << zip_strerror(archive);
    zip_set_file_compression(archive, 0, ZIP_CM_DEFLATE, 1);
    ASSERT_EQ(zip_close(archive), 0) << path << ": " << zip_strerror(archive);
}

Members readArchive(const std::string& path)
{
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &error);
    EXPECT_NE(archive, nullptr) << path << ": libzip error " << error;
    Members members;
    if (archive == nullptr) {
        return members;
    }
    const auto count = static_cast<zip_uint64_t>(zip_get_num_entries(archive, 0));
    for (zip_uint64_t i = 0; i < count; ++i) {
        zip_stat_t status;
        zip_stat_index(archive, i, 0, &status);
        std::string content(status.size, '\0');
        zip_file_t* file = zip_fopen_index(archive, i, 0);
        EXPECT_NE(file, nullptr) << path << ": " << zip_strerror(archive);
        // The read that finds the end is the one that checks the CRC.
        char beyond = 0;
        EXPECT_EQ(zip_fread(file, content.data(), content.size()), static_cast<zip_int64_t>(content.size()))
            << path << ": " << zip_file_strerror(file);
        EXPECT_EQ(zip_fread(file, &beyond, 1), 0) << path << ": " << zip_file_strerror(file);
        zip_fclose(file);
        members.emplace_back(status.name, content);
    }
    zip_discard(archive);
    return members;
}

std::string namesIn(const std::string& path)
{
    std::string names;
    for (const auto& [name, content] : readArchive(path)) {
        names += (names.empty() ? "" : " ") + name;
    }
    return names;
}

std::string memberOf(const std::string& path, const std::string& wanted)
{
    for (const auto& [name, content] : readArchive(path)) {
        if (name == wanted) {
            return content;
        }
    }
    ADD_FAILURE() << path << " has no member " << wanted;
    return {};
}

void patchFile(const std::string& path, const std::string& found, const std::string& replacement)
{
    ASSERT_EQ(found.size(), replacement.size());
    std::string bytes = readFile(path);
    const std::size_t position = bytes.find(found);
    ASSERT_NE(position, std::string::npos) << path << " does not hold " << found;
    writeFile(path, bytes.replace(position, found.size(), replacement));
}

std::string bomDocument(const std::string& rootAttributes, const std::string& elements)
{
    return "<?xml version=\"1.0\"?>\n<Project " + rootAttributes + ">\n" + elements + "</Project>\n";
}

std::string bomOfFiles(const std::string& minor, const std::vector<std::string>& names)
{
    std::string elements;
    for (const std::string& name : names) {
        elements += "<File Type=\"BIT\" Name=\"" + name + "\"/>\n";
    }
    return bomDocument("Version=\"1\" Minor=\"" + minor + "\"", elements);
}

}  // namespace support
