#include "standin/launcher/service_side.h"

#include "board/published_board.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

namespace standin {

namespace {

bool isAbsent(const board::Board& board, board::FaultKind kind) {
    return std::ranges::find(board.faults, kind, &board::FaultRule::kind) != board.faults.end();
}

} // namespace

ServiceSide::ServiceSide(sd_event* loop, const std::string& directory, const board::Board& board,
                         LineLog log)
    : address_("unix:path=" + directory + "/absent_bus") {
    if (isAbsent(board, board::FaultKind::bus)) {
        return; // nothing listens there, and the command cannot fall back to the machine's bus
    }
    try {
        start(loop, directory, board, std::move(log));
    } catch (const std::exception& error) {
        throw std::runtime_error(std::string(error.what()) +
                                 "\nRegisters and I2C work without a system bus: give zolt_sim "
                                 "the option --fault 'bus absent', or\nthe board description the "
                                 "line faults = [\"bus absent\"].");
    }
}

void ServiceSide::start(sd_event* loop, const std::string& directory, const board::Board& board,
                        LineLog log) {
    daemon_.emplace(directory);
    address_ = daemon_->address();
    if (!isAbsent(board, board::FaultKind::service)) {
        service_.emplace(loop, address_, board::publishBoard(board), std::move(log));
    }
}

Environment ServiceSide::environment() const {
    return {{"DBUS_SYSTEM_BUS_ADDRESS", address_}};
}

} // namespace standin
