#pragma once

#include <cstdint>
#include <string>

#include "platform/Export.h"

/// The enumerations that classify what a container holds, and their text tokens.
///
/// Values and tokens are part of the container format. A class used as a namespace.
class HWDEF_API HHDFHwDefFileTypes {
public:
    HHDFHwDefFileTypes() = delete;

    /// Kind of a file.
    enum HWHFileType : std::uint32_t {
        HW_HANDOFF = 0,
        HW_SVD = 1,
        PS_FSBL_INIT = 2,
        PS_PMU_INIT = 3,
        PS_FSBL_INIT_GPL = 4,
        PS_KMV_INIT = 5,
        PS_INIT_HELP = 6,
        CDO = 7,
        ELF = 8,
        BIT = 9,
        PDI = 10,
        PARTIAL_PDI = 11,
        PL_PDI = 12,
        BMM = 13,
        MMI = 14,
        LTX = 15,
        PLATFORM = 16,
        PS_CONFIG = 17,
        BD_TCL = 18,
        DRIVER_SRC = 19,
        BOARD = 20,
        POWER_DATA = 21,
        IO_DATA = 22,
        SYSMON_DATA = 23,
        BDA = 24,
        BDA_VARIANT = 25,  ///< written as "BDA", so it reads back as BDA
        AIE_PRIMITIVE = 26,
        ISS = 27,  ///< written as "PARTIAL_BIT", so it reads back as PARTIAL_BIT
        PARTIAL_BIT = 28,
        UNKNOWN = 29,
    };

    /// Block-design role of a file.
    enum HWHBDType : std::uint32_t {
        DEFAULT_BD = 0,
        REFERENCE_BD = 1,
        SCOPED_BD = 2,
        UNKNOWN_BD = 3,
    };

    /// Synthesis mode of a whole definition.
    enum HWHModeType : std::uint32_t {
        PRE_SYNTHESIS = 0,
        POST_SYNTHESIS = 1,
        MODE_UNSET = 2,
    };

    /// The file type of a token, compared exactly; UNKNOWN for any other text. "BVA" reads as BDA.
    static HWHFileType getHWHFileType(const std::string& token);
    /// The token of a file type; "UNKNOWN" for UNKNOWN and every value beyond it.
    static std::string getHWHFileTypeStr(HWHFileType type);
    /// The block-design role of a token, compared exactly; UNKNOWN_BD for any other text.
    static HWHBDType getHWHBDType(const std::string& token);
    /// The token of a block-design role; "UNKNOWN" for every value but the first three.
    static std::string getHWHBDTypeStr(HWHBDType type);
};
