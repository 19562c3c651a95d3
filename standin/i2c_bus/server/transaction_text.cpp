#include "standin/i2c_bus/server/transaction_text.h"

#include "standin/log/quoted.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstring>
#include <string_view>

namespace standin {

namespace {

enum class Look : std::uint8_t { decimal, hexByte, hexWord, list, text };

struct Field {
    std::string_view label;
    std::uint32_t offset;
    Look look;
};

constexpr std::uint32_t listSize = 32; // eight numbers

constexpr Field updateFields[] = {
    {"index", UPDATE_INDEX, Look::decimal},       {"target", UPDATE_TARGET, Look::hexByte},
    {"property", UPDATE_PROPERTY, Look::decimal}, {"value", UPDATE_VALUE, Look::hexWord},
    {"type", UPDATE_TYPE_NAME, Look::text},
};
constexpr Field getFields[] = {
    {"target", GET_TARGET, Look::hexByte},
    {"property", GET_PROPERTY, Look::decimal},
};
constexpr Field createFields[] = {
    {"index", CREATE_INDEX, Look::decimal},
    {"target", CREATE_TARGET, Look::hexByte},
    {"property8", CREATE_PROPERTY_8, Look::hexWord},
    {"property10", CREATE_PROPERTY_10, Look::hexWord},
    {"device", CREATE_DEVICE_PART, Look::list},
    {"type", CREATE_TYPE_NAME, Look::text},
    {"path", CREATE_DEVICE_PATH, Look::text},
};
constexpr Field removeFields[] = {{"target", REMOVE_TARGET, Look::hexByte}};
constexpr Field recoverFields[] = {{"mode", RECOVER_MODE, Look::decimal}};
constexpr Field getReply[] = {{"value", 0, Look::hexWord}};
constexpr Field createReply[] = {{"status", 0, Look::decimal}, {"bus", 4, Look::decimal}};

struct Command {
    std::uint32_t number;
    std::string_view name;
    std::span<const Field> fields;
    std::uint32_t replyLength;
    std::span<const Field> reply;
};

constexpr Command commands[] = {
    {CONTROL_UPDATE_PROPERTY, "update-property", updateFields, 0, {}},
    {CONTROL_GET_PROPERTY, "get-property", getFields, 4, getReply},
    {CONTROL_CREATE_NODE, "create-node", createFields, 8, createReply},
    {CONTROL_REMOVE_DEVICE, "remove-device", removeFields, 0, {}},
    {CONTROL_RECOVER_BUS, "recover-bus", recoverFields, 0, {}},
};

std::string hex(std::uint32_t value, unsigned digits) {
    std::string text;
    for (unsigned shift = 4 * std::max(digits, 1U); shift > 0; shift -= 4) {
        text += "0123456789ABCDEF"[value >> (shift - 4) & 0xF];
    }
    return text;
}

using Seen = std::bitset<CONTROL_RECORD_SIZE>;

// The number of the field's bytes that its text shows.
std::uint32_t sizeOf(const Field& field, const std::uint8_t* bytes) {
    switch (field.look) {
    case Look::list:
        return listSize;
    case Look::text:
        return static_cast<std::uint32_t>(
            strnlen(reinterpret_cast<const char*>(bytes + field.offset), CONTROL_TEXT_SIZE));
    default:
        return 4;
    }
}

std::string valueText(const Field& field, const std::uint8_t* bytes) {
    const std::uint32_t size = sizeOf(field, bytes);
    switch (field.look) {
    case Look::decimal:
        return std::to_string(controlNumber(bytes, field.offset));
    case Look::hexByte: {
        const std::uint32_t value = controlNumber(bytes, field.offset);
        return std::string("0x").append(hex(value, value > 0xFF ? 8 : 2));
    }
    case Look::hexWord:
        return std::string("0x").append(hex(controlNumber(bytes, field.offset), 8));
    case Look::list: {
        std::string text;
        for (std::uint32_t i = 0; i < size; i += 4) {
            text.append(i == 0 ? "" : ",")
                .append(std::to_string(controlNumber(bytes, field.offset + i)));
        }
        return text;
    }
    case Look::text:
        return quoted({bytes + field.offset, size});
    }
    return {};
}

std::string fieldsText(std::span<const Field> fields, const std::uint8_t* bytes) {
    std::string text;
    for (const Field& field : fields) {
        text.append(" ").append(field.label).append("=").append(valueText(field, bytes));
    }
    return text;
}

// Shows the bytes that belong to no field, except zeros.
std::string strayText(std::span<const Field> fields, const std::uint8_t* record) {
    Seen seen;
    for (std::uint32_t offset = 0; offset < CONTROL_COMMAND + 4; ++offset) {
        seen.set(offset);
    }
    for (const Field& field : fields) {
        for (std::uint32_t i = 0; i < sizeOf(field, record); ++i) {
            seen.set(field.offset + i);
        }
    }
    std::string text;
    for (std::uint32_t offset = 0; offset < CONTROL_RECORD_SIZE; ++offset) {
        if (!seen[offset] && record[offset] != 0) {
            text.append(" +").append(std::to_string(offset));
            text.append(":").append(hex(record[offset], 2));
        }
    }
    return text;
}

bool isMessage(const i2c_msg& message, std::uint32_t flags, std::uint32_t length) {
    return message.addr == 0 && (message.flags & ~I2C_M_DMA_SAFE) == flags && message.len == length;
}

// The command of a well-formed request; else null.
const Command* commandOf(std::span<const i2c_msg> messages) {
    const i2c_msg& first = messages.front();
    if (!isMessage(first, CONTROL_FLAG, CONTROL_RECORD_SIZE) || !controlHasMagic(first.buf)) {
        return nullptr;
    }
    const auto* const command =
        std::ranges::find(commands, controlNumber(first.buf, CONTROL_COMMAND), &Command::number);
    if (command == std::end(commands)) {
        return nullptr;
    }
    const bool fits =
        command->replyLength == 0
            ? messages.size() == 1
            : messages.size() == 2 && isMessage(messages[1], I2C_M_RD, command->replyLength);
    return fits ? command : nullptr;
}

bool isControl(const i2c_msg& message) {
    return (message.flags & CONTROL_FLAG) != 0;
}

std::string messagesText(std::span<const i2c_msg> messages, bool succeeded) {
    std::string text = std::ranges::any_of(messages, isControl) ? " control" : " transfer";
    for (const i2c_msg& message : messages) {
        const bool isWritten = (message.flags & I2C_M_RD) == 0;
        text.append(" [0x").append(hex(message.addr, 4));
        text.append(" 0x").append(hex(message.flags & ~std::uint32_t{I2C_M_DMA_SAFE}, 4));
        text.append(" ").append(std::to_string(message.len));
        if ((isWritten || succeeded) && message.len > 0) {
            text += ":";
            for (std::uint32_t i = 0; i < message.len; ++i) {
                text.append(" ").append(hex(message.buf[i], 2));
            }
        }
        text += "]";
    }
    return text;
}

std::string resultText(int result) {
    std::string text = " -> " + std::to_string(result);
    const char* const name = result < 0 ? strerrorname_np(-result) : nullptr;
    return name == nullptr ? text : text + " " + name;
}

} // namespace

std::string transactionText(std::uint32_t bus, std::span<const i2c_msg> messages, int result) {
    const std::string device = "/dev/i2c-" + std::to_string(bus);
    const Command* const command = commandOf(messages);
    if (command == nullptr) {
        return device + messagesText(messages, result >= 0) + resultText(result);
    }
    const std::uint8_t* const record = messages[0].buf;
    std::string text = device + " " + std::string(command->name) +
                       fieldsText(command->fields, record) + strayText(command->fields, record) +
                       resultText(result);
    if (result >= 0 && command->replyLength != 0) {
        text += fieldsText(command->reply, messages[1].buf);
    }
    return text;
}

} // namespace standin
