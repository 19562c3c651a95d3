#include "i2c/bus_device.h"

#include "console/number_text.h"
#include "console/output.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace zolt {

namespace {

constexpr std::uint16_t controlFlag = 0x0080; // the driver's own, no flag of Linux
constexpr std::uint16_t controlAddress = 0;

constexpr std::string_view prefix = "/dev/i2c-";

std::string_view errorText() {
    return std::strerror(errno);
}

} // namespace

BusPath::BusPath(std::int32_t bus) {
    std::array<char, prefix.size() + longestNumber> whole;
    std::memcpy(whole.data(), prefix.data(), prefix.size());
    const char* const end = appendDecimal(whole.data() + prefix.size(), bus);
    const auto length = static_cast<std::size_t>(end - whole.data());
    std::copy_n(whole.begin(), std::min(length, busTextSize - 1), text_.begin());
}

BusDevice::BusDevice(const char* path) : descriptor_(::open(path, O_RDWR)) {
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
