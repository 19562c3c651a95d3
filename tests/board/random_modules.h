// Random modules and riser maps. A seed always gives the same ones.
#pragma once

#include "board/cpld_map.h"
#include "board/module_codec.h"
#include "board/riser_map_codec.h"

#include <optional>
#include <random>
#include <span>

namespace board::test {

class Dice {
public:
    explicit Dice(unsigned seed) : random_(seed) {}

    unsigned draw(unsigned lowest, unsigned highest) {
        return std::uniform_int_distribution<unsigned>(lowest, highest)(random_);
    }
    std::uint8_t byte() { return static_cast<std::uint8_t>(draw(0, 0xFF)); }
    bool oneIn(unsigned number) { return draw(1, number) == 1; }

    void fill(std::span<const BitField> fields, std::span<std::uint8_t> record) {
        for (const BitField& field : fields) {
            field.encode(draw(0, field.highest()), record);
        }
    }
    std::optional<std::uint8_t> sometimes(unsigned highest = 0xFF) {
        return oneIn(8) ? std::optional(static_cast<std::uint8_t>(draw(0, highest))) : std::nullopt;
    }
    void damage(Bytes& bytes) {
        for (unsigned times = draw(1, 3); times > 0 && !bytes.empty(); --times) {
            bytes[draw(0, static_cast<unsigned>(bytes.size() - 1))] = byte();
        }
    }

private:
    std::mt19937 random_;
};

inline ModulePayload randomPayload(Dice& dice) {
    ModulePayload payload;
    dice.fill(headerFields, payload.header);
    constexpr std::uint8_t classes[] = {puckDeviceClass, rfcDeviceClass, backplaneDeviceClass};
    if (const unsigned choice = dice.draw(0, 5); choice < std::size(classes)) {
        payload.header[1] = classes[choice];
    }
    if (payload.body() == PayloadBody::backplane) {
        dice.fill(backplaneFields, payload.backplane);
    } else if (payload.body() == PayloadBody::endPoints) {
        payload.endPoints.resize(dice.draw(0, mostEndPoints));
        for (auto& endPoint : payload.endPoints) {
            dice.fill(endPointFields, endPoint);
            dice.fill(moreEndPointFields(indirectField.decode(endPoint) != 0), endPoint);
        }
    }
    payload.statedSize = dice.sometimes();
    payload.checksum = dice.sometimes();
    return payload;
}

inline OemArea randomArea(Dice& dice) {
    OemArea area;
    area.descriptors.resize(dice.draw(0, 20));
    for (OemDescriptor& descriptor : area.descriptors) {
        descriptor.type = static_cast<std::uint8_t>(dice.draw(0, 5));
        const bool hasFields = descriptor.type >= 1 && descriptor.type <= 3;
        descriptor.data.resize(hasFields ? oemDescriptorSize(descriptor.type) - oemHeaderSize
                                         : dice.draw(0, 6));
        for (std::uint8_t& byte : descriptor.data) {
            byte = dice.byte();
        }
    }
    area.statedSize = dice.sometimes();
    area.checksum = dice.sometimes();
    return area;
}

inline RiserMap randomMap(Dice& dice) {
    RiserMap map;
    dice.fill(riserMapHeadFields, map.head);
    for (std::size_t i = 0; i < descriptionSize; ++i) {
        map.head[descriptionOffset + i] = static_cast<std::uint8_t>(dice.draw(0, 0x7F));
    }
    map.records.resize(dice.draw(0, 8));
    for (RiserRecord& record : map.records) {
        dice.fill(recordFields, record.head);
        for (std::size_t i = locationOffset; i < locationOffset + 2 * recordTextSize; ++i) {
            record.head[i] = static_cast<std::uint8_t>(dice.draw(0, 0x7F));
        }
        record.dsls.resize(dice.draw(0, 6));
        for (RiserDsl& dsl : record.dsls) {
            dsl.id = dice.byte();
            dsl.route[0] = static_cast<std::uint8_t>(dice.draw(0, 4));
            for (const FieldsOfType& fields : dslPayloadFields) {
                if (fields.type == dsl.route[0]) {
                    dice.fill(fields.fields, dsl.route);
                }
            }
        }
        record.cardSlots.resize(cardSlotSize * dice.draw(0, 5));
        for (std::uint8_t& byte : record.cardSlots) {
            byte = dice.byte();
        }
        record.statedRoutes = dice.sometimes();
        record.statedSize = dice.sometimes();
    }
    map.checksum = dice.sometimes();
    return map;
}

inline Bytes blobOf(const RiserMap& map) {
    Bytes blob = encode(map);
    blob.resize(riserMapSize);
    return blob;
}

} // namespace board::test
