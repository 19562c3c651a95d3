#include "capture/describe.h"

#include "capture/describe_registers.h"
#include "capture/describe_service.h"
#include "capture/describe_topology.h"
#include "capture/differences.h"
#include "capture/register_model.h"

#include "board/document.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

namespace capture {

namespace {

using Reach = ServiceReading::Reach;

void writeHead(const Head& head, board::DocumentTable& root) {
    root.comment(std::string("Captured ")
                     .append(head.date)
                     .append(" by zolt_capture ")
                     .append(head.version)
                     .append("."));
    root.comment("");
    root.comment(
        "PICPWR and control registers, payloads and OEM areas, the riser slot mapping, the I2C");
    root.comment(
        "topology, and what the service publishes. A capture does not hold the memories of I2C");
    root.comment("devices, and holds only the node properties that were asked for.");
    if (head.masked) {
        root.comment("");
        root.comment("Texts and part numbers are masked.");
    }
}

std::vector<std::string> faultsIn(const Observation& observation) {
    std::vector<std::string> rules = registerFaults(observation);
    std::ranges::move(propertyFaults(observation), std::back_inserter(rules));
    switch (observation.service.reach) {
    case Reach::noBus:
        rules.emplace_back("bus absent");
        break;
    case Reach::noService:
        rules.emplace_back("service absent");
        break;
    case Reach::service:
        break;
    }
    return rules;
}

void writeFaults(const Observation& observation, board::DocumentTable& root) {
    board::WrittenList faults;
    for (std::string& rule : faultsIn(observation)) {
        faults.emplace_back(std::move(rule));
    }
    if (!faults.empty()) {
        root.set("faults", std::move(faults));
    }
}

class Failures {
public:
    explicit Failures(std::vector<std::string> lines) : lines_(std::move(lines)) {}

    void add(const std::string& thing, std::string_view reason) {
        lines_.push_back(std::string(thing).append(": ").append(reason));
    }

    void add(std::vector<std::string> lines) {
        std::ranges::move(lines, std::back_inserter(lines_));
    }

    // Adds why a reply of the service is not kept as it was.
    template <typename Reply>
    void addReply(const Reply& reply) {
        if (reply.error) {
            add(reply.path, std::string(reply.error->name).append(": ").append(reply.error->text));
        } else if (reply.other) {
            add(reply.path,
                std::string("the reply has the type '").append(reply.other->signature).append("'"));
        }
        for (const UnkeptProperty& property : reply.unkept) {
            add(property.path, std::string(property.interface)
                                   .append(".")
                                   .append(property.name)
                                   .append(" cannot be kept: its type is '")
                                   .append(property.signature)
                                   .append("'"));
        }
    }

    [[nodiscard]] std::vector<std::string> take() { return std::move(lines_); }

private:
    std::vector<std::string> lines_;
};

void addService(const ServiceReading& service, Failures& failures) {
    if (service.reach == Reach::noBus) {
        failures.add("the system bus", "cannot be reached");
    } else if (service.reach == Reach::noService) {
        failures.add("the service", "is not on the system bus");
    }
    if (service.info) {
        failures.addReply(*service.info);
    }
    for (const ManagerReading& manager : service.managers) {
        failures.addReply(manager);
        if (manager.isCut) {
            failures.add(manager.path, "has more objects than a capture keeps");
        }
    }
    for (const PropertiesReading& object : service.objects) {
        failures.addReply(object);
    }
}

} // namespace

std::string describe(const Observation& observation, const Head& head) {
    const RawBytes known = knownRegisters(observation);
    board::Board board;
    modelRegisters(observation, known, board);
    matchObjects(observation.service, board);
    addOverrides(observation, known, board);

    board::DocumentTable root;
    writeHead(head, root);
    writeFaults(observation, root);
    writeControls(board, root);
    writeSlots(board, root);
    writeRiserMap(board, root);
    writeOverrides(board, root);
    writeService(observation.service, board, root);
    writeI2c(observation, root);
    return root.toml();
}

std::vector<std::string> failuresIn(const Observation& observation) {
    Failures failures(registerFaults(observation));
    for (std::size_t type = 0; type < observation.topology.size(); ++type) {
        if (observation.topology[type].isCut) {
            failures.add(std::string("device type ").append(std::to_string(type)),
                         "has more nodes than a capture keeps");
        }
    }
    failures.add(propertyFailures(observation));
    addService(observation.service, failures);
    return failures.take();
}

} // namespace capture
