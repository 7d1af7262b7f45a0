#include <fcntl.h>

#include <cstdint>
#include <string_view>

#include "hwdef/inspect/ContentFacts.h"
#include "hwdef/inspect/HHDFInspect.h"
#include "platform/ArchiveDigest.h"
#include "platform/ComMsgMgr.h"
#include "platform/ProgressWork.h"

namespace {

/// Adds a text so that no two lists of texts give the same bytes: with its length in front.
void add(platform::ArchiveDigest& digest, std::string_view text)
{
    std::string length;
    for (unsigned shift = 0; shift < 64; shift += 8) {
        length += static_cast<char>((static_cast<std::uint64_t>(text.size()) >> shift) & 0xff);
    }
    digest.add(length);
    digest.add(text);
}

/// What `compute` gives; empty, after the reason was sent, when it throws.
template <typename Compute>
std::string orNothing(Compute compute)
{
    try {
        return compute();
    } catch (const HEXAll& error) {
        ComMsgMgr::sendMessage(error.what(), false);
        return {};
    }
}

}  // namespace

std::string HHDFInspect::contentDigest(const std::string& path)
{
    return orNothing([&path] {
        ContentFacts facts(path);
        const platform::ProgressWork work(path);
        facts.expectWork();
        facts.gather();
        platform::ArchiveDigest digest;
        digest.add("hwdef-content-1");
        for (const auto& [key, value] : facts.all()) {
            add(digest, key.section);
            add(digest, key.item);
            add(digest, key.field);
            add(digest, value);
        }
        return digest.finish();
    });
}

std::string HHDFInspect::fileDigest(const std::string& path)
{
    return orNothing([&path] {
        const platform::ProgressWork work(path);
        const platform::File file = platform::File::openRegular(path, O_RDONLY);
        return platform::ArchiveDigest::ofFile(file, file.size());
    });
}
