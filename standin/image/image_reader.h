// Reads the image of the running board, in a process with the platform's libraries.
#pragma once

#include "standin/image/image.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace standin {

/// How a call ends.
struct CallEnd {
    std::int32_t status = 0; ///< 0 for success
    std::uint32_t delay = 0; ///< in milliseconds, or ImageFault::forever
};

class ImageReader {
public:
    /// The image of the board that this process runs on; null when there is none.
    [[nodiscard]] static const ImageReader* attached();

    /// Maps an image. @return none when the file cannot be mapped or is no complete image
    [[nodiscard]] static std::optional<ImageReader> map(const char* path);

    [[nodiscard]] const ImageName* findName(std::string_view name) const;
    [[nodiscard]] const ImageObject* findObject(std::string_view name) const;

    [[nodiscard]] std::span<const std::uint8_t> value(const ImageName& name) const;
    [[nodiscard]] std::string_view nameOf(const ImageObject& object) const;

    /// Registers [first, first + count); the range must lie below rawAddressCount.
    [[nodiscard]] std::span<const std::uint8_t> raw(std::uint32_t first, std::uint32_t count) const;

    /// Asks the rules for a call from the last to the first, and counts the call for each rule that
    /// is asked. The first rule that is due applies.
    [[nodiscard]] CallEnd endOf(ImageRange faults) const;

    /// The same for a raw read: the rules are those for any of its addresses.
    [[nodiscard]] CallEnd endOfRawRead(std::uint32_t first, std::uint32_t count) const;

    /// The same for a bulk read through an object: the rules are those for any of its bytes.
    [[nodiscard]] CallEnd endOfBulkRead(const ImageObject& object, std::uint32_t first,
                                        std::uint32_t count) const;

    /// The same for parsing a device type, which must lie below topologyTypes.
    [[nodiscard]] CallEnd endOfParsing(std::size_t deviceType) const;

    /// Notes, for all processes, that a log has lost a line. The first error of a log stays.
    void noteLogError(LibraryLog log, int error) const;

    /// The errno of the first line that a log has lost; 0 when it has all its lines.
    [[nodiscard]] int logError(LibraryLog log) const;

private:
    explicit ImageReader(const ImageHeader* header) : header_(header) {}

    template <typename T>
    [[nodiscard]] std::span<const T> items(ImageRange range) const;
    template <typename T>
    [[nodiscard]] bool holds(ImageRange range) const;
    [[nodiscard]] CallEnd endOfRead(ImageRange faults, std::uint32_t first,
                                    std::uint32_t count) const;
    [[nodiscard]] std::optional<CallEnd> ask(ImageFaultNumber fault) const;

    const ImageHeader* header_;
};

} // namespace standin
