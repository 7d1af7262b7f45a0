#include "platform/iostreams/Append.h"

#include "platform/ProgressWork.h"
#include "platform/iostreams/Addition.h"
#include "platform/iostreams/MemberCopier.h"
#include "platform/iostreams/MemberWriter.h"

namespace iostreams::zip {

bool appendFile(const std::string& source, const std::string& name, const std::string& archive,
                std::string& reason)
{
    try {
        MemberWriter member;
        member.openFile(source, name);
        platform::ProgressWork::expect(member.maxBytes());
        addToArchive(archive, member);
        return true;
    } catch (const SourceError& error) {
        reason = error.what();
        return false;
    }
}

bool appendMember(const ArchiveReader& from, const Entry& entry, const std::string& name,
                  const std::string& archive, std::string& reason)
{
    try {
        MemberCopier member;
        member.open(from, entry, name);
        platform::ProgressWork::expect(entry.compressedSize);
        addToArchive(archive, member);
        return true;
    } catch (const SourceError& error) {
        reason = error.what();
        return false;
    }
}

}  // namespace iostreams::zip
