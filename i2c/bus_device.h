// The I2C character device of a bus, and the control transactions sent through it.
//
// A transaction is one I2C_RDWR: the control record as a write to address 0 under a flag that only
// the platform's bus driver knows, then, for commands that are answered, a read of the reply.
#pragma once

#include "console/number_text.h"
#include "i2c/bus_control_record.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace zolt {

/// The path of a bus device.
class BusPath {
public:
    /// "/dev/i2c-N".
    explicit BusPath(std::int32_t bus);

    /// The same, cut to the 15 characters that a path field of the driver holds. The driver knows
    /// the parent of a new index node, and the bus of a property's update, by such a field.
    [[nodiscard]] static BusPath asField(std::int32_t bus);

    [[nodiscard]] const char* c_str() const { return text_.data(); }
    operator std::string_view() const { return text_.data(); }

private:
    static constexpr std::string_view prefix = "/dev/i2c-";

    std::array<char, prefix.size() + longestNumber + 1> text_{};
};

/// An open bus device, closed when the object goes at the latest.
class BusDevice {
public:
    /// Opens @p path read-write. A failure is printed with the system's error text.
    explicit BusDevice(const char* path);
    BusDevice(const BusDevice&) = delete;
    BusDevice& operator=(const BusDevice&) = delete;
    ~BusDevice() { close(); }

    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
    [[nodiscard]] int descriptor() const { return descriptor_; }
    void close();

private:
    int descriptor_ = -1;
};

/// Sends one control transaction on an open bus.
///
/// @param bus    descriptor of the bus device.
/// @param reply  receives the driver's answer, set to zero before; empty for commands that have
///               none (update property, remove device, bus recovery).
/// @return the ioctl's result, negative with errno set when the driver refused.
int sendControl(int bus, const BusControlRecord& record, std::span<std::uint8_t> reply = {});

/// Prints the result of a refused transaction with the error text of errno, so that nothing may
/// come between the two.
void printRefusal(int result);

} // namespace zolt
