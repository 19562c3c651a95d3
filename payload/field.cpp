#include "payload/field.h"

namespace zolt {

namespace {

struct FieldPrinter {
    void operator()(const Heading& field) const { field.line(); }
    void operator()(const Value& field) const { field.line(field.value); }
    void operator()(const UnitValue& field) const { field.line(field.unit, field.value); }
    void operator()(const TextValue& field) const { field.line(field.text); }
};

} // namespace

void printField(const Field& field) {
    std::visit(FieldPrinter(), field);
}

} // namespace zolt
