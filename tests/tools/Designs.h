#pragma once

#include <string>

namespace tools {

/// Writes DIR/design.hdf: a post-synthesis definition of version 1.3 with properties, resources, four files,
/// one driver and attributes, and what it was made of below DIR/in.
void writeDesign(const std::string& dir);
/// Writes DIR/partial.hdf: two partitions and two configurations, and no files.
void writePartial(const std::string& dir);
/// Writes DIR/other.hdf: a container of other hands with comments, unknown elements and a member that its
/// BOM doesn't list.
void writeOther(const std::string& dir);
/// Writes DIR/damaged.hdf: a member with another CRC-32 than recorded.
void writeDamaged(const std::string& dir);

}  // namespace tools
