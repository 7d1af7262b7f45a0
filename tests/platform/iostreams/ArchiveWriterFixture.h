#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/iostreams/ArchiveWriter.h"
#include "support/TempDir.h"

class ArchiveWriter : public testing::Test {
protected:
    static constexpr std::size_t CHUNK = 256 * 1024;  ///< as many bytes are read at once

    /// Adds content by way of a file on disk.
    bool add(iostreams::zip::ArchiveWriter& writer, const std::string& name, const std::string& content)
    {
        support::writeFile(dir_ / "source", content);
        return writer.addFile(dir_ / "source", name, reason_);
    }

    bool copy(iostreams::zip::ArchiveWriter& writer, const iostreams::zip::ArchiveReader& from,
              const std::string& name)
    {
        return writer.addMember(from, *from.find(name), name, reason_);
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "new.hdf";
    std::string reason_;
};
