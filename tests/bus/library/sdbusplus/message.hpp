// The real library's message, declared only.
#pragma once

#include <object_path.hpp> // of the version under test

namespace sdbusplus::message {

class message {
public:
    message() = delete;
    message(const message&) = delete;
    message& operator=(const message&) = delete;
    message(message&&) noexcept;
    message& operator=(message&&) noexcept;
    ~message();

    template <typename... Values>
    void append(const Values&... values);
    template <typename... Values>
    void read(Values&... values);
    bool is_method_error();
};

} // namespace sdbusplus::message

namespace sdbusplus {

using message_t = message::message;

} // namespace sdbusplus
