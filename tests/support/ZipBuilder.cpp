#include "support/ZipBuilder.h"

#include <gtest/gtest.h>
#include <isa-l/igzip_lib.h>

#include "platform/iostreams/zip.h"
#include "support/TempDir.h"

namespace support {

namespace {

std::string commonFields(const ZipHeader& header)
{
    return little(20, 2) + little(header.flags, 2) + little(header.method, 2) + little(0x00210000, 4) +
           little(header.crc, 4) + little(header.compressedSize, 4) + little(header.size, 4) +
           little(header.name.size(), 2) + little(header.extra.size(), 2);
}

std::string localHeader(const ZipHeader& header)
{
    return little(0x04034b50, 4) + commonFields(header) + header.name + header.extra;
}

std::string directoryRecord(const ZipMember& member, std::uint64_t offset)
{
    const ZipHeader& header = member.listed;
    return little(0x02014b50, 4) + little(20, 2) + commonFields(header) + little(member.comment.size(), 2) +
           little(member.disk, 2) + little(0, 2) + little(0, 4) + little(member.offset.value_or(offset), 4) +
           header.name + header.extra + member.comment;
}

/// The zip64 end record and its locator.
std::string zip64EndRecords(const ZipBuilder& zip, std::uint64_t size, std::uint64_t offset)
{
    const ZipEnd& end = zip.zip64End;
    return little(0x06064b50, 4) + little(44 + zip.zip64Extensible.size(), 8) + little(45, 2) +
           little(45, 2) + little(end.disk.value_or(0), 4) + little(end.directoryDisk.value_or(0), 4) +
           little(end.entriesOnDisk.value_or(zip.members.size()), 8) +
           little(end.entries.value_or(zip.members.size()), 8) + little(end.directorySize.value_or(size), 8) +
           little(end.directoryOffset.value_or(offset), 8) + zip.zip64Extensible +  //
           little(0x07064b50, 4) + little(0, 4) + little(zip.zip64Locator.value_or(offset + size), 8) +
           little(zip.zip64Disks, 4);
}

std::string endRecord(const ZipBuilder& zip, std::uint64_t size, std::uint64_t offset)
{
    // All ones say that the zip64 record has the number.
    const auto number = [&](const std::optional<std::uint64_t>& set, std::uint64_t right, int bytes) {
        return little(set.value_or(zip.zip64 ? ~0ULL : right), bytes);
    };
    return little(0x06054b50, 4) + little(zip.end.disk.value_or(0), 2) +
           little(zip.end.directoryDisk.value_or(0), 2) +
           number(zip.end.entriesOnDisk, zip.members.size(), 2) +
           number(zip.end.entries, zip.members.size(), 2) + number(zip.end.directorySize, size, 4) +
           number(zip.end.directoryOffset, offset, 4) + little(zip.comment.size(), 2) + zip.comment;
}

}  // namespace

std::uint32_t crc32(const std::string& bytes)
{
    std::uint32_t crc = 0xffffffff;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xedb88320 : 0);
        }
    }
    return ~crc;
}

std::string deflated(const std::string& bytes)
{
    std::string input = bytes;
    std::string output(bytes.size() + bytes.size() / 1000 + 1024, '\0');
    isal_zstream stream = {};  // not all of which the next call sets
    isal_deflate_stateless_init(&stream);
    stream.end_of_stream = 1;
    stream.next_in = reinterpret_cast<std::uint8_t*>(input.data());
    stream.avail_in = static_cast<std::uint32_t>(input.size());
    stream.next_out = reinterpret_cast<std::uint8_t*>(output.data());
    stream.avail_out = static_cast<std::uint32_t>(output.size());
    EXPECT_EQ(isal_deflate_stateless(&stream), COMP_OK);
    output.resize(stream.total_out);
    return output;
}

std::string little(std::uint64_t number, int bytes)
{
    std::string text;
    for (int at = 0; at < bytes; ++at) {
        text += static_cast<char>(number >> (8 * at) & 0xff);
    }
    return text;
}

std::string zip64Extra(std::initializer_list<std::uint64_t> numbers)
{
    std::string extra = little(1, 2) + little(8 * numbers.size(), 2);
    for (const std::uint64_t number : numbers) {
        extra += little(number, 8);
    }
    return extra;
}

void ZipMember::setFlag(std::uint16_t flag)
{
    local.flags |= flag;
    listed.flags |= flag;
}

void ZipMember::setDescriptor(bool signature, int sizeBytes)
{
    setFlag(1U << 3U);
    local.crc = 0;
    local.compressedSize = 0;
    local.size = 0;
    descriptor = (signature ? little(0x08074b50, 4) : "") + little(listed.crc, 4) +
                 little(listed.compressedSize, sizeBytes) + little(listed.size, sizeBytes);
}

ZipMember& ZipBuilder::addStored(const std::string& name, const std::string& content)
{
    ZipMember member;
    member.data = content;
    member.local.name = name;
    member.local.crc = crc32(content);
    member.local.compressedSize = static_cast<std::uint32_t>(content.size());
    member.local.size = static_cast<std::uint32_t>(content.size());
    member.listed = member.local;
    return members.emplace_back(member);
}

ZipMember& ZipBuilder::addDeflated(const std::string& name, const std::string& content)
{
    ZipMember& member = addStored(name, content);
    member.data = deflated(content);
    for (ZipHeader* header : {&member.local, &member.listed}) {
        header->method = 8;
        header->compressedSize = static_cast<std::uint32_t>(member.data.size());
    }
    return member;
}

void putEmptyBlocks(ZipMember& member, std::size_t packedBytes)
{
    // Four blocks of the fixed code, each of three bits and the seven of its end.
    const std::string blocks("\x02\x08\x20\x80\x00", 5);
    std::string packed;
    while (packed.size() < packedBytes) {
        packed += blocks;
    }
    member.data.insert(0, packed);
    member.local.compressedSize = static_cast<std::uint32_t>(member.data.size());
    member.listed.compressedSize = member.local.compressedSize;
}

std::string ZipBuilder::build() const
{
    std::string archive;
    std::string directory;
    for (const ZipMember& member : members) {
        directory += directoryRecord(member, archive.size());
        archive += localHeader(member.local) + member.data + member.descriptor;
    }
    directory += directoryTail;
    const std::uint64_t offset = archive.size();
    archive += directory;
    if (zip64) {
        archive += zip64EndRecords(*this, directory.size(), offset);
    }
    return prefix + archive + endRecord(*this, directory.size(), offset);
}

void ZipBuilder::write(const std::string& path) const
{
    writeFile(path, build());
}

std::string zipFailure(const std::string& archive, const std::function<void()>& work)
{
    try {
        work();
    } catch (const iostreams::device::detail::zip_exception& error) {
        const std::string text = error.what();
        const std::string lead = archive + ": ";
        EXPECT_EQ(text.substr(0, lead.size()), lead);
        return text.size() < lead.size() ? text : text.substr(lead.size());
    }
    ADD_FAILURE() << "no zip_exception about " << archive;
    return "";
}

}  // namespace support
