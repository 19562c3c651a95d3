// Masks the texts of an observation that may identify a machine or a customer.
#pragma once

#include "capture/observation.h"

namespace capture {

/// Replaces
///   - the description and the part numbers of the riser slot mapping,
///   - the texts in the properties of the service's objects, but not object paths, signatures, and
///     the keys of dictionaries.
///
/// The locations of risers, the names of I2C nodes and of objects, and all numbers stay: they name
/// places in this kind of server.
///
/// A letter becomes another letter of the same case, and a digit another digit. A byte above 0x7F
/// becomes a lower-case letter. All other characters stay, NULs included, so each text keeps its
/// length. The replacement depends on the text's shape, and on how many different texts are masked
/// before it. So the same text has the same replacement in one observation, and nobody can check a
/// guess.
///
/// Bytes of a riser slot mapping that are also counts, lengths or numbers of other records stay.
/// The checksum changes with the texts: a right one stays right, and a wrong one stays wrong.
[[nodiscard]] Observation masked(Observation observation);

} // namespace capture
