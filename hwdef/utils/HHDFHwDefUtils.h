#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "hwdef/model/HHDFHwDef.h"
#include "platform/Export.h"

/// Operations on containers by path. A class used as a namespace.
///
/// A member is named by its path inside the archive and comes before the archive.
class HWDEF_API HHDFHwDefUtils {
public:
    HHDFHwDefUtils() = delete;

    /// Free attributes: name to value.
    using Attributes = std::map<std::string, std::string>;

    // --- Definitions. The caller owns what a factory returns.

    /// A new, empty definition for a container to be written; the file need not exist. Empty for an
    /// empty path.
    static std::unique_ptr<HHDFHwDef> createHDF(const std::string& path);
    /// A definition filled from an existing container; empty after HHDFHwDef::init's message when it
    /// can't be opened. What HHDFHwDef::init lets through passes through here too.
    static std::unique_ptr<HHDFHwDef> getHDF(const std::string& path, bool checkIntegrity = false,
                                             std::string driverPath = {});
    /// Several definitions folded into a new one for the container at `path`: properties from the
    /// first that names a part, entries, drivers and attributes from all. Empty after "@64-13@" (empty
    /// path) or "@64-12@%s" (no definitions). A null definition ends the walk. Linear in the entries.
    static std::unique_ptr<HHDFHwDef> getMrgdHDF(const std::vector<HHDFHwDef*>& definitions,
                                                 const std::string& path);
    /// Destroys every definition of the vector; null ones are passed over.
    static void releaseHDFs(const std::vector<HHDFHwDef*>& definitions);

    // --- Members. An archive that can't be read or written sends its reason by
    // ComMsgMgr::sendMessage; other failures are silent. Nothing else is reported.

    /// The member's whole content; empty when it can't be had.
    static std::string getFileBufferFromHDF(const std::string& member, const std::string& container);
    /// Copies a member to a file, whose parent directories are made. True when the member was read
    /// whole; whether the file could be written isn't told.
    static bool writeFileFromHDF(const std::string& destination, const std::string& member,
                                 const std::string& container);
    /// Copies a member to the file `name` in the directory `dir`.
    static bool writeFileFromHDFToDir(const std::string& member, const std::string& container,
                                      const std::string& name, const std::string& dir);
    /// Puts a file into a container as a member; the container is created when it doesn't exist and
    /// a member of that name replaced. Costs what is added, not the container's size.
    static bool writeFileToHDF(const std::string& source, const std::string& member,
                               const std::string& container);
    /// Copies a member from one container into another.
    static bool writeFileFromHDFToHDF(const std::string& member, const std::string& container,
                                      const std::string& destinationMember,
                                      const std::string& destinationContainer);

    // --- Building.

    /// Writes a container from files with their types, in order. `fileAttributes` is looked up by the
    /// path under which a file enters the BOM. False after "@64-10@" (empty path), "@64-14@%s" (the
    /// file exists and `overwrite` is false), "@64-15@%s" (its directory can't be written to), or when
    /// the write failed.
    static bool writeHDF(const std::string& path,
                         const std::vector<std::pair<std::string, HHDFHwDefFileTypes::HWHFileType>>& files,
                         bool overwrite, const std::map<std::string, Attributes>& fileAttributes,
                         const Attributes& wdiAttributes);

    /// Whether the list holds a record whose three texts are those of `record`. Walks the list.
    static bool isAlreadyPresent(const std::vector<HHDFHwDefDriver>& list, const HHDFHwDefDriver& record);

    /// Reads the software parameters of the container's first file of the type `typeToken`, which must
    /// stand at the archive's top. Both outputs are emptied first. False when there is no such
    /// container, type or file; true with empty outputs when the archive lacks the file or it can't
    /// be parsed. Messages of getHDF and SWParamReader may come; their exceptions pass through.
    static bool getSWParamInfo(const std::string& typeToken, const std::string& container,
                               std::string& refName, Attributes& attributes);
};
