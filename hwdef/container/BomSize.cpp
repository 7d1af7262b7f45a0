#include "hwdef/container/BomSize.h"

#include "hwdef/bom/BomNames.h"
#include "hwdef/bom/Elements.h"

using bom::attributeOf;
using bom::forEachChild;
using bom::isNamed;

namespace {

// What one element comes to, in bytes, with its places in indexes and what the allocator adds, but
// without the characters of its texts. Rounded up; measured by the tests of whole containers.
constexpr std::uint64_t fileBytes = 320;
constexpr std::uint64_t attributeBytes = 160;
constexpr std::uint64_t driverBytes = 260;
constexpr std::uint64_t driverFileBytes = 420;
constexpr std::uint64_t otherBytes = 280;
constexpr std::uint64_t digestTextBytes = 200;
/// A driver source makes no entry, but costs the system's answers and a message.
constexpr std::uint64_t driverSourceBytes = 1024;
/// How often the definition keeps a text that is too long for the room that each element is given here,
/// beside the first time; and the digests once more.
constexpr std::uint64_t furtherCopies = 3;
/// How often the reader copies a text on its way, at most.
constexpr std::uint64_t copies = 5;

}  // namespace

BomSize::BomSize(const HXMLWInterface& document, const std::string& container) : pathBytes_(container.size())
{
    const HXMLWInterface::Size size = document.size();
    documentBytes_ = size.bytes;
    transientBytes_ = copies * size.longestValueBytes;
    definitionBytes_ = size.valueBytes + furtherCopies * size.longValuesBytes;
    digestBytes_ = furtherCopies * size.longValuesBytes;
    count(*document.getRootElement());
}

void BomSize::count(const HXMLWElement& root)
{
    forEachChild(&root, [&](const HXMLWElement* child) {
        if (isNamed(child, bom::element::FILE)) {
            countFile(*child);
            return;
        }
        const bool isDrivers = isNamed(child, bom::element::DRIVERS);
        const bool isAttributes = isNamed(child, bom::element::WDIATTRS);
        forEachChild(child, [&](const HXMLWElement* grandchild) {
            definitionBytes_ += isDrivers ? driverBytes : isAttributes ? attributeBytes : otherBytes;
            forEachChild(grandchild, [&](const HXMLWElement*) {
                definitionBytes_ += isDrivers ? driverFileBytes + 2 * pathBytes_ : otherBytes;
                digestBytes_ += isDrivers ? digestTextBytes : 0;
            });
        });
    });
}

void BomSize::countFile(const HXMLWElement& file)
{
    const bool isSource = HHDFHwDefFileTypes::getHWHFileType(attributeOf(&file, bom::attribute::TYPE)) ==
                          HHDFHwDefFileTypes::DRIVER_SRC;
    definitionBytes_ += pathBytes_ + (isSource ? driverSourceBytes : fileBytes);
    digestBytes_ += digestTextBytes;
    forEachChild(&file, [&](const HXMLWElement*) { definitionBytes_ += attributeBytes; });
}
