#include "standin/launcher/i2c_side.h"

#include "standin/launcher/loader_path.h"
#include "standin/launcher/places.h"
#include "standin/launcher/topology_file.h"

#include "i2c/device_types.h"
#include "standin/image/topology.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace standin {

namespace {

// -EEXIST is fine: a description may list the bus of an index node as a bus, too.
void add(int result, const char* what) {
    if (result != 0 && result != -EEXIST) {
        throw std::runtime_error(std::string("the board has more ") + what +
                                 " than the bus driver holds");
    }
}

void addBuses(BusCore& core, const board::I2cDescription& i2c) {
    // The bus of an index node with a parent must be added as an index node, not as a plain bus.
    for (const board::I2cBus& bus : i2c.buses) {
        const bool isNode = std::ranges::any_of(i2c.indexNodes, [&](const board::IndexNode& node) {
            return node.parent && node.physicalBus == std::int64_t{bus.number};
        });
        if (!isNode) {
            add(busCoreAddBus(&core, bus.number), "buses");
        }
    }
    for (const board::IndexNode& node : i2c.indexNodes) {
        if (node.parent) {
            add(busCoreAddIndexNode(&core, static_cast<std::uint32_t>(node.physicalBus),
                                    *node.parent, static_cast<std::uint32_t>(node.index),
                                    zolt::deviceTypeName(node.deviceType).c_str()),
                "buses");
        } else if (node.hasBus()) {
            add(busCoreAddBus(&core, static_cast<std::uint32_t>(node.physicalBus)), "buses");
        }
    }
}

void addProperties(BusCore& core, std::uint32_t bus, std::uint32_t target,
                   const board::I2cProperties& properties) {
    for (const auto& [id, value] : properties) {
        add(busCoreSetProperty(&core, bus, target, id, value), "properties");
    }
}

void addDevice(BusState& state, std::uint32_t bus, const board::I2cDevice& device) {
    if (!device.memory.empty()) {
        add(state.addMemory(bus, device.address, device.memory, device.pointerWidth,
                            device.readOnly),
            "devices");
    }
    if (device.node) {
        add(busCoreAddDeviceNode(&state.core(), bus, device.address, device.node->index,
                                 zolt::deviceTypeName(device.node->deviceType).c_str()),
            "devices");
    }
    addProperties(state.core(), bus, device.address, device.properties);
}

static_assert(board::delayForever == BUS_CORE_FOREVER);

void addFaults(BusCore& core, const board::Board& board) {
    for (const board::FaultRule& rule : board.faults) {
        if (rule.kind == board::FaultKind::i2cOpen || rule.kind == board::FaultKind::i2cIoctl) {
            const BusCoreFault fault{.bus = rule.bus,
                                     .operation = rule.operation,
                                     .anySelector = !rule.selector,
                                     .selector = rule.selector.value_or(0),
                                     .error = rule.status,
                                     .delay = rule.delay,
                                     .after = rule.after,
                                     .times = rule.times,
                                     .untilRecovery = rule.untilRecovery,
                                     .isOver = false};
            add(busCoreAddFault(&core, &fault), "faults");
        }
    }
}

// A request creates or removes at most one node, so every change shows in the count.
std::uint64_t nodeCount(const BusCore& core) {
    const auto devices = std::span(core.devices, core.deviceCount);
    const auto nodes =
        std::ranges::count_if(devices, [](const BusCoreDevice& device) { return device.hasNode; });
    return core.busCount + static_cast<std::uint64_t>(nodes);
}

// The caller's value of an environment variable; empty when it is not set.
std::string inherited(const char* variable) {
    const char* const value = std::getenv(variable);
    return value == nullptr || *value == '\0' ? std::string() : std::string(value);
}

} // namespace

BusState busStateOf(const board::Board& board) {
    BusState state;
    addBuses(state.core(), board.i2c);
    for (const board::I2cBus& bus : board.i2c.buses) {
        addProperties(state.core(), bus.number, BUS_CORE_BUS_NODE, bus.properties);
        for (const board::I2cDevice& device : bus.devices) {
            addDevice(state, bus.number, device);
        }
    }
    addFaults(state.core(), board);
    return state;
}

I2cSide::I2cSide(sd_event* loop, const std::string& directory, const board::Board& board,
                 LineLog log, bool inKernel)
    : board_(&board), topology_(directory + "/" + topologyFileName) {
    if (inKernel) {
        kernel_.emplace(loop, busStateOf(board), std::move(log));
        kernel_->afterEachTransaction([this] { publishChanges(); });
        core_ = &kernel_->core();
    } else {
        socket_ = directory + "/i2c";
        preload_ = loaderPath(preloadLibrary(), directory, "libzolt_sim_i2c.so");
        server_.emplace(loop, socket_, busStateOf(board), std::move(log));
        server_->afterEachRequest([this] { publishChanges(); });
        core_ = &server_->state().core();
    }
    publishChanges();
}

// Runs before each reply, so that a client with a reply finds its new node in the topology.
void I2cSide::publishChanges() {
    const std::uint64_t nodes = nodeCount(*core_) + 1; // 0 means: not published yet
    if (nodes != published_) {
        replaceFile(topology_, topologyOf(*board_, *core_));
        published_ = nodes;
    }
}

Environment I2cSide::environment() const {
    if (kernel_) {
        return {};
    }
    Environment environment{{WIRE_ENVIRONMENT, socket_}};
    const std::string libraries = inherited("LD_PRELOAD");
    environment.emplace_back("LD_PRELOAD", preload_ + (libraries.empty() ? "" : ":" + libraries));
    // AddressSanitizer's shared runtime otherwise demands to be the first library.
    const std::string options = inherited("ASAN_OPTIONS");
    environment.emplace_back("ASAN_OPTIONS",
                             (options.empty() ? "" : options + ":") + "verify_asan_link_order=0");
    return environment;
}

std::set<std::uint32_t> I2cSide::busesInKernel() const {
    std::set<std::uint32_t> numbers;
    if (kernel_) {
        for (const BusCoreBus& bus : std::span(core_->buses, core_->busCount)) {
            numbers.insert(bus.number);
        }
    }
    return numbers;
}

} // namespace standin
