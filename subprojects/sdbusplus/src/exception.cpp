#include "sdbusplus/exception.hpp"

#include <cstdlib>

namespace sdbusplus::exception {

namespace {

// sd-bus owns the texts of an error that it made from an errno.
struct ErrnoError {
    explicit ErrnoError(int number) { sd_bus_error_set_errno(&error_, std::abs(number)); }
    ErrnoError(const ErrnoError&) = delete;
    ErrnoError& operator=(const ErrnoError&) = delete;
    ~ErrnoError() { sd_bus_error_free(&error_); }

    sd_bus_error* get() { return &error_; }

private:
    sd_bus_error error_{};
};

std::string textOrNothing(const char* text) {
    return text != nullptr ? text : "";
}

} // namespace

SdBusError::SdBusError(int error, const char* call) : SdBusError(ErrnoError(error).get(), call) {}

SdBusError::SdBusError(sd_bus_error* error, const char* call)
    : name_(textOrNothing(error->name)), description_(textOrNothing(error->message)), what_(call) {
    for (const char* part : {error->name, error->message}) {
        if (part != nullptr) {
            what_.append(": ").append(part);
        }
    }
    sd_bus_error_free(error); // last: until here it is the caller's
}

} // namespace sdbusplus::exception

void sdbusplus::details::fail(int error, const char* call) {
    throw exception::SdBusError(error, call);
}
