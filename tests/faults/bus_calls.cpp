// The calls of sd-bus that the tool makes.
#include "tests/faults/cell.h"

#include <cstring>
#include <systemd/sd-bus.h>

namespace {

using faults::Call;
using faults::log;
using faults::logBytes;
using faults::next;
using faults::real;

// Logs a result. A failure has the name and the text that sd-bus gives to its errno.
int logged(int result) {
    log("%d", result);
    if (result < 0) {
        sd_bus_error error{};
        sd_bus_error_set_errno(&error, result);
        log(" %s: %s", error.name, error.message);
        sd_bus_error_free(&error);
    }
    return result;
}

template <typename Real>
int run(const Call& call, Real function) {
    if (call.fails("errno")) {
        return logged(-call.amount());
    }
    const int result = real(call, function);
    return call.counts() ? logged(result) : result;
}

// Logs a value that was read: the bytes of a text, of a number in this machine's order.
void logValue(char type, const void* value) {
    constexpr std::string_view texts = "sog";
    constexpr std::string_view types = "ybnqiuxtdh";
    constexpr std::size_t sizes[] = {1, 4, 2, 2, 4, 4, 8, 8, 8, 4};
    if (texts.find(type) != std::string_view::npos) {
        const char* text = nullptr;
        std::memcpy(&text, value, sizeof text);
        logBytes(text, std::strlen(text));
    } else {
        logBytes(value, sizes[types.find(type)]);
    }
}

std::string asked(char type, const char* contents) {
    return std::string(1, type) + (contents == nullptr ? "" : contents);
}

} // namespace

extern "C" {

int sd_bus_default_system(sd_bus** bus) {
    const Call call("sd_bus_default_system", "");
    return run(call,
               [&] { return next<decltype(sd_bus_default_system)>("sd_bus_default_system")(bus); });
}

sd_bus* sd_bus_flush_close_unref(sd_bus* bus) {
    const Call call("sd_bus_flush_close_unref", "");
    return real(call, [&] {
        return next<decltype(sd_bus_flush_close_unref)>("sd_bus_flush_close_unref")(bus);
    });
}

int sd_bus_message_new_method_call(sd_bus* bus, sd_bus_message** message, const char* destination,
                                   const char* path, const char* interface, const char* member) {
    const faults::Quiet quiet;
    const Call call("sd_bus_message_new_method_call",
                    std::string(destination) + " " + path + " " + interface + " " + member);
    return run(call, [&] {
        return next<decltype(sd_bus_message_new_method_call)>("sd_bus_message_new_method_call")(
            bus, message, destination, path, interface, member);
    });
}

int sd_bus_message_append_basic(sd_bus_message* message, char type, const void* value) {
    const faults::Quiet quiet;
    const Call call("sd_bus_message_append_basic",
                    std::string(1, type) + " " + static_cast<const char*>(value));
    return run(call, [&] {
        return next<decltype(sd_bus_message_append_basic)>("sd_bus_message_append_basic")(
            message, type, value);
    });
}

int sd_bus_call(sd_bus* bus, sd_bus_message* message, std::uint64_t timeout, sd_bus_error* error,
                sd_bus_message** reply) {
    const Call call("sd_bus_call", std::to_string(timeout));
    int result = -call.amount();
    if (call.fails("remote")) {
        result =
            sd_bus_error_set_const(error, "com.tesk.bmc.zolt.Error.Gone", "The module is gone");
    } else if (call.fails("errno")) {
        result = sd_bus_error_set_errno(error, result);
    } else {
        result = real(call, [&] {
            return next<decltype(sd_bus_call)>("sd_bus_call")(bus, message, timeout, error, reply);
        });
    }
    log("%d", result);
    if (result < 0) {
        log(" %s: %s", error->name == nullptr ? "" : error->name,
            error->message == nullptr ? "" : error->message);
    }
    return result;
}

int sd_bus_message_enter_container(sd_bus_message* message, char type, const char* contents) {
    const faults::Quiet quiet;
    const Call call("sd_bus_message_enter_container", asked(type, contents));
    return run(call, [&] {
        return next<decltype(sd_bus_message_enter_container)>("sd_bus_message_enter_container")(
            message, type, contents);
    });
}

int sd_bus_message_exit_container(sd_bus_message* message) {
    const Call call("sd_bus_message_exit_container", "");
    return run(call, [&] {
        return next<decltype(sd_bus_message_exit_container)>("sd_bus_message_exit_container")(
            message);
    });
}

int sd_bus_message_at_end(sd_bus_message* message, int complete) {
    const Call call("sd_bus_message_at_end", "");
    return run(call, [&] {
        return next<decltype(sd_bus_message_at_end)>("sd_bus_message_at_end")(message, complete);
    });
}

int sd_bus_message_verify_type(sd_bus_message* message, char type, const char* contents) {
    const faults::Quiet quiet;
    const Call call("sd_bus_message_verify_type", asked(type, contents));
    return run(call, [&] {
        return next<decltype(sd_bus_message_verify_type)>("sd_bus_message_verify_type")(
            message, type, contents);
    });
}

int sd_bus_message_peek_type(sd_bus_message* message, char* type, const char** contents) {
    const Call call("sd_bus_message_peek_type", "");
    return run(call, [&] {
        return next<decltype(sd_bus_message_peek_type)>("sd_bus_message_peek_type")(message, type,
                                                                                    contents);
    });
}

int sd_bus_message_read_basic(sd_bus_message* message, char type, void* value) {
    const Call call("sd_bus_message_read_basic", {&type, 1});
    const int result = run(call, [&] {
        return next<decltype(sd_bus_message_read_basic)>("sd_bus_message_read_basic")(message, type,
                                                                                      value);
    });
    if (call.counts() && result > 0) {
        log(" ");
        logValue(type, value);
    }
    return result;
}

int sd_bus_message_skip(sd_bus_message* message, const char* types) {
    const Call call("sd_bus_message_skip", types);
    return run(call, [&] {
        return next<decltype(sd_bus_message_skip)>("sd_bus_message_skip")(message, types);
    });
}

int sd_bus_message_is_method_error(sd_bus_message* message, const char* name) {
    const Call call("sd_bus_message_is_method_error", "");
    if (call.fails("true")) {
        log("1");
        return 1;
    }
    return run(call, [&] {
        return next<decltype(sd_bus_message_is_method_error)>("sd_bus_message_is_method_error")(
            message, name);
    });
}
}
