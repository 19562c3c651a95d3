#include "board/overlay_names.h"

#include "board/number.h"

#include <limits>
#include <map>
#include <optional>
#include <utility>

namespace board {

namespace {

constexpr auto highestAddress = std::numeric_limits<std::uint16_t>::max();

// The bytes of a raw override; none if they have an error, which the loader will report.
std::optional<Bytes> bytesIn(const toml::table& table, std::string_view name) {
    const Reading reading{.files = {""}};
    try {
        return TomlTable(table, "raw", reading).bytes(name);
    } catch (const BoardError&) {
        return std::nullopt;
    }
}

struct Registers {
    std::int64_t first;
    Bytes bytes;
};

std::optional<Registers> registersIn(const toml::table& table, std::string_view name) {
    const auto first = numberIn(name, 0, highestAddress);
    auto bytes = first ? bytesIn(table, name) : std::nullopt;
    if (!bytes || *first + std::ssize(*bytes) - 1 > highestAddress) {
        return std::nullopt;
    }
    return Registers{*first, std::move(*bytes)};
}

// Gives each register its own key, so that single ones can be changed. A table with an error stays
// as it is: the loader will report the error.
void listSingly(toml::table& registers) {
    toml::table single;
    for (const auto& [name, value] : registers) {
        const auto listed = registersIn(registers, name.str());
        if (!listed) {
            return;
        }
        std::int64_t address = listed->first;
        for (const std::uint8_t byte : listed->bytes) {
            const toml::key place(addressText(address++), name.source());
            if (!single.insert(place, std::int64_t{byte}).second) {
                return;
            }
        }
    }
    registers = std::move(single);
}

void layNames(toml::table& over, toml::table& base, const Layout& layout,
              const OverlayRules& rules) {
    for (const std::string& name : keysOf(over)) {
        attempt(rules.errors, [&] {
            if (isRemoval(*over.get(name))) {
                rules.takeOut(over, name, base, base.contains(name) ? name : "", layout.key);
            }
        });
    }
}

// 8 and 0x8 are the same number.
void layNumbers(toml::table& over, toml::table& base, const Layout& layout,
                const OverlayRules& rules) {
    constexpr auto highest = std::numeric_limits<std::uint32_t>::max();
    std::map<std::int64_t, std::string> known;
    for (const std::string& name : keysOf(base)) {
        if (const auto number = numberIn(name, 0, highest)) {
            known.emplace(*number, name);
        }
    }
    for (const std::string& name : keysOf(over)) {
        attempt(rules.errors, [&] {
            const auto number = numberIn(name, 0, highest);
            const auto found = number ? known.find(*number) : known.end();
            const std::string baseName = found != known.end() ? found->second : "";
            if (isRemoval(*over.get(name))) {
                rules.takeOut(over, name, base, baseName, layout.key);
            } else if (!baseName.empty()) {
                base.erase(baseName);
            }
        });
    }
}

// Changes single registers, whatever registers the base lists together.
void layRegisters(toml::table& over, toml::table& base, const Layout& layout,
                  const OverlayRules& rules) {
    listSingly(base);
    for (const std::string& name : keysOf(over)) {
        attempt(rules.errors, [&] {
            if (isRemoval(*over.get(name))) {
                const auto address = numberIn(name, 0, highestAddress);
                const std::string known = address ? addressText(*address) : "";
                rules.takeOut(over, name, base, base.contains(known) ? known : "", layout.key);
            } else if (const auto listed = registersIn(over, name)) {
                for (std::int64_t at = 0; at < std::ssize(listed->bytes); ++at) {
                    base.erase(addressText(listed->first + at));
                }
            }
        });
    }
}

} // namespace

void layNamesOver(toml::table& over, toml::table& base, const Layout& layout,
                  const OverlayRules& rules) {
    switch (layout.kind) {
    case Layout::Kind::numbers:
        layNumbers(over, base, layout, rules);
        break;
    case Layout::Kind::registers:
        layRegisters(over, base, layout, rules);
        break;
    default:
        layNames(over, base, layout, rules);
    }
    moveRest(over, base);
}

} // namespace board
