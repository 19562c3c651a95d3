// A D-Bus message: a call to be sent, or its reply.
#pragma once

#include "sdbusplus/message/append.hpp"
#include "sdbusplus/message/native_types.hpp"
#include "sdbusplus/message/read.hpp"

#include <systemd/sd-bus.h>

#include <memory>
#include <type_traits>

namespace sdbusplus::message {

/// Holds one reference to a message of sd-bus and gives it back at its end.
class message {
public:
    /// Takes a further reference to @p raw, which may be null.
    explicit message(sd_bus_message* raw) : message_(sd_bus_message_ref(raw)) {}

    /// Takes over the caller's reference to @p raw.
    message(sd_bus_message* raw, std::false_type) : message_(raw) {}

    explicit operator bool() const noexcept { return message_ != nullptr; }

    /// Appends the values in their order.
    /// @throws exception::SdBusError when sd-bus refuses one of them
    template <typename... Values>
    void append(const Values&... values) {
        (details::append(message_.get(), values), ...);
    }

    /// Reads the values in their order, each of its C++ type's signature. Containers keep what they
    /// held before and grow.
    /// @throws exception::SdBusError when the message holds something else
    template <typename... Values>
    void read(Values&... values) {
        (details::readValue(message_.get(), values), ...);
    }

    /// Whether this is the reply of a method that failed.
    [[nodiscard]] bool is_method_error() {
        return sd_bus_message_is_method_error(message_.get(), nullptr) > 0;
    }

    /// The message itself, still owned by this object.
    [[nodiscard]] sd_bus_message* get() noexcept { return message_.get(); }

private:
    struct Release {
        void operator()(sd_bus_message* raw) const noexcept { sd_bus_message_unref(raw); }
    };

    std::unique_ptr<sd_bus_message, Release> message_;
};

} // namespace sdbusplus::message

namespace sdbusplus {

using message_t = message::message;

} // namespace sdbusplus
