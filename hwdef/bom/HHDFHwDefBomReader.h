#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "hwdef/model/HHDFHwDef.h"
#include "platform/Export.h"

class HHDFHwDefImp;
class HXMLWElement;

/// Fills a definition from the parsed BOM document. Owns neither; both must outlive it.
///
/// An attribute that is missing reads as the empty text. Element names are compared without regard
/// to case, attribute names exactly; what isn't known is passed over in silence. A child list that
/// can't be had counts as empty everywhere but at the root. Linear in the elements.
class HWDEF_API HHDFHwDefBomReader {
public:
    /// Either may be null; readHDF then answers false.
    HHDFHwDefBomReader(HHDFHwDef* def, HXMLWElement* root);

    /// Reads the whole document. False when definition, root or the root's child list is missing
    /// (versions and digest are set by then in the last case). `driverPath` is the directory below
    /// which the container's drivers lie; empty for the unzip directory. What single elements
    /// answer doesn't count.
    ///
    /// "Version" and "Minor" are read as std::stoi does, whose std::invalid_argument and
    /// std::out_of_range pass through; boost::bad_lexical_cast for a NUM_OF_SLRS "Value" that isn't
    /// a whole integer.
    bool readHDF(std::string driverPath);

    /// A copy of the text; the empty text for null.
    static std::string valueOrEmpty(const char* text);

    // One operation per kind of element, in the order in which the writer writes them; true unless
    // stated. They need the definition.

    /// The mode: PRE_SYNTHESIS for exactly "Pre-Synthesis", else POST_SYNTHESIS.
    bool populateBomMode(HXMLWElement* element);
    /// Device and system resources, empty texts included.
    bool populateSystemInfo(HXMLWElement* element);
    /// The first four fields of `info`.
    bool populateResourceInfo(HXMLWElement* element, HHDFHwDef::HHDFResourceInfo& info);
    /// Stacked device and number of dies; the part itself comes from SYSTEMINFO. False for null.
    bool populatePart(HXMLWElement* element);
    /// The top module. False, and nothing set, when "Name" is empty.
    bool populateAddrTags(HXMLWElement* element);
    /// One File element: digest, entry, attributes, source database. False when "Name" is empty;
    /// its digest is recorded all the same.
    ///
    /// Attributes and source database go to the first entry of that file name, as addFileAttrs and
    /// setHwSrcDB of the definition find it. An element of the type DRIVER_SRC makes no entry: see
    /// populateDriverFiles, whose result it has. A "Name" of that type that climbs out of the
    /// unzip directory or passes through a link that leaves it is refused: false after one text by
    /// ComMsgMgr::sendMessage that names it, nothing is read. One with "/" in front is one below the unzip
    /// directory.
    bool populateFiles(HXMLWElement* element);
    /// The drivers, as files of the container below `driverPath` (empty: the unzip directory), "/"
    /// and "drivers", which becomes the drivers' top directory. A file without "PATH" is passed over,
    /// its digest too; a digest is stored under the "PATH".
    bool populateDrivers(HXMLWElement* element, std::string driverPath);
    /// Registers every regular file below `path`, by its path relative to that, as a driver directory,
    /// and makes `path` the drivers' top directory.
    ///
    /// A link to a file counts as that file; one that leads out of the unzip directory (out of `path`
    /// when that lies elsewhere) is refused by a text that names it, and the walk goes on. Links to
    /// directories are not followed; dangling links and links in a circle are no files.
    ///
    /// False when `path` is empty; after "@64-5@%s" when nothing exists there; after the system's
    /// reason was sent when the walk fails (`path` is a file or unreadable): what was found until then
    /// stays registered.
    bool populateDriverFiles(const std::string& path);
    /// The free attributes, one per child element.
    bool populateWDIAttrs(HXMLWElement* element);
    /// The partitions. Names of a module's files are not read: "bitFile" stands for them.
    bool populatePartitionInfo(HXMLWElement* element);
    /// The configurations. Files of their cells are not read.
    bool populateConfigurations(HXMLWElement* element);

    // The description of a board, for callers that have one; readHDF does not come here. True.

    /// Reads a whole description: "Type" ("Integrated", in any case, or not), base board, daughter
    /// boards and jumpers. The unzip directory, "/" and "board" becomes the board top directory.
    bool populateBoardInfo(HXMLWElement* element);
    /// The base board's "Name", and the "PATH" of each child as one file of the board of that name.
    ///
    /// A path is split at the separators; empty pieces vanish, and a path without others is passed
    /// over. The record's relative name is the joined rest, its file path `dir` (the board top
    /// directory), a separator and the relative name, its container path the container's full path.
    /// `type` is the description's "Type"; it changes nothing. Both texts are left alone.
    bool populateBaseBoardInfo(HXMLWElement* element, std::string& dir, std::string& type);
    /// The same for a daughter board, whose "Name" is recorded as what its "Connector" leads to; no
    /// connection without a connector.
    bool populateDaughterBoardInfo(HXMLWElement* element, std::string& dir, std::string& type);
    /// Each child's "Name" and "Value"; a jumper is set exactly when the value is "1".
    bool populateJumpers(HXMLWElement* element);

private:
    HWDEF_LOCAL void readRootChild(HXMLWElement* child, const std::string& driverPath);
    HWDEF_LOCAL bool populateToolVersion(HXMLWElement* element);
    HWDEF_LOCAL bool populateUsedResources(HXMLWElement* element);
    HWDEF_LOCAL HHDFHwDef::FileType fileTypeOf(std::string_view token);
    /// Appends the entry of a File element.
    HWDEF_LOCAL void addEntry(HHDFHwDefImp& imp, std::string_view name, HHDFHwDef::FileType type,
                              const HXMLWElement* element);
    /// A File of the type DRIVER_SRC; see populateFiles.
    HWDEF_LOCAL bool populateDriverSource(const std::string& name);
    /// populateDriverFiles behind its look whether anything is there. The reason, after it was sent, for
    /// which it failed; else empty.
    HWDEF_LOCAL std::string walkDriverFiles(const std::string& path);
    /// The walk itself; throws boost::filesystem::filesystem_error.
    HWDEF_LOCAL void registerDriverFiles(const std::string& path);

    HHDFHwDef* def_;
    HXMLWElement* root_;
    /// Why walking the driver sources of the BOM failed, empty where it didn't, by their places: links
    /// resolved.
    std::map<std::string, std::string> walkedSources_;
    std::size_t resolvedParts_ = 0;  ///< of the paths of driver sources
    std::string typeToken_;          ///< of the File before, which is mostly the next one's
    HHDFHwDef::FileType type_ = HHDFHwDefFileTypes::UNKNOWN;
    std::shared_ptr<const std::string> container_;  ///< its path, for all entries, once one was read
};
