#include "cpld/control_registers.h"

#include "cpld/control_register_table.h"

#include <iterator>

namespace zolt {

namespace {

constexpr std::uint8_t fourCConnectorClass = 2;

std::optional<std::uint16_t> valueOf(RawField raw, const RegisterValue& value) {
    if (raw.size == 2) {
        return wordOf(value);
    }
    return byteOf(value);
}

// Returns no value when the register cannot be read, which it reports. Also returns none, without a
// report, when the HAL succeeds but does not deliver the register's bytes.
std::optional<std::uint16_t> read(RegisterBlock& block, std::string_view name, RawField raw,
                                  Access access, RegisterValue& value) {
    const std::int32_t status =
        access == Access::rawOnly ? block.readRaw(raw, value) : block.read(name, raw, value);
    if (status != 0) {
        print<"Unable to read %s using CPLD raw API, status %d\n">(block.name(name), status);
        return std::nullopt;
    }
    return valueOf(raw, value);
}

// Instance is the number of the instance; a single unit has none.
template <typename Line, typename... Instance>
void showRegister(RegisterBlock& block, const Register<Line>& row, RegisterValue& value,
                  Instance... instance) {
    if (const auto number = read(block, row.name, row.raw, row.access, value)) {
        row.line(instance..., *number);
    }
}

void showClass(const ModuleClass& shown, RegisterValue& value) {
    RegisterBlock unit(shown.base);
    for (const SingleRegister& row : shown.registers) {
        showRegister(unit, row, value);
    }
    if (shown.instanceRegisters.empty()) {
        return;
    }
    std::uint16_t base = shown.base;
    for (unsigned instance = 1; instance <= shown.instances; ++instance) {
        RegisterBlock block(shown.prefix, instance, base);
        for (const InstanceRegister& row : shown.instanceRegisters) {
            showRegister(block, row, value, instance);
        }
        write("\n");
        base = static_cast<std::uint16_t>(base + shown.distance);
    }
}

} // namespace

Status showControlRegisters(std::uint8_t moduleSelector) {
    RegisterValue value;
    if (moduleSelector == allModuleClasses) {
        for (const ModuleClass& shown : moduleClasses) {
            showClass(shown, value);
            write("\n");
        }
        return statusDone;
    }
    if (moduleSelector >= 1 && moduleSelector <= std::size(moduleClasses)) {
        if (moduleSelector == fourCConnectorClass) {
            write("\n"); // an empty line sets this class, shown alone, off from the menu
        }
        showClass(moduleClasses[moduleSelector - 1], value);
    }
    return statusDone;
}

} // namespace zolt
