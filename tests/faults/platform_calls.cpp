// The calls of the platform's libraries.
#include "platform/cpld_driver.h"
#include "platform/debug_log.h"
#include "platform/hal.h"
#include "platform/sysinfo.h"
#include "tests/faults/cell.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

using faults::Call;
using faults::log;
using faults::logBytes;
using faults::next;
using faults::real;
using zolt::test::readHalConfig;
using zolt::test::readIoStr;

using Bytes = std::vector<std::uint8_t>;

// What a failed read may leave behind.
const std::array<std::uint8_t, 3> dirt{0xEE, 0xDD, 0xCC};

std::int32_t logged(std::int32_t status, const Bytes& bytes) {
    log("%d ", status);
    logBytes(bytes.data(), bytes.size());
    return status;
}

// A read of the HAL that fails as it was ordered; otherwise the real one.
template <typename Read>
std::int32_t readOfHal(const Call& call, Bytes& bytes, Read read) {
    call.throwIfOrdered();
    if (call.fails("status")) {
        return logged(call.amount(), bytes);
    }
    if (call.fails("dirty")) {
        bytes.assign(dirt.begin(), dirt.end());
        return logged(call.amount(), bytes);
    }
    if (call.fails("empty")) {
        bytes.clear();
        return logged(0, bytes);
    }
    const std::int32_t status = real(call, read);
    if (call.fails("short")) {
        bytes.resize(std::min(bytes.size(), static_cast<std::size_t>(call.amount())));
    }
    return call.counts() ? logged(status, bytes) : status;
}

// The HAL's object. Its calls are calls of the tool.
class Object : public HAL_i2c {
public:
    explicit Object(HAL_cfgbase* object) : object_(object) {}
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    ~Object() override {
        const Call call("destroy", "");
        real(call, [&] { object_.reset(); });
    }
    std::int32_t ReadIO(Bytes& buffer, std::uint32_t length, std::uint32_t offset) override {
        std::array<char, 32> asked;
        (void)std::snprintf(asked.data(), asked.size(), "%u %u", length, offset);
        const Call call("bulk", asked.data());
        return readOfHal(call, buffer, [&] { return object_->ReadIO(buffer, length, offset); });
    }
    [[nodiscard]] bool IsInterruptCallbackRegistered() const override {
        const Call call("callback?", "");
        call.throwIfOrdered();
        const bool registered =
            real(call, [&] { return object_->IsInterruptCallbackRegistered(); });
        log("%d", registered ? 1 : 0);
        return registered;
    }
    std::int32_t UnregisterInterruptCallback() override {
        const Call call("unregister", "");
        call.throwIfOrdered();
        const std::int32_t status = call.fails("status") ? call.amount() : real(call, [&] {
            return object_->UnregisterInterruptCallback();
        });
        log("%d", status);
        return status;
    }
    [[nodiscard]] const std::string& Name() const override {
        const Call call("name", "");
        call.throwIfOrdered();
        return *real(call, [&] { return &object_->Name(); });
    }

private:
    std::unique_ptr<HAL_cfgbase> object_;
};

template <typename Read>
std::int32_t readRaw(const Call& call, const std::uint8_t* buffer, std::uint32_t length,
                     Read read) {
    if (call.fails("status")) {
        log("%d -", call.amount());
        return call.amount();
    }
    const std::int32_t status = real(call, read);
    log("%d ", status);
    logBytes(buffer, status == 0 ? length : 0);
    return status;
}

void logName(const char* name, std::size_t room) {
    logBytes(name, strnlen(name, room));
}

