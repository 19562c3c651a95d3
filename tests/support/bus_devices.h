// The I2C character devices as a script: what a unit test says is how the driver answers.
//
// open, ioctl and close of a test program that links this come here (the linker's --wrap); calls
// about anything but "/dev/i2c-..." go on to the C library. An ioctl that the script does not
// expect fails the test. Closing a device spoils errno, so that an error read too late shows.
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
    Bytes reply{};  ///< what the last message receives
    int error = 0;  ///< errno of a refusal; 0 when the driver did it
    int result = 2; ///< what the ioctl returns when the driver did it
};

struct BusDevices {
    std::map<std::string, int> openErrors; ///< errno by path; other paths open
    std::deque<BusAnswer> answers;         ///< by ioctl, in order

    std::vector<std::string> calls;   ///< "open PATH FLAGS", "ioctl REQUEST: [ADDRESS FLAGS
                                      ///< LENGTH]..", "close"
    std::vector<Bytes> records;       ///< the first message of every ioctl
    std::vector<Bytes> replyAreas;    ///< what the second message's buffer held before the call
    std::vector<std::string> printed; ///< by call: the text handed out before it
};

/// The devices of the running test; resetBusDevices() empties them.
BusDevices& busDevices();
void resetBusDevices();

/// How many of them are open.
std::size_t openBusDevices();

/// A control record: zero but for @p fields, hexadecimal bytes by offset.
Bytes controlRecord(const std::map<std::size_t, std::string>& fields);

/// Bytes written in hexadecimal, blanks and line ends between them.
Bytes bytesOf(const std::string& hexadecimal);

} // namespace zolt::test
