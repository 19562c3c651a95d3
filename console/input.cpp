#include "console/input.h"

#include "console/output.h"

#include <cstdio>

namespace zolt {

// scanf is what defines these answers: its widths, its overflow, what it leaves unread.
// NOLINTBEGIN(cert-err34-c)

bool readByte(std::int8_t& answer) {
    flush();
    return std::scanf("%hhd", &answer) != 0;
}

bool readDecimal(int& answer) {
    flush();
    return std::scanf("%d", &answer) != 0;
}

bool readHexadecimal(unsigned& answer) {
    flush();
    return std::scanf("%x", &answer) != 0;
}

// NOLINTEND(cert-err34-c)

} // namespace zolt
