// The full reports of the modules in modules.h.
#pragma once

#include <string>

namespace zolt::test {

/// Eleven lines: the start of the reports of cemProperties() and backPlaneProperties().
inline const std::string cemHeaderLines =
    "PayloadFrmtVer                                  : 0x02\n"
    "DeviceClass                                     : 0x0B\n"
    "StaticPaylodSize                                : 0x40\n"
    "DeviceId                                        : 0x1234\n"
    "VendorId                                        : 0x100\n"
    "DeviceVer                                       : 0x05\n"
    "NumWires - NUM_PWIRES                           : 0x07\n"
    "NumWires - NUM_XWIRES                           : 0x05\n"
    "TargetI2cDevType - TARGET_I2C_GPIO_DEV_TYPE     : 0x05\n"
    "TargetI2cDevType - NUM_EP_DESCRIPTORS           : 0x13\n"
    "TargetI2cDevAddr - TARGET_I2C_GPIO_DEV_ADDRESS  : 0x50\n";

/// Sixteen lines: EndPoint0 of cemProperties().
inline const std::string decodedEndpointLines =
    "EndPoint0                                       : \n"
    "USB_HUB_PRES                                    : (Hub) USB goes through a USB Hub to get to "
    "this endpoint.\n"
    "HOT_PLUG                                        : Endpoint is not hotplug-capable.\n"
    "INDIRECT                                        : PCIe switch case: EP PCIe lane comes from a "
    "PCIe switch.\n"
    "I2C_MUX_PRES                                    : (no mux) I2C is directly wired from DSL to "
    "endpoint.\n"
    "PICPWR_INDEX                                    : 0x03\n"
    "EP_I2C_SOURCE                                   : 0x02\n"
    "EP_TYPE                                         : 0x02\n"
    "I2C_MUX_DCH                                     : 7\n"
    "EP_LANE_WIDTH                                   : 0x03\n"
    "EP_USB_SOURCE                                   : 0x01\n"
    "USB_HUB_DCH                                     : 2\n"
    "DSL_LANE_OFFSET_LOWER                           : 0x03\n"
    "DSL_INDEX_LOWER                                 : 0x01\n"
    "DSL_LANE_OFFSET_UPPER                           : 0x05\n"
    "DSL_INDEX_UPPER                                 : 0x04\n";

/// 31 lines: the report of cemProperties().
inline const std::string cemReport =
    cemHeaderLines + decodedEndpointLines +
    "EndPoint1                                       : 0x01, 0x02, 0x03, 0x04, 0x05, 0x06\n"
    "EndPoint2                                       : 0x10, 0x20, 0x30, 0x40, 0x50, 0x60\n"
    "EndPoint3                                       : 0xFF, 0xFE, 0xFD, 0xFC, 0xFB, 0xFA\n"
    "checksum                                        : 0xA5\n";

/// 28 lines: the report of backPlaneProperties().
inline const std::string backPlaneReport =
    cemHeaderLines +
    "EndPoint0                                       : 0x00, 0x01, 0x02, 0x03, 0x04, 0x05\n"
    "EndPoint1                                       : 0x10, 0x11, 0x12, 0x13, 0x14, 0x15\n"
    "EndPoint2                                       : 0x20, 0x21, 0x22, 0x23, 0x24, 0x25\n"
    "EndPoint3                                       : 0x30, 0x31, 0x32, 0x33, 0x34, 0x35\n"
    "EndPoint4                                       : 0x40, 0x41, 0x42, 0x43, 0x44, 0x45\n"
    "EndPoint5                                       : 0x50, 0x51, 0x52, 0x53, 0x54, 0x55\n"
    "EndPoint6                                       : 0x60, 0x61, 0x62, 0x63, 0x64, 0x65\n"
    "EndPoint7                                       : 0x70, 0x71, 0x72, 0x73, 0x74, 0x75\n"
    "EndPoint8                                       : 0x80, 0x81, 0x82, 0x83, 0x84, 0x85\n"
    "EndPoint9                                       : 0x90, 0x91, 0x92, 0x93, 0x94, 0x95\n"
    "EndPoint10                                      : 0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5\n"
    "EndPoint11                                      : 0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5\n"
    "EndPoint12                                      : 0xC0, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5\n"
    "EndPoint13                                      : 0xD0, 0xD1, 0xD2, 0xD3, 0xD4, 0xD5\n"
    "EndPoint14                                      : 0xE0, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5\n"
    "EndPoint15                                      : 0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5\n"
    "checksum                                        : 0xA5\n";

/// Nine lines: the report of shortProperties().
inline const std::string shortReport = "PayloadFrmtVer       : 0x02\n"
                                       "DeviceClass          : 0x0B\n"
                                       "StaticPaylodSize     : 0x10\n"
                                       "DeviceId             : 0x100\n"
                                       "VendorId             : 0x0B\n"
                                       "DeviceVer            : 0x05\n"
                                       "NumPwires            : 0x07\n"
                                       "TargetI2cGpioDevType : 0x07\n"
                                       "TargetI2cGpioDevAddr : 0x7F\n";

} // namespace zolt::test
