#include "standin/image/image_writer.h"

#include "board/cpld_contents.h"
#include "standin/image/image.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <span>
#include <system_error>
#include <type_traits>
#include <unistd.h>

namespace standin {

namespace {

// An image under construction: a header, and a tail to which everything else is appended.
class Layout {
public:
    Layout() : header_(std::make_unique<ImageHeader>()) {
        header_->magic = ImageHeader::expectedMagic;
    }

    [[nodiscard]] ImageHeader& header() { return *header_; }

    template <typename T>
    ImageRange append(std::span<const T> items) {
        tail_.resize((tail_.size() + alignof(T) - 1) / alignof(T) * alignof(T));
        const auto start = static_cast<std::uint32_t>(sizeof(ImageHeader) + tail_.size());
        const auto bytes = std::as_bytes(items);
        tail_.insert(tail_.end(), bytes.begin(), bytes.end());
        return {start, static_cast<std::uint32_t>(items.size())};
    }

    // @param path  of the file, for messages
    void write(int file, const std::string& path) {
        header_->size = static_cast<std::uint32_t>(sizeof(ImageHeader) + tail_.size());
        writeAll(file, path, std::as_bytes(std::span(header_.get(), 1)));
        writeAll(file, path, tail_);
    }

private:
    static void writeAll(int file, const std::string& path, std::span<const std::byte> bytes) {
        while (!bytes.empty()) {
            const ssize_t written = ::write(file, bytes.data(), bytes.size());
            if (written < 0) {
                throw std::system_error(errno, std::generic_category(), path);
            }
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        }
    }

    std::unique_ptr<ImageHeader> header_;
    std::vector<std::byte> tail_;
};

ImageRange appendText(Layout& layout, std::string_view text) {
    return layout.append(std::span(text.data(), text.size()));
}

// The number of the fault that holds for a name: the last one that fits.
std::uint32_t faultFor(const board::Board& board, board::FaultKind kind, const std::string& name) {
    for (std::size_t i = board.faults.size(); i > 0; --i) {
        const board::FaultRule& rule = board.faults[i - 1];
        if (rule.kind == kind && fits(rule, name)) {
            return static_cast<std::uint32_t>(i);
        }
    }
    return noFault;
}

// Laid out like ImageFault, but without its atomic: an atomic cannot be copied.
struct PlainFault {
    std::int32_t status;
    std::uint32_t remaining;
};
static_assert(sizeof(PlainFault) == sizeof(ImageFault));

void appendFaults(const board::Board& board, Layout& layout) {
    std::vector<PlainFault> faults(1); // number 0, no fault
    for (const board::FaultRule& rule : board.faults) {
        faults.push_back({rule.status, rule.once ? 1 : ImageFault::always});
    }
    layout.header().faults = layout.append(std::span<const PlainFault>(faults));
}

void appendNames(const board::Board& board, const board::CpldContents& contents, Layout& layout) {
    std::vector<ImageName> names;
    for (const auto& [name, bytes] : contents.named) { // the map is sorted in byte order
        names.push_back({appendText(layout, name),
                         layout.append(std::span<const std::uint8_t>(bytes)),
                         faultFor(board, board::FaultKind::namedRead, name)});
    }
    layout.header().names = layout.append(std::span<const ImageName>(names));
}

void appendObjects(const board::Board& board, Layout& layout) {
    std::vector<ImageObject> objects;
    for (const auto& [name, object] : board.halObjects) {
        objects.push_back({.name = appendText(layout, name),
                           .firstAddress = board::payloadBlockStart,
                           .length = board::payloadBlockSize,
                           .missingFault = faultFor(board, board::FaultKind::halObject, name),
                           .readFault = faultFor(board, board::FaultKind::halRead, name),
                           .unregisterStatus = object.unregisterStatus,
                           .interruptCallback = object.interruptCallback ? 1U : 0U,
                           .mostBytes = object.mostBytes});
    }
    layout.header().objects = layout.append(std::span<const ImageObject>(objects));
}

void fillRaw(const board::Board& board, const board::CpldContents& contents, Layout& layout) {
    std::ranges::copy(contents.raw, layout.header().raw.begin());
    for (std::size_t i = 0; i < board.faults.size(); ++i) {
        const board::FaultRule& rule = board.faults[i];
        if (rule.kind == board::FaultKind::rawRead) {
            std::fill(layout.header().rawFault.begin() + rule.first,
                      layout.header().rawFault.begin() + rule.last + 1,
                      static_cast<std::uint16_t>(i + 1));
        }
    }
}

} // namespace

void writeImage(const board::Board& board, const std::string& path) {
    Layout layout;
    const board::CpldContents contents = board::deriveCpldContents(board);
    fillRaw(board, contents, layout);
    appendFaults(board, layout);
    appendNames(board, contents, layout);
    appendObjects(board, layout);

    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    try {
        layout.write(file, path);
    } catch (...) {
        close(file);
        throw;
    }
    close(file);
}

} // namespace standin
