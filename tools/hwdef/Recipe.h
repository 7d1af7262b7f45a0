#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "PartitionFacts.h"
#include "Properties.h"

/// All that a container is made of: what to write into its bill of materials, and which bytes to pack.
struct Recipe {
    struct File {
        std::string name;
        std::string path;  ///< on disk; empty for the member of that name in the container that was read
        std::string type;
        std::string role;  ///< empty for none
        std::string hierarchy;
        std::string sourceDatabase;  ///< empty for the new container's own file name
        HHDFHwDef::Texts attributes;
    };
    struct DriverFile {
        std::string name;  ///< of the member
        std::string path;  ///< as for File
    };
    struct Driver {
        std::string name;
        std::vector<DriverFile> files;
    };
    struct Member {
        std::string name;
        std::string path;  ///< as for File
    };

    std::vector<Assignment> properties;
    std::string digest;  ///< the overall digest of the members, as the BOM tells it
    std::vector<File> files;
    std::vector<Driver> drivers;
    HHDFHwDef::Texts attributes;
    PartitionFacts partitions;
    bool isStacked = false;
    std::optional<int> dies;  ///< only where the BOM tells it

    /// The path of a BOM document that is taken as it is, and whose name it has; all of the above is
    /// empty then.
    std::string bomPath;
    std::string bomName;
    /// All members in the archive's order, the BOM without a path; empty for the order of packing.
    std::vector<Member> members;
    std::string comment;
    bool hasDigest = true;
    std::optional<std::int64_t> modified;  ///< the members' time; the library's own when not given
};

/// What a container is made of, all bytes being its own.
Recipe recipeOf(const Container& container);
/// The definition that a recipe describes, for a container at `path`. Throws CommandError.
std::unique_ptr<HHDFHwDef> definitionOf(const Recipe& recipe, const std::string& path);
/// The BOM document that a recipe makes for a container at `path`. Throws CommandError.
std::string bomOf(const Recipe& recipe, const std::string& path);
/// Whether a recipe tells all that the container's BOM tells, so that it is made again byte for byte.
bool tellsAll(const Recipe& recipe, const Container& container);
/// Writes the container that a recipe describes. Members without a path come from `present`, which may be
/// replaced by it. Throws CommandError and HEXAll; what stood at the path is then as it was.
void cook(const Recipe& recipe, const std::string& path, const HHDFHwDefArchive* present);
/// The members that packing writes, in its order, the BOM first; of two files of one name the last one
/// counts.
std::vector<Recipe::Member> membersOf(const Recipe& recipe);
/// Sets a property or an attribute; see assign(). An attribute without a value is taken away.
void setIn(Recipe& recipe, const Assignment& assignment);
/// Gives the BOM document the name that the recipe's mode asks for.
void nameBom(Recipe& recipe);
