#include "cpld/control_registers.h"

#include "cpld/control_register_table.h"

#include <iterator>

namespace zolt {

namespace {

constexpr std::uint8_t fourCConnectorClass = 2;

std::string nameOf(const ModuleClass&, const SingleRegister& row) {
    return std::string(row.name);
}

std::string nameOf(const ModuleClass& shown, const InstanceRegister& row, unsigned instance) {
    return registerName(shown.prefix, instance, row.name);
}

std::optional<std::uint16_t> valueOf(const RawField& raw, const RegisterValue& value) {
    if (raw.size == 2) {
        return wordOf(value);
    }
    return byteOf(value);
}

// Instance: the number of the instance, or nothing for a single unit.
template <typename Line, typename... Instance>
void showRegister(const ModuleClass& shown, const Register<Line>& row, std::uint16_t base,
                  RegisterValue& value, Instance... instance) {
    const RawField raw = row.raw.from(base);
    value.clear();
    const std::int32_t status = row.access == Access::rawOnly
                                    ? readRawField(raw, value)
                                    : readField(nameOf(shown, row, instance...), raw, value);
    if (status != 0) {
        print("Unable to read %s using CPLD raw API, status %d\n",
              std::string_view(nameOf(shown, row, instance...)), status);
    } else if (const auto number = valueOf(raw, value)) {
        print(row.line, instance..., *number);
    }
}

void showClass(const ModuleClass& shown, RegisterValue& value) {
    for (const SingleRegister& row : shown.registers) {
        showRegister(shown, row, shown.base, value);
    }
    if (shown.instanceRegisters.empty()) {
        return;
    }
    std::uint16_t base = shown.base;
    for (unsigned instance = 1; instance <= shown.instances; ++instance) {
        for (const InstanceRegister& row : shown.instanceRegisters) {
            showRegister(shown, row, base, value, instance);
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
            write("\n"); // shown alone, this class alone sets itself off from its menu
        }
        showClass(moduleClasses[moduleSelector - 1], value);
    }
    return statusDone;
}

} // namespace zolt
