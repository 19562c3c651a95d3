#include "platform/hal.h"
std::int32_t ReadIO_Str(std::string, std::vector<std::uint8_t>&, std::uint32_t*) { return -1; }
HAL_cfgbase* HAL_cfgdata::ReadHALConfig(std::string) { return nullptr; }
