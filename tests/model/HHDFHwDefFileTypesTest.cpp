#include "hwdef/model/HHDFHwDefFileTypes.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Types = HHDFHwDefFileTypes;

struct FileTypeRow {
    std::uint32_t value;
    Types::HWHFileType type;
    const char* written;
    const char* read;  // null when no token reads as this type
};

const std::vector<FileTypeRow> fileTypeRows = {
    {0, Types::HW_HANDOFF, "HW_HANDOFF", "HW_HANDOFF"},
    {1, Types::HW_SVD, "HW_SVD", "HW_SVD"},
    {2, Types::PS_FSBL_INIT, "PS_FSBL_INIT", "PS_FSBL_INIT"},
    {3, Types::PS_PMU_INIT, "PS_PMU_INIT", "PS_PMU_INIT"},
    {4, Types::PS_FSBL_INIT_GPL, "PS_FSBL_INIT_GPL", "PS_FSBL_INIT_GPL"},
    {5, Types::PS_KMV_INIT, "PS_KMV_INIT", "PS_KMV_INIT"},
    {6, Types::PS_INIT_HELP, "PS_INIT_HELP", "PS_INIT_HELP"},
    {7, Types::CDO, "CDO", "CDO"},
    {8, Types::ELF, "ELF", "ELF"},
    {9, Types::BIT, "BIT", "BIT"},
    {10, Types::PDI, "PDI", "PDI"},
    {11, Types::PARTIAL_PDI, "PARTIAL_PDI", "PARTIAL_PDI"},
    {12, Types::PL_PDI, "PL_PDI", "PL_PDI"},
    {13, Types::BMM, "BMM", "BMM"},
    {14, Types::MMI, "MMI", "MMI"},
    {15, Types::LTX, "LTX", "LTX"},
    {16, Types::PLATFORM, "PLATFORM", "PLATFORM"},
    {17, Types::PS_CONFIG, "PS_CONFIG", "PS_CONFIG"},
    {18, Types::BD_TCL, "BD_TCL", "BD_TCL"},
    {19, Types::DRIVER_SRC, "DRIVER_SRC", "DRIVER_SRC"},
    {20, Types::BOARD, "BOARD", "BOARD"},
    {21, Types::POWER_DATA, "POWER_DATA", "POWER_DATA"},
    {22, Types::IO_DATA, "IO_DATA", "IO_DATA"},
    {23, Types::SYSMON_DATA, "SYSMON_DATA", "SYSMON_DATA"},
    {24, Types::BDA, "BDA", "BDA"},
    {25, Types::BDA_VARIANT, "BDA", nullptr},
    {26, Types::AIE_PRIMITIVE, "AIE_PRIMITIVE", "AIE_PRIMITIVE"},
    {27, Types::ISS, "PARTIAL_BIT", "ISS"},
    {28, Types::PARTIAL_BIT, "PARTIAL_BIT", "PARTIAL_BIT"},
    {29, Types::UNKNOWN, "UNKNOWN", "UNKNOWN"},
};

std::uint32_t valueOf(const std::string& token)
{
    return Types::getHWHFileType(token);
}

std::uint32_t bdValueOf(const std::string& token)
{
    return Types::getHWHBDType(token);
}

std::string bdTokenOf(int value)
{
    return Types::getHWHBDTypeStr(static_cast<Types::HWHBDType>(value));
}

}  // namespace

TEST(HHDFHwDefFileTypes, givesEveryFileTypeItsValue)
{
    for (const FileTypeRow& row : fileTypeRows) {
        EXPECT_EQ(std::uint32_t{row.type}, row.value);
    }
}

TEST(HHDFHwDefFileTypes, writesTheTokenOfEveryFileType)
{
    for (const FileTypeRow& row : fileTypeRows) {
        EXPECT_EQ(Types::getHWHFileTypeStr(row.type), row.written) << row.value;
    }
}

TEST(HHDFHwDefFileTypes, readsTheTokenOfEveryFileType)
{
    for (const FileTypeRow& row : fileTypeRows) {
        if (row.read) {
            EXPECT_EQ(valueOf(row.read), row.value) << row.read;
        }
    }
}

