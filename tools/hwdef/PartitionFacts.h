#pragma once

#include <string>
#include <vector>

#include "Container.h"

/// Partitions and configurations as the BOM document tells them, file names included, which a definition
/// doesn't keep.
struct PartitionFacts {
    struct ModuleFile {
        std::string module;
        std::string file;
    };
    struct Partition {
        std::string path;
        std::string defaultModule;
        std::vector<ModuleFile> files;
    };
    struct Cell {
        std::string path;
        std::string module;  ///< empty for a gray box
        std::vector<std::string> files;
    };
    struct Configuration {
        std::string name;
        bool isActive = false;
        std::vector<Cell> cells;
    };

    std::vector<Partition> partitions;
    std::vector<Configuration> configurations;
};

/// Reads them out of the container's BOM, in the document's order.
PartitionFacts partitionFacts(const Container& container);
