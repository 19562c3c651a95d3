#include "platform/cpld_driver.h"
std::int32_t cpld_read_device(std::uint8_t*, std::uint32_t, std::uint32_t) { return -1; }
std::int32_t cpld_read_block_device(std::uint8_t*, std::uint32_t, std::uint32_t, std::uint32_t) { return -1; }
