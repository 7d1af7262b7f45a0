#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// One message of the catalogue.
///
/// In `text`, "%1" and "%2" stand for the arguments; a part in "[" and "]" is left out when one of
/// its arguments is missing or empty.
struct CatalogueMessage {
    std::string_view id;        ///< the identifier as it is sent, for example "@64-5@%s"
    std::string_view text;      ///< what was found and what was expected
    std::string_view sentWhen;  ///< for people: the condition
    std::string_view remedy;    ///< for people: what to do about it
};

/// All messages, in the order of their numbers.
std::span<const CatalogueMessage> messageCatalogue();

/// The message of that identifier; null when the catalogue has none.
const CatalogueMessage* findMessage(std::string_view id);

/// The text of a message with the arguments filled in, as they are. Surplus arguments are left out.
std::string fillIn(const CatalogueMessage& message, const std::vector<std::string>& args);

}  // namespace platform
