#include "MemberComparison.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <set>

#include "CommandError.h"
#include "ProgressLine.h"
#include "Text.h"
#include "platform/Progress.h"
#include "platform/iostreams/zip.h"

namespace {

// A member is opened with its archive's whole directory, which takes longer than reading a small member;
// those are extracted instead, many at a time.
constexpr std::uint64_t smallBytes = 256 * 1024;
constexpr std::uint64_t bytesAtATime = std::uint64_t{64} << 20;

using Pairs = std::vector<MemberPair*>;

/// Whether only reading can tell the two apart.
bool isAlike(const MemberPair& pair)
{
    return pair.left.member->sizeBytes == pair.right.member->sizeBytes &&
           pair.left.member->crc == pair.right.member->crc;
}

/// Whether a file that is extracted is that of no other member.
bool isPlain(const std::string& name)
{
    return !isDirectory(name) && std::filesystem::path(name).lexically_normal().string() == name;
}

bool isSmall(const MemberPair& pair)
{
    return pair.left.member->sizeBytes < smallBytes && isPlain(pair.left.member->name) &&
           isPlain(pair.right.member->name);
}

/// Whether two sources give the same bytes. `next(source)` gives the next ones of a source, as many as
/// there are up to a fixed number.
template <typename Source, typename Tell>
bool giveSameBytes(Source& left, Source& right, Tell tell)
{
    for (;;) {
        const std::string_view bytes = left.next();
        if (bytes != right.next()) {
            return false;
        }
        if (bytes.empty()) {
            return true;
        }
        tell(bytes.size());
    }
}

/// The content of a member in its archive.
class PackedContent {
public:
    explicit PackedContent(const MemberPlace& place) : source_(place.member->name, place.container->path) {}

    std::string_view next()
    {
        std::size_t size = 0;
        while (size < buffer_.size()) {
            const std::streamsize count =
                source_.read(buffer_.data() + size, static_cast<std::streamsize>(buffer_.size() - size));
            if (count < 0) {
                break;
            }
            size += static_cast<std::size_t>(count);
        }
        return {buffer_.data(), size};
    }

private:
    iostreams::device::file_source source_;
    std::array<char, 64 * 1024> buffer_;
};

/// The same of one that was extracted.
class FileContent {
public:
    explicit FileContent(const std::string& path) : file_(path, std::ios::binary)
    {
        if (!file_) {
            throw CommandError(printable(path) + ": the file can't be read");
        }
    }

    std::string_view next()
    {
        file_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
        return {buffer_.data(), static_cast<std::size_t>(file_.gcount())};
    }

private:
    std::ifstream file_;
    std::array<char, 64 * 1024> buffer_;
};

/// Follows as one piece of work what is compared, the bytes of one side, and what the library does of it.
class Comparison {
public:
    explicit Comparison(std::uint64_t totalBytes) : work_(totalBytes) {}

    void compare(MemberPair& pair)
    {
        PackedContent left(pair.left);
        PackedContent right(pair.right);
        pair.isSame = giveSameBytes(left, right,
                                    [&](std::size_t bytes) { work_.advance(pair.left.member->name, bytes); });
    }

    /// Small members of two containers.
    void compareMany(const Pairs& pairs)
    {
        const HHDFCTmpDirObject left("hwdef");
        const HHDFCTmpDirObject right("hwdef");
        const auto failures = extract(pairs, &MemberPair::left, left.getDir());
        const auto otherFailures = extract(pairs, &MemberPair::right, right.getDir());
        for (MemberPair* const pair : pairs) {
            const std::string& name = pair->left.member->name;
            const std::string& otherName = pair->right.member->name;
            if (failures.contains(name) || otherFailures.contains(otherName)) {
                // Not every name can be that of a file. If it can't be read, this tells why.
                compare(*pair);
                continue;
            }
            FileContent content(left.getDir() + "/" + name);
            FileContent other(right.getDir() + "/" + otherName);
            pair->isSame = giveSameBytes(content, other, [](std::size_t) {});
        }
    }

private:
    /// The names that can't be extracted.
    std::set<std::string> extract(const Pairs& pairs, MemberPlace MemberPair::*side, const std::string& dir)
    {
        std::vector<std::string> names;
        names.reserve(pairs.size());
        for (const MemberPair* const pair : pairs) {
            names.push_back((pair->*side).member->name);
        }
        std::uint64_t doneBytes = 0;
        const platform::ProgressWatch watch([&](const platform::Progress& progress) {
            const std::uint64_t half = progress.doneBytes / 2;  // the other one is that of the other side
            work_.advance(progress.member, half - doneBytes);
            doneBytes = half;
            return true;
        });
        std::set<std::string> failed;
        for (const auto& failure : (pairs.front()->*side).container->archive->extractAll(names, dir)) {
            failed.insert(failure.name);
        }
        return failed;
    }

    OwnWork work_;
};

/// The pairs of small members, those of the same two containers next to each other.
Pairs smallOf(std::vector<MemberPair>& pairs)
{
    Pairs small;
    for (MemberPair& pair : pairs) {
        if (isAlike(pair) && isSmall(pair)) {
            small.push_back(&pair);
        }
    }
    std::stable_sort(small.begin(), small.end(), [](const MemberPair* one, const MemberPair* other) {
        return std::pair(one->left.container, one->right.container) <
               std::pair(other->left.container, other->right.container);
    });
    return small;
}

/// The end of what can be compared at a time.
Pairs::const_iterator endOfMany(Pairs::const_iterator first, Pairs::const_iterator end)
{
    std::uint64_t bytes = 0;
    return std::find_if(first, end, [&](const MemberPair* pair) {
        bytes += pair->left.member->sizeBytes;
        return bytes > bytesAtATime || pair->left.container != (*first)->left.container ||
               pair->right.container != (*first)->right.container;
    });
}

}  // namespace

void compareBytes(std::vector<MemberPair>& pairs)
{
    std::uint64_t totalBytes = 0;
    for (const MemberPair& pair : pairs) {
        totalBytes += isAlike(pair) ? pair.left.member->sizeBytes : 0;
    }
    Comparison comparison(totalBytes);
    for (MemberPair& pair : pairs) {
        if (isAlike(pair) && !isSmall(pair)) {
            comparison.compare(pair);
        }
    }
    const Pairs small = smallOf(pairs);
    for (auto first = small.begin(); first != small.end();) {
        const auto end = endOfMany(first, small.end());
        comparison.compareMany({first, end});
        first = end;
    }
}
