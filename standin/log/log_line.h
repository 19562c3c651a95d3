// Lines of the stand-in's logs.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace standin {

/// Gets the lines of a log, each without its line end. An empty function drops them.
using LineLog = std::function<void(const std::string& line)>;

/// The environment variable that makes lines start with a time. It holds the time of zolt_sim's
/// start, in the form of monotonicTime().
constexpr const char* logStartVariable = "ZOLT_SIM_LOG_START";

/// Microseconds of the machine's monotonic clock.
[[nodiscard]] std::int64_t monotonicTime();

/// The time between two values of monotonicTime(): seconds with six digits in front of the point
/// and six behind it, "000012.345678". Such texts sort in the order of the times for 11 days.
[[nodiscard]] std::string timeText(std::int64_t start, std::int64_t now);

/// Writes a line and its line end to an open file, if possible in one piece.
///
/// No signal reaches the process for a pipe without a reader or for a file that is too long.
/// @return 0, or the errno of the write
[[nodiscard]] int writeLine(int file, std::string_view line);

} // namespace standin
