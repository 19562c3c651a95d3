// The properties of one module of each kind. Their reports are in reports.h.
#pragma once

#include "board/service_model.h"
#include "bus/property_value.h"

#include <string>
#include <vector>

namespace zolt::test {

[[nodiscard]] PropertyMap cemProperties();
[[nodiscard]] PropertyMap backPlaneProperties();
/// Properties of RFC and puck modules.
[[nodiscard]] PropertyMap shortProperties();

/// Converts properties to those that the service publishes.
[[nodiscard]] std::vector<board::Property> published(const PropertyMap& properties);

} // namespace zolt::test
