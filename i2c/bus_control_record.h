// The control record, which carries a request to the platform's I2C bus driver.
//
// A record has 164 bytes. Bytes without a field are zero. A number is unsigned, has 32 bits, is
// little-endian on every host, and may be unaligned. A text is NUL-terminated in a field of 16
// bytes. The fields by offset:
//
//     0  magic, the bytes "TESK"      4  command
//
//   4 update property                 6 create node (index node: device part, target and
//     8  index                          device path stay zero)
//    12  target address                18  index
//    16  property value                30  property 10 of the bus the request is sent on
//    20  property ID                   38 42 46 50 54 58 62 66  device part
//    24  device-type name              70  target address
//   5 get property                     74  property 8 of the bus the request is sent on
//     8  target address                78  device-type name
//    12  property ID                   94  device path of the index node
//   7 remove device                   8 bus recovery
//     8  target address                 8  recovery mode
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zolt {

constexpr std::size_t busControlRecordSize = 164;
constexpr std::size_t busTextSize = 16; ///< of every text field, with its NUL

enum class BusCommand : std::uint32_t {
    updateProperty = 4,
    getProperty = 5,
    createNode = 6,
    removeDevice = 7,
    recoverBus = 8,
};

/// The place of a number in the record.
struct BusNumber {
    std::size_t offset;
};

/// The place of a text in the record.
struct BusText {
    std::size_t offset;
};

namespace update_property {
constexpr BusNumber index{8};
constexpr BusNumber target{12};
constexpr BusNumber value{16};
constexpr BusNumber propertyId{20};
constexpr BusText typeName{24};
} // namespace update_property

namespace get_property {
constexpr BusNumber target{8};
constexpr BusNumber propertyId{12};
} // namespace get_property

namespace create_node {
constexpr BusNumber index{18};
constexpr BusNumber property10{30};
constexpr std::array<BusNumber, 8> devicePart{{{38}, {42}, {46}, {50}, {54}, {58}, {62}, {66}}};
constexpr BusNumber target{70};
constexpr BusNumber property8{74};
constexpr BusText typeName{78};
constexpr BusText devicePath{94};
} // namespace create_node

namespace remove_device {
constexpr BusNumber target{8};
} // namespace remove_device

namespace recover_bus {
constexpr BusNumber mode{8};
} // namespace recover_bus

/// One request. The constructor writes magic and command; set() writes the command's fields.
class BusControlRecord {
public:
    explicit BusControlRecord(BusCommand command);

    void set(BusNumber field, std::uint32_t value);

    /// Cuts @p text to 15 characters.
    void set(BusText field, std::string_view text);

    [[nodiscard]] std::span<const std::uint8_t, busControlRecordSize> bytes() const {
        return bytes_;
    }

private:
    std::array<std::uint8_t, busControlRecordSize> bytes_{};
};

/// The little-endian number of 32 bits at @p offset. All four bytes must lie in @p bytes.
[[nodiscard]] std::uint32_t busNumberAt(std::span<const std::uint8_t> bytes, std::size_t offset);

} // namespace zolt
