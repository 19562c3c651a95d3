// Another, tiny implementation of the platform's libraries. It knows one name for each slot, DSTAT,
// with the value 3. A raw register holds the low byte of its address. A read of slot 63 throws
// std::bad_alloc, a read of slot 62 an int. The only PICPWR node has index 7.
#include "platform/cpld_driver.h"
#include "platform/debug_log.h"
#include "platform/hal.h"
#include "platform/sysinfo.h"

#include <new>

// NOLINTBEGIN(performance-unnecessary-value-param): the platform's contract.

std::int32_t ReadIO_Str(std::string name, std::vector<std::uint8_t>& value, std::uint32_t* size) {
    if (name.starts_with("PICPWR_63_")) {
        throw std::bad_alloc();
    }
    if (name.starts_with("PICPWR_62_")) {
        throw 62;
    }
    if (!name.ends_with("_DSTAT")) {
        return 1;
    }
    value.push_back(3);
    *size = 1;
    return 0;
}

HAL_cfgbase* HAL_cfgdata::ReadHALConfig(std::string /*name*/) {
    return nullptr;
}

// NOLINTEND(performance-unnecessary-value-param)

std::int32_t cpld_read_device(std::uint8_t* buffer, std::uint32_t address,
                              std::uint32_t /*length*/) {
    *buffer = static_cast<std::uint8_t>(address);
    return 0;
}

std::int32_t cpld_read_block_device(std::uint8_t* buffer, std::uint32_t address,
                                    std::uint32_t length, std::uint32_t /*stride*/) {
    for (std::uint32_t i = 0; i < length; ++i) {
        buffer[i] = static_cast<std::uint8_t>(address + i);
    }
    return 0;
}

int dlog_printf(int /*level*/, int /*module*/, const char* /*format*/, ...) {
    return 0;
}

int i2c_parse_sysinfo(int deviceType, SysInfoTree** root) {
    static const IndexNodeInfo node{.index = 7};
    static SysInfoTree tree{.indexNodes = &node};
    *root = deviceType == 16 ? &tree : nullptr;
    return *root == nullptr ? 1 : 0;
}

void free_sysinfo(SysInfoTree* /*root*/) {}
