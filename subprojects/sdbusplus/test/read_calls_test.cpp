// Which calls of sd-bus reading makes, and what the error is named when one of them fails. Most of
// them fail for no message that arrives in one piece: the linker puts the test's own in their
// place.
#include "sdbusplus/message.hpp"

#include "wire.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace sdbusplus::test {
namespace {

// The calls made so far, and how many succeed before one fails.
std::vector<std::string> calls;
std::size_t succeeding = SIZE_MAX;

bool fails(const char* call) {
    calls.emplace_back(call);
    return calls.size() > succeeding;
}

} // namespace

extern "C" {

int __real_sd_bus_message_at_end(sd_bus_message*, int);
int __real_sd_bus_message_enter_container(sd_bus_message*, char, const char*);
int __real_sd_bus_message_exit_container(sd_bus_message*);
int __real_sd_bus_message_peek_type(sd_bus_message*, char*, const char**);
int __real_sd_bus_message_read_basic(sd_bus_message*, char, void*);
int __real_sd_bus_message_skip(sd_bus_message*, const char*);
int __real_sd_bus_message_verify_type(sd_bus_message*, char, const char*);

int __wrap_sd_bus_message_at_end(sd_bus_message* message, int complete) {
    return fails("at_end") ? -EIO : __real_sd_bus_message_at_end(message, complete);
}

int __wrap_sd_bus_message_enter_container(sd_bus_message* message, char type,
                                          const char* contents) {
    return fails("enter_container")
               ? -EIO
               : __real_sd_bus_message_enter_container(message, type, contents);
}

int __wrap_sd_bus_message_exit_container(sd_bus_message* message) {
    return fails("exit_container") ? -EIO : __real_sd_bus_message_exit_container(message);
}

int __wrap_sd_bus_message_peek_type(sd_bus_message* message, char* type, const char** contents) {
    return fails("peek_type") ? -EIO : __real_sd_bus_message_peek_type(message, type, contents);
}

int __wrap_sd_bus_message_read_basic(sd_bus_message* message, char type, void* value) {
    return fails("read_basic") ? -EIO : __real_sd_bus_message_read_basic(message, type, value);
}

int __wrap_sd_bus_message_skip(sd_bus_message* message, const char* types) {
    return fails("skip") ? -EIO : __real_sd_bus_message_skip(message, types);
}

int __wrap_sd_bus_message_verify_type(sd_bus_message* message, char type, const char* contents) {
    return fails("verify_type") ? -EIO : __real_sd_bus_message_verify_type(message, type, contents);
}

} // extern "C"

namespace {

using Pair = std::tuple<std::uint8_t, bool>;
using CountedValues = std::map<std::string, std::vector<std::variant<std::uint8_t, Pair>>>;

message_t values() {
    return received([](sd_bus_message* raw) {
        return sd_bus_message_append(raw, "a{sav}", 1, "a", 3, "y", 7, "(yb)", 8, 1, "s", "text");
    });
}

// The names of the errors that reading ends with, as each of its calls fails in turn.
std::vector<std::string> errorsOfReading() {
    std::vector<std::string> errors;
    std::string error;
    do {
        message_t message = values();
        calls.clear();
        succeeding = errors.size();
        error = errorOf([&] {
            CountedValues read;
            message.read(read);
        });
        succeeding = SIZE_MAX;
        errors.push_back(error);
    } while (!error.empty());
    errors.pop_back();
    return errors;
}

TEST(ReadCalls, bearTheirNameAndTheKindOfValueInErrors) {
    std::vector<std::string> expected{
        "sd_bus_message_enter_container emplace_container",
        "sd_bus_message_at_end emplace_container",
        "sd_bus_message_enter_container pair",
        "sd_bus_message_read_basic string",
        "sd_bus_message_enter_container emplace_back_container",
        // a number
        "sd_bus_message_at_end emplace_back_container",
        "sd_bus_message_verify_type variant",
        "sd_bus_message_enter_container variant",
        "sd_bus_message_read_basic fundamental",
        "sd_bus_message_exit_container variant",
        // a tuple, which is another alternative than that of the value before
        "sd_bus_message_at_end emplace_back_container",
        "sd_bus_message_verify_type variant",
        "sd_bus_message_verify_type variant",
        "sd_bus_message_enter_container variant",
        "sd_bus_message_enter_container tuple",
        "sd_bus_message_read_basic fundamental",
        "sd_bus_message_read_basic bool",
        "sd_bus_message_exit_container tuple",
        "sd_bus_message_exit_container variant",
        // a text, which is no alternative
        "sd_bus_message_at_end emplace_back_container",
        "sd_bus_message_verify_type variant",
        "sd_bus_message_verify_type variant",
        "sd_bus_message_skip variant",
        "sd_bus_message_at_end emplace_back_container",
        "sd_bus_message_exit_container emplace_back_container",
        "sd_bus_message_exit_container pair",
        "sd_bus_message_at_end emplace_container",
        "sd_bus_message_exit_container emplace_container",
    };
    for (std::string& name : expected) {
        name += ": org.freedesktop.DBus.Error.IOError: Input/output error";
    }
    EXPECT_EQ(errorsOfReading(), expected);
}

// The calls that look for the alternatives of an array of variants.
template <typename... Alternatives, typename... Contents>
std::vector<std::string> searches(Contents... contents) {
    message_t message = received(
        [&](sd_bus_message* raw) { return sd_bus_message_append(raw, "av", contents...); });
    calls.clear();
    std::vector<std::variant<Alternatives...>> read;
    message.read(read);
    std::erase_if(calls, [](const std::string& call) {
        return call != "verify_type" && call != "peek_type";
    });
    return calls;
}

TEST(ReadCalls, findTheAlternativeOfEqualValuesInOneLook) {
    EXPECT_EQ((searches<std::string, double, std::int16_t, std::uint8_t>( //
                  4, "y", 1, "y", 2, "y", 3, "y", 4)),
              (std::vector<std::string>{"verify_type", "peek_type", "verify_type", "verify_type",
                                        "verify_type"}));
}

TEST(ReadCalls, needTwoLooksForAnyOtherValue) {
    EXPECT_EQ((searches<std::string, double, std::int16_t, std::uint8_t>( //
                  4, "s", "text", "y", 2, "b", 1, "n", 4)),
              (std::vector<std::string>{"verify_type", "verify_type", "peek_type", "verify_type",
                                        "peek_type", "verify_type", "peek_type"}));
}

} // namespace
} // namespace sdbusplus::test
