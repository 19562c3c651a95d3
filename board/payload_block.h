// Places payloads in the payload block while the slots of a board are read.
#pragma once

#include "board/board.h"
#include "board/toml_table.h"

#include <cstdint>
#include <vector>

namespace board {

class PayloadBlock {
public:
    /// Reads 'payload_offset' of a slot's table and places the payload and the OEM area there.
    ///
    /// A payload without an offset goes behind all payloads so far. One zero byte is left between
    /// them, because readers take the byte behind a payload for the length of its OEM area.
    /// @param slot  already has its bytes; gets its payload offset
    /// @throw BoardError when the bytes run past the block, or overlap those of another slot
    void place(TomlTable& table, Slot& slot);

private:
    struct Placed {
        std::uint8_t slot;
        std::uint32_t start;
        std::uint32_t end;
    };

    [[nodiscard]] std::uint32_t next() const;

    std::vector<Placed> placed_;
};

} // namespace board
