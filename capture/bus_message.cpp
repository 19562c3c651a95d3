#include "capture/bus_message.h"

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string_view>

namespace capture {

namespace {

// Reads one value with all values in it. A value that cannot be kept is skipped, so that the next
// one can be read.
class ValueReader {
public:
    ValueReader(sd_bus_message* message, BusRoom& room) : message_(message), room_(&room) {}

    // Returns 0 or a negative errno. The value is complete only if isKept().
    int read(board::Value& value, unsigned depth = 0) {
        char type = 0;
        const char* contents = nullptr;
        const int found = sd_bus_message_peek_type(message_, &type, &contents);
        if (found <= 0) {
            return found < 0 ? found : -ENXIO;
        }
        if (std::string_view("arev").contains(type)) {
            const std::string signature(contents); // sd-bus may move its own
            return isRoomFor(0) && depth < deepestValue ? container(type, signature, value, depth)
                                                        : skip();
        }
        return type != 'h' && isRoomFor(0) ? basic(type, value) : skip();
    }

    [[nodiscard]] bool isKept() const { return isKept_; }

private:
    int skip() {
        isKept_ = false;
        return sd_bus_message_skip(message_, nullptr);
    }

    bool isRoomFor(std::size_t textBytes) {
        if (room_->values == 0 || room_->textBytes < textBytes) {
            return false;
        }
        --room_->values;
        room_->textBytes -= textBytes;
        return true;
    }

    int basic(char type, board::Value& value) {
        switch (type) {
        case 'b':
            return number<int>(type, [&](int truth) { value.content = truth != 0; });
        case 'y':
            return integer<std::uint8_t>(type, value);
        case 'n':
            return integer<std::int16_t>(type, value);
        case 'q':
            return integer<std::uint16_t>(type, value);
        case 'i':
            return integer<std::int32_t>(type, value);
        case 'u':
            return integer<std::uint32_t>(type, value);
        case 'x':
            return integer<std::int64_t>(type, value);
        case 't': // a board description has the 64-bit pattern as a signed number
            return integer<std::uint64_t>(type, value);
        case 'd':
            return number<double>(type, [&](double real) { value.content = real; });
        default:
            return text(type, value);
        }
    }

    template <typename Number, typename Take>
    int number(char type, Take take) {
        Number number{};
        const int result = sd_bus_message_read_basic(message_, type, &number);
        if (result <= 0) {
            return result < 0 ? result : -ENXIO;
        }
        take(number);
        return 0;
    }

    template <typename Integer>
    int integer(char type, board::Value& value) {
        return number<Integer>(
            type, [&](Integer whole) { value.content = static_cast<std::int64_t>(whole); });
    }

    int text(char type, board::Value& value) {
        const char* text = nullptr;
        const int result = sd_bus_message_read_basic(message_, type, &text);
        if (result <= 0) {
            return result < 0 ? result : -ENXIO;
        }
        const std::string_view read(text);
        if (isRoomFor(read.size())) {
            value.content = std::string(read);
        } else {
            isKept_ = false;
        }
        return 0;
    }

    int container(char type, const std::string& contents, board::Value& value, unsigned depth) {
        if (const int result = sd_bus_message_enter_container(message_, type, contents.c_str());
            result < 0) {
            return result;
        }
        board::Value::List list;
        if (type == 'v') {
            list.emplace_back(contents);
        }
        int more = 0;
        while ((more = sd_bus_message_at_end(message_, 0)) == 0) {
            if (const int result = read(list.emplace_back(false), depth + 1); result < 0) {
                return result;
            }
            if (!isKept_) {
                list.clear(); // the rest is only skipped
            }
        }
        if (more < 0) {
            return more;
        }
        value.content = std::move(list);
        const int left = sd_bus_message_exit_container(message_);
        return left < 0 ? left : 0;
    }

