#include "cpld/picpwr_block.h"

namespace zolt {

std::int32_t readPicpwrRegister(std::uint8_t n, const PicpwrRegister& field, RegisterValue& value) {
    return readField(registerName("PICPWR_", n, field.suffix),
                     field.raw.from(picpwrBlockAddress(n)), value);
}

} // namespace zolt
