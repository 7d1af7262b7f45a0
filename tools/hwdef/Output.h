#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/JsonWriter.h"

/// How a piece of text stands out on a terminal.
enum class Style { PLAIN, BOLD, DIM, RED, GREEN, YELLOW, CYAN };

/// Whether colours are used: as the stream is a terminal or not, or in any case.
enum class Colours { AUTO, ALWAYS, NEVER };

/// What a verb says: text for people, or one JSON document for programs, on standard output.
///
/// Everything is kept until finish(), so that a verb that fails leaves standard output empty.
class Output {
public:
    Output(const std::string& verb, bool isJson, Colours colours);

    bool isJson() const { return isJson_; }
    /// The document, an object with its schema version and the verb already in it. Only when isJson().
    platform::JsonWriter& json() { return json_; }

    /// Adds a line of text; nothing when a JSON document was asked for.
    void line(std::string_view text = {});
    void lines(const std::vector<std::string>& all);
    /// The text with what a terminal needs to show it so; unchanged where no colours are wanted.
    std::string paint(Style style, std::string_view text) const;

    /// Writes all to standard output; throws CommandError when that fails.
    void finish();

private:
    bool isJson_;
    bool isColoured_;
    platform::JsonWriter json_;
    std::string text_;
};

/// Writes to a stream of the process (1 or 2) at once; throws CommandError when that fails or a signal that
/// came interrupts it, ClosedPipe when nobody reads.
void writeToStream(int stream, std::string_view bytes);
/// Whether a stream of the process is to have colours.
bool isColoured(int stream, Colours colours);
/// The text with what a terminal needs to show it so.
std::string painted(Style style, std::string_view text);
