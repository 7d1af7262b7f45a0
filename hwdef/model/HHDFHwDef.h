#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "hwdef/model/HHDFHwDefBoard.h"
#include "hwdef/model/HHDFHwDefConfig.h"
#include "hwdef/model/HHDFHwDefDriver.h"
#include "hwdef/model/HHDFHwDefFile.h"
#include "hwdef/model/HHDFHwDefFileTypes.h"
#include "hwdef/model/HHDFHwDefPartitionInfo.h"
#include "platform/Export.h"

class HHDFHwDefImp;

/// One hardware definition: the properties of a design, its bill of materials, drivers, boards and
/// partitions, and the container archive it is read from or written to.
///
/// Get one from HHDFHwDefUtils. One object is used by one thread at a time. Operations that return
/// bool answer true for done. Entries (`HHDFHwDefFile*`) belong to the definition and live as long as
/// it does, unless removeFileFromBom hands one back.
class HWDEF_API HHDFHwDef {
public:
    /// Short names of the types that many operations take.
    /// @{
    using FileType = HHDFHwDefFileTypes::HWHFileType;
    using BDType = HHDFHwDefFileTypes::HWHBDType;
    using ModeType = HHDFHwDefFileTypes::HWHModeType;
    using Texts = std::map<std::string, std::string>;
    /// @}

    /// Resource counts as text. The first four are stored in the BOM; the others are carried along.
    struct HHDFResourceInfo {
        std::string lut;                   ///< look-up tables
        std::string ff;                    ///< flip-flops
        std::string bram;                  ///< block RAMs
        std::string dsp;                   ///< arithmetic blocks
        std::array<std::string, 6> extra;  ///< counts that no BOM stores
    };

    /// A definition for the container at `path`, which need not exist; nothing is read. Its scratch
    /// directory is made at once.
    explicit HHDFHwDef(const std::string& path);
    /// Destroys all entries and removes the scratch directory.
    virtual ~HHDFHwDef();
    HHDFHwDef(const HHDFHwDef&) = delete;
    HHDFHwDef& operator=(const HHDFHwDef&) = delete;

    // --- Properties.

    /// A property as text: tools, target device and design. Empty until set, and without implementation.
    /// A setter takes the empty text too, and is false only without implementation.
    /// @{
    const std::string& getToolVersion() const;
    bool setToolVersion(const std::string& version);
    const std::string& getBoard() const;
    bool setBoard(const std::string& board);
    const std::string& getPart() const;
    bool setPart(const std::string& part);
    const std::string& getArch() const;
    bool setArch(const std::string& arch);
    const std::string& getPackage() const;
    bool setPackage(const std::string& package);
    const std::string& getDevice() const;
    bool setDevice(const std::string& device);
    const std::string& getSpeed() const;
    bool setSpeed(const std::string& speed);
    const std::string& getBaseBoard() const;
    bool setBaseBoard(const std::string& name);
    const std::string& getHierTopModuleName() const;
    void setHierTopModuleName(const std::string& name);
    /// @}

    /// Version of the definition; a new one is 1.7. All bits set without implementation.
    /// @{
    const std::uint32_t& getMajorVersion() const;
    bool setMajorVersion(std::uint32_t version);
    const std::uint32_t& getMinorVersion() const;
    bool setMinorVersion(std::uint32_t version);
    /// @}

    /// Whether the device is a stacked one, and its number of dies (-1 when never set).
    /// @{
    bool isTIER() const;
    bool setTIER(bool tier);
    int getSLRNo() const;
    bool setSLRNo(int count);
    /// @}

    /// Whether the board is integrated, and the directories below which files of boards and drivers lie.
    /// @{
    bool isIntegratedBoard() const;
    bool setIntegratedBoard(bool integrated);
    std::string getBoardTopDir() const;
    void setBoardTopDir(const std::string& dir);
    std::string getDriversTopDir() const;
    void setDriversTopDir(const std::string& dir);
    /// @}

