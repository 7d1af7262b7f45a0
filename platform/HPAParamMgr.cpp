#include "platform/HPAParamMgr.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <mutex>
#include <string_view>

#include "platform/HSTStringUtils.h"
#include "platform/NoDestructor.h"

namespace {

struct Parameters {
    std::mutex mutex;
    std::map<std::string, std::string> values;
};

Parameters& parameters()
{
    static platform::NoDestructor<Parameters> instance;
    return *instance;
}

bool readsAsTrue(std::string_view value)
{
    constexpr std::string_view words[] = {"true", "1", "yes", "on"};
    return std::any_of(std::begin(words), std::end(words),
                       [&](std::string_view word) { return HSTStringUtils::iequals(word, value); });
}

}  // namespace

HPAParamMgr* HPAParamMgr::getParamMgr()
{
    static HPAParamMgr manager;
    return &manager;
}

bool HPAParamMgr::getValueIfExistAsBool(const std::string& name, bool fallback) const
{
    const std::lock_guard lock(parameters().mutex);
    const auto found = parameters().values.find(name);
    return found == parameters().values.end() ? fallback : readsAsTrue(found->second);
}

std::uint64_t HPAParamMgr::getValueIfExistAsNumber(const std::string& name, std::uint64_t fallback) const
{
    const std::lock_guard lock(parameters().mutex);
    const auto found = parameters().values.find(name);
    if (found == parameters().values.end()) {
        return fallback;
    }
    const std::string& text = found->second;
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : fallback;
}

void HPAParamMgr::setValue(const std::string& name, const std::string& value)
{
    const std::lock_guard lock(parameters().mutex);
    parameters().values[name] = value;
}

void HPAParamMgr::removeValue(const std::string& name)
{
    const std::lock_guard lock(parameters().mutex);
    parameters().values.erase(name);
}
