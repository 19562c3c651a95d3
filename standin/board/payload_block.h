// The payload block of a board, while its slots are read: which bytes of it are taken.
#pragma once

#include "standin/board/board.h"
#include "standin/board/toml_table.h"

#include <cstdint>
#include <vector>

namespace standin {

class PayloadBlock {
public:
    /// Reads 'payload_offset' of a slot's table and places the payload and the OEM area there.
    ///
    /// Payloads without an offset of their own lie one behind the other, in the order of the calls,
    /// with a byte between them: what follows a payload is the length of its OEM area.
    /// @param slot  has its bytes, and gets its payload offset
    /// @throw BoardError when the bytes run past the block, or cover those of another slot
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

} // namespace standin
