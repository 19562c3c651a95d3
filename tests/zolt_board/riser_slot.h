// A slot for boards of several tests.
#pragma once

namespace zolt_board {

/// A riser with an end point and an OEM area.
constexpr const char* riserSlot = R"(
[[slot]]
id = 2
dstat = 3
dpen = true
dsl_ids = [0x12]
[slot.module]
type = "riser"
object = "r1"
format_version = 1
device_class = 0x11
vendor_id = 0xF1A0
[[slot.module.end_point]]
type = 1
[[slot.module.oem]]
type = 3
slot_presence = 0xA5
)";

} // namespace zolt_board