    sd_bus_message* message_;
    BusRoom* room_;
    bool isKept_ = true;
};

// Reads the entries of a dictionary. `readEntry` reads the key and the value of one entry.
template <typename ReadEntry>
int readDictionary(sd_bus_message* message, const char* entry, ReadEntry readEntry) {
    const std::string array = std::string("{").append(entry).append("}");
    int result = sd_bus_message_enter_container(message, 'a', array.c_str());
    if (result < 0) {
        return result;
    }
    while ((result = sd_bus_message_enter_container(message, 'e', entry)) > 0) {
        if (result = readEntry(); result < 0) {
            return result;
        }
        if (result = sd_bus_message_exit_container(message); result < 0) {
            return result;
        }
    }
    if (result < 0) {
        return result;
    }
    result = sd_bus_message_exit_container(message);
    return result < 0 ? result : 0;
}

int readText(sd_bus_message* message, char type, std::string& text) {
    const char* read = nullptr;
    const int result = sd_bus_message_read_basic(message, type, &read);
    if (result <= 0) {
        return result < 0 ? result : -ENXIO;
    }
    text = read;
    return 0;
}

// Takes the room of a name. Without room, nothing of that name is kept.
bool takeRoom(BusRoom& room, std::size_t textBytes) {
    if (room.values == 0 || room.textBytes < textBytes) {
        return false;
    }
    --room.values;
    room.textBytes -= textBytes;
    return true;
}

// Reads the variant of one property.
int readVariant(sd_bus_message* message, BusRoom& room, std::string& signature,
                std::optional<board::Value>& value) {
    char type = 0;
    const char* contents = nullptr;
    int result = sd_bus_message_peek_type(message, &type, &contents);
    if (result <= 0 || type != 'v') {
        return result < 0 ? result : -ENXIO;
    }
    signature = contents;
    result = sd_bus_message_enter_container(message, 'v', signature.c_str());
    if (result < 0) {
        return result;
    }
    board::Value read = false;
    ValueReader reader(message, room);
    if (result = reader.read(read); result < 0) {
        return result;
    }
    if (reader.isKept()) {
        value = std::move(read);
    }
    result = sd_bus_message_exit_container(message);
    return result < 0 ? result : 0;
}

} // namespace

int readPropertyMap(sd_bus_message* message, const std::string& path, const std::string& interface,
                    BusRoom& room, std::vector<board::Property>& properties,
                    std::vector<UnkeptProperty>& unkept) {
    return readDictionary(message, "sv", [&] {
        std::string name;
        std::string signature;
        std::optional<board::Value> value;
        if (const int result = readText(message, 's', name); result < 0) {
            return result;
        }
        if (const int result = readVariant(message, room, signature, value); result < 0) {
            return result;
        }
        if (value && takeRoom(room, name.size())) {
            properties.push_back({name, signature, std::move(*value)});
        } else if (unkept.size() < mostUnkept) {
            unkept.push_back({path, interface, name, signature});
        }
        return 0;
    });
}

int readObjects(sd_bus_message* message, BusRoom& room, ManagerReading& reading) {
    return readDictionary(message, "oa{sa{sv}}", [&] {
        std::string path;
        if (const int result = readText(message, 'o', path); result < 0) {
            return result;
        }
        if (!takeRoom(room, path.size())) {
            reading.isCut = true;
            return sd_bus_message_skip(message, "a{sa{sv}}");
        }
        const std::size_t before = reading.interfaces.size();
        const int result = readDictionary(message, "sa{sv}", [&] {
            std::string interface;
            if (const int failed = readText(message, 's', interface); failed < 0) {
                return failed;
            }
            if (!takeRoom(room, path.size() + interface.size())) {
                reading.isCut = true;
                return sd_bus_message_skip(message, "a{sv}");
            }
            auto& published =
                reading.interfaces.emplace_back(board::PublishedInterface{path, interface, {}});
            return readPropertyMap(message, path, interface, room, published.properties,
                                   reading.unkept);
        });
        if (reading.interfaces.size() == before) {
            reading.interfaces.push_back({path, "", {}});
        }
        return result;
    });
}

int readContents(sd_bus_message* message, BusRoom& room, OtherReply& contents) {
    contents.signature = sd_bus_message_get_signature(message, 1);
    if (contents.signature.empty()) {
        return 0;
    }
    board::Value read = false;
    ValueReader reader(message, room);
    if (const int result = reader.read(read); result < 0) {
        return result;
    }
    // Behind the value of one complete type, the message is at its end.
    if (reader.isKept() && sd_bus_message_at_end(message, 1) > 0) {
        contents.value = std::move(read);
    }
    return 0;
}

} // namespace capture
