// Log files that zolt_sim names. Each line is one write: lines of several processes do not mix.
#pragma once

#include "standin/image/image.h"

#include <string_view>

namespace standin {

constexpr const char* debugLogVariable = "ZOLT_SIM_DEBUG_LOG"; ///< file for the debug log
constexpr const char* callLogVariable = "ZOLT_SIM_CALL_LOG";   ///< file for platform calls

/// Appends a line to the file of a log, which an environment variable names. Drops the line without
/// the variable, or when the file cannot be written. The board's image then notes the error of
/// the log's first lost line, and zolt_sim tells it.
/// @return false when the line is dropped
bool appendLine(LibraryLog log, std::string_view line);

/// Logs a platform call and its result, like "ReadIO_Str PICPWR_1_DSTAT = 0".
[[gnu::format(printf, 1, 2)]] void logCall(const char* format, ...);

/// Whether calls are logged. If not, logCall() saves the time of formatting a line.
[[nodiscard]] bool callsAreLogged();

} // namespace standin
