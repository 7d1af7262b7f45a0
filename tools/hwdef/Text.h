#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The text as a terminal may get it: control characters and what isn't UTF-8 appear as "\x1b".
std::string printable(std::string_view text);
/// Whether all of the text is UTF-8.
bool isUtf8(std::string_view text);
/// How many columns a text takes: its characters, what paints them not counted.
std::size_t columns(std::string_view text);

/// A number of bytes with three digits: "17 B", "4.21 KiB", "1.00 GiB".
std::string readableSize(std::uint64_t bytes);
/// "1 file", "2 files".
std::string counted(std::uint64_t number, const std::string& noun);

/// Of `candidates`, the one that `text` was probably meant to be, any case; empty when none is near.
std::string nearest(const std::string& text, const std::vector<std::string>& candidates);
/// `; did you mean "list"?`, or nothing when no candidate is near.
std::string didYouMean(const std::string& text, const std::vector<std::string>& candidates);

/// Rows of texts, each column as wide as its widest text.
class Table {
public:
    /// `alignment` has one letter per column: 'l' or 'r'.
    explicit Table(std::string alignment) : alignment_(std::move(alignment)) {}

    void row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    /// The rows, with `indent` blanks in front and two between columns, without blanks at their ends.
    std::vector<std::string> lines(std::size_t indent = 0) const;

private:
    std::string alignment_;
    std::vector<std::vector<std::string>> rows_;
};
