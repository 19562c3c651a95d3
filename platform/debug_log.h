// The platform's debug log library.
//
// On a board the lines go to the management controller's debug log; the console never shows them.
#pragma once

extern "C" {

/// Writes one line to the platform's debug log.
///
/// @param level   2 for errors, 5 for information; the log decides which levels it keeps.
/// @param module  number of the program that logs; this tool's is 273.
/// @param format  a printf format without a trailing newline: the log ends the line itself.
/// @return 0, or a negative number when the line was not kept. Logging is best effort: callers
///         ignore the result.
[[gnu::format(printf, 3, 4)]] int dlog_printf(int level, int module, const char* format, ...);
}
