#include "capture/control_registers.h"

#include "capture/registers.h"
#include "cpld/control_register_table.h"

#include <iterator>

namespace capture {

namespace {

template <typename Line>
void readBlock(RegisterReader& reader, zolt::RegisterBlock& block, std::uint16_t base,
               std::span<const zolt::Register<Line>> rows) {
    for (const auto& row : rows) {
        if (row.access == zolt::Access::namedElseRaw) {
            reader.named(block.name(row.name));
        }
        reader.raw(row.raw.from(base));
    }
}

void readClass(RegisterReader& reader, const zolt::ModuleClass& read) {
    zolt::RegisterBlock unit(read.base);
    readBlock(reader, unit, read.base, read.registers);
    std::uint16_t base = read.base;
    for (unsigned instance = 1; instance <= read.instances; ++instance) {
        zolt::RegisterBlock block(read.prefix, instance, base);
        readBlock(reader, block, base, read.instanceRegisters);
        base = static_cast<std::uint16_t>(base + read.distance);
    }
}

} // namespace

void readControlRegisters(Observation& observation, const Progress& progress) {
    RegisterReader reader(observation);
    unsigned done = 0;
    for (const zolt::ModuleClass& read : zolt::moduleClasses) {
        progress("control registers", done++, std::size(zolt::moduleClasses));
        readClass(reader, read);
    }
}

} // namespace capture
