#include "console/input.h"

#include "console/output.h"

#include <cstdio>

namespace zolt {

namespace {

Reading outcome(int itemsRead) {
    if (itemsRead > 0) {
        return Reading::number;
    }
    return itemsRead == 0 ? Reading::notANumber : Reading::endOfInput;
}

} // namespace

// scanf defines how a number is read: its width, its overflow, the text that stays unread.
// NOLINTBEGIN(cert-err34-c)

Reading readByte(std::int8_t& answer) {
    flush();
    return outcome(std::scanf("%hhd", &answer));
}

Reading readDecimal(int& answer) {
    flush();
    return outcome(std::scanf("%d", &answer));
}

Reading readHexadecimal(unsigned& answer) {
    flush();
    return outcome(std::scanf("%x", &answer));
}

// NOLINTEND(cert-err34-c)

} // namespace zolt
