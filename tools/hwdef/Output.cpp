#include "Output.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "CommandError.h"
#include "ProgressLine.h"

namespace {

/// The version of all documents; docs/cli-json.md says what a change of it means.
constexpr std::uint64_t schemaVersion = 1;

/// Select graphic rendition (ECMA-48, 8.3.117), in the order of Style.
constexpr std::array<const char*, 7> renditions = {"", "1", "2", "31", "32", "33", "36"};

bool isSet(const char* variable)
{
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

}  // namespace

void writeToStream(int stream, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(stream, bytes.data(), bytes.size());
        if (count < 0 && errno == EPIPE) {
            throw ClosedPipe("nobody reads standard output");
        }
        if (count < 0 && errno == EINTR && ProgressLine::signal() != 0) {
            throw CommandError("interrupted");
        }
        if (count < 0 && errno != EINTR) {
            throw CommandError(std::string("standard output can't be written to: ") + std::strerror(errno));
        }
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

bool isColoured(int stream, Colours colours)
{
    if (colours != Colours::AUTO) {
        return colours == Colours::ALWAYS;
    }
    const char* const terminal = std::getenv("TERM");
    const bool isDumb = terminal != nullptr && std::string_view(terminal) == "dumb";
    return ::isatty(stream) == 1 && !isSet("NO_COLOR") && !isDumb;
}

std::string painted(Style style, std::string_view text)
{
    const char* const rendition = renditions.at(static_cast<std::size_t>(style));
    if (*rendition == '\0' || text.empty()) {
        return std::string(text);
    }
    return "\x1b[" + std::string(rendition) + "m" + std::string(text) + "\x1b[0m";
}

Output::Output(const std::string& verb, bool isJson, Colours colours)
    : isJson_(isJson), isColoured_(!isJson && isColoured(STDOUT_FILENO, colours))
{
    if (isJson_) {
        json_.beginObject();
        json_.add("schema", schemaVersion);
        json_.add("verb", verb);
    }
}

void Output::line(std::string_view text)
{
    if (!isJson_) {
        text_ += text;
        text_ += '\n';
    }
}

void Output::lines(const std::vector<std::string>& all)
{
    for (const std::string& text : all) {
        line(text);
    }
}

std::string Output::paint(Style style, std::string_view text) const
{
    return isColoured_ ? painted(style, text) : std::string(text);
}

void Output::finish()
{
    if (isJson_) {
        json_.end();
        text_ = json_.text() + "\n";
    }
    writeToStream(STDOUT_FILENO, text_);
    text_.clear();
}
