// The objects of the service's modules, and the slots to which they belong.
#pragma once

#include "zolt_board/reader_view.h"

#include "board/module_type.h"
#include "board/service_model.h"

#include <string>
#include <vector>

namespace zolt_board {

/// An object directly below the manager of a module type.
struct ServiceObject {
    std::string path{};
    const board::ModuleType* type = nullptr;
    const SlotReading* slot = nullptr; ///< whose module it publishes; null: that of no slot
    const std::vector<board::Property>* properties = nullptr; ///< of its type's interface
};

/// Whether readers get the list of the objects of a type.
[[nodiscard]] bool isListed(const board::ServiceModel& service, const board::ModuleType& type);

/// The objects that readers get, in the order of the service.
///
/// An object belongs to the slot that the description names. A capture names no slot for a payload
/// that no module has. So another object belongs to the slot whose payload most of its properties
/// come from.
[[nodiscard]] std::vector<ServiceObject> objectsOf(const board::ServiceModel& service,
                                                   const ReaderView& board);

/// The properties that the service publishes of a slot's payload; the slot must have one.
[[nodiscard]] std::vector<board::Property> expectedProperties(const board::ModuleType& type,
                                                              const SlotReading& slot,
                                                              const board::Bytes& block);

/// The payload block with its overrides.
[[nodiscard]] board::Bytes shownBlock(const ReaderView& board);

} // namespace zolt_board
