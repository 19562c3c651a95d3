#include "standin/image/image_reader.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace standin {

namespace {

// The mapping is shared and writable, because the image counts down the faults.
const ImageHeader* mapFile(const char* path) {
    const int file = open(path, O_RDWR | O_CLOEXEC);
    if (file < 0) {
        return nullptr;
    }
    struct stat status {};
    void* start = MAP_FAILED;
    if (fstat(file, &status) == 0 && status.st_size >= static_cast<off_t>(sizeof(ImageHeader))) {
        start = mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ | PROT_WRITE,
                     MAP_SHARED, file, 0);
    }
    close(file);
    if (start == MAP_FAILED) {
        return nullptr;
    }
    const auto* header = static_cast<const ImageHeader*>(start);
    if (header->magic != ImageHeader::expectedMagic || header->size != status.st_size) {
        munmap(start, static_cast<std::size_t>(status.st_size));
        return nullptr;
    }
    return header;
}

// Takes one from a counter that several processes share. False when the counter is at 0.
bool takeOne(std::atomic<std::uint32_t>& counter) {
    std::uint32_t left = counter.load();
    while (left != 0) {
        if (counter.compare_exchange_weak(left, left - 1)) {
            return true;
        }
    }
    return false;
}

} // namespace

template <typename T>
std::span<const T> ImageReader::items(ImageRange range) const {
    const auto* start = reinterpret_cast<const char*>(header_) + range.start;
    return {reinterpret_cast<const T*>(start), range.length};
}

template <typename T>
bool ImageReader::holds(ImageRange range) const {
    return range.start <= header_->size && range.start % alignof(T) == 0 &&
           range.length <= (header_->size - range.start) / sizeof(T);
}

std::optional<ImageReader> ImageReader::map(const char* path) {
    const ImageHeader* const header = mapFile(path);
    if (header == nullptr) {
        return std::nullopt;
    }
    const ImageReader reader(header);
    if (!reader.holds<ImageFault>(header->faults) || !reader.holds<ImageName>(header->names) ||
        !reader.holds<ImageObject>(header->objects) ||
        !reader.holds<ImageReadFault>(header->rawFaults)) {
        return std::nullopt;
    }
    return reader;
}

const ImageReader* ImageReader::attached() {
    static const std::optional<ImageReader> reader = []() -> std::optional<ImageReader> {
        const char* const directory = std::getenv(boardDirectoryVariable);
        if (directory == nullptr) {
            return std::nullopt;
        }
        return map((std::string(directory) + '/' + imageFileName).c_str());
    }();
    return reader ? &*reader : nullptr;
}

const ImageName* ImageReader::findName(std::string_view name) const {
    const auto nameText = [this](const ImageName& entry) {
        const auto text = items<char>(entry.name);
        return std::string_view(text.data(), text.size());
    };
    const auto names = items<ImageName>(header_->names);
    const auto found = std::ranges::lower_bound(names, name, {}, nameText);
    return found != names.end() && nameText(*found) == name ? &*found : nullptr;
}

const ImageObject* ImageReader::findObject(std::string_view name) const {
    for (const ImageObject& object : items<ImageObject>(header_->objects)) {
        if (nameOf(object) == name) {
            return &object;
        }
    }
    return nullptr;
}

std::span<const std::uint8_t> ImageReader::value(const ImageName& name) const {
    return items<std::uint8_t>(name.value);
}

std::string_view ImageReader::nameOf(const ImageObject& object) const {
    const auto text = items<char>(object.name);
    return {text.data(), text.size()};
}

std::span<const std::uint8_t> ImageReader::raw(std::uint32_t first, std::uint32_t count) const {
    return std::span(header_->raw).subspan(first, count);
}

// None when the rule lets the call pass or is used up.
std::optional<CallEnd> ImageReader::ask(ImageFaultNumber fault) const {
    const auto faults = items<ImageFault>(header_->faults);
    if (fault >= faults.size()) {
        return std::nullopt;
    }
    auto& asked = const_cast<ImageFault&>(faults[fault]);
    const bool applies = !takeOne(asked.passing) &&
                         (asked.remaining == ImageFault::always || takeOne(asked.remaining));
    return applies ? std::optional(CallEnd{asked.status, asked.delay}) : std::nullopt;
}

CallEnd ImageReader::endOf(ImageRange faults) const {
    for (const ImageFaultNumber fault : items<ImageFaultNumber>(faults)) {
        if (const auto end = ask(fault)) {
            return *end;
        }
    }
    return {};
}

CallEnd ImageReader::endOfRead(ImageRange faults, std::uint32_t first, std::uint32_t count) const {
    for (const ImageReadFault& fault : items<ImageReadFault>(faults)) {
        const bool fits = count > 0 && fault.first <= first + (count - 1) && first <= fault.last;
        const auto end = fits ? ask(fault.fault) : std::nullopt;
        if (end) {
            return *end;
        }
    }
    return {};
}

CallEnd ImageReader::endOfRawRead(std::uint32_t first, std::uint32_t count) const {
    return endOfRead(header_->rawFaults, first, count);
}

// A read of no bytes is a call, too: it has the place of one byte.
CallEnd ImageReader::endOfBulkRead(const ImageObject& object, std::uint32_t first,
                                   std::uint32_t count) const {
    return endOfRead(object.readFaults, first, std::max(count, 1U));
}

CallEnd ImageReader::endOfParsing(std::size_t deviceType) const {
    return endOf(header_->typeFaults[deviceType]);
}

void ImageReader::noteLogError(LibraryLog log, int error) const {
    auto& noted = const_cast<ImageHeader*>(header_)->logErrors[static_cast<std::size_t>(log)];
    std::int32_t none = 0;
    noted.compare_exchange_strong(none, error);
}

int ImageReader::logError(LibraryLog log) const {
    return header_->logErrors[static_cast<std::size_t>(log)].load();
}

} // namespace standin
