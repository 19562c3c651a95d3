// Reads registers, each once: by name through the HAL, and raw through the CPLD driver.
#pragma once

#include "capture/observation.h"
#include "cpld/register_access.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace capture {

constexpr std::size_t mostRegisterBytes = 256;     ///< that a capture keeps of a named register
constexpr std::size_t mostAreaBytes = 64UL * 1024; ///< and of a named area

class RegisterReader {
public:
    explicit RegisterReader(Observation& observation) : observation_(&observation) {}

    void named(std::string_view name);

    /// Reads the whole byte or word in which the field lies, whatever its bits.
    void raw(zolt::RawField field);

    /// Reads the register by name, and the raw register behind it.
    void both(std::string_view name, zolt::RawField field) {
        named(name);
        raw(field);
    }

private:
    Observation* observation_;
};

/// The value that a report sees: by name, else raw.
struct Effective {
    std::int32_t status = 0; ///< of the raw read, if the named one failed
    zolt::RegisterValue value{};
};

/// The value of a register that was read with both().
[[nodiscard]] Effective effective(const Observation& observation, std::string_view name,
                                  zolt::RawField field);

} // namespace capture
