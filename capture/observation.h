// Everything that a capture has read of a board, read by read.
//
// The readers fill an observation and judge nothing: a read that fails is an observation like any
// other. describe() turns the observation into a board description.
#pragma once

#include "board/bytes.h"
#include "board/i2c_model.h"
#include "board/service_model.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace capture {

using board::Bytes;

/// A read of registers.
struct Reading {
    std::int32_t status = 0; ///< of the platform's library; 0: success
    Bytes bytes{};           ///< the bytes that a successful read delivered, also fewer than asked

    bool operator==(const Reading&) const = default;
};

/// A bulk read of a slot's payload through the HAL's object. If the HAL fails, the same bytes are
/// read raw. Each payload has a reading of 375 bytes. A payload whose first reading the HAL fails
/// has a second one, of 247 bytes, if the view of the CIR payload would read these.
struct PayloadReading {
    std::uint8_t slot = 0;    ///< PICPWR, 1 to 63
    std::uint16_t offset = 0; ///< payload offset, as the slot's register gives it
    std::uint32_t length = 0; ///< number of bytes that were asked for
    bool foundObject = false; ///< the HAL has the object
    Reading hal{};            ///< only with the object
    std::optional<Reading> raw{};

    bool operator==(const PayloadReading&) const = default;
};

/// What the HAL's object of the payload block shows besides its bytes.
struct HalObjectReading {
    bool interruptCallback = false;
    std::int32_t unregisterStatus = 0; ///< only with a callback

    bool operator==(const HalObjectReading&) const = default;
};

/// The parser's answer for one device type.
struct TopologyReading {
    std::int32_t status = 0;
    bool hasRoot = false;
    std::vector<board::IndexNode> nodes{}; ///< deviceType is set; only with status 0 and a root
    bool isCut = false; ///< the lists go round in a circle, or have more nodes than a capture keeps

    bool operator==(const TopologyReading&) const = default;
};

/// An error reply, or the failure to get a reply.
struct BusError {
    std::string name; ///< of D-Bus
    std::string text;

    bool operator==(const BusError&) const = default;
};

/// A property that a capture cannot keep: its value has a file descriptor in it, is nested deeper
/// than a description can be, or is larger than a capture keeps.
struct UnkeptProperty {
    std::string path{};
    std::string interface {};
    std::string name{};
    std::string signature{};

    bool operator==(const UnkeptProperty&) const = default;
};

/// A reply that begins with another type than the call demands. The views report its type.
struct OtherReply {
    std::string signature{};             ///< of the whole reply; empty: no contents
    std::optional<board::Value> value{}; ///< of a signature of one complete type, if it can be kept

    bool operator==(const OtherReply&) const = default;
};

/// The reply to GetAll of one interface of one object.
struct PropertiesReading {
    std::string path;
    std::string interface;
    std::optional<BusError> error{};
    std::optional<OtherReply> other{};
    std::vector<board::Property> properties{}; ///< in the order of the reply
    std::vector<UnkeptProperty> unkept{};

    bool operator==(const PropertiesReading&) const = default;
};

/// The reply to GetManagedObjects of one manager.
struct ManagerReading {
    std::string path;
    std::optional<BusError> error{};
    std::optional<OtherReply> other{};
    /// In the order of the reply, with the interfaces of D-Bus that each object has. An object
    /// without interfaces has one entry, whose interface is empty.
    std::vector<board::PublishedInterface> interfaces{};
    std::vector<UnkeptProperty> unkept{};
    bool isCut = false; ///< the reply has more objects than a capture keeps

    bool operator==(const ManagerReading&) const = default;
};

struct ServiceReading {
    enum class Reach : std::uint8_t {
        noBus,     ///< the system bus cannot be reached
        noService, ///< nobody owns the service's name
        service,
    };
    Reach reach = Reach::noBus;
    std::optional<PropertiesReading> info{};
    std::vector<ManagerReading> managers{};   ///< of all module types, in their order
    std::vector<PropertiesReading> objects{}; ///< of each managed object, with the interface that
                                              ///< the views ask for, in the order of asking

    bool operator==(const ServiceReading&) const = default;
};

/// A property of a bus or of a device on it, read from the bus driver.
struct NodePropertyReading {
    std::uint32_t bus = 0;    ///< the N of /dev/i2c-N
    std::uint32_t target = 0; ///< address of the device; 0: the bus itself
    std::uint32_t id = 0;
    int error = 0;       ///< errno; 0: success
    bool opened = false; ///< the bus could be opened
    std::uint32_t value = 0;

    bool operator==(const NodePropertyReading&) const = default;
};

struct Observation {
    std::map<std::string, Reading> named;         ///< registers and areas, by name
    std::map<std::uint16_t, Reading> rawBytes;    ///< single registers, by address
    std::map<std::uint16_t, Reading> rawWords;    ///< two registers in one read, by first address
    std::vector<PayloadReading> payloads;         ///< in the order of reading
    std::optional<HalObjectReading> payloadBlock; ///< none: the HAL has no object, or `payloads` is
                                                  ///< empty, and nothing asked for the object
    std::vector<TopologyReading> topology;        ///< by device type, from 0 on
    ServiceReading service;
    std::vector<NodePropertyReading> nodeProperties;

    bool operator==(const Observation&) const = default;
};

} // namespace capture
