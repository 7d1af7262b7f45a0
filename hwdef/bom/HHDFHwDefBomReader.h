#pragma once

#include <string>

#include "hwdef/model/HHDFHwDef.h"
#include "platform/Export.h"

class HXMLWElement;

/// Fills a definition from the parsed BOM document. Owns neither; both must outlive it.
///
/// An attribute that is missing reads as the empty text. Element names are compared without regard
/// to case, attribute names exactly; what isn't known is passed over in silence.
class HWDEF_API HHDFHwDefBomReader {
public:
    HHDFHwDefBomReader(HHDFHwDef* def, HXMLWElement* root);

    /// Reads the whole document. False when definition, root or the root's child list is missing
    /// (versions and digest are set by then in the last case). `driverPath` is the directory below
    /// which the container's drivers lie; empty for the unzip directory.
    ///
    /// "Version" and "Minor" are read as std::stoi does, whose std::invalid_argument and
    /// std::out_of_range pass through; boost::bad_lexical_cast for a NUM_OF_SLRS "Value" that isn't
    /// a whole integer.
    bool readHDF(std::string driverPath);

    /// A copy of the text; the empty text for null.
    static std::string valueOrEmpty(const char* text);

    // One operation per kind of element; true unless stated.

    /// One File element: digest, entry, attributes and source database. False when "Name" is empty.
    bool populateFiles(HXMLWElement* element);
    bool populateBomMode(HXMLWElement* element);
    /// False when "Name" is empty.
    bool populateAddrTags(HXMLWElement* element);
    bool populateSystemInfo(HXMLWElement* element);
    bool populateResourceInfo(HXMLWElement* element, HHDFHwDef::HHDFResourceInfo& info);
    bool populateDrivers(HXMLWElement* element, std::string driverPath);
    bool populateWDIAttrs(HXMLWElement* element);
    bool populatePartitionInfo(HXMLWElement* element);
    bool populateConfigurations(HXMLWElement* element);
    /// False for null.
    bool populatePart(HXMLWElement* element);
    /// Registers every regular file below `path` as a driver directory. False when `path` is empty,
    /// when nothing exists there ("@64-5@%s"), or when the walk fails (its text is sent).
    bool populateDriverFiles(const std::string& path);

    // The description of a board, for callers that have one; readHDF does not come here.

    /// Reads a whole board description below the directory "board" of the unzip directory.
    bool populateBoardInfo(HXMLWElement* element);
    /// Reads the base board: "Name", and the "PATH" of each child as one file of that board. `dir` is
    /// the board top directory; `type` receives the board's name.
    bool populateBaseBoardInfo(HXMLWElement* element, std::string& dir, std::string& type);
    /// The same for a daughter board; "Connector" to "Name" is recorded as a connection.
    bool populateDaughterBoardInfo(HXMLWElement* element, std::string& dir, std::string& type);
    /// Each child's "Name" and "Value"; a jumper is set exactly when the value is "1".
    bool populateJumpers(HXMLWElement* element);

private:
    HHDFHwDef* def_;
    HXMLWElement* root_;
};
