#include "zolt_board/service_objects.h"

#include "board/bus_names.h"
#include "board/cpld_map.h"
#include "board/published_board.h"
#include "zolt_board/joined.h"
#include "zolt_board/payload_reading.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

namespace zolt_board {

namespace {

std::string managerOf(const board::ModuleType& type) {
    return joined(board::servicePathPrefix, type.name);
}

const board::ModuleType* typeOfPath(std::string_view path) {
    const auto* const type =
        std::ranges::find_if(board::moduleTypes, [&](const board::ModuleType& candidate) {
            return !board::nameBelow(path, managerOf(candidate)).empty();
        });
    return type == std::end(board::moduleTypes) ? nullptr : type;
}

// Ties objects to slots.
class SlotsOfObjects {
public:
    explicit SlotsOfObjects(const ReaderView& board) : block_(shownBlock(board)) {
        for (const SlotReading& slot : board.slots()) {
            if (slot.described != nullptr && !slot.described->moduleType.empty()) {
                described_[joined(board::servicePathPrefix, slot.described->moduleType, "/",
                                  slot.described->objectName)] = &slot;
            } else if (payloadOf(slot)) {
                others_.push_back(&slot);
            }
        }
    }

    [[nodiscard]] const SlotReading* described(const std::string& path) const {
        const auto found = described_.find(path);
        return found == described_.end() ? nullptr : found->second;
    }

    // Takes the slot that the object fits best.
    const SlotReading* take(const ServiceObject& object) {
        if (object.properties == nullptr) {
            return nullptr;
        }
        auto best = others_.end();
        std::size_t most = 0;
        for (auto slot = others_.begin(); slot != others_.end(); ++slot) {
            const auto own = expectedProperties(*object.type, **slot, block_);
            const std::size_t shared = board::sharedProperties(own, *object.properties);
            if (shared > most && board::isMost(shared, own)) {
                most = shared;
                best = slot;
            }
        }
        if (best == others_.end()) {
            return nullptr;
        }
        const SlotReading* const slot = *best;
        others_.erase(best);
        return slot;
    }

private:
    board::Bytes block_;
    std::map<std::string, const SlotReading*> described_; ///< by path
    std::vector<const SlotReading*> others_;              ///< no object has taken them yet
};

} // namespace

board::Bytes shownBlock(const ReaderView& board) {
    const auto block =
        std::span(board.contents().raw).subspan(board::payloadBlockStart, board::payloadBlockSize);
    return {block.begin(), block.end()};
}

std::vector<board::Property> expectedProperties(const board::ModuleType& type,
                                                const SlotReading& slot,
                                                const board::Bytes& block) {
    const std::size_t size = std::min(payloadOf(slot)->statedSize, slot.payload->size());
    return board::moduleProperties(
        type, block,
        {.payloadOffset = static_cast<std::uint16_t>(*slot.payloadOffset),
         .payload = board::Bytes(size)});
}

bool isListed(const board::ServiceModel& service, const board::ModuleType& type) {
    return isAnswered(service, managerOf(type), "org.freedesktop.DBus.ObjectManager");
}

std::vector<ServiceObject> objectsOf(const board::ServiceModel& service, const ReaderView& board) {
    std::vector<ServiceObject> objects;
    std::map<std::string, std::size_t> places; // of the objects, by path
    for (const board::PublishedInterface& published : service.interfaces) {
        const board::ModuleType* const type = typeOfPath(published.path);
        if (type == nullptr || !isListed(service, *type)) {
            continue;
        }
        const auto [place, isNew] = places.emplace(published.path, objects.size());
        if (isNew) {
            objects.push_back({.path = published.path, .type = type});
        }
        if (published.interface == joined(board::serviceInterfacePrefix, type->interface) &&
            isAnswered(service, published.path, published.interface)) {
            objects[place->second].properties = &published.properties;
        }
    }
    SlotsOfObjects slots(board);
    for (ServiceObject& object : objects) {
        object.slot = slots.described(object.path);
    }
    for (ServiceObject& object : objects) {
        if (object.slot == nullptr) {
            object.slot = slots.take(object);
        }
    }
    return objects;
}

} // namespace zolt_board
