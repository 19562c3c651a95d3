// Composes messages from a fuzzer's bytes.
#pragma once

#include "bus/property_value.h"
#include "tests/fuzz/bytes.h"

#include <sdbusplus/message.hpp>

#include <string>
#include <string_view>

namespace zolt::fuzz {

/// A message under construction. Its size has bounds, whatever the bytes are.
class Reply {
public:
    explicit Reply(Bytes& bytes);

    /// Adds an "a{sv}". Returns the properties that a reader has to find in it.
    PropertyMap addProperties();

    /// Adds a value of the type @p signature.
    void addValue(std::string_view signature);

    /// Adds up to three values of any types.
    void addAnything();

    /// Returns the message, sealed and ready to be read from its start.
    [[nodiscard]] sdbusplus::message_t finished();

private:
    PropertyValue addKnownVariant();
    void addNumber(char code, unsigned width);
    void addText(char code);
    void addVariant(const std::string& signature);
    void addArray(std::string_view element);
    void addMembers(char kind, std::string_view members);
    std::string anyType();

    Bytes& bytes_;
    sdbusplus::message_t message_;
    int depth_ = 0;
};

} // namespace zolt::fuzz
