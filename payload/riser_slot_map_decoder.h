// The riser slot mapping blob: the fitted riser configuration and the wiring of its slots.
//
//   0..1    riser configuration, major and minor
//   2..49   its description, NUL-padded text
//   50..54  KARN card: presence, HWUID (high byte first), slot number, slot type
//   55..57  embedded OCP NIC: presence, slot number, slot type
//   58      number of PICPWR slot records
//   59      the records, then the checksum
//
// A record, with N downstream links (DSLs) and M card slots:
//
//   0        PICPWR ID
//   1        length of the record in bytes
//   2..9     location of the riser, text
//   10..17   part number of the assembly, text
//   18..19   HWUID, high byte first
//   20       N
//   21       the DSLs, N bytes
//   21+N     M
//   22+N     number and type of each slot, 2*M bytes
//   22+N+2M  number of DSL payloads
//   23+N+2M  the DSL payloads, each with the route of a DSL, 4*N bytes
#pragma once

#include "payload/field.h"

#include <cstdint>
#include <span>

namespace zolt {

/// Decodes the configuration, the records and the checksum. Does not verify the checksum. The
/// listing ends where the bytes end.
/// @param take  receives the fields in printing order.
void decodeRiserSlotMap(std::span<const std::uint8_t> blob, TakeField take);

} // namespace zolt
