// Sends any datagrams to the bus server's side of four connections, which share a board. Each one
// must get a reply with its ticket, and a failure gets nothing else. The board's state must stay
// sound, and the lines of the log must be safe for a terminal and of bounded length.
#include "board/message_text.h"
#include "standin/i2c_bus/server/bus_connection.h"
#include "standin/i2c_bus/server/bus_state.h"
#include "tests/fuzz/bus_core_state.h"
#include "tests/fuzz/bytes.h"
#include "tests/fuzz/target.h"

#include <array>
#include <cstring>

namespace {

using standin::BusConnection;
using zolt::fuzz::Bytes;
using zolt::fuzz::require;
using Datagram = std::vector<std::uint8_t>;

void describeBoard(standin::BusState& state) {
    BusCore& core = state.core();
    require(busCoreAddBus(&core, 5) == 0 && busCoreAddBus(&core, 6) == 0);
    require(state.addMemory(5, 0x50, Datagram(300, 0xA5), 2, false) == 0);
    require(state.addMemory(5, 0x51, {1, 2, 3}, 1, true) == 0);
    require(busCoreAddDeviceNode(&core, 6, 0x52, 1, "PUCK") == 0);
    require(busCoreSetProperty(&core, 5, 0, 8, 17) == 0);
    const BusCoreFault slow{.bus = 6,
                            .operation = BUS_CORE_PLAIN,
                            .anySelector = true,
                            .selector = 0,
                            .error = EIO,
                            .delay = 20,
                            .after = 1,
                            .times = 2,
                            .untilRecovery = true,
                            .isOver = false};
    require(busCoreAddFault(&core, &slow) == 0);
}

void requireLine(std::string_view line) {
    // A line shows each byte of a transfer with three characters.
    constexpr std::size_t longest = 4 * std::size_t{WIRE_LONGEST};
    require(!line.empty() && line.size() <= longest && board::printable(line) == line);
}

// Most requests have a head whose kind and argument are small.
Datagram requestOf(Bytes& bytes) {
    const std::uint8_t kind = bytes.take();
    const std::uint8_t argument = bytes.take();
    const std::uint8_t length = bytes.take();
    Datagram request = bytes.takeBytes(length < 0xF0 ? length : bytes.take16() % 9000);
    if (kind < 0xF0) {
        const WireRequest head{.kind = kind % 16U,
                               .argument = argument < 0xF0 ? argument : bytes.take32(),
                               .ticket = bytes.take32()};
        request.insert(request.begin(), sizeof head, 0);
        std::memcpy(request.data(), &head, sizeof head);
    }
    request.shrink_to_fit(); // AddressSanitizer watches the request's end
    return request;
}

void ask(BusConnection& connection, Datagram request, Datagram& reply) {
    WireRequest head{};
    if (request.size() >= sizeof head) {
        std::memcpy(&head, request.data(), sizeof head);
    }
    const standin::Wait wait = connection.answer(request, reply);
    WireReply replyHead{};
    require(reply.size() >= sizeof replyHead && reply.size() <= WIRE_LONGEST);
    std::memcpy(&replyHead, reply.data(), sizeof replyHead);
    require(replyHead.ticket == head.ticket && replyHead.result > -4096);
    require(replyHead.result >= 0 || reply.size() == sizeof replyHead);
    if (!wait.line.empty()) {
        requireLine(wait.line);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    standin::BusState state;
    describeBoard(state);
    const standin::LineLog log = [](const std::string& line) { requireLine(line); };
    std::array<BusConnection, 4> connections{
        BusConnection(state.core(), log), BusConnection(state.core(), log),
        BusConnection(state.core(), log), BusConnection(state.core(), log)};
    constexpr unsigned mostRequests = 100;
    Datagram reply{1, 2, 3};
    for (unsigned requests = 0; !bytes.atEnd() && requests < mostRequests; ++requests) {
        BusConnection& connection = connections[bytes.take() % connections.size()];
        ask(connection, requestOf(bytes), reply);
        zolt::fuzz::requireSound(state.core());
    }
    return 0;
}
