#include "tests/capture/observed_board.h"

#include "board/bus_names.h"
#include "board/control_register_layout.h"
#include "board/cpld_contents.h"
#include "board/cpld_map.h"
#include "board/module_type.h"
#include "board/published_board.h"

#include <algorithm>
#include <fnmatch.h>
#include <set>
#include <string>

namespace capture::test {

namespace {

using board::FaultKind;
using board::FaultRule;

constexpr std::int32_t notThere = -1;
constexpr std::int32_t badArgument = -22;

class Platform {
public:
    explicit Platform(const board::Board& board)
        : board_(&board), contents_(deriveCpldContents(board)) {}

    [[nodiscard]] Reading named(const std::string& name) const {
        const FaultRule* const fault = lastFault([&](const FaultRule& rule) {
            return rule.kind == FaultKind::namedRead &&
                   fnmatch(rule.subject.c_str(), name.c_str(), 0) == 0;
        });
        const auto found = contents_.named.find(name);
        if (found == contents_.named.end()) {
            return {.status = notThere};
        }
        return fault != nullptr ? Reading{.status = fault->status}
                                : Reading{.bytes = found->second};
    }

    [[nodiscard]] Reading raw(std::uint32_t address, std::uint32_t length) const {
        if (address >= board::rawAddressCount || length > board::rawAddressCount - address) {
            return {.status = badArgument};
        }
        const FaultRule* const fault = lastFault([&](const FaultRule& rule) {
            return rule.kind == FaultKind::rawRead && rule.first < address + length &&
                   rule.last >= address;
        });
        if (fault != nullptr) {
            return {.status = fault->status};
        }
        const auto start = contents_.raw.begin() + address;
        return {.bytes = Bytes(start, start + length)};
    }

    [[nodiscard]] PayloadReading payload(std::uint8_t slot, std::uint16_t offset,
                                         std::uint32_t length) const {
        PayloadReading reading{.slot = slot, .offset = offset, .length = length};
        reading.foundObject = lastFault([](const FaultRule& rule) {
                                  return rule.kind == FaultKind::halObject;
                              }) == nullptr;
        const std::uint32_t index = offset + board::payloadIndexOfOffset0;
        const FaultRule* const fault = lastFault([&](const FaultRule& rule) {
            return rule.kind == FaultKind::halRead && rule.first < index + length &&
                   rule.last >= index;
        });
        if (index > board::payloadBlockSize || length > board::payloadBlockSize - index) {
            reading.hal.status = notThere;
        } else if (fault != nullptr) {
            reading.hal.status = fault->status;
        } else {
            const auto start = contents_.raw.begin() + board::payloadBlockStart + index;
            reading.hal.bytes.assign(start, start + std::min(length, object().mostBytes));
        }
        if (!reading.foundObject) {
            reading.hal = {};
        }
        if (!reading.foundObject || reading.hal.status != 0) {
            reading.raw = raw(board::payloadBlockStart + index, length);
        }
        return reading;
    }

    [[nodiscard]] const board::HalObject& object() const {
        return board_->halObjects.at(std::string(board::payloadBlockName));
    }

private:
    template <typename Fits>
    const FaultRule* lastFault(Fits fits) const {
        const auto found = std::find_if(board_->faults.rbegin(), board_->faults.rend(), fits);
        return found == board_->faults.rend() ? nullptr : &*found;
    }

