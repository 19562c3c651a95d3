// The names of the service on the system bus: its objects, and the interfaces that the views ask
// for.
#pragma once

#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

namespace zolt {

/// Bus name of the service that watches the module slots.
constexpr const char* zoltService = "com.tesk.bmc.zolt";

/// The information object.
constexpr const char* infoPath = "/com/tesk/bmc/zolt/info";
constexpr const char* infoInterface = "com.tesk.bmc.zolt.pcardInfo";

/// The last path element of each module type, from type 1 on.
constexpr std::string_view moduleTypeSuffixes[] = {"bp",    "puck",     "rfc",         "riser",
                                                   "ftulm", "karnRaid", "karnNonRaid", "rida",
                                                   "flop",  "bi",       "battery"};

/// The path of the object manager of a module type, 1 to 11; empty for an unknown type.
inline std::string managerPath(std::uint8_t moduleType) {
    if (moduleType == 0 || moduleType > std::size(moduleTypeSuffixes)) {
        return {};
    }
    return std::string("/com/tesk/bmc/zolt/").append(moduleTypeSuffixes[moduleType - 1U]);
}

/// The interface with a module's CIR properties.
/// @param moduleClass  module type minus 1; the classes from 3 on carry a CEM payload.
constexpr const char* cirInterface(std::uint8_t moduleClass) {
    switch (moduleClass) {
    case 0:
        return "com.tesk.bmc.zolt.backplaneCIR";
    case 1:
        return "com.tesk.bmc.zolt.puckCIR";
    case 2:
        return "com.tesk.bmc.zolt.rfcCIR";
    default:
        return "com.tesk.bmc.zolt.cemCIR";
    }
}

} // namespace zolt
