#include "TypedFile.h"

#include <filesystem>

#include "CommandError.h"
#include "Text.h"

namespace fs = std::filesystem;

std::string packedType(const std::string& token)
{
    const auto type = typeOf(token);
    if (type == HHDFHwDefFileTypes::DRIVER_SRC) {
        throw CommandError("no file has the type DRIVER_SRC: drivers are added by \"hwdef build --driver\"");
    }
    return HHDFHwDefFileTypes::getHWHFileTypeStr(type);
}

Recipe::File parseTypedFile(const std::string& text)
{
    const std::size_t colon = text.rfind(':');
    const bool hasPath = colon != 0;
    if (!hasPath || colon == std::string::npos || colon + 1 == text.size()) {
        throw CommandError("\"" + printable(text) + "\" has no " + (hasPath ? "type" : "path") +
                           "; a file is given as PATH:TYPE");
    }
    Recipe::File file;
    file.path = text.substr(0, colon);
    file.name = fs::path(file.path).filename().string();
    if (file.name == "hwdef.xml" || file.name == "sysdef.xml") {
        throw CommandError("\"" + file.name + "\" is the name of a bill of materials");
    }
    file.type = packedType(text.substr(colon + 1));
    if (!fs::is_regular_file(file.path)) {
        throw CommandError(printable(file.path) + ": " +
                           (fs::exists(file.path) ? "this is " + kindOf(file.path) + ", not a file to pack"
                                                  : std::string("there is no such file")));
    }
    return file;
}