    const board::Board* board_;
    board::CpldContents contents_;
};

// The value that a report takes: the named one, else the raw one.
std::optional<std::uint32_t> effective(const Reading& named, const Reading& raw, unsigned shift,
                                       std::size_t size) {
    const Reading& taken = named.status == 0 ? named : raw;
    if (taken.status != 0 || taken.bytes.size() < size) {
        return std::nullopt;
    }
    const unsigned low = taken.bytes[0];
    return size == 2           ? low | static_cast<unsigned>(taken.bytes[1]) << 8U
           : named.status == 0 ? low
                               : low >> shift;
}

void readSlot(const Platform& platform, std::uint8_t id, Observation& observation) {
    const auto address =
        static_cast<std::uint16_t>(board::slotBlockStart + board::slotBlockSize * (id - 1));
    const std::string prefix = "PICPWR_" + std::to_string(id);
    const auto name = [&](const char* suffix) {
        return observation.named[prefix + suffix] = platform.named(prefix + suffix);
    };
    const auto byte = [&](unsigned offset) {
        const auto at = static_cast<std::uint16_t>(address + offset);
        return observation.rawBytes[at] = platform.raw(at, 1);
    };
    const Reading dstat = name("_DSTAT");
    const Reading status = byte(0);
    const bool isRead = dstat.status == 0 || status.status == 0;
    if (!isRead || effective(dstat, status, 6, 1) == 0) {
        return;
    }
    for (const char* const suffix :
         {"_DBYP", "_DPEN", "_APEN", "_ASTAT", "_MOD_CLASS", "_MOD_CLASS_IDX"}) {
        name(suffix);
    }
    const Reading offset = name("_PAYLOAD_OFFSET");
    byte(1);
    byte(2);
    const auto word = static_cast<std::uint16_t>(address + 3);
    observation.rawWords[word] = platform.raw(word, 2);
    for (unsigned k = 6; k < 14; ++k) {
        byte(k);
    }
    if (const auto start = effective(offset, observation.rawWords[word], 0, 2)) {
        for (const std::uint32_t length : {375U, 247U}) {
            observation.payloads.push_back(
                platform.payload(id, static_cast<std::uint16_t>(*start), length));
            const PayloadReading& read = observation.payloads.back();
            if (read.foundObject && read.hal.status == 0) {
                break;
            }
        }
    }
}

void readControls(const Platform& platform, Observation& observation) {
    for (const board::ControlClass& kind : board::controlClasses) {
        for (unsigned instance = 1; instance <= kind.instances; ++instance) {
            for (const board::ControlField& field : kind.fields) {
                const auto address =
                    static_cast<std::uint16_t>(addressOf(kind, instance) + field.bits.offset);
                if (!field.suffix.empty()) {
                    const std::string name = nameOf(kind, instance, field);
                    observation.named[name] = platform.named(name);
                }
                if (field.bits.upperBits != 0) {
                    observation.rawWords[address] = platform.raw(address, 2);
                } else {
                    observation.rawBytes[address] = platform.raw(address, 1);
                }
            }
        }
    }
}

void readRiserMap(const Platform& platform, Observation& observation) {
    const std::string name(board::riserMapName);
    if ((observation.named[name] = platform.named(name)).status == 0) {
        return;
    }
    for (std::uint32_t i = 0; i < board::riserMapSize; ++i) {
        const auto address = static_cast<std::uint16_t>(board::riserMapStart + i);
        if ((observation.rawBytes[address] = platform.raw(address, 1)).status != 0) {
            return;
        }
    }
}

void readTopology(const board::Board& board, Observation& observation) {
    observation.topology.resize(165);
    for (unsigned type = 0; type < observation.topology.size(); ++type) {
        TopologyReading& reading = observation.topology[type];
        for (board::IndexNode node : board.i2c.indexNodes) {
            if (node.deviceType == type) {
                node.subNodeCount =
                    node.subNodeCount.value_or(static_cast<std::int32_t>(node.subNodes.size()));
                node.parent.reset(); // known to the bus driver alone
                reading.nodes.push_back(node);
            }
        }
        reading.hasRoot = !reading.nodes.empty();
        reading.status = reading.hasRoot ? 0 : -2;
        const auto code = static_cast<std::uint8_t>(type);
        if (const auto found = board.i2c.answers.find(code); found != board.i2c.answers.end()) {
            reading.status = found->second.status;
            reading.hasRoot = found->second.root != board::TypeAnswer::Root::none;
            if (found->second.root != board::TypeAnswer::Root::nodes || reading.status != 0) {
                reading.nodes.clear();
            }
        }
        for (const FaultRule& rule : board.faults) {
            if (rule.kind == FaultKind::sysinfo && rule.deviceType == type) {
                reading = {.status = rule.status, .hasRoot = false};
            }
        }
    }
}

// The first order that fits a call, as the service would take it; only errors are answered here.
std::optional<BusError> errorFor(const board::ServiceModel& model, const std::string& path,
                                 const std::string& interface) {
    for (const board::ServiceOrder& order : model.orders) {
        if ((order.path.empty() || order.path == path) &&
            (order.interface.empty() || order.interface == interface) &&
            order.action == board::ServiceOrder::Action::error) {
            return BusError{order.name, order.text};
        }
    }
    return std::nullopt;
}

PropertiesReading propertiesOf(const board::ServiceModel& model, const std::string& path,
                               const std::string& interface) {
    PropertiesReading reading{.path = path, .interface = interface};
    reading.error = errorFor(model, path, interface);
    const auto found =
        std::ranges::find_if(model.interfaces, [&](const board::PublishedInterface& published) {
            return published.path == path && published.interface == interface;
        });
    if (!reading.error && found == model.interfaces.end()) {
        reading.error = {"org.freedesktop.DBus.Error.UnknownInterface", "no such interface"};
    }
    if (!reading.error) {
        reading.properties = found->properties;
        std::ranges::sort(reading.properties, {}, &board::Property::name);
    }
    return reading;
}

void readService(const board::Board& board, Observation& observation) {
    using Reach = ServiceReading::Reach;
    ServiceReading& service = observation.service;
    service.reach = Reach::service;
    for (const FaultRule& rule : board.faults) {
        if (rule.kind == FaultKind::bus) {
            service.reach = Reach::noBus;
        } else if (rule.kind == FaultKind::service && service.reach == Reach::service) {
            service.reach = Reach::noService;
        }
    }
    if (service.reach != Reach::service) {
        return;
    }
    const board::ServiceModel model = publishBoard(board);
    const std::string prefix(board::servicePathPrefix);
    service.info = propertiesOf(model, prefix + "info", "com.tesk.bmc.zolt.pcardInfo");
    for (const board::ModuleType& type : board::moduleTypes) {
        ManagerReading manager{.path = prefix + std::string(type.name)};
        manager.error = errorFor(model, manager.path, "org.freedesktop.DBus.ObjectManager");
        std::set<std::string> paths;
        for (board::PublishedInterface published : model.interfaces) {
            if (!manager.error && published.path.starts_with(manager.path + "/")) {
                paths.insert(published.path);
                std::ranges::sort(published.properties, {}, &board::Property::name);
                manager.interfaces.push_back(std::move(published));
            }
        }
        std::ranges::sort(manager.interfaces, {}, [](const board::PublishedInterface& published) {
            return std::pair(published.path, published.interface);
        });
        service.managers.push_back(std::move(manager));
        for (const std::string& path : paths) {
            service.objects.push_back(propertiesOf(
                model, path, std::string(board::serviceInterfacePrefix).append(type.interface)));
        }
    }
}

} // namespace

Observation observe(const board::Board& board) {
    const Platform platform(board);
    Observation observation;
    for (std::uint8_t id = 1; id <= board::slotCount; ++id) {
        readSlot(platform, id, observation);
    }
    readControls(platform, observation);
    readRiserMap(platform, observation);
    if (!observation.payloads.empty() && observation.payloads[0].foundObject) {
        const board::HalObject& object = platform.object();
        observation.payloadBlock = {.interruptCallback = object.interruptCallback};
        if (object.interruptCallback) { // the status shows when the callback is removed
            observation.payloadBlock->unregisterStatus = object.unregisterStatus;
        }
    }
    readTopology(board, observation);
    readService(board, observation);
    return observation;
}

} // namespace capture::test
