// What a failing call of sd-bus turns into.
#pragma once

#include <systemd/sd-bus.h>

#include <exception>
#include <string>

namespace sdbusplus::exception {

/// Base of all exceptions of this library.
class exception : public std::exception {
public:
    /// Name of the D-Bus error, "org.freedesktop.DBus.Error.ServiceUnknown" for one.
    [[nodiscard]] virtual const char* name() const noexcept = 0;
    /// Text that came with the error.
    [[nodiscard]] virtual const char* description() const noexcept = 0;
};

/// A call of sd-bus that failed. what() reads "call name: error name: error message"; a part that
/// the error does not have is left out together with its colon. It can be moved, and not copied.
class SdBusError final : public exception {
public:
    /// @param error errno value of the failure; it may bear either sign
    /// @param call  name of the call that failed, which what() starts with
    SdBusError(int error, const char* call);

    /// @param error as the call filled it; it is taken over, and empty afterwards
    /// @param call  name of the call that failed, which what() starts with
    SdBusError(sd_bus_error* error, const char* call);

    SdBusError(const SdBusError&) = delete;
    SdBusError& operator=(const SdBusError&) = delete;
    SdBusError(SdBusError&&) noexcept = default;
    SdBusError& operator=(SdBusError&&) noexcept = default;
    ~SdBusError() override = default;

    [[nodiscard]] const char* name() const noexcept override { return name_.c_str(); }
    [[nodiscard]] const char* description() const noexcept override { return description_.c_str(); }
    [[nodiscard]] const char* what() const noexcept override { return what_.c_str(); }

private:
    std::string name_;
    std::string description_;
    std::string what_;
};

} // namespace sdbusplus::exception

namespace sdbusplus::details {

/// @throws exception::SdBusError that bears @p call
[[noreturn]] void fail(int error, const char* call);

/// Passes the result of a call of sd-bus on.
/// @throws exception::SdBusError that bears @p call, when the result is a negative errno
inline int checked(int result, const char* call) {
    if (result < 0) [[unlikely]] {
        fail(result, call); // out of line: there are many of these calls
    }
    return result;
}

} // namespace sdbusplus::details
