// For code that wraps calls of the tool: preload libraries, and programs linked with --wrap.
#pragma once

#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>

namespace zolt::test {

/// The function of this name behind this library.
template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// The names of the HAL's functions in its library.
constexpr const char* readIoStr = "_Z10ReadIO_StrNSt7__cxx1112basic_stringIcSt11char_traitsIcE"
                                  "SaIcEEERSt6vectorIhSaIhEEPj";
constexpr const char* readHalConfig = "_ZN11HAL_cfgdata13ReadHALConfigENSt7__cxx1112basic_string"
                                      "IcSt11char_traitsIcESaIcEEE";

inline bool isBus(const char* path) {
    return std::strncmp(path, "/dev/i2c-", 9) == 0;
}

/// The mode among the arguments that follow the flags of open().
inline mode_t modeOf(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace zolt::test

/// Defines a function of the C library that opens a file. @p openAs gets its name and its
/// arguments.
#define WRAP_OPEN(name, openAs)                                                                    \
    int name(const char* path, int flags, ...) {                                                   \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = zolt::test::modeOf(flags, arguments);                                  \
        va_end(arguments);                                                                         \
        return openAs(#name, path, flags, mode);                                                   \
    }
