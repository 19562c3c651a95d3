#include "tests/bus/modules.h"

namespace zolt::test {

namespace {

using Byte = std::uint8_t;
using Word = std::uint16_t;

// The properties that CEM and backplane modules have in common.
PropertyMap cemHeader() {
    return {{"PayloadFrmtVer", Byte{0x02}},   {"DeviceClass", Byte{0x0B}},
            {"StaticPaylodSize", Byte{0x40}}, {"DeviceId", Word{0x1234}},
            {"VendorId", Word{0x0100}},       {"DeviceVer", Byte{0x05}},
            {"NumWires", Byte{0x5F}},         {"TargetI2cDevType", Byte{0xB3}},
            {"TargetI2cDevAddr", Byte{0xD0}}, {"checksum", Byte{0xA5}}};
}

board::Property published(const std::string& name, const PropertyValue& value) {
    if (const auto* endpoint = std::get_if<EndpointDescriptor>(&value)) {
        return std::apply(
            [&](auto... bytes) {
                return board::Property{name, "(yyyyyy)", board::listOf(int{bytes}...)};
            },
            *endpoint);
    }
    if (const auto* word = std::get_if<Word>(&value)) {
        return {name, "q", int{*word}};
    }
    if (const auto* byte = std::get_if<Byte>(&value)) {
        return {name, "y", int{*byte}};
    }
    return {name, "b", std::get<bool>(value)};
}

} // namespace

PropertyMap cemProperties() {
    PropertyMap properties = cemHeader();
    properties["EndPoint0"] = EndpointDescriptor{0x35, 0x42, 0x67, 0x21, 0x13, 0x45};
    properties["EndPoint1"] = EndpointDescriptor{1, 2, 3, 4, 5, 6};
    properties["EndPoint2"] = EndpointDescriptor{0x10, 0x20, 0x30, 0x40, 0x50, 0x60};
    properties["EndPoint3"] = EndpointDescriptor{0xFF, 0xFE, 0xFD, 0xFC, 0xFB, 0xFA};
    return properties;
}

// Byte j of endpoint i is 16 i + j.
PropertyMap backPlaneProperties() {
    PropertyMap properties = cemHeader();
    for (unsigned i = 0; i < 16; ++i) {
        const auto byte = [i](unsigned j) { return static_cast<Byte>(16 * i + j); };
        properties["EndPoint" + std::to_string(i)] =
            EndpointDescriptor{byte(0), byte(1), byte(2), byte(3), byte(4), byte(5)};
    }
    return properties;
}

PropertyMap shortProperties() {
    return {{"PayloadFrmtVer", Byte{0x02}},
            {"DeviceClass", Byte{0x0B}},
            {"StaticPaylodSize", Byte{0x10}},
            {"DeviceId", Word{256}},
            {"VendorId", Word{11}},
            {"DeviceVer", Byte{0x05}},
            {"NumPwires", Byte{0xFF}},
            {"TargetI2cGpioDevType", Byte{0xFF}},
            {"TargetI2cGpioDevAddr", Byte{0xFF}}};
}

std::vector<board::Property> published(const PropertyMap& properties) {
    std::vector<board::Property> all;
    for (const auto& [name, value] : properties) {
        all.push_back(published(name, value));
    }
    return all;
}

} // namespace zolt::test
