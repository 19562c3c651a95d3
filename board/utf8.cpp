#include "board/utf8.h"

#include <algorithm>
#include <array>

namespace board {

Character firstCharacter(std::string_view text) {
    struct Form {
        unsigned mask;
        unsigned lead;
        std::size_t more; ///< continuation bytes
        unsigned lowest;  ///< code point: a lower one has a shorter form
    };
    constexpr std::array<Form, 4> forms{{{0x80, 0x00, 0, 0},
                                         {0xE0, 0xC0, 1, 0x80},
                                         {0xF0, 0xE0, 2, 0x800},
                                         {0xF8, 0xF0, 3, 0x10000}}};
    const unsigned lead = text.empty() ? 0xFF : static_cast<unsigned char>(text.front());
    const auto* const form =
        std::ranges::find_if(forms, [&](const Form& f) { return (lead & f.mask) == f.lead; });
    if (form == forms.end() || text.size() <= form->more) {
        return {};
    }
    unsigned point = lead & ~form->mask;
    for (const char next : text.substr(1, form->more)) {
        if ((static_cast<unsigned char>(next) & 0xC0U) != 0x80) {
            return {};
        }
        point = point << 6 | (static_cast<unsigned char>(next) & 0x3FU);
    }
    const bool isSurrogate = point >= 0xD800 && point <= 0xDFFF;
    if (point < form->lowest || isSurrogate || point > 0x10FFFF) {
        return {};
    }
    return {.point = point, .length = 1 + form->more};
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = firstCharacter(text).length;
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

} // namespace board
