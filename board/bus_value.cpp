#include "board/bus_value.h"

#include "board/bus_names.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace board {

namespace {

constexpr int misfit = -EINVAL;
constexpr std::size_t longestSignature = 255;
constexpr int deepestNesting = 32; // arrays and structs together; the bus allows 32 of each

// Length of the complete type that a signature starts with; 0 when it starts with none.
std::size_t typeLength(std::string_view signature, bool inArray = false, int depth = 0) {
    if (signature.empty() || depth > deepestNesting) {
        return 0;
    }
    const char code = signature.front();
    if (std::string_view("ynqiuxtbdsogv").contains(code)) {
        return 1;
    }
    if (code == 'a') {
        const std::size_t element = typeLength(signature.substr(1), true, depth + 1);
        return element == 0 ? 0 : 1 + element;
    }
    if (code != '(' && !(code == '{' && inArray)) {
        return 0;
    }
    std::size_t at = 1;
    std::size_t members = 0;
    const char closing = code == '(' ? ')' : '}';
    while (at < signature.size() && signature[at] != closing) {
        const std::size_t member = typeLength(signature.substr(at), false, depth + 1);
        if (member == 0) {
            return 0;
        }
        at += member;
        ++members;
    }
    // A dictionary entry has a key of a basic type and a value.
    const bool shape = code == '('
                           ? members > 0
                           : members == 2 && !std::string_view("a({v").contains(signature[1]);
    return at < signature.size() && shape ? at + 1 : 0;
}

// Whether a text is a sequence of complete types, which may be empty.
bool isSignature(std::string_view text) {
    bool isValid = text.size() <= longestSignature;
    while (isValid && !text.empty()) {
        const std::size_t length = typeLength(text);
        isValid = length != 0;
        text.remove_prefix(length);
    }
    return isValid;
}

// Takes the place of a message when a value is only checked.
class NoSink final : public ValueSink {
public:
    int basic(char code, const void* value) override {
        const auto* text = static_cast<const char*>(value);
        const bool isValid = code == 'o'   ? isObjectPath(text)
                             : code == 'g' ? isSignature(text)
                                           : true;
        return isValid ? 0 : misfit;
    }
    int open(char, std::string_view) override { return 0; }
    int close() override { return 0; }
};

class Walk {
public:
    explicit Walk(ValueSink& sink) : sink_(&sink) {}

    // `signature` is one complete type.
    int add(std::string_view signature, const Value& value) {
        switch (signature.front()) {
        case 'y':
            return addInteger<std::uint8_t>('y', value);
        case 'n':
            return addInteger<std::int16_t>('n', value);
        case 'q':
            return addInteger<std::uint16_t>('q', value);
        case 'i':
            return addInteger<std::int32_t>('i', value);
        case 'u':
            return addInteger<std::uint32_t>('u', value);
        case 'x':
            return addInteger<std::int64_t>('x', value);
        case 't':
            return addInteger<std::uint64_t>('t', value);
        case 'b':
            return addBoolean(value);
        case 'd':
            return addDouble(value);
        case 'v':
            return addVariant(value);
        case 'a':
            return addArray(signature.substr(1), value);
        case '(':
            return addMembers('r', signature.substr(1, signature.size() - 2), value);
        case '{':
            return addMembers('e', signature.substr(1, signature.size() - 2), value);
        default:
            return addText(signature.front(), value);
        }
    }

private:
    template <typename Integer>
    int addInteger(char code, const Value& value) {
        const auto* number = std::get_if<std::int64_t>(&value.content);
        // A description's numbers are signed: one of type 't' gives the 64-bit pattern.
        const bool inRange = number != nullptr && (sizeof(Integer) == sizeof(*number) ||
                                                   std::in_range<Integer>(*number));
        if (!inRange) {
            return misfit;
        }
        const auto narrow = static_cast<Integer>(*number);
        return sink_->basic(code, &narrow);
    }

    int addBoolean(const Value& value) {
        const auto* truth = std::get_if<bool>(&value.content);
        if (truth == nullptr) {
            return misfit;
        }
        const int number = *truth ? 1 : 0;
        return sink_->basic('b', &number);
    }

    int addDouble(const Value& value) {
        const auto* real = std::get_if<double>(&value.content);
        return real != nullptr ? sink_->basic('d', real) : misfit;
    }

    int addText(char code, const Value& value) {
        const auto* text = std::get_if<std::string>(&value.content);
        return text != nullptr ? sink_->basic(code, text->c_str()) : misfit;
    }

    int addVariant(const Value& value) {
        const auto* pair = std::get_if<Value::List>(&value.content);
        const auto* signature = pair != nullptr && pair->size() == 2
                                    ? std::get_if<std::string>(&pair->front().content)
                                    : nullptr;
        if (signature == nullptr || !isCompleteType(*signature)) {
            return misfit;
        }
        return inside('v', *signature, [&] { return add(*signature, pair->back()); });
    }

    int addArray(std::string_view element, const Value& value) {
        const auto* list = std::get_if<Value::List>(&value.content);
        if (list == nullptr) {
            return misfit;
        }
        return inside('a', element, [&] {
            int result = 0;
            for (const Value& entry : *list) {
                if (result = add(element, entry); result < 0) {
                    break;
                }
            }
            return result;
        });
    }

    int addMembers(char kind, std::string_view members, const Value& value) {
        const auto* list = std::get_if<Value::List>(&value.content);
        if (list == nullptr) {
            return misfit;
        }
        return inside(kind, members, [&] {
            std::string_view rest = members;
            for (const Value& member : *list) {
                const std::size_t length = typeLength(rest);
                if (length == 0) {
                    return misfit;
                }
                if (const int result = add(rest.substr(0, length), member); result < 0) {
                    return result;
                }
                rest.remove_prefix(length);
            }
            return rest.empty() ? 0 : misfit;
        });
    }

    // A variant's contents nest anew, so the depth of the value counts as well.
    template <typename AddContents>
    int inside(char kind, std::string_view contents, AddContents addContents) {
        if (depth_ == deepestNesting) {
            return misfit;
        }
        int result = sink_->open(kind, contents);
        if (result >= 0) {
            ++depth_;
            result = addContents();
            --depth_;
        }
        return result < 0 ? result : sink_->close();
    }

    ValueSink* sink_;
    int depth_ = 0;
};

} // namespace

bool isCompleteType(std::string_view signature) {
    return !signature.empty() && signature.size() <= longestSignature &&
           typeLength(signature) == signature.size();
}

int putValue(std::string_view signature, const Value& value, ValueSink& sink) {
    return isCompleteType(signature) ? Walk(sink).add(signature, value) : misfit;
}

bool valueFits(std::string_view signature, const Value& value) {
    NoSink none;
    return putValue(signature, value, none) >= 0;
}

} // namespace board
