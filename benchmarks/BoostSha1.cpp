#include "BoostSha1.h"

#include <boost/uuid/detail/sha1.hpp>

namespace bench {

std::array<std::uint32_t, 5> boostSha1(const std::string& bytes)
{
    boost::uuids::detail::sha1 sha1;
    sha1.process_bytes(bytes.data(), bytes.size());
    boost::uuids::detail::sha1::digest_type digest;
    sha1.get_digest(digest);
    return {digest[0], digest[1], digest[2], digest[3], digest[4]};
}

}  // namespace bench
