// Our library accepts no code that a version of the real one refuses. The compiler tests that;
// nothing runs.
#include "sdbusplus/bus.hpp"

#include <concepts>
#include <exception>
#include <string>
#include <type_traits>

namespace sdbusplus::test {
namespace {

template <typename T>
concept MoveOnly = !std::is_default_constructible_v<T> && !std::is_copy_constructible_v<T> &&
                   !std::is_copy_assignable_v<T> && std::is_nothrow_move_constructible_v<T> &&
                   std::is_nothrow_move_assignable_v<T>;

static_assert(MoveOnly<bus_t>);
static_assert(MoveOnly<message_t>);
static_assert(MoveOnly<exception::SdBusError>);

// No pointer of sd-bus becomes an object by itself.
static_assert(std::is_constructible_v<bus_t, sd_bus*>);
static_assert(!std::is_convertible_v<sd_bus*, bus_t>);
static_assert(!std::is_constructible_v<bus_t, sd_bus*, std::false_type>);
static_assert(std::is_constructible_v<message_t, sd_bus_message*>);
static_assert(!std::is_convertible_v<sd_bus_message*, message_t>);
static_assert(std::is_constructible_v<message_t, sd_bus_message*, std::false_type>);

// Nothing is asked of a constant message: reading moves on in it, and so may all else.
template <typename T>
concept GivesItsMessage = requires(T& message) {
    message.get();
};
template <typename T>
concept TellsErrors = requires(T& message) {
    message.is_method_error();
};
template <typename T, typename... Values>
concept Appends = requires(T& message, Values... values) {
    message.append(values...);
};
template <typename T, typename Value>
concept Reads = requires(T& message, Value& value) {
    message.read(value);
};

static_assert(GivesItsMessage<message_t> && !GivesItsMessage<const message_t>);
static_assert(TellsErrors<message_t> && !TellsErrors<const message_t>);
static_assert(Appends<message_t, const char*> && !Appends<const message_t, const char*>);
static_assert(Reads<message_t, std::string> && !Reads<const message_t, std::string>);

// Service, path, interface and method are C strings.
template <typename T, typename Path>
concept MakesCalls = requires(T& bus, Path path, const char* name) {
    { bus.new_method_call(name, path, name, name) } -> std::same_as<message_t>;
};

static_assert(MakesCalls<bus_t, const char*> && !MakesCalls<const bus_t, const char*>);
static_assert(!MakesCalls<bus_t, std::string> && !MakesCalls<bus_t, object_path>);

// A call is sent from a message that the caller keeps.
template <typename T, typename Request>
concept Sends = requires(T& bus, Request&& request) {
    { bus.call(static_cast<Request&&>(request)) } -> std::same_as<message_t>;
};

static_assert(Sends<bus_t, message_t&> && !Sends<const bus_t, message_t&>);
static_assert(!Sends<bus_t, const message_t&> && !Sends<bus_t, message_t>);

// An error takes over what sd-bus filled in.
static_assert(std::is_constructible_v<exception::SdBusError, int, const char*>);
static_assert(std::is_constructible_v<exception::SdBusError, sd_bus_error*, const char*>);
static_assert(!std::is_constructible_v<exception::SdBusError, const sd_bus_error&, const char*>);
static_assert(!std::is_constructible_v<exception::SdBusError, const sd_bus_error*, const char*>);
static_assert(std::is_base_of_v<exception::exception, exception::SdBusError>);
static_assert(std::is_base_of_v<std::exception, exception::exception>);

// A std::string becomes a path by itself, a C string does not.
static_assert(std::is_convertible_v<std::string, object_path>);
static_assert(!std::is_convertible_v<const char*, object_path>);
static_assert(std::is_convertible_v<const object_path&, const std::string&>);
static_assert(std::totally_ordered<object_path>);

} // namespace
} // namespace sdbusplus::test
