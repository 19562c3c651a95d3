#include "cpld/picpwr_info.h"

#include "console/output.h"
#include "cpld/picpwr_rows.h"

#include <array>

namespace zolt {

namespace {

constexpr std::array<Line<Number>, 4> dstatLines{
    line<"PICPWR %02d DSTAT              = 00b\n">,
    line<"PICPWR %02d DSTAT              = 01b\n">,
    line<"PICPWR %02d DSTAT              = 10b\n">,
    line<"PICPWR %02d DSTAT              = 11b\n">,
};

enum class Presence { absent, present, unread };

Presence showDstat(std::uint8_t n, PicpwrBlock& picpwr, RegisterValue& value) {
    if (const auto status = picpwr.read(picpwrDstat, value); status != 0) {
        print<"Unable to read PICPWR %d DSTAT using CPLD raw API, status %d\n">(n, status);
        return Presence::unread;
    }
    write("\n");
    // A named read may deliver a value above 3, which has no line.
    const auto dstat = byteOf(value);
    if (dstat && *dstat < dstatLines.size()) {
        dstatLines[*dstat](n);
    }
    return dstat == 0 ? Presence::absent : Presence::present;
}

// Returns false at the first register that could be read neither by name nor raw.
bool showBytes(std::uint8_t n, PicpwrBlock& picpwr, RegisterValue& value) {
    for (const PicpwrRow& row : picpwrByteRows) {
        if (const auto status = picpwr.read(row.field, value); status != 0) {
            row.unread(n, status);
            return false;
        }
        if (const auto byte = byteOf(value)) {
            row.value(n, *byte);
        }
    }
    return true;
}

void showDsls(std::uint8_t n, const PicpwrBlock& picpwr, RegisterValue& value) {
    for (unsigned k = 1; k <= picpwrDslCount; ++k) {
        if (const auto status = picpwr.readDsl(k, value); status != 0) {
            print<"Unable to read PICPWR %d DSL%d_ID using CPLD raw API, status %d\n">(n, k,
                                                                                       status);
        } else {
            print<"PICPWR %02d DSL%d_ID            = %d\n">(n, k, value[0]);
        }
    }
}

Status showPicpwr(std::uint8_t n, RegisterValue& value) {
    PicpwrBlock picpwr(n);
    if (showDstat(n, picpwr, value) != Presence::present || !showBytes(n, picpwr, value)) {
        return statusDone;
    }
    // An unreadable payload offset ends the report for all PICPWRs. No other register does so.
    if (const auto status = picpwr.read(picpwrPayloadOffset, value); status != 0) {
        print<"Unable to read PICPWR payload offset using CPLD raw API, status %d\n">(status);
        return statusRawReadFailed;
    }
    if (const auto offset = wordOf(value)) {
        print<"PICPWR %02d Payload Offset     = %d\n">(n, *offset);
    }
    showDsls(n, picpwr, value);
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
