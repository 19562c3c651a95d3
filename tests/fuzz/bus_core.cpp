// Describes a board to the bus driver's core and performs transfers on it, both of any contents.
// After each step, the core's state must be sound. A transfer that fails must leave buses, devices
// and properties as they are, and no transfer may change the bytes to write. AddressSanitizer
// watches the ends of all buffers: each one is exactly as long as its message says.
#include "standin/i2c_bus/core/bus_core.h"

#include "tests/fuzz/bus_core_state.h"
#include "tests/fuzz/bytes.h"
#include "tests/fuzz/target.h"
#include "tests/standin/control_request.h"

#include <array>
#include <cstring>
#include <deque>
#include <memory>
#include <numeric>

namespace {

using standin::ControlRequest;
using zolt::fuzz::Bytes;
using zolt::fuzz::require;
using Memory = std::vector<std::uint8_t>;

// Most numbers are small, so that the parts of an input meet each other.
std::uint32_t numberOf(Bytes& bytes) {
    const std::uint8_t number = bytes.take();
    return number < 0xF0 ? number % 8 : bytes.take32();
}

std::uint32_t addressOf(Bytes& bytes) {
    const std::uint8_t address = bytes.take();
    return address < 0xF0 ? 0x50U + address % 4 : bytes.take16();
}

template <typename Entry>
bool isSame(std::span<const Entry> one, const std::vector<Entry>& other) {
    return std::ranges::equal(one, other, [](const Entry& left, const Entry& right) {
        // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): a copy has the padding, too.
        return std::memcmp(&left, &right, sizeof left) == 0;
    });
}

// The tables that a transfer may change.
class Tables {
public:
    explicit Tables(const BusCore& core)
        : buses_(core.buses, core.buses + core.busCount),
          devices_(core.devices, core.devices + core.deviceCount),
          properties_(core.properties, core.properties + core.propertyCount) {}

    [[nodiscard]] bool areThoseOf(const BusCore& core) const {
        return isSame(std::span(core.buses).first(core.busCount), buses_) &&
               isSame(std::span(core.devices).first(core.deviceCount), devices_) &&
               isSame(std::span(core.properties).first(core.propertyCount), properties_);
    }

private:
    std::vector<BusCoreBus> buses_;
    std::vector<BusCoreDevice> devices_;
    std::vector<BusCoreProperty> properties_;
};

class Driver {
public:
    explicit Driver(Bytes bytes) : bytes_(bytes) { busCoreInit(core_.get()); }

    void run() {
        constexpr unsigned mostSteps = 200;
        for (unsigned steps = 0; !bytes_.atEnd() && steps < mostSteps; ++steps) {
            step();
            zolt::fuzz::requireSound(*core_);
        }
    }

private:
    void step() {
        const std::uint8_t kind = bytes_.take();
        switch (kind % 10) {
        case 0:
            describe(busCoreAddBus(core(), numberOf(bytes_)));
            break;
        case 1: {
            const std::uint32_t number = numberOf(bytes_);
            const std::uint32_t parent = numberOf(bytes_);
            describe(busCoreAddIndexNode(core(), number, parent, numberOf(bytes_), name().c_str()));
            break;
        }
        case 2:
            addMemory();
            break;
        case 3: {
            const std::uint32_t bus = numberOf(bytes_);
            const std::uint32_t address = addressOf(bytes_);
            describe(busCoreAddDeviceNode(core(), bus, address, numberOf(bytes_), name().c_str()));
            break;
        }
        case 4: {
            const std::uint32_t bus = numberOf(bytes_);
            const std::uint32_t target = bytes_.take() % 2 == 0 ? 0 : addressOf(bytes_);
            const std::uint32_t id = numberOf(bytes_);
            describe(busCoreSetProperty(core(), bus, target, id, bytes_.take32()));
            break;
        }
        case 5:
            addFault();
            break;
        case 6:
            open();
            break;
        case 7:
            transfer();
            break;
        default:
            control();
            break;
        }
    }

    [[nodiscard]] BusCore* core() const { return core_.get(); }
    std::string name() { return bytes_.takeText(bytes_.take() % 20); }

    static void describe(int result) {
        require(result == 0 || result == -ENOSPC || result == -EINVAL || result == -EEXIST ||
                result == -ENODEV);
    }

    void addMemory() {
        const std::uint32_t bus = numberOf(bytes_);
        const std::uint32_t address = addressOf(bytes_);
        const std::uint32_t width = bytes_.take() % 4;
        Memory& memory = memories_.emplace_back(bytes_.take16() % 600, std::uint8_t{0xA5});
        describe(busCoreAddMemory(core(), bus, address, memory.data(),
                                  static_cast<std::uint32_t>(memory.size()), width,
                                  bytes_.take() % 2 != 0));
    }

    void addFault() {
        const BusCoreFault fault{.bus = numberOf(bytes_),
                                 .operation = numberOf(bytes_),
                                 .anySelector = bytes_.take() % 2 != 0,
                                 .selector = addressOf(bytes_),
                                 .error = static_cast<std::int8_t>(bytes_.take()),
                                 .delay = numberOf(bytes_),
                                 .after = numberOf(bytes_),
                                 .times = numberOf(bytes_),
                                 .untilRecovery = bytes_.take() % 2 != 0,
                                 .isOver = false};
        describe(busCoreAddFault(core(), &fault));
    }

