#include "MemberComparison.h"

#include "ProgressLine.h"

namespace {

using Content = HHDFHwDefArchive::Content;

/// Whether only reading can tell the two apart.
bool isAlike(const MemberPair& pair)
{
    return pair.left.member->sizeBytes == pair.right.member->sizeBytes &&
           pair.left.member->crc == pair.right.member->crc;
}

void open(Content& content, const MemberPlace& place)
{
    content.open(*place.container->archive, place.member->name);
}

bool haveSameBytes(const MemberPair& pair, Content& left, Content& right, OwnWork& work)
{
    open(left, pair.left);
    open(right, pair.right);
    for (;;) {
        const std::string_view bytes = left.next();
        if (bytes != right.next()) {
            return false;
        }
        if (bytes.empty()) {
            return true;
        }
        work.advance(pair.left.member->name, bytes.size());
    }
}

}  // namespace

void compareBytes(std::vector<MemberPair>& pairs)
{
    std::uint64_t totalBytes = 0;
    for (const MemberPair& pair : pairs) {
        totalBytes += isAlike(pair) ? pair.left.member->sizeBytes : 0;
    }
    OwnWork work(totalBytes, "comparing");
    Content left;
    Content right;
    for (MemberPair& pair : pairs) {
        pair.isSame = isAlike(pair) && haveSameBytes(pair, left, right, work);
    }
}
