#include "console/output.h"

#include <algorithm>
#include <cstdio>

namespace zolt {

namespace {

constexpr std::size_t longestNumber = 24;

char* appendDigits(char* end, unsigned long long value, unsigned base, unsigned minimum,
                   const char* digits) {
    std::array<char, longestNumber> reversed;
    unsigned count = 0;
    do {
        reversed[count++] = digits[value % base];
        value /= base;
    } while (value != 0);
    while (count < minimum) {
        reversed[count++] = '0';
    }
    return std::reverse_copy(reversed.begin(), reversed.begin() + count, end);
}

char* appendNumber(char* end, const detail::Conversion& conversion, Number number) {
    auto value = static_cast<unsigned long long>(number);
    if (conversion.kind != 'd') {
        return appendDigits(end, value, 16, conversion.width,
                            conversion.kind == 'X' ? "0123456789ABCDEF" : "0123456789abcdef");
    }
    unsigned minimum = conversion.width;
    if (number < 0) {
        *end++ = '-';
        value = 0 - value;
        minimum -= minimum > 0 ? 1 : 0; // the sign counts towards the width
    }
    return appendDigits(end, value, 10, minimum, "0123456789");
}

// A line under composition. What does not fit goes to the stream in pieces.
class Line {
public:
    ~Line() { drain(); }
    Line() = default;
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    void add(std::string_view text) {
        if (text.size() > room()) {
            drain();
            if (text.size() > room()) {
                fwrite_unlocked(text.data(), 1, text.size(), stdout);
                return;
            }
        }
        end_ = std::copy(text.begin(), text.end(), end_);
    }

    void add(const detail::Conversion& conversion, Number number) {
        if (room() < longestNumber) {
            drain();
        }
        end_ = appendNumber(end_, conversion, number);
    }

private:
    [[nodiscard]] std::size_t room() const {
        return static_cast<std::size_t>(buffer_.data() + buffer_.size() - end_);
    }

    void drain() {
        fwrite_unlocked(buffer_.data(), 1, static_cast<std::size_t>(end_ - buffer_.data()), stdout);
        end_ = buffer_.data();
    }

    std::array<char, 256> buffer_;
    char* end_ = buffer_.data();
};

} // namespace

void detail::print(std::string_view format, std::span<const Argument> arguments) {
    Line line;
    auto argument = arguments.begin();
    while (true) {
        const std::size_t percent = format.find('%');
        line.add(format.substr(0, percent));
        if (percent == std::string_view::npos) {
            return;
        }
        const Conversion conversion = parseConversion(format, percent);
        if (conversion.kind == 's') {
            line.add(argument->text);
        } else {
            line.add(conversion, argument->number);
        }
        ++argument;
        format.remove_prefix(percent + conversion.length);
    }
}

void write(std::string_view text) {
    // A write that fails leaves its mark on the stream and nothing else: the tool's exit status
    // and its further texts do not depend on whether somebody reads.
    fwrite_unlocked(text.data(), 1, text.size(), stdout);
}

void flush() {
    (void)std::fflush(stdout);
}

} // namespace zolt
