// The first lines of the reports of CEM and backplane payloads.
#pragma once

#include "bus/payload_printer.h"

#include <algorithm>
#include <array>

namespace zolt {

// "StaticPaylodSize" is the service's own spelling.
constexpr std::array<ReportRow, 11> cemHeaderRows{{
    {"PayloadFrmtVer", "PayloadFrmtVer"},
    {"DeviceClass", "DeviceClass"},
    {"StaticPaylodSize", "StaticPaylodSize"},
    {"DeviceId", "DeviceId", PropertyType::word},
    {"VendorId", "VendorId", PropertyType::word},
    {"DeviceVer", "DeviceVer"},
    {"NumWires - NUM_PWIRES", "NumWires", PropertyType::byte, {2, 0}}, // bit 3 is not shown
    {"NumWires - NUM_XWIRES", "NumWires", PropertyType::byte, {7, 4}},
    {"TargetI2cDevType - TARGET_I2C_GPIO_DEV_TYPE", "TargetI2cDevType", PropertyType::byte, {7, 5}},
    {"TargetI2cDevType - NUM_EP_DESCRIPTORS", "TargetI2cDevType", PropertyType::byte, {4, 0}},
    {"TargetI2cDevAddr - TARGET_I2C_GPIO_DEV_ADDRESS",
     "TargetI2cDevAddr",
     PropertyType::byte,
     {6, 0}},
}};

/// The rows of a whole report: the header's rows, then @p rows.
template <std::size_t Count>
consteval std::array<ReportRow, cemHeaderRows.size() + Count>
afterCemHeader(const std::array<ReportRow, Count>& rows) {
    std::array<ReportRow, cemHeaderRows.size() + Count> all{};
    std::ranges::copy(rows, std::ranges::copy(cemHeaderRows, all.begin()).out);
    return all;
}

} // namespace zolt
