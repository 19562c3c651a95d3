#include "tests/fuzz/bus_reply.h"

#include <systemd/sd-bus.h>

#include <array>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace zolt::fuzz {

namespace {

constexpr int deepest = 6;
constexpr unsigned longestArray = 20;
constexpr unsigned mostValues = 3;
constexpr std::size_t longestType = 255 / mostValues; // a signature has at most 255 characters

void require(int result) {
    fuzz::require(result >= 0);
}

// A connection without a peer. sd-bus needs one even for messages that are never sent.
sd_bus* connection() {
    static sd_bus* const bus = [] {
        int ends[2];
        require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends));
        sd_bus* raw = nullptr;
        require(sd_bus_new(&raw));
        require(sd_bus_set_fd(raw, ends[0], ends[0]));
        require(sd_bus_start(raw));
        close(ends[1]);
        return raw;
    }();
    return bus;
}

sdbusplus::message_t emptyMessage() {
    sd_bus_message* raw = nullptr;
    require(sd_bus_message_new_method_call(connection(), &raw, "a.b", "/", "a.b", "C"));
    return {raw, std::false_type()};
}

// Returns the length of the complete type that a valid signature starts with.
std::size_t typeLength(std::string_view signature) {
    if (signature.front() == 'a') {
        return 1 + typeLength(signature.substr(1));
    }
    if (signature.front() != '(' && signature.front() != '{') {
        return 1;
    }
    std::size_t at = 1;
    while (signature[at] != ')' && signature[at] != '}') {
        at += typeLength(signature.substr(at));
    }
    return at + 1;
}

constexpr std::string_view basicTypes = "ynqiuxtbdsog";

} // namespace

Reply::Reply(Bytes& bytes) : bytes_(bytes), message_(emptyMessage()) {}

sdbusplus::message_t Reply::finished() {
    require(sd_bus_message_seal(message_.get(), 1, 0));
    require(sd_bus_message_rewind(message_.get(), 1));
    return std::move(message_);
}

PropertyMap Reply::addProperties() {
    // Names that the reports ask for, and two others.
    constexpr std::array names{"PayloadFrmtVer",
                               "DeviceClass",
                               "StaticPaylodSize",
                               "DeviceId",
                               "VendorId",
                               "DeviceVer",
                               "NumWires",
                               "TargetI2cDevType",
                               "TargetI2cDevAddr",
                               "EndPoint0",
                               "EndPoint1",
                               "EndPoint15",
                               "checksum",
                               "NumPwires",
                               "TargetI2cGpioDevType",
                               "TargetI2cGpioDevAddr",
                               "",
                               "other"};
    sd_bus_message* raw = message_.get();
    PropertyMap expected;
    require(sd_bus_message_open_container(raw, 'a', "{sv}"));
    while (!bytes_.atEnd()) {
        require(sd_bus_message_open_container(raw, 'e', "sv"));
        const char* name = names[bytes_.take() % names.size()];
        require(sd_bus_message_append_basic(raw, 's', name));
        expected.try_emplace(name, addKnownVariant());
        require(sd_bus_message_close_container(raw));
    }
    require(sd_bus_message_close_container(raw));
    return expected;
}

// Adds a variant of one of the types that properties have, or of another type.
PropertyValue Reply::addKnownVariant() {
    sd_bus_message* raw = message_.get();
    const auto byte = [this] { return bytes_.take(); };
    switch (byte() % 5) {
    case 0: {
        const std::array<std::uint8_t, 6> b{byte(), byte(), byte(), byte(), byte(), byte()};
        require(sd_bus_message_append(raw, "v", "(yyyyyy)", b[0], b[1], b[2], b[3], b[4], b[5]));
        return EndpointDescriptor{b[0], b[1], b[2], b[3], b[4], b[5]};
    }
    case 1: {
        const auto word = static_cast<std::uint16_t>(byte() << 8 | byte());
        require(sd_bus_message_append(raw, "v", "q", word));
        return word;
    }
    case 2: {
        const std::uint8_t value = byte();
        require(sd_bus_message_append(raw, "v", "y", value));
        return value;
    }
    case 3: {
        const bool truth = byte() % 2 != 0;
        require(sd_bus_message_append(raw, "v", "b", static_cast<int>(truth)));
        return truth;
    }
    default: {
        std::string type = anyType();
        if (type == "(yyyyyy)" || type == "q" || type == "y" || type == "b") {
            type.insert(type.begin(), 'a');
        }
        addVariant(type);
        return {};
    }
    }
}

