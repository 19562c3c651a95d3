#include "payload/field.h"

namespace zolt {

namespace {

struct FieldPrinter {
    void operator()(const Heading& field) const { print(field.line); }
    void operator()(const Value& field) const { print(field.line, field.value); }
    void operator()(const UnitValue& field) const { print(field.line, field.unit, field.value); }
    void operator()(const TextValue& field) const { print(field.line, field.text); }
};

} // namespace

void printFields(std::span<const Field> fields) {
    for (const Field& field : fields) {
        std::visit(FieldPrinter(), field);
    }
}

} // namespace zolt
