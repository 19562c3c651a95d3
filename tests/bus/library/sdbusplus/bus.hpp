// The real library's bus, declared only.
#pragma once

#include <sdbusplus/exception.hpp>
#include <sdbusplus/message.hpp>

#include <cstdint>

namespace sdbusplus::bus {

class bus {
public:
    bus() = delete;
    bus(const bus&) = delete;
    bus& operator=(const bus&) = delete;
    bus(bus&&) noexcept;
    bus& operator=(bus&&) noexcept;
    ~bus();

    message_t new_method_call(const char* service, const char* path, const char* interface,
                              const char* method);
    message_t call(message_t& request, std::uint64_t timeout = 0);
};

bus new_default_system();

} // namespace sdbusplus::bus

namespace sdbusplus {

using bus_t = bus::bus;

} // namespace sdbusplus
