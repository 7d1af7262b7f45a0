#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// One member as a picture shows it.
struct MemberArea {
    std::string name;
    std::string type;
    std::uint64_t sizeBytes = 0;
    std::size_t colour = 0;  ///< the style sheet's classes "c0" and so on
};

/// An SVG picture in which each member has an area in proportion to its size; every one has a tooltip. The
/// members must be sorted by descending size. `cssClass` is that of the picture.
std::string memberMap(const std::vector<MemberArea>& members, double width, double height,
                      const std::string& cssClass);