    /// MODE_UNSET until set, and without implementation.
    ModeType getModeType() const;
    /// Stores the mode; PRE_SYNTHESIS names the BOM document "hwdef.xml", POST_SYNTHESIS "sysdef.xml",
    /// any other value leaves its name.
    bool setModeType(const ModeType& mode);
    /// "Pre-Synthesis", "Post-Synthesis" or the empty text.
    std::string getModeName() const;

    /// What the design uses, and what the device offers.
    /// @{
    const HHDFResourceInfo& getUsedResourceInfo() const;
    void setUsedResourceInfo(const HHDFResourceInfo& info);
    const HHDFResourceInfo& getSystemResourceInfo() const;
    void setSystemResourceInfo(const HHDFResourceInfo& info);
    /// @}

    /// The connector of each daughter board, by the board's name.
    /// @{
    const Texts& getBoardConnections() const;
    bool setBoardConnections(const Texts& connections);
    /// @}
    /// Records a connection unless `from` has one already.
    bool addBoardConnections(std::string from, std::string to);

    /// Jumper names and whether they are set, in the order added; a name may appear more than once.
    /// updateJumpers adds one.
    /// @{
    const std::vector<std::pair<std::string, bool>>& getJumpers() const;
    bool getJumpers(std::vector<std::pair<std::string, bool>>& jumpers) const;
    bool setJumpers(const std::vector<std::pair<std::string, bool>>& jumpers);
    void updateJumpers(std::string name, bool value);
    /// @}

    /// Free attributes of the whole definition. The copying getter leaves `attrs` alone without
    /// implementation.
    void getWDIAttrs(Texts& attrs) const;
    /// Sets an attribute, replacing an earlier value.
    void addWDIAttr(const std::string& name, const std::string& value);

    // --- The BOM list, in insertion order.

    /// Each of these appends an entry; nothing is checked for duplicates. False for an empty path or
    /// a null entry. `hwDefPath` is the container that holds the file as a member; empty for a file
    /// on disk.
    /// @{
    bool addFileToBom(const std::string& path, const FileType& type, std::string hwDefPath = {});
    bool addFileToBom(const std::string& path, const FileType& type, const std::string& hierPath,
                      const BDType& bdType, std::string hwDefPath = {});
    bool addFileToBom(const std::string& path, std::string hwDefPath = {});
    /// @}
    /// Appends a copy; the caller keeps `file`.
    bool addFileToBom(const HHDFHwDefFile* file);
    /// Takes a listed entry off the list; it now belongs to the caller. False for null. The order of
    /// the others is kept.
    bool removeFileFromBom(HHDFHwDefFile* file);

    /// The first entry whose file has the same last path component as `name`; null when none has.
    HHDFHwDefFile* getBomFile(std::string& name) const;
    /// The same lookups by exact file name: is there one, and hierarchy path, type token and container
    /// path of the first one (empty when there is none).
    /// @{
    bool isBomFileExistsWithName(const std::string& name) const;
    const std::string& getBomFileHierarchy(const std::string& name) const;
    std::string getBomFileType(const std::string& name) const;
    std::string getBomFileHwDefPath(const std::string& name) const;
    /// @}
    /// The name of the first file whose hierarchy path ends in the component `cell`; empty when none
    /// does. Walks the list.
    void getBomFileForHierarchy(const std::string& cell, std::string& fileName) const;
    /// Whether some entry's source database is the last component of `srcDbPath`, in any case. Walks
    /// the list.
    bool doesHwDefExist(const std::string& srcDbPath) const;
    /// Gives `srcDb` to the first entry without a source database whose file name is the last
    /// component of `path`, in any case.
    void setHwSrcDB(std::string path, const std::string& srcDb);
    /// Adds the attributes to the entry that getBomFile finds; false when there is none.
    bool addFileAttrs(std::string name, Texts& attrs);

