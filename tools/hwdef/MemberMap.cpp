#include "MemberMap.h"

#include <algorithm>
#include <cmath>

#include "Html.h"
#include "Text.h"

namespace {

struct Box {
    double x;
    double y;
    double width;
    double height;
};

/// Lays rectangles out in rows along the shorter side of what is left, each row as square as it gets
/// (Bruls, Huizing and van Wijk, Squarified Treemaps, 2000).
class Layout {
public:
    Layout(std::vector<double> areas, Box all) : areas_(std::move(areas)), left_(all) {}

    std::vector<Box> boxes()
    {
        for (std::size_t first = 0; first < areas_.size();) {
            const std::size_t end = endOfRow(first);
            place(first, end);
            first = end;
        }
        return std::move(boxes_);
    }

private:
    double side() const { return std::min(left_.width, left_.height); }

    /// The worst relation of the sides of a row's boxes.
    double worst(double sum, double largest, double smallest) const
    {
        const double square = side() * side();
        return std::max(square * largest / (sum * sum), sum * sum / (square * smallest));
    }

    std::size_t endOfRow(std::size_t first) const
    {
        double sum = areas_[first];
        std::size_t end = first + 1;
        while (end < areas_.size() && worst(sum + areas_[end], areas_[first], areas_[end]) <=
                                          worst(sum, areas_[first], areas_[end - 1])) {
            sum += areas_[end++];
        }
        return end;
    }

    void place(std::size_t first, std::size_t end)
    {
        double sum = 0;
        for (std::size_t i = first; i < end; ++i) {
            sum += areas_[i];
        }
        const bool isColumn = left_.width >= left_.height;
        const double thickness = side() > 0 ? sum / side() : 0;
        double along = 0;
        for (std::size_t i = first; i < end; ++i) {
            const double length = thickness > 0 ? areas_[i] / thickness : 0;
            boxes_.push_back(isColumn ? Box{left_.x, left_.y + along, thickness, length}
                                      : Box{left_.x + along, left_.y, length, thickness});
            along += length;
        }
        (isColumn ? left_.x : left_.y) += thickness;
        double& shrinking = isColumn ? left_.width : left_.height;
        shrinking = std::max(0.0, shrinking - thickness);
    }

    std::vector<double> areas_;
    Box left_;
    std::vector<Box> boxes_;
};

/// Areas in proportion to the sizes; an empty member gets as little as can be seen.
std::vector<double> areasOf(const std::vector<MemberArea>& members, double whole)
{
    std::vector<double> areas;
    double sum = 0;
    for (const MemberArea& member : members) {
        areas.push_back(std::max(1.0, static_cast<double>(member.sizeBytes)));
        sum += areas.back();
    }
    for (double& area : areas) {
        area *= whole / sum;
    }
    return areas;
}

/// As much of a name as a box has room for; nothing when that would tell little.
std::string labelFor(const std::string& name, const Box& box)
{
    constexpr double letterWidth = 7;
    constexpr double lineHeight = 20;
    constexpr std::size_t fewest = 4;
    const auto room = static_cast<std::size_t>(std::max(0.0, (box.width - 12) / letterWidth));
    if (box.height < lineHeight || room < fewest) {
        return "";
    }
    std::string text = printable(name);  // not const, so that it is moved out
    const bool isAscii = std::none_of(text.begin(), text.end(), [](char byte) { return (byte & 0x80) != 0; });
    if (columns(text) <= room) {
        return text;
    }
    return isAscii ? text.substr(0, room - 1) + "\u2026" : "";
}

/// What of a box is painted: there is a gap to the next one, something to see of the smallest, and nothing
/// outside of the picture.
Box painted(const Box& box, const Box& picture)
{
    constexpr double gap = 1;
    constexpr double least = 0.5;
    return {std::min(box.x, picture.width - least), std::min(box.y, picture.height - least),
            std::max(least, box.width - gap), std::max(least, box.height - gap)};
}

std::string place(const Box& box)
{
    return " x=\"" + pixels(box.x) + "\" y=\"" + pixels(box.y) + "\" width=\"" + pixels(box.width) +
           "\" height=\"" + pixels(box.height) + "\"";
}

std::string drawn(const MemberArea& member, const Box& box)
{
    std::string svg = "<g><title>" + html(member.name) + "\n" + html(member.type) + ", " +
                      readableSize(member.sizeBytes) + "</title><rect class=\"c" +
                      std::to_string(member.colour) + "\"" + place(box) + "></rect>";
    const std::string label = labelFor(member.name, box);
    if (!label.empty()) {
        // A picture of its own, so that wide letters end at its edge.
        svg += "<svg" + place(box) + "><text x=\"6\" y=\"15\">" + html(label) + "</text></svg>";
    }
    return svg + "</g>\n";
}

}  // namespace

std::string memberMap(const std::vector<MemberArea>& members, double width, double height,
                      const std::string& cssClass)
{
    const Box picture = {0, 0, width, height};
    const std::vector<Box> boxes = Layout(areasOf(members, width * height), picture).boxes();
    std::string svg = "<svg class=\"" + cssClass + "\" viewBox=\"0 0 " + pixels(width) + " " +
                      pixels(height) + "\" role=\"img\" aria-label=\"Members by size and type\">\n";
    for (std::size_t i = 0; i < members.size(); ++i) {
        svg += drawn(members[i], painted(boxes[i], picture));
    }
    return svg + "</svg>\n";
}