void Reply::addAnything() {
    for (unsigned values = bytes_.take() % (mostValues + 1); values > 0; --values) {
        addValue(anyType());
    }
}

std::string Reply::anyType() {
    const std::uint8_t choice = bytes_.take();
    if (choice < 128 || depth_ >= deepest) {
        return {basicTypes[choice % basicTypes.size()]};
    }
    ++depth_;
    std::string type;
    switch (choice % 6) {
    case 0:
        type.append("v");
        break;
    case 1:
        type.append("a").append(anyType());
        break;
    case 2:
        type.append("a{").append(1, basicTypes[bytes_.take() % basicTypes.size()]);
        type.append(anyType()).append("}");
        break;
    case 3:
        type.append("(").append(anyType()).append(anyType()).append(")");
        break;
    case 4:
        type.append("a{sv}");
        break;
    default:
        type.append("a{oa{sa{sv}}}");
        break;
    }
    --depth_;
    return type.size() <= longestType ? type : "y";
}

void Reply::addNumber(char code, unsigned width) {
    const std::vector<std::uint8_t> memory = bytes_.takeBytes(width);
    require(sd_bus_message_append_basic(message_.get(), code, memory.data()));
}

void Reply::addText(char code) {
    std::string text(code == 'o' ? "/" : "");
    for (int length = bytes_.take() % 16; length > 0; --length) {
        text += static_cast<char>('a' + bytes_.take() % 26);
    }
    // A signature is a text, too, but has to be a valid one.
    require(sd_bus_message_append_basic(message_.get(), code, code == 'g' ? "ay" : text.c_str()));
}

void Reply::addVariant(const std::string& signature) {
    require(sd_bus_message_open_container(message_.get(), 'v', signature.c_str()));
    addValue(signature);
    require(sd_bus_message_close_container(message_.get()));
}

void Reply::addArray(std::string_view element) {
    require(sd_bus_message_open_container(message_.get(), 'a', std::string(element).c_str()));
    for (unsigned count = bytes_.atEnd() ? 0 : bytes_.take() % longestArray; count > 0; --count) {
        addValue(element);
    }
    require(sd_bus_message_close_container(message_.get()));
}

void Reply::addMembers(char kind, std::string_view members) {
    require(sd_bus_message_open_container(message_.get(), kind, std::string(members).c_str()));
    while (!members.empty()) {
        const std::size_t length = typeLength(members);
        addValue(members.substr(0, length));
        members.remove_prefix(length);
    }
    require(sd_bus_message_close_container(message_.get()));
}

void Reply::addValue(std::string_view signature) {
    switch (signature.front()) {
    case 'y':
        return addNumber('y', 1);
    case 'n':
    case 'q':
        return addNumber(signature.front(), 2);
    case 'i':
    case 'u':
        return addNumber(signature.front(), 4);
    case 'x':
    case 't':
    case 'd':
        return addNumber(signature.front(), 8);
    case 'b':
        require(sd_bus_message_append(message_.get(), "b", bytes_.take() % 2));
        return;
    case 'v':
        ++depth_;
        addVariant(anyType());
        --depth_;
        return;
    case 'a':
        return addArray(signature.substr(1));
    case '(':
        return addMembers('r', signature.substr(1, signature.size() - 2));
    case '{':
        return addMembers('e', signature.substr(1, signature.size() - 2));
    default:
        return addText(signature.front());
    }
}

} // namespace zolt::fuzz
