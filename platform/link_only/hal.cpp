#include "platform/hal.h"

// NOLINTBEGIN(performance-unnecessary-value-param): the platform's contract.

std::int32_t ReadIO_Str(std::string /*name*/, std::vector<std::uint8_t>& /*value*/,
                        std::uint32_t* /*size*/) {
    return -1;
}

HAL_cfgbase* HAL_cfgdata::ReadHALConfig(std::string /*name*/) {
    return nullptr;
}

// NOLINTEND(performance-unnecessary-value-param)
