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

constexpr std::uint16_t controlFlag = 0x0080; // defined by the platform's driver, not by Linux
constexpr std::uint16_t controlAddress = 0;

std::string_view errorText() {
    return std::strerror(errno); // NOLINT(concurrency-mt-unsafe): the tool has one thread
}

} // namespace

BusPath::BusPath(std::int32_t bus) {
    char* const number = std::ranges::copy(prefix, text_.begin()).out;
    *appendDecimal(number, bus) = '\0';
}

BusPath BusPath::asField(std::int32_t bus) {
    BusPath path(bus);
    path.text_[busTextSize - 1] = '\0';
    return path;
}

BusDevice::BusDevice(const char* path, Silent) {
    flush();
    descriptor_ = ::open(path, O_RDWR);
}

BusDevice::BusDevice(const char* path) : BusDevice(path, Silent{}) {
    if (!isOpen()) {
        print<"I2C Open error (%s)\n">(errorText());
    }
}

void BusDevice::close() {
    if (isOpen()) {
        flush();
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

int sendControl(int bus, const BusControlRecord& record, std::span<std::uint8_t> reply) {
    std::ranges::fill(reply, std::uint8_t{0});
    // memset clears the padding of the structures, too, because the driver receives it.
    std::array<i2c_msg, 2> messages;
    std::memset(messages.data(), 0, sizeof(messages));
    messages[0].addr = controlAddress;
    messages[0].flags = controlFlag;
    messages[0].len = busControlRecordSize;
    messages[0].buf = const_cast<std::uint8_t*>(record.bytes().data()); // the kernel only reads it
    messages[1].addr = controlAddress;
    messages[1].flags = I2C_M_RD;
    messages[1].len = static_cast<std::uint16_t>(reply.size());
    messages[1].buf = reply.data();
    i2c_rdwr_ioctl_data transfer;
    std::memset(&transfer, 0, sizeof(transfer));
    transfer.msgs = messages.data();
    transfer.nmsgs = reply.empty() ? 1U : 2U;
    flush();
    return ::ioctl(bus, I2C_RDWR, &transfer);
}

void printRefusal(int result) {
    print<"Status is %d (%s)\n">(result, errorText());
}

} // namespace zolt
