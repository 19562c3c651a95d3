// The platform's libraries as tables, which a unit test fills with all that can be read.
//
// The platform records every call, in order. A named read fails when its name is not in the table,
// and a raw read when its address is not. A read of the HAL that fails leaves garbage in the
// caller's vector.
#pragma once

#include "platform/sysinfo.h"

#include <cstdint>
#include <exception>
#include <map>
#include <string>
#include <vector>

namespace zolt::test {

using Bytes = std::vector<std::uint8_t>;

struct HalObject {
    Bytes content;               ///< bytes that a bulk read can deliver
    int missingAsks = 0;         ///< number of requests that find no object
    std::int32_t readStatus = 0; ///< if not 0, a bulk read fails with it
    bool deliversLess = false;   ///< a bulk read past the end delivers the bytes up to it
    bool callbackRegistered = false;
    std::int32_t unregisterStatus = 0;
    std::exception_ptr thrownByUnregister{}; ///< UnregisterInterruptCallback() throws it
};

/// The sysinfo parser library's answer for one device type. The test owns the records.
struct SysInfo {
    std::int32_t status = 0;
    SysInfoTree* root = nullptr;
};

struct Platform {
    std::map<std::string, Bytes> named;        ///< ReadIO_Str
    std::map<std::string, std::uint32_t> size; ///< wrong sizes that ReadIO_Str reports
    std::map<std::uint32_t, std::uint8_t> raw; ///< cpld_read_device and cpld_read_block_device
    std::int32_t rawStatus = 5;                ///< status of every raw read that fails
    std::map<std::string, HalObject> hal;      ///< HAL_cfgdata::ReadHALConfig
    std::map<int, SysInfo> sysinfo;            ///< i2c_parse_sysinfo; no data for other types
    std::exception_ptr thrown;                 ///< ReadIO_Str throws it, if set

    std::vector<std::string> calls;   ///< "ReadIO_Str NAME", "cpld_read_device 0xADDRESS",
                                      ///< "free_sysinfo TYPE", ...
    std::vector<std::string> log;     ///< "LEVEL MODULE TEXT" of dlog_printf
    std::vector<std::string> printed; ///< by call: the text handed out before it
};

/// The platform of the running test; resetPlatform() empties it.
Platform& platform();
void resetPlatform();

} // namespace zolt::test
