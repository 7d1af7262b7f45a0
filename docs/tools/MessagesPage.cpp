// Writes docs/messages.md from the catalogue to standard output.
#include <iostream>

#include "platform/MessageCatalogue.h"

int main()
{
    std::cout
        << "# Messages\n\n"
           "Every message that has an identifier, in the order of their numbers; made from the catalogue by\n"
           "`make pages`. A handler that `ComMsgMgr::setHandler` installs gets identifier, arguments and "
           "text;\n"
           "without one the text goes to standard error. In a text, `%1` and `%2` stand for the arguments, "
           "and\n"
           "what stands in square brackets is left out when its argument is missing.\n";
    for (const platform::CatalogueMessage& message : platform::messageCatalogue()) {
        std::cout << "\n## `" << message.id << "`\n\n"
                  << "> " << message.text << "\n\n"
                  << "**When:** " << message.sentWhen << ".\n\n"
                  << "**What to do:** " << message.remedy << ".\n";
    }
}
