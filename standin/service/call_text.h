// Turns the calls of the service into log lines.
#pragma once

#include <span>
#include <string>
#include <systemd/sd-bus.h>

namespace standin {

/// A call: its path, interface, member, and its first texts under their labels. The texts are
/// quoted, and cut at 255 bytes, the most that a name on the bus can have:
///
///   /com/tesk/bmc/zolt/info org.freedesktop.DBus.Properties.Get interface="a.b" property="C"
///
/// @param call    its read position goes back to the start
/// @param labels  of the texts; an empty span shows none
[[nodiscard]] std::string callText(sd_bus_message* call, std::span<const char* const> labels);

/// The contents of an answer that was sent: its signature, the signature behind that of a variant
/// ("v b"), "empty", or the name of an error.
[[nodiscard]] std::string answerText(sd_bus_message* answer);

} // namespace standin
