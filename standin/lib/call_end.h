// Ends a call as a fault wants it.
#pragma once

#include "standin/image/image_reader.h"

namespace standin {

/// Waits until the call ends. A call without end waits until a signal ends the process.
/// @return the status of the call, 0 for success
std::int32_t awaitEnd(const CallEnd& end);

} // namespace standin
