#include "zolt_board/json.h"

#include "board/bus_value.h"
#include "board/utf8.h"

#include <cmath>
#include <utility>
#include <vector>

namespace zolt_board {

namespace {

constexpr int reportVersion = 1; ///< a member that goes away or changes its meaning needs the next

template <typename Number>
Json numberAt(const void* value) {
    return *static_cast<const Number*>(value);
}

// Builds JSON from the parts of a value, in their order.
class JsonSink final : public board::ValueSink {
public:
    JsonSink() noexcept(false) {} // the library may throw

    int basic(char code, const void* value) override {
        add(toJson(code, value));
        return 0;
    }

    int open(char kind, std::string_view contents) override {
        open_.push_back(kind == 'v' ? Json{{"signature", contents}} : Json::array());
        return 0;
    }

    int close() override {
        Json closed = std::move(open_.back());
        open_.pop_back();
        add(std::move(closed));
        return 0;
    }

    [[nodiscard]] Json take() { return std::move(whole_); }

private:
    static Json toJson(char code, const void* value) {
        switch (code) {
        case 'y':
            return numberAt<std::uint8_t>(value);
        case 'n':
            return numberAt<std::int16_t>(value);
        case 'q':
            return numberAt<std::uint16_t>(value);
        case 'i':
            return numberAt<std::int32_t>(value);
        case 'u':
            return numberAt<std::uint32_t>(value);
        case 'x':
            return numberAt<std::int64_t>(value);
        case 't':
            return numberAt<std::uint64_t>(value);
        case 'b':
            return *static_cast<const int*>(value) != 0;
        case 'd':
            return numberToJson(*static_cast<const double*>(value));
        default:
            return static_cast<const char*>(value);
        }
    }

    void add(Json part) {
        if (open_.empty()) {
            whole_ = std::move(part);
        } else if (open_.back().is_object()) {
            open_.back()["value"] = std::move(part);
        } else {
            open_.back().push_back(std::move(part));
        }
    }

    Json whole_;
    std::vector<Json> open_;
};

} // namespace

Json numberToJson(double number) {
    if (std::isfinite(number)) {
        return number;
    }
    return std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf";
}

Json bytesToJson(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const std::uint8_t byte : bytes) {
        text.append(1, digits[byte >> 4]).append(1, digits[byte & 0xF]);
    }
    return text;
}

Json textToJson(std::string_view text) {
    Json json = Json::object();
    if (board::isUtf8(text)) {
        json["text"] = text;
    }
    json["bytes"] = bytesToJson(board::Bytes(text.begin(), text.end()));
    return json;
}

Json valueToJson(std::string_view signature, const board::Value& value) {
    JsonSink sink;
    (void)board::putValue(signature, value, sink); // the loader has checked that it fits
    return sink.take();
}

Json reportOf(std::string_view report) {
    return {{"report", report}, {"version", reportVersion}};
}

std::string documentText(const Json& document) {
    constexpr int indentation = 2;
    return document.dump(indentation, ' ', true, Json::error_handler_t::replace) + "\n";
}

} // namespace zolt_board
