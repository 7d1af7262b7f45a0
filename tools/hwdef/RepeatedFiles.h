#pragma once

#include <string>
#include <vector>

#include "Container.h"

/// What the BOM document says of an entry itself. Of entries that share a file name, an opened definition has
/// it all with the first ones.
struct ListedFile {
    HHDFHwDef::Texts attributes;
    std::string sourceDatabase;
};

/// Those of all entries of a container in order; nothing when no file name repeats.
std::vector<ListedFile> listedFiles(const Container& container);

/// Gives the entries of a container's definition what the document says of them.
void takeApartRepeated(Container& container);
