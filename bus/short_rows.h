// The report of payloads without endpoints, which RFC and puck modules share.
#pragma once

#include "bus/payload_printer.h"

namespace zolt {

// Some names differ from those of the CEM payload. "StaticPaylodSize" is the service's own
// spelling.
constexpr ReportRow shortRows[] = {
    {"PayloadFrmtVer", "PayloadFrmtVer"},
    {"DeviceClass", "DeviceClass"},
    {"StaticPaylodSize", "StaticPaylodSize"},
    {"DeviceId", "DeviceId", PropertyType::word},
    {"VendorId", "VendorId", PropertyType::word},
    {"DeviceVer", "DeviceVer"},
    {"NumPwires", "NumPwires", PropertyType::byte, {2, 0}},
    {"TargetI2cGpioDevType", "TargetI2cGpioDevType", PropertyType::byte, {7, 5}},
    {"TargetI2cGpioDevAddr", "TargetI2cGpioDevAddr", PropertyType::byte, {6, 0}},
};

} // namespace zolt
