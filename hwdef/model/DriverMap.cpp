#include "hwdef/model/DriverMap.h"

#include <algorithm>
#include <boost/container_hash/hash.hpp>
#include <utility>

#include "platform/KeyedHash.h"

namespace {

/// A list below this length is walked: most drivers have few files, and an index costs memory.
constexpr std::size_t walkedLength = 16;

}  // namespace

void DriverMap::add(Files& list, HHDFHwDefDriver record)
{
    if (list.size() < walkedLength) {
        const auto isRecord = [&](const HHDFHwDefDriver& other) { return isSame(other, record); };
        if (std::none_of(list.begin(), list.end(), isRecord)) {
            list.push_back(std::move(record));
        }
        return;
    }
    Places& places = placesOf(list);
    list.push_back(std::move(record));
    if (!places.insert(static_cast<std::uint32_t>(list.size() - 1)).second) {
        list.pop_back();
    }
}

void DriverMap::replace(const std::string& name, Files records)
{
    Files& list = files_[name];
    places_.erase(&list);
    list = std::move(records);
}

void DriverMap::replaceAll(const std::map<std::string, Files>& files)
{
    places_.clear();
    files_ = files;
}

DriverMap::Places& DriverMap::placesOf(const Files& list)
{
    const auto [found, isNew] = places_.try_emplace(&list, walkedLength, PlaceHash{&list}, PlaceEqual{&list});
    if (isNew) {
        for (std::uint32_t place = 0; place < list.size(); ++place) {
            found->second.insert(place);
        }
    }
    return found->second;
}

bool DriverMap::isSame(const HHDFHwDefDriver& left, const HHDFHwDefDriver& right)
{
    return left.filePath_ == right.filePath_ && left.relativeName_ == right.relativeName_ &&
           left.hwDefFilePath_ == right.hwDefFilePath_;
}

std::size_t DriverMap::PlaceHash::operator()(std::uint32_t place) const
{
    const HHDFHwDefDriver& record = (*list)[place];
    std::size_t hash = 0;
    boost::hash_combine(hash, platform::KeyedHash()(record.filePath_));
    boost::hash_combine(hash, platform::KeyedHash()(record.relativeName_));
    boost::hash_combine(hash, platform::KeyedHash()(record.hwDefFilePath_));
    return hash;
}

bool DriverMap::PlaceEqual::operator()(std::uint32_t left, std::uint32_t right) const
{
    return isSame((*list)[left], (*list)[right]);
}
