#include "Text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>

namespace {

/// The length of the UTF-8 sequence (RFC 3629) that the text begins with; 0 when it is none.
std::size_t sequenceLength(std::string_view text)
{
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned lead = byte(0);
    const std::size_t length = lead < 0x80 ? 1 : lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if ((lead >= 0x80 && lead < 0xc2) || lead > 0xf4 || length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0U) != 0x80) {
            return 0;
        }
    }
    const bool isOverlong = (lead == 0xe0 && byte(1) < 0xa0) || (lead == 0xf0 && byte(1) < 0x90);
    const bool isOutside = (lead == 0xed && byte(1) >= 0xa0) || (lead == 0xf4 && byte(1) >= 0x90);
    return isOverlong || isOutside ? 0 : length;
}

bool isControl(std::string_view sequence)
{
    const auto lead = static_cast<unsigned char>(sequence.front());
    const bool isC1 = lead == 0xc2 && static_cast<unsigned char>(sequence.back()) < 0xa0;
    return lead < 0x20 || lead == 0x7f || isC1;
}

std::string escaped(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        std::array<char, 5> hex{};
        std::snprintf(hex.data(), hex.size(), "\\x%02x",
                      static_cast<unsigned>(static_cast<unsigned char>(byte)));
        text += hex.data();
    }
    return text;
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return text;
}

/// How many letters have to be added, dropped, changed or swapped with their neighbours (optimal string
/// alignment).
std::size_t distance(const std::string& from, const std::string& to)
{
    std::vector<std::size_t> beforeLast(to.size() + 1);
    std::vector<std::size_t> last(to.size() + 1);
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(last.begin(), last.end(), 0U);
    for (std::size_t i = 1; i <= from.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const bool isSame = from[i - 1] == to[j - 1];
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame ? 0U : 1U)});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
        beforeLast.swap(last);
        last.swap(row);
    }
    return last[to.size()];
}

}  // namespace

std::string printable(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        const std::string_view sequence = text.substr(0, std::max<std::size_t>(length, 1));
        result += length == 0 || isControl(sequence) ? escaped(sequence) : std::string(sequence);
        text.remove_prefix(sequence.size());
    }
    return result;
}

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::size_t columns(std::string_view text)
{
    std::size_t count = 0;
    bool isPainting = false;
    for (const char letter : text) {
        isPainting = isPainting || letter == '\x1b';
        const bool isContinued = (static_cast<unsigned char>(letter) & 0xc0U) == 0x80;
        count += isPainting || isContinued ? 0U : 1U;
        isPainting = isPainting && letter != 'm';
    }
    return count;
}

std::string readableSize(std::uint64_t bytes)
{
    constexpr std::array<const char*, 7> units = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    auto size = static_cast<double>(bytes);
    std::size_t unit = 0;
    // 1023.5 would show as 1024.
    while (size >= 1023.5 && unit + 1 < units.size()) {
        size /= 1024;
        ++unit;
    }
    const int decimals = unit == 0 || size >= 99.95 ? 0 : size >= 9.995 ? 1 : 2;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.*f %s", decimals, size, units.at(unit));
    return text.data();
}

std::string counted(std::uint64_t number, const std::string& noun)
{
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string nearest(const std::string& text, const std::vector<std::string>& candidates)
{
    // Very long names are hardly mistyped, and the distance costs their product.
    constexpr std::size_t longest = 256;
    const std::string wanted = lower(text);
    std::string best;
    std::size_t least = std::max<std::size_t>(wanted.size() / 3, 1) + 1;
    for (const std::string& candidate : candidates) {
        if (wanted.size() > longest || candidate.size() > longest) {
            continue;
        }
        const std::size_t changes = distance(wanted, lower(candidate));
        if (changes < least) {
            least = changes;
            best = candidate;
        }
    }
    return best;
}

std::string didYouMean(const std::string& text, const std::vector<std::string>& candidates)
{
    const std::string name = nearest(text, candidates);
    return name.empty() || name == text ? std::string() : "; did you mean \"" + printable(name) + "\"?";
}

std::vector<std::string> Table::lines(std::size_t indent) const
{
    std::vector<std::size_t> widths(alignment_.size());
    for (const auto& cells : rows_) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            widths[i] = std::max(widths[i], columns(cells[i]));
        }
    }
    std::vector<std::string> lines;
    for (const auto& cells : rows_) {
        std::string line(indent, ' ');
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string padding(widths[i] - columns(cells[i]), ' ');
            line += (i == 0 ? "" : "  ") + (alignment_[i] == 'r' ? padding + cells[i] : cells[i] + padding);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(line);
    }
    return lines;
}
