// One module of each kind, as properties and as the service publishes them. Their reports are in
// reports.h.
#pragma once

#include "bus/property_value.h"
#include "standin/service/model.h"

#include <string>
#include <vector>

namespace zolt::test {

[[nodiscard]] PropertyMap cemProperties();
[[nodiscard]] PropertyMap backPlaneProperties();
/// Of RFC and puck modules.
[[nodiscard]] PropertyMap shortProperties();

/// The same properties as the service's.
[[nodiscard]] std::vector<standin::Property> published(const PropertyMap& properties);

} // namespace zolt::test