TEST(HHDFHwDefFileTypes, readsBackWhatItWroteExceptForTheTwoVariants)
{
    for (std::uint32_t value = 0; value < 29; ++value) {
        const std::uint32_t expected = value == 25 ? 24 : value == 27 ? 28 : value;
        EXPECT_EQ(valueOf(Types::getHWHFileTypeStr(static_cast<Types::HWHFileType>(value))), expected);
    }
}

TEST(HHDFHwDefFileTypes, readsBvaAsBdaAndWritesItAsBda)
{
    EXPECT_EQ(valueOf("BVA"), 24U);
    EXPECT_EQ(Types::getHWHFileTypeStr(Types::getHWHFileType("BVA")), "BDA");
}

TEST(HHDFHwDefFileTypes, writesIssAsPartialBit)
{
    EXPECT_EQ(Types::getHWHFileTypeStr(Types::getHWHFileType("ISS")), "PARTIAL_BIT");
}

TEST(HHDFHwDefFileTypes, writesUnknownForValuesBeyondTheLast)
{
    EXPECT_EQ(Types::getHWHFileTypeStr(static_cast<Types::HWHFileType>(30)), "UNKNOWN");
    EXPECT_EQ(Types::getHWHFileTypeStr(static_cast<Types::HWHFileType>(1000)), "UNKNOWN");
    EXPECT_EQ(Types::getHWHFileTypeStr(static_cast<HHDFHwDefFileTypes::HWHFileType>(0xffffffffU)), "UNKNOWN");
}

TEST(HHDFHwDefFileTypes, readsOnlyWholeTokensInTheirCase)
{
    for (const char* token : {"", "bit", "Bit", "BIT ", " BIT", "BI", "BITS", "BDA_VARIANT", "BIT\n"}) {
        EXPECT_EQ(valueOf(token), 29U) << token;
    }
    EXPECT_EQ(valueOf(std::string("BIT\0", 4)), 29U);
}

TEST(HHDFHwDefFileTypes, givesEveryRoleItsValueAndToken)
{
    EXPECT_EQ(std::uint32_t{Types::DEFAULT_BD}, 0U);
    EXPECT_EQ(std::uint32_t{Types::REFERENCE_BD}, 1U);
    EXPECT_EQ(std::uint32_t{Types::SCOPED_BD}, 2U);
    EXPECT_EQ(std::uint32_t{Types::UNKNOWN_BD}, 3U);
    EXPECT_EQ(bdTokenOf(0), "DEFAULT_BD");
    EXPECT_EQ(bdTokenOf(1), "REFERENCE_BD");
    EXPECT_EQ(bdTokenOf(2), "SCOPED_BD");
    EXPECT_EQ(bdTokenOf(3), "UNKNOWN");
}

TEST(HHDFHwDefFileTypes, writesUnknownForRolesBeyondTheLast)
{
    EXPECT_EQ(bdTokenOf(4), "UNKNOWN");
    EXPECT_EQ(bdTokenOf(-1), "UNKNOWN");
}

TEST(HHDFHwDefFileTypes, readsTheTokenOfEveryRole)
{
    EXPECT_EQ(bdValueOf("DEFAULT_BD"), 0U);
    EXPECT_EQ(bdValueOf("REFERENCE_BD"), 1U);
    EXPECT_EQ(bdValueOf("SCOPED_BD"), 2U);
}

TEST(HHDFHwDefFileTypes, readsAnyOtherRoleAsUnknown)
{
    for (const char* token : {"", "UNKNOWN", "UNKNOWN_BD", "default_bd", "DEFAULT_BD ", "DEFAULT"}) {
        EXPECT_EQ(bdValueOf(token), 3U) << token;
    }
}

TEST(HHDFHwDefFileTypes, givesEveryModeItsValue)
{
    EXPECT_EQ(std::uint32_t{Types::PRE_SYNTHESIS}, 0U);
    EXPECT_EQ(std::uint32_t{Types::POST_SYNTHESIS}, 1U);
    EXPECT_EQ(std::uint32_t{Types::MODE_UNSET}, 2U);
}

TEST(HHDFHwDefFileTypes, holdsItsEnumerationsInUnsignedWords)
{
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<Types::HWHFileType>, std::uint32_t>));
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<Types::HWHBDType>, std::uint32_t>));
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<Types::HWHModeType>, std::uint32_t>));
}
