#include "i2c/device_types.h"

#include "tests/i2c/device_type_menu.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>
#include <limits>

namespace zolt::test {

namespace {

TEST(DeviceTypes, EveryCodeHasItsName) {
    constexpr const char* names[] = {
        "fSCP",
        "KARN",
        "CPUVR",
        "DIMM",
        "DP",
        "HPM_AUTH_IC",
        "HPM_FRU",
        "OCP_NIC",
        "PCP",
        "PCP_AIR_TEMP",
        "PDB_MGMT",
        "PIROM",
        "PSU",
        "RTC",
        "SL",
        "VGA",
        "PICPWR",
        "SCP",
        "RSR",
        "BP",
        "FTULM",
        "KARN_RAID",
        "KARN_NON_RAID",
        "RIDA",
        "PUCK",
        "RFC",
        "FLOP",
        "BI",
        "LLD",
        "SLOT",
        "IMON",
        "FAN_MCU",
        "BATT",
        "CKMNG",
        "EDIB_TEMP",
        "EDID",
        "ETHSW_EEPROM",
        "I2C_SW",
        "LCD",
        "LCP_KVM",
        "LCP_AIR_TEMP",
        "MCU",
        "ME",
        "MP_EEPROM",
        "PDB_PLD",
        "PLANAR_EEPROM",
        "POUT",
        "RCP_AIR_TEMP",
        "SEP",
        "TPM",
        "APML",
        "CPU_SEC",
        "HEADER",
        "MISC",
        "OLS",
        "LLS",
        "FAN_IMON",
        "PSU_CON",
    };
    for (std::uint32_t code = 0; code < std::size(names); ++code) {
        EXPECT_EQ(deviceTypeName(code), names[code]) << code;
    }
    EXPECT_EQ(std::size(names), 58);
}

TEST(DeviceTypes, Code68IsTheLastWithAName) {
    for (std::uint32_t code = 58; code < 68; ++code) {
        EXPECT_EQ(deviceTypeName(code), "") << code;
    }
    EXPECT_EQ(deviceTypeName(68), "FTULM_FRU");
    for (const std::uint32_t code : {69U, 164U, 165U, 166U, 255U, 256U, 0xFFFFFFFFU}) {
        EXPECT_EQ(deviceTypeName(code), "") << code;
    }
}

TEST(DeviceTypes, TheMenuHasLabelsOfItsOwn) {
    EXPECT_EQ(outputOf(printDeviceTypeMenu), deviceTypeMenu);
}

} // namespace

} // namespace zolt::test
