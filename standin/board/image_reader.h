// The image of the running board, in the process of a platform library.
#pragma once

#include "standin/board/image.h"

#include <optional>
#include <span>
#include <string_view>

namespace standin {

class ImageReader {
public:
    /// The board that zolt_sim put under this process; null when there is none.
    [[nodiscard]] static const ImageReader* attached();

    /// Maps an image. @return none when the file is no image, or not a whole one
    [[nodiscard]] static std::optional<ImageReader> map(const char* path);

    [[nodiscard]] const ImageName* findName(std::string_view name) const;
    [[nodiscard]] const ImageObject* findObject(std::string_view name) const;

    [[nodiscard]] std::span<const std::uint8_t> value(const ImageName& name) const;
    [[nodiscard]] std::string_view nameOf(const ImageObject& object) const;

    /// Registers [first, first + count); the range must lie below rawAddressCount.
    [[nodiscard]] std::span<const std::uint8_t> raw(std::uint32_t first, std::uint32_t count) const;

    /// The status with which a raw read of that range is to fail now; 0 when it succeeds. Of
    /// several rules that fit addresses of it, the last one holds.
    [[nodiscard]] std::int32_t strikeRaw(std::uint32_t first, std::uint32_t count) const;

    /// The status with which a call that this fault can hit is to fail now; 0 when it succeeds.
    [[nodiscard]] std::int32_t strike(std::uint32_t fault) const;

private:
    explicit ImageReader(const ImageHeader* header) : header_(header) {}

    template <typename T>
    [[nodiscard]] std::span<const T> items(ImageRange range) const;
    template <typename T>
    [[nodiscard]] bool holds(ImageRange range) const;

    const ImageHeader* header_;
};

} // namespace standin
