// A preload library that records each call of the platform's libraries, of a bus device and of the
// system bus. It makes one chosen call hang, abort, or throw a type that does not derive from
// std::exception.
//
//     CALL_LIST  file that receives the name of every call, one a line
//     STOP_AT    number of the call to stop at, counted from 1; without it no call stops
//     STOP_HOW   hang, abort or throw
//     STOPPED    file that is made when a call hangs
#undef _FILE_OFFSET_BITS // open and open64 are two functions here

#include "platform/cpld_driver.h"
#include "platform/debug_log.h"
#include "platform/hal.h"
#include "platform/sysinfo.h"
#include "tests/support/wrapped_calls.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace {

using zolt::test::isBus;
using zolt::test::next;
using zolt::test::readHalConfig;
using zolt::test::readIoStr;

struct Foreign {};

void append(const char* variable, const std::string& line) {
    if (const char* const path = std::getenv(variable)) {
        std::FILE* const file = std::fopen(path, "a");
        (void)std::fputs((line + "\n").c_str(), file);
        (void)std::fclose(file);
    }
}

// Called at the start of every call, before the real one.
void enter(const std::string& call) {
    static int number = 0;
    ++number;
    append("CALL_LIST", call);
    const char* const stopAt = std::getenv("STOP_AT");
    if (stopAt == nullptr || std::strtol(stopAt, nullptr, 10) != number) {
        return;
    }
    const std::string_view how = std::getenv("STOP_HOW");
    if (how == "throw") {
        throw Foreign();
    }
    if (how == "abort") {
        std::abort();
    }
    append("STOPPED", call);
    while (true) {
        pause();
    }
}

// The HAL's object, with every call of it written down.
class Object : public HAL_i2c {
public:
    explicit Object(HAL_cfgbase* object) : object_(object) {}

    std::int32_t ReadIO(std::vector<std::uint8_t>& buffer, std::uint32_t length,
                        std::uint32_t offset) override {
        enter("HAL_cfgbase::ReadIO");
        return object_->ReadIO(buffer, length, offset);
    }
    [[nodiscard]] bool IsInterruptCallbackRegistered() const override {
        enter("HAL_cfgbase::IsInterruptCallbackRegistered");
        return object_->IsInterruptCallbackRegistered();
    }
    std::int32_t UnregisterInterruptCallback() override {
        enter("HAL_cfgbase::UnregisterInterruptCallback");
        return object_->UnregisterInterruptCallback();
    }
    [[nodiscard]] const std::string& Name() const override {
        enter("HAL_cfgbase::Name");
        return object_->Name();
    }

private:
    std::unique_ptr<HAL_cfgbase> object_;
};

int busDescriptor = -1; // the tool has one bus open at a time

int openAs(const char* name, const char* path, int flags, mode_t mode) {
    if (isBus(path)) {
        enter(std::string("open ") + path);
    }
    const int descriptor = next<int(const char*, int, ...)>(name)(path, flags, mode);
    if (isBus(path)) {
        busDescriptor = descriptor;
    }
    return descriptor;
}

} // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): the platform's contract.

std::int32_t ReadIO_Str(std::string name, std::vector<std::uint8_t>& value, std::uint32_t* size) {
    enter("ReadIO_Str " + name);
    return next<decltype(ReadIO_Str)>(readIoStr)(name, value, size);
}

HAL_cfgbase* HAL_cfgdata::ReadHALConfig(std::string name) {
    enter("ReadHALConfig " + name);
    HAL_cfgbase* const object = next<HAL_cfgbase*(std::string)>(readHalConfig)(name);
    return object == nullptr ? nullptr : new Object(object);
}

// NOLINTEND(performance-unnecessary-value-param)

extern "C" {

std::int32_t cpld_read_device(std::uint8_t* buffer, std::uint32_t address, std::uint32_t length) {
    enter("cpld_read_device");
    return next<decltype(cpld_read_device)>("cpld_read_device")(buffer, address, length);
}

std::int32_t cpld_read_block_device(std::uint8_t* buffer, std::uint32_t address,
                                    std::uint32_t length, std::uint32_t stride) {
    enter("cpld_read_block_device");
    return next<decltype(cpld_read_block_device)>("cpld_read_block_device")(buffer, address, length,
                                                                            stride);
}

int dlog_printf(int level, int module, const char* format, ...) {
    enter("dlog_printf");
    std::array<char, 512> text;
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return next<decltype(dlog_printf)>("dlog_printf")(level, module, "%s", text.data());
}

int i2c_parse_sysinfo(int deviceType, SysInfoTree** root) {
    enter("i2c_parse_sysinfo " + std::to_string(deviceType));
    return next<decltype(i2c_parse_sysinfo)>("i2c_parse_sysinfo")(deviceType, root);
}

void free_sysinfo(SysInfoTree* root) {
    enter("free_sysinfo");
    next<decltype(free_sysinfo)>("free_sysinfo")(root);
}

WRAP_OPEN(open, openAs)
WRAP_OPEN(open64, openAs)

// The C library's declaration promises that the call does not throw, and no test orders it to.
// NOLINTNEXTLINE(bugprone-exception-escape)
int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (descriptor == busDescriptor) {
        enter("ioctl");
    }
    return next<int(int, unsigned long, ...)>("ioctl")(descriptor, request, argument);
}

int close(int descriptor) {
    if (descriptor == busDescriptor) {
        enter("close");
        busDescriptor = -1;
    }
    return next<decltype(close)>("close")(descriptor);
}

int sd_bus_default_system(sd_bus** bus) {
    enter("sd_bus_default_system");
    return next<decltype(sd_bus_default_system)>("sd_bus_default_system")(bus);
}

int sd_bus_call(sd_bus* bus, sd_bus_message* request, std::uint64_t timeout, sd_bus_error* error,
                sd_bus_message** reply) {
    enter("sd_bus_call");
    return next<decltype(sd_bus_call)>("sd_bus_call")(bus, request, timeout, error, reply);
}

sd_bus* sd_bus_flush_close_unref(sd_bus* bus) {
    enter("sd_bus_flush_close_unref");
    return next<decltype(sd_bus_flush_close_unref)>("sd_bus_flush_close_unref")(bus);
}
}
