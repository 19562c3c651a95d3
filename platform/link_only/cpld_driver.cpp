#include "platform/cpld_driver.h"

std::int32_t cpld_read_device(std::uint8_t* /*buffer*/, std::uint32_t /*address*/,
                              std::uint32_t /*length*/) {
    return -1;
}

std::int32_t cpld_read_block_device(std::uint8_t* /*buffer*/, std::uint32_t /*address*/,
                                    std::uint32_t /*length*/, std::uint32_t /*stride*/) {
    return -1;
}
