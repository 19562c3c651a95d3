// The parts of a board in JSON. docs/board-report.schema.json describes them.
#pragma once

#include "board/bit_field.h"
#include "board/board.h"
#include "board/control_register_layout.h"
#include "board/cpld_contents.h"
#include "zolt_board/json.h"

#include <cstdint>
#include <span>

namespace zolt_board {

/// All fields of a record, by their keys in a board description. One bit is a boolean.
[[nodiscard]] Json fieldsToJson(std::span<const board::BitField> fields,
                                std::span<const std::uint8_t> record);

/// The registers of an instance by raw address and by name, with the rules that make reads of them
/// fail.
[[nodiscard]] Json registersToJson(const board::ControlClass& kind, unsigned instance,
                                   const board::CpldContents& contents, const board::Board& board);

/// The slots that are described, or whose registers do not read 0.
[[nodiscard]] Json slotsToJson(const board::Board& board, const board::CpldContents& contents);

/// The instances whose registers do not read 0, of all module classes.
[[nodiscard]] Json controlRegistersToJson(const board::Board& board,
                                          const board::CpldContents& contents);

/// The riser slot mapping. @param blob  its bytes
[[nodiscard]] Json riserMapToJson(const board::Bytes& blob);

[[nodiscard]] Json i2cToJson(const board::I2cDescription& i2c);

/// A device type by code and name.
[[nodiscard]] Json deviceTypeToJson(std::uint8_t code);

/// All that the service publishes, and how it misbehaves.
[[nodiscard]] Json serviceToJson(const board::Board& board);

[[nodiscard]] Json faultsToJson(const board::Board& board);

/// How a call fails to which a rule applies. @param place  of the rule among those of the board
[[nodiscard]] Json failureToJson(const board::FaultRule& rule, std::size_t place);

} // namespace zolt_board
