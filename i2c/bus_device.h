// The I2C character device of a bus, and the control transactions sent through it.
//
// A transaction is one I2C_RDWR ioctl. Its first message writes the control record to address 0,
// with a flag that only the platform's bus driver knows. For a command with a reply, a second
// message reads the reply.
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

    /// The same, cut to the 15 characters of a path field. Two operations take the path of their
    /// bus from such a field: the creation of an index node and the update of a property.
    [[nodiscard]] static BusPath asField(std::int32_t bus);

    [[nodiscard]] const char* c_str() const { return text_.data(); }
    operator std::string_view() const { return text_.data(); }

private:
    static constexpr std::string_view prefix = "/dev/i2c-";

    std::array<char, prefix.size() + longestNumber + 1> text_{};
};

/// An open bus device. The destructor closes it unless close() did so.
class BusDevice {
public:
    /// Opens @p path read-write. Prints a failure with the system's error text.
    explicit BusDevice(const char* path);

    /// Opens @p path read-write. Prints nothing: a failure shows in isOpen() and errno.
    [[nodiscard]] static BusDevice silently(const char* path) { return {path, Silent{}}; }

    BusDevice(const BusDevice&) = delete;
    BusDevice& operator=(const BusDevice&) = delete;
    ~BusDevice() { close(); }

    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
    [[nodiscard]] int descriptor() const { return descriptor_; }
    void close();

private:
    struct Silent {};
    BusDevice(const char* path, Silent);

    int descriptor_ = -1;
};

/// Sends one control transaction on an open bus.
///
/// @param bus    descriptor of the bus device.
/// @param reply  is set to zero, then receives the driver's reply; empty for commands without a
///               reply (update property, remove device, bus recovery).
/// @return the ioctl's result; negative, with errno set, when the driver refused.
int sendControl(int bus, const BusControlRecord& record, std::span<std::uint8_t> reply = {});

/// Prints the result of a refused transaction with the error text of errno. Call it directly after
/// the transaction, before errno changes.
void printRefusal(int result);

} // namespace zolt
