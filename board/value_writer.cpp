#include "board/value_writer.h"

namespace board {

WrittenValue written(const Value& value) {
    struct Writer {
        WrittenValue operator()(bool truth) const { return truth; }
        WrittenValue operator()(std::int64_t number) const { return WrittenNumber{number}; }
        WrittenValue operator()(double number) const { return number; }
        WrittenValue operator()(const std::string& text) const { return text; }
        WrittenValue operator()(const Value::List& list) const {
            WrittenList all;
            for (const Value& element : list) {
                all.push_back(written(element));
            }
            return all;
        }
    };
    return std::visit(Writer{}, value.content);
}

WrittenValue written(const Property& property) {
    const bool isPlain =
        property.signature == "b" || property.signature == "q" || property.signature == "s";
    if (isPlain) {
        return written(property.value);
    }
    return WrittenRow{{"signature", property.signature}, {"value", written(property.value)}};
}

} // namespace board
