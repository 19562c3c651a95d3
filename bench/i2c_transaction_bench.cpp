// Makes control transactions on one bus: i2c_transaction_bench tool|bare BUS COUNT.
//
// "tool" asks for a property as the tool does, and opens the device for each transaction. "bare" is
// the floor: it only calls open, ioctl and close, with all data prepared. Both end with exit status
// 0 only when the driver answered every transaction.
#include "i2c/bus_control_record.h"
#include "i2c/bus_device.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr std::uint32_t propertyId = 8;

bool askAsTheTool(std::int32_t number) {
    zolt::BusDevice bus(zolt::BusPath(number).c_str());
    zolt::BusControlRecord record(zolt::BusCommand::getProperty);
    record.set(zolt::get_property::target, 0);
    record.set(zolt::get_property::propertyId, propertyId);
    std::array<std::uint8_t, 4> reply;
    return bus.isOpen() && zolt::sendControl(bus.descriptor(), record, reply) == 2;
}

class Bare {
public:
    explicit Bare(std::int32_t number) : path_("/dev/i2c-" + std::to_string(number)) {
        std::memcpy(record_.data(), "TESK", 4);
        record_[4] = 5;
        record_[12] = propertyId;
    }

    bool ask() {
        const int bus = open(path_.c_str(), O_RDWR);
        const bool done = bus >= 0 && ioctl(bus, I2C_RDWR, &transfer_) == 2;
        close(bus);
        return done;
    }

private:
    std::string path_;
    std::array<std::uint8_t, 164> record_{};
    std::array<std::uint8_t, 4> reply_{};
    std::array<i2c_msg, 2> messages_{{
        {.addr = 0, .flags = 0x0080, .len = 164, .buf = record_.data()},
        {.addr = 0, .flags = I2C_M_RD, .len = 4, .buf = reply_.data()},
    }};
    i2c_rdwr_ioctl_data transfer_{.msgs = messages_.data(), .nmsgs = 2};
};

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 4) {
        return EXIT_FAILURE;
    }
    const bool asTheTool = std::string_view(argv[1]) == "tool";
    const auto bus = static_cast<std::int32_t>(std::strtol(argv[2], nullptr, 10));
    Bare bare(bus);
    for (long i = std::strtol(argv[3], nullptr, 10); i > 0; --i) {
        if (!(asTheTool ? askAsTheTool(bus) : bare.ask())) {
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}
