// Writes how the service differs from a service that publishes the modules of the slots.
#pragma once

#include "board/board.h"
#include "board/document.h"
#include "capture/observation.h"

namespace capture {

/// Finds the slot of each object that the service publishes: the slot whose payload has the most of
/// the object's properties. Such a slot gets the object's type and name.
void matchObjects(const ServiceReading& service, board::Board& board);

/// @param board  its slots have the types and names of their objects
void writeService(const ServiceReading& service, const board::Board& board,
                  board::DocumentTable& root);

} // namespace capture
