// Statuses of the stand-in's libraries for calls that no fault ends.
#pragma once

#include <cstdint>

namespace standin {

constexpr std::int32_t noBoard = -19;     ///< ENODEV: there is no board
constexpr std::int32_t badArgument = -22; ///< EINVAL: an argument is wrong
constexpr std::int32_t badTopology = -74; ///< EBADMSG: the topology file is damaged

} // namespace standin
