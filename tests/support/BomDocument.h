#pragma once

#include <memory>
#include <string>

#include "hwdef/model/HHDFHwDef.h"
#include "support/FakeElement.h"

namespace support {

/// A definition of the container /data/design.hdf, unpacked at `unzipDir`. Neither exists.
std::unique_ptr<HHDFHwDef> definition(const std::string& unzipDir = "/data/design");

/// A BOM's root of version 1.0, without children.
std::unique_ptr<FakeElement> project();

/// Reads a document, given by its root or as text, into the definition.
bool readBom(HHDFHwDef& def, FakeElement& root, const std::string& driverPath = "");
bool readBomText(HHDFHwDef& def, const std::string& document, const std::string& driverPath = "");

/// The definition's BOM document as the writer writes it; fails the test when it doesn't.
std::string writtenBom(const HHDFHwDef& def);

/// An XML document as libxml2 sees it, one element a line: indented by two blanks a level, the name,
/// then name='value' for each attribute in order. Fails the test when it isn't well formed.
std::string outline(const std::string& document);

/// The BOM list, one entry a line: "path type role hierarchy source-database [name=value ...]".
std::string entriesOf(const HHDFHwDef& def);

/// All drivers, one file a line: "driver: path, relative name, container path".
std::string driversOf(const HHDFHwDef& def);

}  // namespace support
