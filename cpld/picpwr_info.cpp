#include "cpld/picpwr_info.h"

#include "console/output.h"
#include "cpld/picpwr_block.h"

#include <array>

namespace zolt {

namespace {

using UnreadText = Format<Number, Number>; // number of the PICPWR, status of the raw read
using ValueText = Format<Number, Number>;  // number of the PICPWR, value

constexpr UnreadText dstatUnread{"Unable to read PICPWR %d DSTAT using CPLD raw API, status %d\n"};

constexpr std::array<Format<Number>, 4> dstatTexts{{
    {"PICPWR %02d DSTAT              = 00b\n"},
    {"PICPWR %02d DSTAT              = 01b\n"},
    {"PICPWR %02d DSTAT              = 10b\n"},
    {"PICPWR %02d DSTAT              = 11b\n"},
}};

struct Row {
    PicpwrRegister field;
    ValueText value;
    UnreadText unread;
};

// Between DSTAT and the payload offset, in printing order.
constexpr Row byteRows[] = {
    {picpwrDbyp, "PICPWR %02d DBYP               = %d\n",
     "Unable to read PICPWR %d DBYP using CPLD raw API, status %d\n"},
    {picpwrDpen, "PICPWR %02d DPEN               = %d\n",
     "Unable to read PICPWR %d DPEN using CPLD raw API, status %d\n"},
    {picpwrApen, "PICPWR %02d APEN               = %d\n",
     "Unable to read PICPWR %d APEN using CPLD raw API, status %d\n"},
    {picpwrAstat, "PICPWR %02d ASTAT              = %d\n",
     "Unable to read PICPWR %d ASTAT using CPLD raw API, status %d\n"},
    {picpwrModuleClass, "PICPWR %02d Module Class       = 0x%02X\n",
     "Unable to read PICPWR %d Module Class using CPLD raw API, status %d\n"},
    {picpwrModuleClassIndex, "PICPWR %02d Module Class Index = %d\n",
     "Unable to read PICPWR %d Module Class Index using CPLD raw API, status %d\n"},
};

enum class Presence { absent, present, unread };

Presence showDstat(std::uint8_t n, RegisterValue& value) {
    if (const auto status = readPicpwrRegister(n, picpwrDstat, value); status != 0) {
        print(dstatUnread, n, status);
        return Presence::unread;
    }
    write("\n");
    // A value that does not fit two bits comes from a named read; it has no text of its own.
    const auto dstat = byteOf(value);
    if (dstat && *dstat < dstatTexts.size()) {
        print(dstatTexts[*dstat], n);
    }
    return dstat == 0 ? Presence::absent : Presence::present;
}

// False when a register could not be read by either path.
bool showBytes(std::uint8_t n, RegisterValue& value) {
    for (const Row& row : byteRows) {
        if (const auto status = readPicpwrRegister(n, row.field, value); status != 0) {
            print(row.unread, n, status);
            return false;
        }
        if (const auto byte = byteOf(value)) {
            print(row.value, n, *byte);
        }
    }
    return true;
}

void showDsls(std::uint8_t n, RegisterValue& value) {
    for (unsigned k = 1; k <= picpwrDslCount; ++k) {
        // The HAL has no names for the DSL identifiers.
        const auto raw = RawField::byte(static_cast<std::uint16_t>(picpwrDslOffset + k - 1));
        value.clear();
        if (const auto status = readRawField(raw.from(picpwrBlockAddress(n)), value); status != 0) {
            print("Unable to read PICPWR %d DSL%d_ID using CPLD raw API, status %d\n", n, k,
                  status);
        } else {
            print("PICPWR %02d DSL%d_ID            = %d\n", n, k, value[0]);
        }
    }
}

Status showPicpwr(std::uint8_t n, RegisterValue& value) {
    if (showDstat(n, value) != Presence::present || !showBytes(n, value)) {
        return statusDone;
    }
    // Unlike any other register, an unreadable payload offset ends the report for all PICPWRs.
    if (const auto status = readPicpwrRegister(n, picpwrPayloadOffset, value); status != 0) {
        print("Unable to read PICPWR payload offset using CPLD raw API, status %d\n", status);
        return statusRawReadFailed;
    }
    if (const auto offset = wordOf(value)) {
        print("PICPWR %02d Payload Offset     = %d\n", n, *offset);
    }
    showDsls(n, value);
    return statusDone;
}

} // namespace

Status showPicpwrInfo(std::uint8_t picpwrId) {
    RegisterValue value;
    for (std::uint8_t n = 1; n <= picpwrCount; ++n) {
        if (picpwrId != 0 && picpwrId != n) {
            continue;
        }
        if (const auto status = showPicpwr(n, value); status != statusDone) {
            return status;
        }
    }
    return statusDone;
}

} // namespace zolt
