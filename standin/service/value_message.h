// Puts values of a board description into messages of the bus.
#pragma once

#include "standin/service/model.h"

#include <systemd/sd-bus.h>

#include <string_view>

namespace standin {

/// Whether a signature is one complete type.
[[nodiscard]] bool isCompleteType(std::string_view signature);

/// Whether @p signature is one complete type and @p value fits it: numbers are within the type's
/// range, lists have the right shape and length, object paths and signatures are valid.
[[nodiscard]] bool valueFits(std::string_view signature, const Value& value);

/// Appends @p value as the type @p signature.
/// @return a negative errno on failure: -EINVAL for a value that does not fit, or sd-bus's own
int appendValue(sd_bus_message* message, std::string_view signature, const Value& value);

} // namespace standin
