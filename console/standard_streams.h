// The standard streams of a program that may be started without them.
#pragma once

namespace zolt {

[[nodiscard]] bool isOpen(int descriptor);

/// Opens /dev/null for each standard stream that is closed at the start. Otherwise the next file or
/// bus device that the program opens would take the stream's number, and the program would write
/// its report there.
void holdStandardStreams();

} // namespace zolt
