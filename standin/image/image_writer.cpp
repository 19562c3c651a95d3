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

// Lists the rules that fit, the last one first. No rule before one that always applies is asked.
template <typename Fits>
ImageRange appendFitting(const board::Board& board, Layout& layout, Fits fits) {
    std::vector<ImageFaultNumber> numbers;
    for (std::size_t i = board.faults.size(); i > 0; --i) {
        const board::FaultRule& rule = board.faults[i - 1];
        if (!fits(rule)) {
            continue;
        }
        numbers.push_back(static_cast<ImageFaultNumber>(i - 1));
        if (rule.after == 0 && rule.times == 0) {
            break;
        }
    }
    return layout.append(std::span<const ImageFaultNumber>(numbers));
}

ImageRange appendFitting(const board::Board& board, Layout& layout, board::FaultKind kind,
                         const std::string& name) {
    return appendFitting(board, layout, [&](const board::FaultRule& rule) {
        return rule.kind == kind && fits(rule, name);
    });
}

// Laid out like ImageFault, but without its atomics: an atomic cannot be copied.
struct PlainFault {
    std::int32_t status;
    std::uint32_t delay;
    std::uint32_t passing;
    std::uint32_t remaining;
};
static_assert(sizeof(PlainFault) == sizeof(ImageFault));
static_assert(board::delayForever == ImageFault::forever);

// The rules for reads of ranges, the last one first.
template <typename Fits>
ImageRange appendReadFaults(const board::Board& board, Layout& layout, Fits fits) {
    std::vector<ImageReadFault> faults;
    for (std::size_t i = board.faults.size(); i > 0; --i) {
        const board::FaultRule& rule = board.faults[i - 1];
        if (fits(rule)) {
            faults.push_back({rule.first, rule.last, static_cast<ImageFaultNumber>(i - 1)});
        }
    }
    return layout.append(std::span<const ImageReadFault>(faults));
}

void appendFaults(const board::Board& board, Layout& layout) {
    std::vector<PlainFault> faults;
    for (const board::FaultRule& rule : board.faults) {
        faults.push_back({rule.status, rule.delay, rule.after,
                          rule.times == 0 ? ImageFault::always : rule.times});
    }
    layout.header().faults = layout.append(std::span<const PlainFault>(faults));
    layout.header().rawFaults = appendReadFaults(board, layout, [](const board::FaultRule& rule) {
        return rule.kind == board::FaultKind::rawRead;
    });
    for (std::size_t type = 0; type < topologyTypes; ++type) {
        layout.header().typeFaults[type] =
            appendFitting(board, layout, [&](const board::FaultRule& rule) {
                return rule.kind == board::FaultKind::sysinfo && rule.deviceType == type;
            });
    }
}

void appendNames(const board::Board& board, const board::CpldContents& contents, Layout& layout) {
    std::vector<ImageName> names;
    for (const auto& [name, bytes] : contents.named) { // the map is sorted in byte order
        names.push_back({appendText(layout, name),
                         layout.append(std::span<const std::uint8_t>(bytes)),
                         appendFitting(board, layout, board::FaultKind::namedRead, name)});
    }
    layout.header().names = layout.append(std::span<const ImageName>(names));
}

void appendObjects(const board::Board& board, Layout& layout) {
    std::vector<ImageObject> objects;
    for (const auto& [name, object] : board.halObjects) {
        objects.push_back(
            {.name = appendText(layout, name),
             .firstAddress = board::payloadBlockStart,
             .length = board::payloadBlockSize,
             .missingFaults = appendFitting(board, layout, board::FaultKind::halObject, name),
             .readFaults = appendReadFaults(board, layout,
                                            [&wanted = name](const board::FaultRule& rule) {
                                                return rule.kind == board::FaultKind::halRead &&
                                                       fits(rule, wanted);
                                            }),
             .unregisterStatus = object.unregisterStatus,
             .interruptCallback = object.interruptCallback ? 1U : 0U,
             .mostBytes = object.mostBytes});
    }
    layout.header().objects = layout.append(std::span<const ImageObject>(objects));
}

} // namespace

void writeImage(const board::Board& board, const std::string& path) {
    Layout layout;
    const board::CpldContents contents = board::deriveCpldContents(board);
    std::ranges::copy(contents.raw, layout.header().raw.begin());
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
