#include "board/description_layout.h"

#include "board/bus_names.h"
#include "board/control_register_layout.h"
#include "board/cpld_map.h"
#include "board/device_type.h"

#include <algorithm>
#include <vector>

namespace board {

namespace {

using Kind = Layout::Kind;
using Identity = std::optional<std::string>;

Identity number(const toml::node* value) {
    const auto number = value != nullptr ? value->value_exact<std::int64_t>() : std::nullopt;
    return number ? Identity(std::to_string(*number)) : std::nullopt;
}

template <int otherwise>
Identity numberOr(const toml::node* value) {
    return value == nullptr ? std::to_string(otherwise) : number(value);
}

// "BP", "Backplane" and 19 are the same device type.
Identity deviceType(const toml::node* value) {
    const auto word = value != nullptr ? value->value_exact<std::string_view>() : std::nullopt;
    if (!word) {
        return number(value);
    }
    const auto code = deviceTypeCode(*word);
    return code ? Identity(std::to_string(*code)) : std::nullopt;
}

template <std::string (*full)(const std::string&)>
Identity name(const toml::node* value) {
    const auto text = value != nullptr ? value->value_exact<std::string>() : std::nullopt;
    return text ? Identity(full(*text)) : std::nullopt;
}

constexpr IdentityKey byId[] = {{"id", number}};
constexpr IdentityKey byIdOfOne[] = {{"id", numberOr<1>}}; // a single instance needs no number
constexpr IdentityKey byNumber[] = {{"number", number}};
constexpr IdentityKey byAddress[] = {{"address", number}};
constexpr IdentityKey byPicpwr[] = {{"picpwr", numberOr<0>}};
constexpr IdentityKey byLink[] = {{"id", numberOr<0>}};
constexpr IdentityKey byTypeAndIndex[] = {{"device_type", deviceType}, {"index", numberOr<0>}};
constexpr IdentityKey byType[] = {{"device_type", deviceType}};
constexpr IdentityKey byPathAndInterface[] = {{"path", name<fullPath>},
                                              {"interface", name<fullInterface>}};

constexpr std::string_view moduleKey[] = {"module"};
constexpr std::string_view plainBytesKeys[] = {"payload", "oem_area"};
constexpr Alternatives slotAlternatives[] = {{moduleKey, plainBytesKeys}};
constexpr std::string_view bytesKey[] = {"bytes"};
constexpr Alternatives riserMapAlternatives[] = {{bytesKey, {}}};

constexpr Layout moduleMembers[] = {
    {.key = "backplane", .kind = Kind::table},
    {.key = "end_point", .kind = Kind::list},
    {.key = "oem", .kind = Kind::list},
};
constexpr Layout slotMembers[] = {{.key = "module", .kind = Kind::table, .members = moduleMembers}};

constexpr Layout recordMembers[] = {{.key = "dsl", .kind = Kind::list, .identity = byLink}};
constexpr Layout riserMapMembers[] = {
    {.key = "record", .kind = Kind::list, .members = recordMembers, .identity = byPicpwr}};

constexpr Layout halMembers[] = {{.key = payloadBlockName, .kind = Kind::table}};

constexpr Layout overrideMembers[] = {{.key = "named", .kind = Kind::names},
                                      {.key = "raw", .kind = Kind::registers}};

constexpr Layout objectMembers[] = {{.key = "properties", .kind = Kind::names}};
constexpr Layout serviceMembers[] = {
    {.key = "info", .kind = Kind::names},
    {.key = "object", .kind = Kind::list, .members = objectMembers, .identity = byPathAndInterface},
    // The first order that matches a call applies.
    {.key = "order", .kind = Kind::list, .newestFirst = true},
};

constexpr Layout deviceMembers[] = {{.key = "properties", .kind = Kind::numbers}};
constexpr Layout busMembers[] = {
    {.key = "properties", .kind = Kind::numbers},
    {.key = "device", .kind = Kind::list, .members = deviceMembers, .identity = byAddress},
};
constexpr Layout indexNodeMembers[] = {{.key = "sub", .kind = Kind::list}};
constexpr Layout i2cMembers[] = {
    {.key = "bus", .kind = Kind::list, .members = busMembers, .identity = byNumber},
    {.key = "index_node",
     .kind = Kind::list,
     .members = indexNodeMembers,
     .identity = byTypeAndIndex},
    {.key = "type", .kind = Kind::list, .identity = byType},
};

constexpr Layout boardMembers[] = {
    {.key = "faults", .kind = Kind::texts},
    {.key = "slot",
     .kind = Kind::list,
     .members = slotMembers,
     .identity = byId,
     .alternatives = slotAlternatives},
    {.key = "riser_map",
     .kind = Kind::table,
     .members = riserMapMembers,
     .alternatives = riserMapAlternatives},
    {.key = "hal", .kind = Kind::table, .members = halMembers},
    {.key = "override", .kind = Kind::table, .members = overrideMembers},
    {.key = "service", .kind = Kind::table, .members = serviceMembers},
    {.key = "i2c", .kind = Kind::table, .members = i2cMembers},
};

std::vector<Layout> withControlClasses() {
    std::vector<Layout> members(std::begin(boardMembers), std::end(boardMembers));
    for (const ControlClass& kind : controlClasses) {
        members.push_back({.key = kind.key,
                           .kind = Kind::list,
                           .identity = kind.instances == 1 ? byIdOfOne : byId});
    }
    return members;
}

} // namespace

const Layout& boardLayout() {
    static const std::vector<Layout> members = withControlClasses();
    static const Layout board{.key = "board", .kind = Kind::table, .members = members};
    return board;
}

const Layout* memberOf(const Layout& layout, std::string_view key) {
    const auto found = std::ranges::find(layout.members, key, &Layout::key);
    return found == layout.members.end() ? nullptr : &*found;
}

} // namespace board