    /// Each of these appends to the vector and returns its size. The first gives all file names, the
    /// second the canonical paths of the files of a type, the third the unzip directory, "/" and the
    /// name (or just the name) of the files of a role.
    /// @{
    std::size_t getBomFiles(std::vector<std::string>& names) const;
    std::size_t getBomFiles(FileType type, std::vector<std::string>& paths) const;
    std::size_t getBomFiles(BDType type, std::vector<std::string>& paths) const;
    /// @}
    /// The entries themselves: all, those of a type (all for UNKNOWN), those of a role.
    /// @{
    std::size_t getBomFiles(std::vector<HHDFHwDefFile*>& files) const;
    std::size_t getBomFiles(FileType type, std::vector<HHDFHwDefFile*>& files) const;
    std::size_t getBomFiles(BDType type, std::vector<HHDFHwDefFile*>& files) const;
    /// @}

    /// Whether the version is 1.4 or a later minor one with a major version of at least 1.
    bool doesHwdefHaveCDO() const;
    /// Whether some entry has the attribute "ip_type" with exactly the value "VELD".
    bool isVELDExist() const;
    /// Removes the entries of the kinds that a QVA archive must not carry: SYSMON_DATA, POWER_DATA,
    /// IO_DATA, BD_TCL, and CDO and ELF when the parameter "project.removeVELDFilesFromQVA" was true
    /// when this object was made. The entries leave the list; pointers to them stay valid as long as
    /// the definition lives.
    void removeUnnecessaryFilesForQVA();

    /// Copies version, mode (not the BOM document's name), tool version, resources, board, device,
    /// part, top module; appends copies of all entries; replaces driver files, drivers and free
    /// attributes. Nothing else is copied.
    bool copyFrom(const HHDFHwDef* other);

    // --- Drivers and boards.

    /// Driver name to directory; the first form assigns the map and returns its size.
    std::size_t getDriverFiles(Texts& files) const;
    /// Driver name to its files in insertion order.
    std::map<std::string, std::vector<HHDFHwDefDriver>> getDriverFilesMap() const;
    /// Board name to its files in insertion order.
    std::map<std::string, std::vector<HHDFHwDefBoard>> getBoardFilesMap() const;
    /// Sets a driver's directory; false when a text is empty.
    bool addDrivers(const std::string& name, const std::string& directory);
    /// Sets a driver's file list, replacing an earlier one.
    bool addDrivers(const std::string& name, std::vector<HHDFHwDefDriver> drivers);
    /// Sets the directory of driver `name` to the canonical path of `name` below `parentDir`; false
    /// when a text is empty or nothing exists there.
    bool addDriverDirToBom(const std::string& parentDir, const std::string& name);
    /// Adds one file of a driver unless the same one is there; false when directory or relative name
    /// is empty. Constant cost, however many files the driver has.
    bool addDriverFileToBom(const std::string& name, const std::string& directory,
                            const std::string& relativeName, std::string hwDefFilePath);
    /// Adds one file of a board; repeats are kept. The three texts are those of HHDFHwDefBoard; false
    /// when the first or the second is empty.
    bool addBoardFileToBom(std::string name, std::string filePath, std::string relativeName,
                           std::string hwDefFilePath);
    /// Extracts every driver file of the own container into `targetDir`, below "drivers". A name that
    /// leaves the directory is refused with one message by ComMsgMgr::sendMessage and the walk goes
    /// on. True.
    bool unzipDrivers(const std::string& targetDir) const;

    // --- Reconfigurable partitions.

