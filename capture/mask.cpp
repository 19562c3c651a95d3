#include "capture/mask.h"

#include "capture/riser_map_layout.h"
#include "capture/text_mask.h"
#include "payload/riser_slot_map_source.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

namespace capture {

namespace {

// Masks the bytes of a text field that are not numbers. The text ends at the field's first NUL; the
// bytes behind the NUL, which a dump shows, are masked as a text of their own.
void maskField(TextMask& mask, const RiserMapLayout& layout, const RiserMapText& field,
               Bytes& blob) {
    const auto begin = blob.begin() + static_cast<std::ptrdiff_t>(field.offset);
    const auto end = begin + static_cast<std::ptrdiff_t>(field.length);
    for (auto from = begin; from < end;) {
        const auto nul = std::find(from, end, 0);
        const std::string replacement = mask.replacementOf(std::string(from, nul));
        for (const char character : replacement) {
            const auto offset = static_cast<std::size_t>(from - blob.begin());
            if (!layout.isNumber[offset]) {
                *from = static_cast<std::uint8_t>(character);
            }
            ++from;
        }
        from += from < end ? 1 : 0;
    }
}

void maskRiserMap(TextMask& mask, Bytes& blob) {
    const RiserMapLayout layout = riserMapLayout(blob);
    const auto sum = [&] {
        // The bytes in front of the checksum.
        unsigned total = 0;
        for (std::size_t i = 0; i < layout.checksum.value_or(0); ++i) {
            total += blob[i];
        }
        return total;
    };
    const unsigned before = sum();
    for (const RiserMapText& field : layout.texts) {
        maskField(mask, layout, field, blob);
    }
    if (layout.checksum && !layout.isNumber[*layout.checksum]) {
        blob[*layout.checksum] = static_cast<std::uint8_t>(blob[*layout.checksum] + before - sum());
    }
}

// The registers of the blob that were read raw, from the first one on.
Bytes rawRiserMap(const Observation& observation) {
    Bytes blob;
    for (auto at = observation.rawBytes.find(zolt::riserMapRawAddress);
         at != observation.rawBytes.end() && blob.size() < zolt::riserMapRawBytes &&
         at->first == zolt::riserMapRawAddress + blob.size() && !at->second.bytes.empty();
         ++at) {
        blob.push_back(at->second.bytes[0]);
    }
    return blob;
}

void maskRiserMaps(TextMask& mask, Observation& observation) {
    if (const auto named = observation.named.find(std::string(zolt::riserMapName));
        named != observation.named.end()) {
        maskRiserMap(mask, named->second.bytes);
    }
    Bytes raw = rawRiserMap(observation);
    maskRiserMap(mask, raw);
    std::uint16_t address = zolt::riserMapRawAddress;
    for (const std::uint8_t byte : raw) {
        observation.rawBytes[address++].bytes[0] = byte;
    }
}

// Masks the texts in a value. `signature` begins with the value's type. Returns the type's length.
class ValueMask {
public:
    explicit ValueMask(TextMask& mask) : mask_(&mask) {}

    void apply(std::string_view signature, board::Value& value) {
        rest_ = signature;
        one(&value);
    }

private:
    // Takes one complete type from the signature. Without a value, only skips the type.
    void one(board::Value* value) {
        const char type = take();
        switch (type) {
        case 's':
            if (auto* text = contentOf<std::string>(value)) {
                *text = mask_->replacementOf(*text);
            }
            break;
        case 'v':
            variant(contentOf<board::Value::List>(value));
            break;
        case 'a':
            array(contentOf<board::Value::List>(value));
            break;
        case '(':
            members(contentOf<board::Value::List>(value), ')', 0);
            break;
        case '{':
            members(contentOf<board::Value::List>(value), '}', 1); // the key stays
            break;
        default:
            break;
        }
    }

    void variant(board::Value::List* list) {
        auto* const signature =
            list != nullptr && list->size() == 2 ? contentOf<std::string>(&list->front()) : nullptr;
        if (signature != nullptr) {
            ValueMask(*mask_).apply(*signature, list->back());
        }
    }

    void array(board::Value::List* list) {
        const std::string_view element = rest_;
        if (list != nullptr) {
            for (board::Value& each : *list) {
                rest_ = element;
                one(&each);
            }
        }
        rest_ = element;
        one(nullptr);
    }

    // The first `kept` members stay.
    void members(board::Value::List* list, char closing, std::size_t kept) {
        std::size_t index = 0;
        while (!rest_.empty() && rest_.front() != closing) {
            const bool isMasked = list != nullptr && index >= kept && index < list->size();
            one(isMasked ? &(*list)[index] : nullptr);
            ++index;
        }
        (void)take();
    }

    char take() {
        const char type = rest_.empty() ? '\0' : rest_.front();
        rest_.remove_prefix(rest_.empty() ? 0 : 1);
        return type;
    }

    template <typename Content>
    static Content* contentOf(board::Value* value) {
        return value != nullptr ? std::get_if<Content>(&value->content) : nullptr;
    }

    TextMask* mask_;
    std::string_view rest_;
};

void maskProperties(TextMask& mask, std::vector<board::Property>& properties) {
    for (board::Property& property : properties) {
        ValueMask(mask).apply(property.signature, property.value);
    }
}

void maskOther(TextMask& mask, std::optional<OtherReply>& other) {
    if (other && other->value) {
        ValueMask(mask).apply(other->signature, *other->value);
    }
}

void maskReading(TextMask& mask, PropertiesReading& reading) {
    maskProperties(mask, reading.properties);
    maskOther(mask, reading.other);
}

void maskService(TextMask& mask, ServiceReading& service) {
    if (service.info) {
        maskReading(mask, *service.info);
    }
    for (ManagerReading& manager : service.managers) {
        for (board::PublishedInterface& published : manager.interfaces) {
            maskProperties(mask, published.properties);
        }
        maskOther(mask, manager.other);
    }
    for (PropertiesReading& object : service.objects) {
        maskReading(mask, object);
    }
}

} // namespace

Observation masked(Observation observation) {
    TextMask mask;
    maskRiserMaps(mask, observation);
    maskService(mask, observation.service);
    return observation;
}

} // namespace capture
