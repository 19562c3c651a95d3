#include "i2c/device_types.h"

#include "console/output.h"

#include <array>
#include <iterator>
#include <string_view>

namespace zolt {

namespace {

struct DeviceType {
    std::string_view name;
    std::string_view label;
};

// The device types by code. The name, which the platform uses, and the label in the menu differ in
// the rows 0, 19, 58 and 59.
constexpr DeviceType deviceTypes[] = {
    {"fSCP", "FSCP"},
    {"KARN", "KARN"},
    {"CPUVR", "CPUVR"},
    {"DIMM", "DIMM"},
    {"DP", "DP"},
    {"HPM_AUTH_IC", "HPM_AUTH_IC"},
    {"HPM_FRU", "HPM_FRU"},
    {"OCP_NIC", "OCP_NIC"},
    {"PCP", "PCP"},
    {"PCP_AIR_TEMP", "PCP_AIR_TEMP"},
    {"PDB_MGMT", "PDB_MGMT"},
    {"PIROM", "PIROM"},
    {"PSU", "PSU"},
    {"RTC", "RTC"},
    {"SL", "SL"},
    {"VGA", "VGA"},
    {"PICPWR", "PICPWR"},
    {"SCP", "SCP"},
    {"RSR", "RSR"},
    {"BP", "Backplane"},
    {"FTULM", "FTULM"},
    {"KARN_RAID", "KARN_RAID"},
    {"KARN_NON_RAID", "KARN_NON_RAID"},
    {"RIDA", "RIDA"},
    {"PUCK", "PUCK"},
    {"RFC", "RFC"},
    {"FLOP", "FLOP"},
    {"BI", "BI"},
    {"LLD", "LLD"},
    {"SLOT", "SLOT"},
    {"IMON", "IMON"},
    {"FAN_MCU", "FAN_MCU"},
    {"BATT", "BATT"},
    {"CKMNG", "CKMNG"},
    {"EDIB_TEMP", "EDIB_TEMP"},
    {"EDID", "EDID"},
    {"ETHSW_EEPROM", "ETHSW_EEPROM"},
    {"I2C_SW", "I2C_SW"},
    {"LCD", "LCD"},
    {"LCP_KVM", "LCP_KVM"},
    {"LCP_AIR_TEMP", "LCP_AIR_TEMP"},
    {"MCU", "MCU"},
    {"ME", "ME"},
    {"MP_EEPROM", "MP_EEPROM"},
    {"PDB_PLD", "PDB_PLD"},
    {"PLANAR_EEPROM", "PLANAR_EEPROM"},
    {"POUT", "POUT"},
    {"RCP_AIR_TEMP", "RCP_AIR_TEMP"},
    {"SEP", "SEP"},
    {"TPM", "TPM"},
    {"APML", "APML"},
    {"CPU_SEC", "CPU_SEC"},
    {"HEADER", "HEADER"},
    {"MISC", "MISC"},
    {"OLS", "OLS"},
    {"LLS", "LLS"},
    {"FAN_IMON", "FAN_IMON"},
    {"PSU_CON", "PSU_CON"},
    {"", "FTULM_FRU"},
    {"", "All device types"},
};

constexpr std::uint32_t ftulmFruCode = 68; // the menu shows this type as 58

} // namespace

std::string deviceTypeName(std::uint32_t code) {
    if (code == ftulmFruCode) {
        return "FTULM_FRU";
    }
    if (code >= std::size(deviceTypes)) {
        return {};
    }
    return std::string(deviceTypes[code].name);
}

void printDeviceTypeMenu() {
    unsigned code = 0;
    for (const DeviceType& type : deviceTypes) {
        write(code < 10 ? " " : ""); // codes are right-aligned in two columns
        print<"%d : %s\n">(code, type.label);
        ++code;
    }
    write("Enter the device type :");
}

} // namespace zolt
