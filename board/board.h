// The model of a board, in the terms of its description.
//
// The stand-in derives everything that a command sees of the board from this model.
#pragma once

#include "board/bytes.h"
#include "board/fault_rule.h"
#include "board/i2c_model.h"
#include "board/service_model.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace board {

constexpr unsigned slotCount = 63;

/// One PICPWR slot. All registers of a slot without a description read 0.
struct Slot {
    std::uint8_t id = 0;    ///< PICPWR, 1 to 63
    std::uint8_t dstat = 0; ///< discovery status, 0 to 3; 0: no module
    bool dbyp = false;
    bool dpen = false;
    bool apen = false;
    bool astat = false;
    std::uint8_t moduleClass = 0;
    std::uint8_t moduleClassIndex = 0;
    std::uint16_t payloadOffset = 0; ///< of the payload; 0 is the block's first payload byte
    std::array<std::uint8_t, 8> dslIds{};
    Bytes payload{};          ///< CIR payload, at payloadOffset
    Bytes oemArea{};          ///< directly behind the payload
    std::string moduleType{}; ///< the service's type of the module; empty: not published
    std::string objectName{}; ///< last element of the module's object path
};

/// An object of the HAL's configuration.
struct HalObject {
    bool interruptCallback = false;       ///< a callback is registered from the start
    std::int32_t unregisterStatus = 0;    ///< what unregistering the callback returns
    std::uint32_t mostBytes = 0xFFFFFFFF; ///< a bulk read delivers at most these, and succeeds
};

/// A control register of one instance of a module class.
struct ControlRegister {
    std::string name; ///< its name in the HAL
    Bytes value;      ///< the bytes that a named read delivers
};

/// The service: what it publishes besides the modules, and how it differs from a normal service.
struct ServiceDescription {
    std::vector<Property> info;                ///< properties of the information object
    std::vector<PublishedInterface> additions; ///< properties that a module's object gets or
                                               ///< changes, and objects of no module
    std::vector<PublishedInterface> removals;  ///< properties that an object lacks; an entry
                                               ///< without properties: all of them
    std::vector<ServiceOrder> orders;
};

struct Board {
    std::string name;
    std::vector<Slot> slots;
    std::vector<ControlRegister> controlRegisters;
    std::map<std::uint16_t, std::uint8_t> controlBytes; ///< control registers by raw address
    Bytes riserMap = Bytes(1024);                       ///< the riser slot mapping blob
    ServiceDescription service;
    I2cDescription i2c;
    std::map<std::string, HalObject> halObjects;
    std::map<std::string, Bytes> namedOverrides;        ///< bytes that a name delivers instead
    std::map<std::uint16_t, std::uint8_t> rawOverrides; ///< values of registers by raw address
    std::vector<FaultRule>
        faults; ///< if several rules fit a call, the last one that is due applies
};

} // namespace board