    void open() {
        const std::uint32_t bus = numberOf(bytes_);
        const int look = busCoreLook(core(), bus);
        require(look == 0 || look == -ENOENT);
        const int result = busCoreOpen(core(), bus);
        require(result <= 0 && result > -4096);
        require(result != 0 || busCoreFindBus(core(), bus) != nullptr);
    }

    // Plain messages for the most part.
    void transfer() {
        constexpr std::array<std::uint16_t, 6> flags{
            0, I2C_M_RD, CONTROL_FLAG, I2C_M_DMA_SAFE, I2C_M_RECV_LEN | I2C_M_RD, I2C_M_TEN};
        const std::uint32_t bus = numberOf(bytes_);
        std::vector<Memory> buffers(bytes_.take() % 4 == 0 ? bytes_.take() % 64 : 2);
        std::vector<i2c_msg> messages;
        messages.reserve(buffers.size());
        for (Memory& buffer : buffers) {
            const auto address = static_cast<std::uint16_t>(addressOf(bytes_));
            const std::uint8_t choice = bytes_.take();
            const std::uint16_t flag =
                choice < 0xF0 ? flags[choice / 4U % flags.size()] : bytes_.take16();
            const std::size_t length =
                choice % 8 == 7 ? bytes_.take16() % 9000 : bytes_.take() % 40;
            buffer = bytes_.takeBytes(length);
            messages.push_back({.addr = address,
                                .flags = flag,
                                .len = static_cast<std::uint16_t>(length),
                                .buf = buffer.data()});
        }
        perform(bus, messages);
    }

    // A control request that is right, and then changed in some bytes.
    void control() {
        const std::uint32_t bus = numberOf(bytes_);
        ControlRequest request = rightRequest(bus);
        std::size_t length = CONTROL_RECORD_SIZE;
        for (unsigned changes = bytes_.take() % 4; changes > 0; --changes) {
            request.record[bytes_.take() % length] = bytes_.take();
        }
        const std::uint8_t spoiled = bytes_.take();
        i2c_msg& last = request.messages.back();
        switch (spoiled) {
        case 0xFF:
            length = bytes_.take16();
            request.messages.front().len = static_cast<std::uint16_t>(length);
            break;
        case 0xFE:
            last.flags = bytes_.take16();
            break;
        case 0xFD:
            last.addr = bytes_.take();
            break;
        case 0xFC:
            request.messages.push_back(request.messages.front());
            break;
        case 0xFB:
            request.messages.pop_back();
            break;
        default:
            break;
        }
        const Memory record(request.record.begin(),
                            request.record.begin() + static_cast<std::ptrdiff_t>(length));
        for (i2c_msg& message : request.messages) {
            if (message.buf == request.record.data()) {
                message.buf = const_cast<std::uint8_t*>(record.data());
            }
        }
        perform(bus, request.messages);
    }

    ControlRequest rightRequest(std::uint32_t bus) {
        switch (bytes_.take() % 6) {
        case 0:
            return standin::updateProperty(addressOrBus(), numberOf(bytes_), bytes_.take32());
        case 1:
            return standin::getProperty(addressOrBus(), numberOf(bytes_));
        case 2:
            return standin::createNode(numberOf(bytes_), 0, name().substr(0, 15), "");
        case 3:
            return standin::createNode(numberOf(bytes_), addressOf(bytes_), name().substr(0, 15),
                                       ("/dev/i2c-" + std::to_string(bus)).substr(0, 15));
        case 4:
            return standin::removeDevice(addressOf(bytes_));
        default:
            return standin::recoverBus(0x60U + bytes_.take() % 4);
        }
    }
    std::uint32_t addressOrBus() { return bytes_.take() % 2 == 0 ? 0 : addressOf(bytes_); }

    void perform(std::uint32_t bus, std::vector<i2c_msg>& messages) {
        const Tables before(*core_);
        std::vector<Memory> written;
        for (const i2c_msg& message : messages) {
            const bool isRead = (message.flags & I2C_M_RD) != 0;
            written.emplace_back(message.buf, message.buf + (isRead ? 0 : message.len));
        }
        const auto count = static_cast<std::uint32_t>(messages.size());
        const int result = busCoreTransfer(core(), bus, messages.data(), count);
        require(result == static_cast<int>(count) || (result < 0 && result > -4096));
        for (std::size_t i = 0; i < messages.size(); ++i) {
            require(std::ranges::equal(written[i], std::span(messages[i].buf, written[i].size())));
        }
        const bool isControl = std::ranges::any_of(
            messages, [](const i2c_msg& message) { return (message.flags & CONTROL_FLAG) != 0; });
        require(result > 0 || !isControl || before.areThoseOf(*core_));
    }

    Bytes bytes_;
    std::unique_ptr<BusCore> core_ = std::make_unique<BusCore>();
    std::deque<Memory> memories_;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Driver(Bytes(data, size)).run();
    return 0;
}
