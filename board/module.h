// Reads the modules of a board description.
#pragma once

#include "board/bytes.h"
#include "board/toml_table.h"

namespace board {

/// The bytes that a module carries.
struct ModuleBytes {
    Bytes payload;
    Bytes oemArea; ///< empty when the module has none
};

/// Encodes the module that a table describes. A length, count or checksum that the table gives is
/// used even if it is wrong.
[[nodiscard]] ModuleBytes readModule(TomlTable& table);

} // namespace board
