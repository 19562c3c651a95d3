// The model of a board: what a board description says, as people think of it.
//
// Everything that a command sees of the board is derived from this.
#pragma once

#include "standin/board/bytes.h"
#include "standin/board/fault_rule.h"
#include "standin/board/i2c_model.h"
#include "standin/service/model.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace standin {

constexpr unsigned slotCount = 63;

/// One PICPWR slot. A slot that is not described is absent: every register of it reads 0.
struct Slot {
    std::uint8_t id = 0;    ///< PICPWR, 1 to 63
    std::uint8_t dstat = 0; ///< discovery status, 0 to 3; 0 is an absent module
    bool dbyp = false;
    bool dpen = false;
    bool apen = false;
    bool astat = false;
    std::uint8_t moduleClass = 0;
    std::uint8_t moduleClassIndex = 0;
    std::uint16_t payloadOffset = 0; ///< from the payload block's first payload byte on
    std::array<std::uint8_t, 8> dslIds{};
    Bytes payload{};          ///< CIR payload, at payloadOffset
    Bytes oemArea{};          ///< right behind the payload
    std::string moduleType{}; ///< kind of module as the service sorts them; empty: not published
    std::string objectName{}; ///< last element of the module's object path
};

/// An object of the HAL's configuration.
struct HalObject {
    bool interruptCallback = false;       ///< one is registered when the object is handed out
    std::int32_t unregisterStatus = 0;    ///< what taking it back returns
    std::uint32_t mostBytes = 0xFFFFFFFF; ///< a bulk read delivers no more, and succeeds
};

/// A register of one instance of a module class, beyond the slots.
struct ControlRegister {
    std::string name; ///< as the HAL knows it
    Bytes value;      ///< what a named read delivers
};

/// What the service does beside publishing the modules as they are.
struct ServiceDescription {
    std::vector<Property> info;                ///< of the information object
    std::vector<PublishedInterface> additions; ///< properties that take the place of a module's,
                                               ///< or objects that no module yields
    std::vector<PublishedInterface> removals;  ///< properties that a module's object lacks; none
                                               ///< named: all of them
    std::vector<ServiceOrder> orders;
};

struct Board {
    std::string name;
    std::vector<Slot> slots;
    std::vector<ControlRegister> controlRegisters;
    std::map<std::uint16_t, std::uint8_t> controlBytes; ///< the same registers, raw
    Bytes riserMap = Bytes(1024);                       ///< riser slot mapping blob
    ServiceDescription service;
    I2cDescription i2c;
    std::map<std::string, HalObject> halObjects;
    std::map<std::string, Bytes> namedOverrides;        ///< bytes of a named read
    std::map<std::uint16_t, std::uint8_t> rawOverrides; ///< registers by raw address
    std::vector<FaultRule> faults; ///< of several rules that fit a read, the last one holds
};

} // namespace standin
