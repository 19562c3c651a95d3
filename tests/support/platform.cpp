#include "tests/support/platform.h"

#include "platform/cpld_driver.h"
#include "platform/debug_log.h"
#include "platform/hal.h"
#include "tests/support/console.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <utility>

namespace zolt::test {

namespace {

[[gnu::format(printf, 1, 2)]] std::string text(const char* format, ...) {
    std::array<char, 512> buffer;
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    va_end(arguments);
    return buffer.data();
}

void note(const std::string& call) {
    platform().calls.push_back(call);
    platform().printed.push_back(handedOut());
}

const Bytes garbage{0xDE, 0xAD, 0xBE, 0xEF};

class TableObject : public HAL_i2c {
public:
    TableObject(std::string name, const HalObject& described)
        : name_(std::move(name)), described_(described) {}
    ~TableObject() override { note("delete " + name_); }

    std::int32_t ReadIO(std::vector<std::uint8_t>& buffer, std::uint32_t length,
                        std::uint32_t offset) override {
        note(text("ReadIO %s %u %u", name_.c_str(), length, offset));
        if (described_.deliversLess && offset <= described_.content.size()) {
            length =
                std::min(length, static_cast<std::uint32_t>(described_.content.size()) - offset);
        }
        if (described_.readStatus != 0 || offset > described_.content.size() ||
            length > described_.content.size() - offset) {
            buffer = garbage;
            return described_.readStatus != 0 ? described_.readStatus : -1;
        }
        const auto start = described_.content.begin() + offset;
        buffer.assign(start, start + length);
        return 0;
    }

    [[nodiscard]] bool IsInterruptCallbackRegistered() const override {
        return described_.callbackRegistered;
    }

    std::int32_t UnregisterInterruptCallback() override {
        note("UnregisterInterruptCallback " + name_);
        if (described_.thrownByUnregister != nullptr) {
            std::rethrow_exception(described_.thrownByUnregister);
        }
        return described_.unregisterStatus;
    }

    [[nodiscard]] const std::string& Name() const override { return name_; }

private:
    std::string name_;
    const HalObject described_;
};

std::int32_t readRaw(std::uint8_t* buffer, std::uint32_t address, std::uint32_t length) {
    std::vector<std::uint8_t> bytes;
    for (std::uint32_t i = 0; i < length; ++i) {
        const auto found = platform().raw.find(address + i);
        if (found == platform().raw.end()) {
            return platform().rawStatus;
        }
        bytes.push_back(found->second);
    }
    std::ranges::copy(bytes, buffer);
    return 0;
}

} // namespace

Platform& platform() {
    static Platform instance;
    return instance;
}

void resetPlatform() {
    platform() = {};
}

} // namespace zolt::test

using zolt::test::note;
using zolt::test::platform;
using zolt::test::text;

// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform's contract.
std::int32_t ReadIO_Str(std::string name, std::vector<std::uint8_t>& value, std::uint32_t* size) {
    note("ReadIO_Str " + name);
    if (platform().thrown != nullptr) {
        std::rethrow_exception(platform().thrown);
    }
    const auto found = platform().named.find(name);
    if (found == platform().named.end()) {
        value = zolt::test::garbage;
        return -1;
    }
    value.insert(value.end(), found->second.begin(), found->second.end());
    const auto lie = platform().size.find(name);
    *size = lie != platform().size.end() ? lie->second
                                         : static_cast<std::uint32_t>(found->second.size());
    return 0;
}

HAL_cfgbase* HAL_cfgdata::ReadHALConfig(std::string name) {
    note("ReadHALConfig " + name);
    const auto found = platform().hal.find(name);
    if (found == platform().hal.end()) {
        return nullptr;
    }
    if (found->second.missingAsks > 0) {
        --found->second.missingAsks;
        return nullptr;
    }
    return new zolt::test::TableObject(std::move(name), found->second);
}

std::int32_t cpld_read_device(std::uint8_t* buffer, std::uint32_t address, std::uint32_t length) {
    note(text("cpld_read_device 0x%04X %u", address, length));
    return zolt::test::readRaw(buffer, address, length);
}

std::int32_t cpld_read_block_device(std::uint8_t* buffer, std::uint32_t address,
                                    std::uint32_t length, std::uint32_t stride) {
    note(text("cpld_read_block_device 0x%04X %u %u", address, length, stride));
    return zolt::test::readRaw(buffer, address, length);
}

int dlog_printf(int level, int module, const char* format, ...) {
    std::array<char, 512> buffer;
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    va_end(arguments);
    platform().log.push_back(text("%d %d %s", level, module, buffer.data()));
    return 0;
}

int i2c_parse_sysinfo(int deviceType, SysInfoTree** root) {
    note(text("i2c_parse_sysinfo %d", deviceType));
    const auto found = platform().sysinfo.find(deviceType);
    if (found == platform().sysinfo.end()) {
        return -1; // *root stays as the caller left it
    }
    *root = found->second.root;
    return found->second.status;
}

void free_sysinfo(SysInfoTree* root) {
    const auto& trees = platform().sysinfo;
    const auto owner =
        std::ranges::find_if(trees, [root](const auto& tree) { return tree.second.root == root; });
    note(root == nullptr        ? "free_sysinfo null"
         : owner == trees.end() ? "free_sysinfo of a stranger"
                                : text("free_sysinfo %d", owner->first));
}
