// Log files that zolt_sim names: one line a call, whole however many processes write.
#pragma once

#include <string_view>

namespace standin {

constexpr const char* debugLogVariable = "ZOLT_SIM_DEBUG_LOG"; ///< file for the debug log
constexpr const char* callLogVariable = "ZOLT_SIM_CALL_LOG";   ///< file for the calls themselves

/// Appends a line to the file that the environment variable names. Without one, or when the file
/// cannot be written, nothing happens: no caller's result depends on a log.
/// @return false when the line was not kept
bool appendLine(const char* variable, std::string_view line);

/// Writes a platform call down: "ReadIO_Str PICPWR_1_DSTAT = 0 [03]".
[[gnu::format(printf, 1, 2)]] void logCall(const char* format, ...);

/// True when somebody wants to know the calls: building a line has its price.
[[nodiscard]] bool callsAreLogged();

} // namespace standin
