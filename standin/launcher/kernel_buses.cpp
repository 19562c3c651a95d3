#include "standin/launcher/kernel_buses.h"

#include "standin/i2c_bus/server/transaction_text.h"
#include "standin/kernel/bus_module.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <system_error>

namespace standin {

namespace {

constexpr const char* moduleDevice = "/dev/" BUS_MODULE_DEVICE;

[[noreturn]] void refuse(const std::string& step) {
    throw std::runtime_error(step + ": " + std::generic_category().message(errno));
}

Descriptor openModule() {
    Descriptor module(open(moduleDevice, O_RDWR | O_CLOEXEC | O_NONBLOCK));
    if (module.number() < 0) {
        refuse(std::string("the kernel module zolt_bus is not loaded or not free: ") +
               moduleDevice);
    }
    return module;
}

// The module lets an open fail in a place of the kernel that cannot wait.
BusState withoutDelayedOpening(BusState state) {
    const BusCore& core = state.core();
    for (const BusCoreFault& fault : std::span(core.faults).first(core.faultCount)) {
        if (fault.operation == BUS_CORE_OPEN && fault.delay != 0) {
            throw std::runtime_error(
                std::string("buses in the kernel cannot delay an open: a rule i2c-open ")
                    .append(std::to_string(fault.bus))
                    .append(" has a delay"));
        }
    }
    return state;
}

// Takes a T off the front. None when too few bytes are left.
template <typename T>
std::optional<T> take(std::span<std::uint8_t>& bytes) {
    if (bytes.size() < sizeof(T)) {
        return std::nullopt;
    }
    T value;
    std::memcpy(&value, bytes.data(), sizeof value);
    bytes = bytes.subspan(sizeof value);
    return value;
}

// The log line of a transaction; none when the module's bytes are no transaction.
std::optional<std::string> lineOf(std::span<std::uint8_t> bytes) {
    std::array<i2c_msg, BUS_CORE_MESSAGES> room{};
    const auto head = take<BusModuleTransaction>(bytes);
    if (!head || head->count > room.size()) {
        return std::nullopt;
    }
    const auto messages = std::span(room).first(head->count);
    for (i2c_msg& message : messages) {
        const auto part = take<BusModuleMessage>(bytes);
        if (!part) {
            return std::nullopt;
        }
        message = {.addr = part->address, .flags = part->flags, .len = part->length, .buf = {}};
    }
    for (i2c_msg& message : messages) {
        if (message.len > bytes.size()) {
            return std::nullopt;
        }
        message.buf = bytes.data();
        bytes = bytes.subspan(message.len);
    }
    return transactionText(head->bus, messages, head->result);
}

} // namespace

KernelBuses::KernelBuses(sd_event* loop, BusState state, LineLog log)
    : state_(withoutDelayedOpening(std::move(state))),
      log_(std::move(log)),
      module_(openModule()),
      bytes_(BUS_MODULE_LONGEST) {
    if (ioctl(module_.number(), BUS_MODULE_LOAD, &state_.core()) != 0) {
        refuse(errno == EBUSY ? "the machine has a bus with the number of one of the board's"
                              : "the kernel module zolt_bus refuses the board's buses");
    }
    sd_event_source* source = nullptr;
    const int result =
        sd_event_add_io(loop, &source, module_.number(), EPOLLIN, onTransaction, this);
    if (result < 0) {
        errno = -result;
        refuse(moduleDevice);
    }
    source_.reset(source);
}

KernelBuses::~KernelBuses() = default;

int KernelBuses::onTransaction(sd_event_source* /*source*/, int descriptor,
                               std::uint32_t /*events*/, void* buses) {
    try {
        static_cast<KernelBuses*>(buses)->show();
    } catch (const std::exception&) { // out of memory or disk space: the transaction stays unseen
    }
    (void)ioctl(descriptor, BUS_MODULE_DONE, 0);
    return 0;
}

void KernelBuses::show() {
    const ssize_t size = read(module_.number(), bytes_.data(), bytes_.size());
    if (size < 0 || ioctl(module_.number(), BUS_MODULE_STATE, &state_.core()) != 0) {
        return; // the caller of the transaction was killed
    }
    const auto line = lineOf(std::span(bytes_).first(static_cast<std::size_t>(size)));
    if (log_ && line) {
        log_(*line);
    }
    if (look_) {
        look_();
    }
}

} // namespace standin
