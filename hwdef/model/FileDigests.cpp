#include "hwdef/model/FileDigests.h"

void FileDigests::set(std::string_view name, std::string_view digest)
{
    const std::size_t before = texts_.size();
    try {
        texts_ += name;
        const std::size_t nameEnd = texts_.size();
        texts_ += digest;
        notes_.push_back({nameEnd, texts_.size()});
    } catch (...) {
        texts_.resize(before);
        throw;
    }
}

void FileDigests::assign(const std::map<std::string, std::string>& digests)
{
    digests_ = digests;
    notes_.clear();
    texts_.clear();
}

const std::map<std::string, std::string>& FileDigests::all() const
{
    const std::string_view texts = texts_;
    std::size_t begin = 0;
    for (const Note& note : notes_) {
        digests_.insert_or_assign(std::string(texts.substr(begin, note.nameEnd - begin)),
                                  std::string(texts.substr(note.nameEnd, note.digestEnd - note.nameEnd)));
        begin = note.digestEnd;
    }
    notes_ = {};
    texts_ = {};
    return digests_;
}
