#include "Verb.h"

#include <algorithm>

namespace {

/// Made at the first use, for verbs register themselves in no fixed order.
std::vector<std::unique_ptr<Verb>>& owned()
{
    static std::vector<std::unique_ptr<Verb>> verbs;
    return verbs;
}

bool isListedBefore(const Verb* left, const Verb* right)
{
    return left->rank() < right->rank();
}

}  // namespace

Verb::~Verb() = default;

void registerVerb(std::unique_ptr<Verb> verb)
{
    owned().push_back(std::move(verb));
}

const std::vector<Verb*>& verbs()
{
    static const std::vector<Verb*> sorted = [] {
        std::vector<Verb*> all;
        for (const auto& verb : owned()) {
            all.push_back(verb.get());
        }
        std::sort(all.begin(), all.end(), isListedBefore);
        return all;
    }();
    return sorted;
}

Verb* findVerb(const std::string& name)
{
    const auto& all = verbs();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Verb* verb) { return verb->text().name == name; });
    return found == all.end() ? nullptr : *found;
}
