#pragma once

/// The vocabulary of the BOM document, for reader and writer alike.
///
/// Elements are written in the case given here and read in any; attributes are written and read
/// exactly.
namespace bom {

namespace element {
inline constexpr const char* PROJECT = "Project";
inline constexpr const char* TOOL_VERSION = "TOOL_VERSION";
inline constexpr const char* MODE = "MODE";
inline constexpr const char* SYSTEMINFO = "SYSTEMINFO";
inline constexpr const char* PART = "PART";
inline constexpr const char* TIER = "TIER";
inline constexpr const char* NUM_OF_SLRS = "NUM_OF_SLRS";
inline constexpr const char* HIERARCHY = "HIERARCHY";
inline constexpr const char* FILE = "File";
inline constexpr const char* FILEATTR = "FILEATTR";
inline constexpr const char* DRIVERS = "DRIVERS";
inline constexpr const char* DRIVER = "DRIVER";
inline constexpr const char* USEDRESOURCES = "USEDRESOURCES";
inline constexpr const char* WDIATTRS = "WDIATTRS";
inline constexpr const char* WDIATTR = "WDIATTR";
inline constexpr const char* INSTANCE_PATHS = "Instance_Paths";
inline constexpr const char* RECONFIGURABLE_PARTITION = "Reconfigurable_Partition";
inline constexpr const char* PR_CONFIGURATIONS = "PRConfigurations";
inline constexpr const char* PR_CONFIGURATION = "PRConfiguration";
inline constexpr const char* PARTITION_INST_MAP = "PartitionInstMap";
inline constexpr const char* GRAY_BOX_INST = "GrayBoxInst";
// A board description, which is read only.
inline constexpr const char* BASEBOARD = "BASEBOARD";
inline constexpr const char* DAUGHTERBOARD = "DAUGHTERBOARD";
inline constexpr const char* JUMPERS = "JUMPERS";
}  // namespace element

namespace attribute {
inline constexpr const char* VERSION = "Version";
inline constexpr const char* MINOR = "Minor";
inline constexpr const char* DIGEST = "DIGEST";
inline constexpr const char* NAME = "Name";
inline constexpr const char* VALUE = "Value";
inline constexpr const char* TYPE = "Type";
inline constexpr const char* PATH = "PATH";
inline constexpr const char* BOARD = "BOARD";
inline constexpr const char* PART = "PART";
inline constexpr const char* ARCH = "ARCH";
inline constexpr const char* PACKAGE = "PACKAGE";
inline constexpr const char* DEVICE = "DEVICE";
inline constexpr const char* SPEED = "SPEED";
inline constexpr const char* LUT = "LUT";
inline constexpr const char* FF = "FF";
inline constexpr const char* BRAM = "BRAM";
inline constexpr const char* DSP = "DSP";
inline constexpr const char* IS_TIER = "IS_TIER";
inline constexpr const char* SRC_DB = "src_db";
inline constexpr const char* DESIGN_HIERARCHY = "DESIGN_HIERARCHY";
inline constexpr const char* BD_TYPE = "BD_TYPE";
inline constexpr const char* ATTRNAME = "ATTRNAME";
inline constexpr const char* ATTRVAL = "ATTRVAL";
inline constexpr const char* IP_VLNV = "IP_VLNV";
inline constexpr const char* INSTANCE_PATH = "Instance_Path";
inline constexpr const char* DEFAULT_CONFIG_RM = "DEFALUT_CONFIG_RM";  // spelled so in every document
inline constexpr const char* RM_NAME = "RM_NAME";
inline constexpr const char* ACTIVE = "Active";
inline constexpr const char* CONNECTOR = "Connector";
}  // namespace attribute

/// Values with a meaning of their own. File types and roles have theirs in HHDFHwDefFileTypes.
namespace value {
inline constexpr const char* PRE_SYNTHESIS = "Pre-Synthesis";
inline constexpr const char* ONE = "1";
inline constexpr const char* ZERO = "0";
inline constexpr const char* YES = "true";
inline constexpr const char* NO = "false";
inline constexpr const char* DRIVERS_DIR = "drivers";
inline constexpr const char* BOARD_DIR = "board";
inline constexpr const char* INTEGRATED = "Integrated";
}  // namespace value

}  // namespace bom
