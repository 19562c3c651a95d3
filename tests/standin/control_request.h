// Control requests as a client composes them.
#pragma once

#include "standin/i2c_bus/core/control_record.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

struct ControlRequest {
    explicit ControlRequest(std::uint32_t command, std::size_t replyLength = 0)
        : record(0x10000), reply(replyLength) {
        std::ranges::copy(std::string_view("TESK"), record.begin());
        setWord(4, command);
        messages.push_back({.addr = 0, .flags = 0x0080, .len = 164, .buf = record.data()});
        if (replyLength != 0) {
            messages.push_back({.addr = 0,
                                .flags = I2C_M_RD,
                                .len = static_cast<std::uint16_t>(replyLength),
                                .buf = reply.data()});
        }
    }
    ControlRequest(ControlRequest&&) = default;
    ControlRequest& operator=(ControlRequest&&) = default;

    void setWord(std::size_t offset, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i) {
            record[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    }
    void setText(std::size_t offset, std::string_view text) {
        std::ranges::copy(text, record.begin() + static_cast<std::ptrdiff_t>(offset));
    }
    [[nodiscard]] std::uint32_t replyWord(std::size_t offset) const {
        return reply[offset] | static_cast<std::uint32_t>(reply[offset + 1]) << 8 |
               static_cast<std::uint32_t>(reply[offset + 2]) << 16 |
               static_cast<std::uint32_t>(reply[offset + 3]) << 24;
    }

    std::vector<std::uint8_t> record; // longer than a record, for tests that state a wrong length
    std::vector<std::uint8_t> reply;
    std::vector<i2c_msg> messages;
};

inline ControlRequest updateProperty(std::uint32_t target, std::uint32_t id, std::uint32_t value) {
    ControlRequest request(4);
    request.setWord(12, target);
    request.setWord(16, value);
    request.setWord(20, id);
    return request;
}

inline ControlRequest getProperty(std::uint32_t target, std::uint32_t id) {
    ControlRequest request(5, 4);
    request.setWord(8, target);
    request.setWord(12, id);
    return request;
}

// An index node when the target is 0, else a device node.
inline ControlRequest createNode(std::uint32_t index, std::uint32_t target, std::string_view type,
                                 std::string_view path) {
    ControlRequest request(6, 8);
    request.setWord(18, index);
    request.setWord(70, target);
    if (target != 0) {
        request.setWord(38, 16);
        request.setWord(50, 100);
        request.setWord(54, 256);
        request.setWord(58, 40);
    }
    request.setText(78, type);
    request.setText(94, path);
    return request;
}

inline ControlRequest removeDevice(std::uint32_t target) {
    ControlRequest request(7);
    request.setWord(8, target);
    return request;
}

inline ControlRequest recoverBus(std::uint32_t mode) {
    ControlRequest request(8);
    request.setWord(8, mode);
    return request;
}

} // namespace standin