// Logs an index node with its sub nodes: the numbers in the order in which the tool shows them.
void logNode(const IndexNodeInfo& node) {
    log(" %d,%d,", node.index, node.discoverable);
    logName(node.name, sizeof node.name);
    log(",%d,%d,%d,%d,%d,%d,%d,%d,%d", node.physicalBus, node.subNodeCount, node.picpwrId,
        node.isSlSrc, node.slSrc, node.hwUid, node.slotNumber, node.slotType, node.bayId);
    for (const SubIndexNodeInfo* sub = node.subNodes; sub != nullptr; sub = sub->next) {
        log(";%d,%d,", sub->subIndex, sub->discoverable);
        logName(sub->name, sizeof sub->name);
        log(",%d", sub->subNodeCount);
    }
}

} // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): the platform's contract.

std::int32_t ReadIO_Str(std::string name, Bytes& value, std::uint32_t* size) {
    const Call call("named", name);
    const std::size_t before = value.size();
    const std::int32_t status = readOfHal(
        call, value, [&] { return next<decltype(ReadIO_Str)>(readIoStr)(name, value, size); });
    if (status == 0) {
        *size = static_cast<std::uint32_t>(value.size() - before);
    }
    return status;
}

HAL_cfgbase* HAL_cfgdata::ReadHALConfig(std::string name) {
    const Call call("object", name);
    call.throwIfOrdered();
    HAL_cfgbase* const object = call.fails("null") ? nullptr : real(call, [&] {
        return next<HAL_cfgbase*(std::string)>(readHalConfig)(name);
    });
    log("%d", object == nullptr ? 0 : 1);
    return object == nullptr ? nullptr : new Object(object);
}

// NOLINTEND(performance-unnecessary-value-param)

extern "C" {

std::int32_t cpld_read_device(std::uint8_t* buffer, std::uint32_t address, std::uint32_t length) {
    std::array<char, 32> asked;
    (void)std::snprintf(asked.data(), asked.size(), "%u %u", address, length);
    const Call call("raw", asked.data());
    return readRaw(call, buffer, length, [&] {
        return next<decltype(cpld_read_device)>("cpld_read_device")(buffer, address, length);
    });
}

std::int32_t cpld_read_block_device(std::uint8_t* buffer, std::uint32_t address,
                                    std::uint32_t length, std::uint32_t stride) {
    std::array<char, 48> asked;
    (void)std::snprintf(asked.data(), asked.size(), "%u %u %u", address, length, stride);
    const Call call("block", asked.data());
    return readRaw(call, buffer, length, [&] {
        return next<decltype(cpld_read_block_device)>("cpld_read_block_device")(buffer, address,
                                                                                length, stride);
    });
}

int dlog_printf(int level, int module, const char* format, ...) {
    std::array<char, 512> text;
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    std::array<char, 560> asked;
    (void)std::snprintf(asked.data(), asked.size(), "%d %d %s", level, module, text.data());
    const Call call("dlog", asked.data());
    const int result = call.fails("status") ? call.amount() : real(call, [&] {
        return next<decltype(dlog_printf)>("dlog_printf")(level, module, "%s", text.data());
    });
    log("%d", result);
    return result;
}

int i2c_parse_sysinfo(int deviceType, SysInfoTree** root) {
    const Call call("parse", std::to_string(deviceType));
    int status = call.amount();
    if (call.fails("status") || call.fails("null")) {
        *root = nullptr;
        status = call.fails("null") ? 0 : status;
    } else {
        const int result = real(call, [&] {
            return next<decltype(i2c_parse_sysinfo)>("i2c_parse_sysinfo")(deviceType, root);
        });
        status = call.fails("tree") ? status : result;
        if (call.fails("empty") && *root != nullptr) {
            (*root)->indexNodes = nullptr;
        }
    }
    log("%d %s", status, *root == nullptr ? "null" : "tree");
    for (const IndexNodeInfo* node = *root == nullptr ? nullptr : (*root)->indexNodes;
         node != nullptr; node = node->next) {
        logNode(*node);
    }
    return status;
}

void free_sysinfo(SysInfoTree* root) {
    const Call call("free", root == nullptr ? "null" : "tree");
    real(call, [&] { next<decltype(free_sysinfo)>("free_sysinfo")(root); });
}
}
