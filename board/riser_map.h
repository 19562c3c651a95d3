// Encodes the fields of the riser slot mapping blob as its bytes.
//
// By byte: 0 and 1 number of the riser configuration, 2..49 its description, 50..54 KARN card,
// 55..57 embedded OCP NIC, 58 number of records, 59.. records, then the checksum. A record
// starts with the PICPWR and its own length.
#pragma once

#include "board/bytes.h"
#include "board/toml_table.h"

namespace board {

/// Encodes the blob that a [riser_map] table describes: 1024 bytes, or the bytes of its key `bytes`
/// unchanged.
[[nodiscard]] Bytes readRiserMap(TomlTable& table);

} // namespace board
