// The members of HAL_cfgdata that the HAL's client defines.
#include "console/output.h"
#include "platform/debug_log.h"
#include "platform/hal.h"

#include <exception>
#include <memory>
#include <string_view>
#include <utility>

namespace {

constexpr int logError = 2;
constexpr int logInformation = 5;
constexpr int logModule = 273;

constexpr std::string_view fileName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

} // namespace

HAL_cfgdata::HAL_cfgdata(std::string name) : name_(std::move(name)) {}

HAL_cfgdata::~HAL_cfgdata() {
    try {
        Release();
    } catch (const std::exception&) {
        // Only a read that throws leaves the object to the destructor. The exception of the read
        // already tells the operator about the failure.
    }
}

void HAL_cfgdata::Release() {
    if (halData_ == nullptr) {
        return;
    }
    zolt::flush();
    const auto destroy = [this](HAL_cfgbase* object) {
        delete object;
        dlog_printf(logInformation, logModule, "[%s]: Deleted halData for [%s]", "~HAL_cfgdata",
                    objectName_.c_str());
    };
    const std::unique_ptr<HAL_cfgbase, decltype(destroy)> object(std::exchange(halData_, nullptr),
                                                                 destroy);
    if (object->IsInterruptCallbackRegistered()) {
        const std::int32_t status = object->UnregisterInterruptCallback();
        dlog_printf(logInformation, logModule,
                    "[%s]: UnregisterInterruptCallback for [%s], ret= %d", "~HAL_cfgdata",
                    objectName_.c_str(), status);
    }
}

std::int32_t HAL_cfgdata::ReadIO(std::vector<std::uint8_t>& buffer, std::uint32_t length,
                                 std::uint32_t offset) {
    zolt::flush();
    // The library may still be loading its configuration at the first call.
    for (int asks = 0; halData_ == nullptr && asks < 2; ++asks) {
        halData_ = ReadHALConfig(name_);
        if (halData_ != nullptr) {
            objectName_ = halData_->Name(); // copied here, because Release() must not allocate
        }
    }
    if (halData_ == nullptr) {
        dlog_printf(logError, logModule, "%s.%d.%s: [%s]: ERROR, halData is NULL",
                    fileName(__FILE__).data(), __LINE__, "ReadIO", "ReadIO");
        return -1;
    }
    return halData_->ReadIO(buffer, length, offset);
}
