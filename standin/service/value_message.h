// Puts values of a board description into messages of the bus.
#pragma once

#include "board/service_model.h"

#include <systemd/sd-bus.h>

#include <string_view>

namespace standin {

/// Appends @p value as the type @p signature.
/// @return a negative errno on failure: -EINVAL for a value that does not fit, or sd-bus's own
int appendValue(sd_bus_message* message, std::string_view signature, const board::Value& value);

} // namespace standin
