// Which reads of a board its fault rules keep from every reader.
//
// What no reader can get says nothing of the board: the bytes in the description behind it are not
// the board's, and a capture has none. So no finding rests on them. A rule that lets calls pass, by
// `after` or `times`, hides nothing: a reader that asks again gets the data.
#pragma once

#include "board/board.h"
#include "board/service_model.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zolt_board {

class Readable {
public:
    /// @param board  must outlive this object
    explicit Readable(const board::Board& board);

    [[nodiscard]] bool named(const std::string& name) const;

    /// Raw registers from an address on.
    [[nodiscard]] bool raw(std::uint32_t first, std::uint32_t length) const;

    /// A bulk read of the payload block through the HAL. @param first  byte of the block
    [[nodiscard]] bool payloadBlock(std::uint32_t first, std::uint32_t length) const;

    /// The index nodes of a device type.
    [[nodiscard]] bool nodes(std::uint8_t deviceType) const;

    [[nodiscard]] bool service() const;

private:
    /// Whether the last rule that fits a read lets it pass. @p fitting says whether a rule fits.
    template <typename Fitting>
    [[nodiscard]] bool passes(board::FaultKind kind, const Fitting& fitting) const;

    const board::Board* board_;
    std::vector<const board::FaultRule*> lasting_; ///< rules for all calls, the last one first
};

/// Whether the service answers calls on an object for the properties of an interface.
[[nodiscard]] bool isAnswered(const board::ServiceModel& service, const std::string& path,
                              const std::string& interface);

} // namespace zolt_board
