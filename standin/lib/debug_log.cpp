// The stand-in's debug log library: appends lines "LEVEL MODULE TEXT" to the file that zolt_sim
// names. Without a file it drops them.
#include "platform/debug_log.h"

#include "standin/lib/log_file.h"

#include <array>
#include <cstdarg>
#include <cstdio>

int dlog_printf(int level, int module, const char* format, ...) {
    std::array<char, 1024> line;
    const int head = std::snprintf(line.data(), line.size(), "%d %d ", level, module);
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(line.data() + head, line.size() - static_cast<std::size_t>(head), format,
                         arguments);
    va_end(arguments);
    return standin::appendLine(standin::LibraryLog::debug, line.data()) ? 0 : -1;
}
