// A connection to a message bus.
#pragma once

#include "sdbusplus/exception.hpp"
#include "sdbusplus/message.hpp"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>
#include <type_traits>

namespace sdbusplus::bus {

/// Holds one connection of sd-bus, which is closed at its end. The connection may be null: the
/// first call made with it then fails with ENOTCONN.
class bus {
public:
    /// Takes a further reference to @p raw, which may be null. At this object's end the connection
    /// is closed whoever else has a reference.
    explicit bus(sd_bus* raw) : bus_(sd_bus_ref(raw)) {}

    /// A call of @p method of @p interface at @p path of @p service, without arguments.
    /// @throws exception::SdBusError when one of the names is none, or without a connection
    [[nodiscard]] message_t new_method_call(const char* service, const char* path,
                                            const char* interface, const char* method) {
        sd_bus_message* raw = nullptr;
        details::checked(
            sd_bus_message_new_method_call(bus_.get(), &raw, service, path, interface, method),
            "sd_bus_message_new_method_call");
        return {raw, std::false_type()};
    }

    /// Sends @p request and waits for its reply.
    /// @param timeout microseconds to wait; 0 for the connection's own time-out
    /// @throws exception::SdBusError with the error that came in the reply's place
    message_t call(message_t& request, std::uint64_t timeout = 0) {
        Error error;
        sd_bus_message* reply = nullptr;
        const int result = sd_bus_call(bus_.get(), request.get(), timeout, &error.content, &reply);
        if (sd_bus_error_is_set(&error.content) > 0) {
            throw exception::SdBusError(&error.content, "sd_bus_call");
        }
        details::checked(result, "sd_bus_call"); // refused before there was an error to fill
        return {reply, std::false_type()};
    }

private:
    struct Close {
        void operator()(sd_bus* raw) const noexcept { sd_bus_flush_close_unref(raw); }
    };

    // Takes over the caller's reference.
    bus(sd_bus* raw, std::false_type) : bus_(raw) {}
    friend bus new_default_system();

    struct Error {
        Error() = default;
        Error(const Error&) = delete;
        Error& operator=(const Error&) = delete;
        ~Error() { sd_bus_error_free(&content); }

        sd_bus_error content{};
    };

    std::unique_ptr<sd_bus, Close> bus_;
};

/// The system bus, shared within a thread for as long as one holds it. That it cannot be reached is
/// told by the first call.
[[nodiscard]] inline bus new_default_system() {
    sd_bus* raw = nullptr;
    (void)sd_bus_default_system(&raw);
    return {raw, std::false_type()};
}

} // namespace sdbusplus::bus

namespace sdbusplus {

using bus_t = bus::bus;

} // namespace sdbusplus
