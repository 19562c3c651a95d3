#include "capture/date.h"

#include <array>
#include <charconv>
#include <cstring>
#include <ctime>

namespace capture {

std::optional<std::string> dateOf(const char* epoch) {
    std::time_t seconds = 0;
    if (epoch == nullptr) {
        seconds = std::time(nullptr);
    } else {
        const char* const end = epoch + std::strlen(epoch);
        const auto [rest, error] = std::from_chars(epoch, end, seconds);
        if (error != std::errc() || rest != end || seconds < 0) {
            return std::nullopt;
        }
    }
    std::tm date{};
    std::array<char, 64> text{};
    if (gmtime_r(&seconds, &date) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M UTC", &date) == 0) {
        return std::nullopt;
    }
    return text.data();
}

} // namespace capture
