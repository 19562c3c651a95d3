#include "standin/launcher/service_side.h"

#include "standin/launcher/published_board.h"

#include <algorithm>

namespace standin {

namespace {

bool isAbsent(const Board& board, FaultKind kind) {
    return std::ranges::find(board.faults, kind, &FaultRule::kind) != board.faults.end();
}

} // namespace

ServiceSide::ServiceSide(sd_event* loop, const std::string& directory, const Board& board)
    : address_("unix:path=" + directory + "/absent_bus") {
    if (isAbsent(board, FaultKind::bus)) {
        return; // nothing listens there, and the command cannot fall back to the machine's bus
    }
    daemon_.emplace(directory);
    address_ = daemon_->address();
    if (!isAbsent(board, FaultKind::service)) {
        service_.emplace(loop, address_, publishBoard(board));
    }
}

Environment ServiceSide::environment() const {
    return {{"DBUS_SYSTEM_BUS_ADDRESS", address_}};
}

} // namespace standin
