#include "i2c/bus_device.h"

#include "console/output.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace zolt {

namespace {

constexpr std::uint16_t controlFlag = 0x0080; // the driver's own, no flag of Linux
constexpr std::uint16_t controlAddress = 0;

std::string_view errorText() {
    return std::strerror(errno);
}

} // namespace

std::string busDevicePath(std::int32_t bus) {
    std::string path = "/dev/i2c-" + std::to_string(bus);
    path.resize(std::min(path.size(), busTextSize - 1));
    return path;
}

BusDevice::BusDevice(const std::string& path) : descriptor_(::open(path.c_str(), O_RDWR)) {
    if (!isOpen()) {
        print<"I2C Open error (%s)\n">(errorText());
    }
}

void BusDevice::close() {
    if (isOpen()) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

int sendControl(int bus, const BusControlRecord& record, std::span<std::uint8_t> reply) {
    std::ranges::fill(reply, std::uint8_t{0});
    std::array<i2c_msg, 2> messages{{
        {.addr = controlAddress,
         .flags = controlFlag,
         .len = busControlRecordSize,
         .buf = const_cast<std::uint8_t*>(record.bytes().data())}, // the kernel only reads it
        {.addr = controlAddress,
         .flags = I2C_M_RD,
         .len = static_cast<std::uint16_t>(reply.size()),
         .buf = reply.data()},
    }};
    i2c_rdwr_ioctl_data transfer{.msgs = messages.data(), .nmsgs = reply.empty() ? 1U : 2U};
    return ::ioctl(bus, I2C_RDWR, &transfer);
}

void printRefusal(int result) {
    print<"Status is %d (%s)\n">(result, errorText());
}

} // namespace zolt
