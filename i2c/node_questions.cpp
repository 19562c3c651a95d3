#include "i2c/node_questions.h"

#include "console/input.h"
#include "console/output.h"
#include "i2c/device_types.h"

namespace zolt {

namespace {

bool valid(Reading reading, std::string_view invalid) {
    if (reading == Reading::notANumber) {
        write(invalid);
        return false;
    }
    return true;
}

} // namespace

bool askNumber(std::string_view prompt, std::string_view invalid, std::int32_t& answer) {
    write(prompt);
    return valid(readDecimal(answer), invalid);
}

bool askDeviceType(std::int32_t& answer) {
    printDeviceTypeMenu();
    return valid(readDecimal(answer), "\nInvalid Device Type\n");
}

bool askTarget(std::uint32_t& answer) {
    write("Enter Target Address:");
    return valid(readHexadecimal(answer), "\nInvalid Target Address\n");
}

} // namespace zolt
