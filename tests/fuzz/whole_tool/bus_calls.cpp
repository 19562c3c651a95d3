// The system bus. The connection is real but has no peer. The input says how each call on it ends.
// These functions stand in front of libsystemd's own.
#include "tests/fuzz/bus_reply.h"
#include "tests/fuzz/whole_tool/session.h"

#include <cerrno>
#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

using zolt::fuzz::Bytes;
using zolt::fuzz::goesWell;
using zolt::fuzz::nextAnswer;
using zolt::fuzz::require;

namespace {

int errorOf(Bytes& answer) {
    return -(answer.take() % 133 + 1);
}

sdbusplus::message_t composed(Bytes& answer) {
    const std::uint8_t kind = answer.take();
    Bytes contents = answer.part(answer.take());
    zolt::fuzz::Reply reply(contents);
    switch (kind % 4) {
    case 0:
    case 1:
        (void)reply.addProperties();
        break;
    case 2:
        reply.addValue("a{oa{sa{sv}}}");
        break;
    default:
        reply.addAnything();
        break;
    }
    return reply.finished();
}

int connect(sd_bus** bus) {
    Bytes& answer = nextAnswer();
    if (!goesWell(answer.take())) {
        return errorOf(answer);
    }
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
    require(sd_bus_new(bus) >= 0 && sd_bus_set_fd(*bus, ends[0], ends[0]) >= 0 &&
            sd_bus_start(*bus) >= 0);
    close(ends[1]);
    return 1;
}

} // namespace

extern "C" {

int sd_bus_default_system(sd_bus** bus) {
    return connect(bus);
}

// zolt_capture calls this function and the next one.
int sd_bus_open_system(sd_bus** bus) {
    return connect(bus);
}

int sd_bus_is_ready(sd_bus* /*bus*/) {
    return goesWell(nextAnswer().take()) ? 1 : 0;
}

int sd_bus_call(sd_bus* bus, sd_bus_message* message, std::uint64_t /*timeout*/,
                sd_bus_error* error, sd_bus_message** reply) {
    require(bus != nullptr && message != nullptr);
    Bytes& answer = nextAnswer();
    const std::uint8_t how = answer.take();
    if (goesWell(how)) {
        *reply = sd_bus_message_ref(composed(answer).get());
        return 1;
    }
    if (how % 2 == 0) {
        return sd_bus_error_set_errno(error, errorOf(answer));
    }
    std::string text = answer.takeText(answer.take() % 64);
    std::erase(text, '\0');
    return sd_bus_error_set(error, "com.tesk.bmc.zolt.Error.Gone", text.c_str());
}
}
