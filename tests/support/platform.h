// The platform's libraries as a table: what a unit test says is all that can be read.
//
// Every call is written down in the order in which it came. A named read of a name that is not in
// the table fails, as does a raw read of an address that is not. What a failed read of the HAL
// leaves in the caller's vector is garbage.
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
    Bytes content;               ///< what its bulk read reads from
    int missingAsks = 0;         ///< how many asks find no object
    std::int32_t readStatus = 0; ///< non-zero: the bulk read fails with it
    bool deliversLess = false;   ///< a bulk read past the content's end delivers what there is
    bool callbackRegistered = false;
    std::int32_t unregisterStatus = 0;
    std::exception_ptr thrownByUnregister{}; ///< UnregisterInterruptCallback() throws it
};

/// What the sysinfo parser library says about one device type. The test owns the records.
struct SysInfo {
    std::int32_t status = 0;
    SysInfoTree* root = nullptr;
};

struct Platform {
    std::map<std::string, Bytes> named;        ///< ReadIO_Str
    std::map<std::string, std::uint32_t> size; ///< what ReadIO_Str reports, where that is a lie
    std::map<std::uint32_t, std::uint8_t> raw; ///< cpld_read_device and cpld_read_block_device
    std::int32_t rawStatus = 5;                ///< status of a raw read that fails
    std::map<std::string, HalObject> hal;      ///< HAL_cfgdata::ReadHALConfig
    std::map<int, SysInfo> sysinfo;            ///< i2c_parse_sysinfo; no data for other types
    std::exception_ptr thrown;                 ///< ReadIO_Str throws it

    std::vector<std::string> calls;   ///< "ReadIO_Str NAME", "cpld_read_device 0xADDRESS",
                                      ///< "free_sysinfo TYPE", ...
    std::vector<std::string> log;     ///< "LEVEL MODULE TEXT" of dlog_printf
    std::vector<std::string> printed; ///< by call: the text handed out before it
};

/// The platform of the running test; resetPlatform() empties it.
Platform& platform();
void resetPlatform();

} // namespace zolt::test
