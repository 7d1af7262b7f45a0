// The description of a board: its files, connections and jumpers.

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>
#include <vector>

#include "hwdef/bom/BomNames.h"
#include "hwdef/bom/Elements.h"
#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "platform/HUTFile.h"

using bom::attributeOf;
using bom::forEachChild;
using bom::isNamed;
namespace attribute = bom::attribute;
namespace element = bom::element;
namespace value = bom::value;

namespace {

/// The path without empty components: no separator in front, at the end, or doubled.
std::string relativeName(const std::string& path)
{
    const std::string separator = HUTFile::getDirSeparator();
    std::vector<std::string> pieces;
    boost::split(pieces, path, boost::is_any_of(separator));
    std::erase_if(pieces, [](const std::string& piece) { return piece.empty(); });
    return boost::join(pieces, separator);
}

/// Registers the "PATH" of every child as a file of that board. One without a path is passed over.
void addBoardFiles(HHDFHwDef& def, const HXMLWElement* board, const std::string& name, const std::string& dir)
{
    std::string container;
    def.getContainerFullPath(container);
    forEachChild(board, [&](const HXMLWElement* file) {
        const std::string relative = relativeName(attributeOf(file, attribute::PATH));
        def.addBoardFileToBom(name, dir + HUTFile::getDirSeparator() + relative, relative, container);
    });
}

}  // namespace

bool HHDFHwDefBomReader::populateBoardInfo(HXMLWElement* element)
{
    std::string dir = def_->getUnzipDir() + "/" + value::BOARD_DIR;
    def_->setBoardTopDir(dir);
    std::string type = attributeOf(element, attribute::TYPE);
    def_->setIntegratedBoard(HSTStringUtils::iequals(type, value::INTEGRATED));
    forEachChild(element, [&](HXMLWElement* child) {
        if (isNamed(child, element::BASEBOARD)) {
            populateBaseBoardInfo(child, dir, type);
        } else if (isNamed(child, element::DAUGHTERBOARD)) {
            populateDaughterBoardInfo(child, dir, type);
        } else if (isNamed(child, element::JUMPERS)) {
            populateJumpers(child);
        }
    });
    return true;
}

bool HHDFHwDefBomReader::populateBaseBoardInfo(HXMLWElement* element, std::string& dir, std::string&)
{
    const std::string name = attributeOf(element, attribute::NAME);
    def_->setBaseBoard(name);
    addBoardFiles(*def_, element, name, dir);
    return true;
}

bool HHDFHwDefBomReader::populateDaughterBoardInfo(HXMLWElement* element, std::string& dir, std::string&)
{
    const std::string name = attributeOf(element, attribute::NAME);
    const std::string connector = attributeOf(element, attribute::CONNECTOR);
    if (!connector.empty()) {
        def_->addBoardConnections(connector, name);
    }
    addBoardFiles(*def_, element, name, dir);
    return true;
}

bool HHDFHwDefBomReader::populateJumpers(HXMLWElement* element)
{
    forEachChild(element, [&](const HXMLWElement* child) {
        def_->updateJumpers(attributeOf(child, attribute::NAME),
                            attributeOf(child, attribute::VALUE) == value::ONE);
    });
    return true;
}
