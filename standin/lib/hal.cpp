// The stand-in's HAL library: reads the board's registers by name, or through a HAL object.
#include "platform/hal.h"

#include "standin/image/image_reader.h"
#include "standin/lib/call_end.h"
#include "standin/lib/log_file.h"

#include <algorithm>
#include <utility>

namespace {

using standin::awaitEnd;
using standin::ImageObject;
using standin::ImageReader;
using standin::logCall;

constexpr std::int32_t notThere = -1; // an unknown name, a read past an object's end, or no board

// A HAL object that shows a range of the CPLD's raw registers.
class PayloadObject : public HAL_i2c {
public:
    PayloadObject(std::string name, const ImageReader& image, const ImageObject& object)
        : name_(std::move(name)),
          image_(image),
          object_(object),
          callbackRegistered_(object.interruptCallback != 0) {}

    std::int32_t ReadIO(std::vector<std::uint8_t>& buffer, std::uint32_t length,
                        std::uint32_t offset) override {
        const std::int32_t status = read(buffer, length, offset);
        logCall("HAL_cfgbase::ReadIO %s %u %u = %d", name_.c_str(), length, offset, status);
        return status;
    }

    [[nodiscard]] bool IsInterruptCallbackRegistered() const override {
        return callbackRegistered_;
    }

    std::int32_t UnregisterInterruptCallback() override {
        callbackRegistered_ = false;
        logCall("HAL_cfgbase::UnregisterInterruptCallback %s = %d", name_.c_str(),
                object_.unregisterStatus);
        return object_.unregisterStatus;
    }

    [[nodiscard]] const std::string& Name() const override { return name_; }

private:
    std::int32_t read(std::vector<std::uint8_t>& buffer, std::uint32_t length,
                      std::uint32_t offset) const {
        if (offset > object_.length || length > object_.length - offset) {
            return notThere;
        }
        if (const auto status = awaitEnd(image_.endOfBulkRead(object_, offset, length));
            status != 0) {
            return status;
        }
        const auto bytes =
            image_.raw(object_.firstAddress + offset, std::min(length, object_.mostBytes));
        buffer.assign(bytes.begin(), bytes.end());
        return 0;
    }

    std::string name_;
    const ImageReader& image_;
    const ImageObject& object_;
    bool callbackRegistered_;
};

std::int32_t readNamed(const std::string& name, std::vector<std::uint8_t>& value) {
    const ImageReader* const image = ImageReader::attached();
    const auto* const entry = image == nullptr ? nullptr : image->findName(name);
    if (entry == nullptr) {
        return notThere;
    }
    if (const auto status = awaitEnd(image->endOf(entry->faults)); status != 0) {
        return status;
    }
    const auto bytes = image->value(*entry);
    value.insert(value.end(), bytes.begin(), bytes.end());
    return 0;
}

const ImageObject* findObject(const std::string& name) {
    const ImageReader* const image = ImageReader::attached();
    const ImageObject* const object = image == nullptr ? nullptr : image->findObject(name);
    if (object == nullptr || awaitEnd(image->endOf(object->missingFaults)) != 0) {
        return nullptr;
    }
    return object;
}

} // namespace

// The contract of the platform has the parameter by value.
// cppcheck-suppress passedByValue
// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::int32_t ReadIO_Str(std::string name, std::vector<std::uint8_t>& value, std::uint32_t* size) {
    const std::size_t before = value.size();
    const std::int32_t status = readNamed(name, value);
    if (status == 0) {
        *size = static_cast<std::uint32_t>(value.size() - before);
    }
    logCall("ReadIO_Str %s = %d", name.c_str(), status);
    return status;
}

HAL_cfgbase* HAL_cfgdata::ReadHALConfig(std::string name) {
    const ImageObject* const object = findObject(name);
    logCall("ReadHALConfig %s = %s", name.c_str(), object == nullptr ? "none" : "found");
    return object == nullptr
               ? nullptr
               : new PayloadObject(std::move(name), *ImageReader::attached(), *object);
}
