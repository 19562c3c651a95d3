// I2C character devices that follow a script: a unit test says how the driver answers.
//
// The linker's --wrap sends open, ioctl and close of the test program here. Calls for other files
// than "/dev/i2c-..." go on to the C library. An ioctl without a scripted answer fails the test.
// Closing a device changes errno, so that a test notices code that reads errno too late.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace zolt::test {

using Bytes = std::vector<std::uint8_t>;

/// How the driver answers one ioctl.
struct BusAnswer {
    Bytes reply{};  ///< bytes that the last message receives
    int error = 0;  ///< errno when the driver refuses; 0 when it obeys
    int result = 2; ///< result of the ioctl when the driver obeys
};

struct BusDevices {
    std::map<std::string, int> openErrors; ///< errno by path; every other path opens
    std::deque<BusAnswer> answers;         ///< for the ioctls to come, in order

    std::vector<std::string> calls;   ///< "open PATH FLAGS", "ioctl REQUEST: [ADDRESS FLAGS
                                      ///< LENGTH]..", "close"
    std::vector<Bytes> records;       ///< the first message of every ioctl
    std::vector<Bytes> replyAreas;    ///< the reply buffer before each ioctl that has one
    std::vector<std::string> printed; ///< by call: the text handed out before it
};

/// The devices of the running test; resetBusDevices() empties them.
BusDevices& busDevices();
void resetBusDevices();

/// The number of devices that are open.
std::size_t openBusDevices();

/// A control record of zeros with @p fields in it: hexadecimal bytes by offset.
Bytes controlRecord(const std::map<std::size_t, std::string>& fields);

/// Converts hexadecimal text, with blanks or line ends between the bytes.
Bytes bytesOf(const std::string& hexadecimal);

} // namespace zolt::test
