// The `zolt` service: publishes a model on a bus.
//
// A board description may give any property any type, even a wrong one. The service therefore
// answers the calls of the standard interfaces itself.
#pragma once

#include "board/service_model.h"
#include "standin/log/log_line.h"
#include "standin/service/object_tree.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <list>
#include <map>
#include <memory>
#include <span>
#include <string>

namespace standin {

struct UnrefMessage {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};

class Service {
public:
    /// Connects to the bus and takes the model's name. From then on the loop answers calls.
    /// @param address of the bus, as in DBUS_SYSTEM_BUS_ADDRESS
    /// @param log     gets a line for each call, with its answer, once the call is answered
    /// @throws std::system_error when the bus cannot be reached or refuses the name
    /// @throws std::runtime_error when the user is not in the user database
    Service(sd_event* loop, const std::string& address, board::ServiceModel model,
            LineLog log = {});
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    /// Leaves the bus. The bus sends an error to each client that still waits for an answer.
    ~Service();

private:
    struct Close {
        void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
    };
    struct UnrefTimer {
        void operator()(sd_event_source* timer) const { sd_event_source_disable_unref(timer); }
    };

    using Message = std::unique_ptr<sd_bus_message, UnrefMessage>;

    // A call whose answer an order delays.
    struct Delayed {
        Service* service;
        Message call;
        const board::ServiceOrder* order;
        std::unique_ptr<sd_event_source, UnrefTimer> timer;
        std::list<Delayed>::iterator self;
    };

    // The calls for which an order has been asked.
    struct Count {
        int passed = 0;  // of the first `after` calls
        int applied = 0; // counted only if `times` limits them
    };

    struct Method {
        const char* interface;
        const char* member;
        std::span<const char* const> arguments; // labels of the texts that the log shows
        int (Service::*answer)(sd_bus_message* call);
    };

    static const Method methods[];
    static const Method otherMethods[];
    static const Method* find(std::span<const Method> among, sd_bus_message* call);
    static int onPeerCall(sd_bus_message* call, void* service, sd_bus_error* error);
    static int onCall(sd_bus_message* call, void* service, sd_bus_error* error);
    static int onDelayOver(sd_event_source* timer, std::uint64_t now, void* delayed);

    const board::ServiceOrder* orderFor(sd_bus_message* call);
    bool isDue(const board::ServiceOrder& order);
    int delay(sd_bus_message* call, const board::ServiceOrder& order);
    int obey(sd_bus_message* call, const board::ServiceOrder& order);
    int leave(sd_bus_message* call);
    int replyWith(sd_bus_message* call, const board::ServiceOrder& order);
    int answer(sd_bus_message* call);
    int answerOther(sd_bus_message* call);

    // Sends an answer with the contents that addContents() appends.
    template <typename AddContents>
    int reply(sd_bus_message* call, AddContents addContents);
    int refuse(sd_bus_message* call, const char* error, const std::string& text);
    int unknownObject(sd_bus_message* call);
    int unknownInterface(sd_bus_message* call, const char* interface);
    int unknownMethod(sd_bus_message* call);
    int send(sd_bus_message* call, sd_bus_message* answer);
    // Answers a call with an error if its method failed.
    int conclude(sd_bus_message* call, int result);
    void logCall(sd_bus_message* call, const std::string& result);
    void dropDelayed();

    int ping(sd_bus_message* call);
    int getMachineId(sd_bus_message* call);
    int set(sd_bus_message* call);
    int get(sd_bus_message* call);
    int getAll(sd_bus_message* call);
    int getManagedObjects(sd_bus_message* call);
    int introspect(sd_bus_message* call);

    const board::ServiceModel model_;
    const ObjectTree tree_;
    const LineLog log_;
    std::map<const board::ServiceOrder*, Count> counts_;
    std::unique_ptr<sd_bus, Close> bus_;
    std::list<Delayed> delayed_;
};

} // namespace standin