    /// Adds a module, or a file of a module, to a partition; see HHDFHwDefPartitionInfo. True.
    bool addPartitionInfo(std::string& partitionPath, std::string& rmName, std::string& file, bool isDefault);
    /// Chooses a module for a cell in a configuration, or leaves it as a gray box when `rmName` is
    /// empty. `isActive` counts when the configuration is new.
    void addPartitionCell(const std::string& configName, const std::string& instPath,
                          const std::string& rmName, const std::string& file, bool isActive);
    /// Instance path to partition, and name to configuration; the objects belong to the definition.
    /// @{
    const std::map<std::string, HHDFHwDefPartitionInfo*>& getPartitionInfo() const;
    const std::map<std::string, HHDFHwDefConfig*>& getPartitionConfigs() const;
    /// @}
    /// Writes partitions and configurations to standard output.
    void printPartitionInfo() const;

    // --- Digests.

    /// The overall digest as stored in the BOM.
    /// @{
    std::string getDigest() const;
    bool setDigest(std::string& digest);
    /// @}
    /// Sets the stored digest of one member.
    void addDigestForFile(std::string name, std::string digest);
    /// Replaces all stored digests.
    void updateDigest(std::string& digest, Texts& digestMap);
    /// Computes the digests of the present bytes: `digestMap` gets one text per member name (entries
    /// already there take part in the overall digest), `digest` the overall one. A file on disk that
    /// can't be opened is left out, and so is, after a text that says so, a member beyond the limit
    /// "hwdef.maxDigestedBytes" or "hwdef.maxUnpackSeconds" (platform/Limits.h). Streams: memory does not
    /// grow with a member's size. False, with some of the map filled, only when cancelled
    /// (platform/Progress.h).
    bool calculateDigest(std::string& digest, Texts& digestMap);
    /// Holds computed digests against the stored ones. For the first name, in byte order, that
    /// differs, `message` becomes "File: <name> has been tampered."; it stays when only the overall
    /// digest differs.
    bool compareDigest(std::string& digest, Texts& digestMap, std::string& message);

    // --- The container.

    /// Reads the container named at construction; for one call right after it. With `checkIntegrity`
    /// the digests (minor version 2) or the archive digest (minor version 3) are checked. A non-empty
    /// `driverPath` is the directory below which the drivers lie.
    ///
    /// False after one of the messages "@64-6@", "@64-5@%s", "@64-4@%s", "@64-11@%s", "@64-23@%s",
    /// "@64-25@", after the text of a runtime exception or of a limit, or silently when the BOM doesn't
    /// parse. Standard conversion errors of the BOM's version numbers and of NUM_OF_SLRS
    /// (boost::bad_lexical_cast) pass through. What was read until then stays.
    bool init(bool checkIntegrity, std::string driverPath);
    /// The container's canonical path; `path` is left alone without implementation.
    void getContainerFullPath(std::string& path) const;
    /// The directory that stands for the unpacked container; empty before init.
    std::string getUnzipDir() const;

    /// Rebuilds the own container from the BOM and all members, with an archive digest. The flag
    /// changes nothing. The old container stays until the new one is whole.
    ///
    /// A driver without an ".mdd" file draws the warning "@64-24@%s". A member whose source can't be
    /// read, and one that two sources name, draw a text by ComMsgMgr::sendMessage; the result stays
    /// true. False, after the reason was sent, when the archive or the BOM can't be written.
    bool write(bool flag);
    /// Exports to the directory `path`, every member as a file, or to an archive with the extension
    /// "dsa" (any case). False after "@64-27@%s" (no extension) or "@64-26@" (another one), or when
    /// the BOM can't be written.
    bool write(const std::string& path);
    /// A string literal is a path, not a truth value.
    bool write(const char* path) { return write(std::string(path)); }

    /// The object behind the facade, for the library's own parts; null only when it couldn't be made.
    HHDFHwDefImp* implementation() const { return implementation_.get(); }

protected:
    /// A definition around a given implementation, which may be missing.
    explicit HHDFHwDef(std::unique_ptr<HHDFHwDefImp> implementation);

private:
    std::unique_ptr<HHDFHwDefImp> implementation_;
    std::string emptyText_;
    std::uint32_t missingNumber_ = static_cast<std::uint32_t>(-1);
};
