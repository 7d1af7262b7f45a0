#include "BoostSha1.h"

#include <boost/uuid/detail/sha1.hpp>

namespace bench {

std::string boostSha1Text(const std::string& bytes)
{
    boost::uuids::detail::sha1 sha1;
    sha1.process_bytes(bytes.data(), bytes.size());
    boost::uuids::detail::sha1::digest_type digest;
    sha1.get_digest(digest);
    std::string text;
    for (const unsigned int word : digest) {
        text += std::to_string(word);
    }
    return text;
}

}  // namespace bench
