#include "standin/service/service.h"

#include "standin/service/call_text.h"
#include "standin/service/reply_contents.h"
#include "standin/service/value_message.h"

#include <algorithm>
#include <array>
#include <pwd.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <systemd/sd-id128.h>
#include <unistd.h>
#include <utility>

namespace standin {

namespace {

constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* objectManagerInterface = "org.freedesktop.DBus.ObjectManager";
constexpr const char* peerInterface = "org.freedesktop.DBus.Peer";

constexpr const char* interfaceAndProperty[] = {"interface", "property"};
constexpr std::span<const char* const> bothNames(interfaceAndProperty);
constexpr std::span<const char* const> interfaceName = bothNames.first(1);
constexpr std::span<const char* const> noNames{};

constexpr const char* noAnswer = "no answer";

void require(int result, const char* call) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(),
                                std::string("cannot put the service on the bus: ") + call);
    }
}

void requestName(sd_bus* bus, const char* name) {
    const int result = sd_bus_request_name(bus, name, 0);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the result counts only as null or not.
    if (result < 0 && getpwuid(geteuid()) == nullptr) { // so the daemon closed the connection
        throw std::runtime_error(
            "the bus daemon serves only users of the user database, and user " +
            std::to_string(geteuid()) + " is not in it");
    }
    require(result, "sd_bus_request_name");
}

// The first argument of a call if it is a text. The read position stays at the start.
std::string_view firstText(sd_bus_message* call) {
    const char* text = "";
    (void)sd_bus_message_read_basic(call, 's', static_cast<void*>(&text));
    (void)sd_bus_message_rewind(call, 1);
    return text;
}

} // namespace

const Service::Method Service::methods[] = {
    {propertiesInterface, "GetAll", interfaceName, &Service::getAll},
    {propertiesInterface, "Get", bothNames, &Service::get},
    {objectManagerInterface, "GetManagedObjects", noNames, &Service::getManagedObjects},
    {"org.freedesktop.DBus.Introspectable", "Introspect", noNames, &Service::introspect},
};

// The same answers as sd-bus would give. The orders of a description do not apply to these calls.
const Service::Method Service::otherMethods[] = {
    {propertiesInterface, "Set", bothNames, &Service::set},
    {peerInterface, "Ping", noNames, &Service::ping},
    {peerInterface, "GetMachineId", noNames, &Service::getMachineId},
};

Service::Service(sd_event* loop, const std::string& address, board::ServiceModel model, LineLog log)
    : model_(std::move(model)), tree_(model_), log_(std::move(log)) {
    sd_bus* raw = nullptr;
    require(sd_bus_new(&raw), "sd_bus_new");
    bus_.reset(raw);
    require(sd_bus_set_address(raw, address.c_str()), "sd_bus_set_address");
    require(sd_bus_set_bus_client(raw, 1), "sd_bus_set_bus_client");
    require(sd_bus_start(raw), "sd_bus_start");
    // A filter gets every message before sd-bus answers the calls of Peer.
    require(sd_bus_add_filter(raw, nullptr, onPeerCall, this), "sd_bus_add_filter");
    // A fallback gets every call before sd-bus's own handlers of objects and properties.
    require(sd_bus_add_fallback(raw, nullptr, "/", onCall, this), "sd_bus_add_fallback");
    requestName(raw, model_.name.c_str());
    require(sd_bus_attach_event(raw, loop, SD_EVENT_PRIORITY_NORMAL), "sd_bus_attach_event");
}

Service::~Service() {
    dropDelayed();
}

const Service::Method* Service::find(std::span<const Method> among, sd_bus_message* call) {
    const auto found = std::ranges::find_if(among, [call](const Method& method) {
        return sd_bus_message_is_method_call(call, method.interface, method.member) > 0;
    });
    return found == among.end() ? nullptr : &*found;
}

int Service::onPeerCall(sd_bus_message* call, void* service, sd_bus_error*) {
    return sd_bus_message_is_method_call(call, peerInterface, nullptr) > 0
               ? static_cast<Service*>(service)->answerOther(call)
               : 0;
}

int Service::onCall(sd_bus_message* call, void* service, sd_bus_error*) {
    auto& self = *static_cast<Service*>(service);
    if (find(methods, call) == nullptr) {
        return self.answerOther(call);
    }
    const board::ServiceOrder* order = self.orderFor(call);
    if (order == nullptr) {
        return self.answer(call);
    }
    return order->delay.count() > 0 ? self.delay(call, *order) : self.obey(call, *order);
}

const board::ServiceOrder* Service::orderFor(sd_bus_message* call) {
    const std::string_view path = sd_bus_message_get_path(call);
    const bool ofManager = sd_bus_message_is_method_call(call, objectManagerInterface, nullptr) > 0;
    const std::string_view interface = ofManager ? objectManagerInterface : firstText(call);
    for (const board::ServiceOrder& order : model_.orders) {
        if ((order.path.empty() || order.path == path) &&
            (order.interface.empty() || order.interface == interface) && isDue(order)) {
            return &order;
        }
    }
    return nullptr;
}

// Counts a call. Returns whether the order applies to the call.
bool Service::isDue(const board::ServiceOrder& order) {
    Count& count = counts_[&order];
    if (count.passed < order.after) {
        ++count.passed;
        return false;
    }
    if (order.times == 0) {
        return true;
    }
    if (count.applied == order.times) {
        return false;
    }
    ++count.applied;
    return true;
}

int Service::delay(sd_bus_message* call, const board::ServiceOrder& order) {
    if (order.delay == board::ServiceOrder::forever) {
        return 1; // no answer; the client waits as long as it likes
    }
    delayed_.push_front({.service = this,
                         .call = Message(sd_bus_message_ref(call)),
                         .order = &order,
                         .timer = nullptr,
                         .self = {}});
    Delayed& delayed = delayed_.front();
    delayed.self = delayed_.begin();
    sd_event_source* timer = nullptr;
    const auto wait = std::chrono::microseconds(order.delay).count();
    const int result =
        sd_event_add_time_relative(sd_bus_get_event(bus_.get()), &timer, CLOCK_MONOTONIC,
                                   static_cast<std::uint64_t>(wait), 1, onDelayOver, &delayed);
    delayed.timer.reset(timer);
    return result < 0 ? result : 1;
}

int Service::onDelayOver(sd_event_source*, std::uint64_t, void* delayed) {
    Service& service = *static_cast<Delayed*>(delayed)->service;
    std::list<Delayed> over;
    over.splice(over.begin(), service.delayed_, static_cast<Delayed*>(delayed)->self);
    // The client may be gone by now: a failed answer is no failure of the timer.
    (void)service.obey(over.front().call.get(), *over.front().order);
    return 0;
}

int Service::obey(sd_bus_message* call, const board::ServiceOrder& order) {
    switch (order.action) {
    case board::ServiceOrder::Action::error:
        return conclude(call, refuse(call, order.name.c_str(), order.text));
    case board::ServiceOrder::Action::reply:
        return conclude(call, replyWith(call, order));
    case board::ServiceOrder::Action::leave:
        return leave(call);
    case board::ServiceOrder::Action::answer:
        break;
    }
    return answer(call);
}

int Service::leave(sd_bus_message* call) {
    logCall(call, noAnswer);
    dropDelayed();
    sd_bus_close(bus_.get());
    return 1;
}

void Service::dropDelayed() {
    for (const Delayed& delayed : delayed_) {
        logCall(delayed.call.get(), noAnswer);
    }
    delayed_.clear();
}

int Service::replyWith(sd_bus_message* call, const board::ServiceOrder& order) {
    return reply(call, [&](sd_bus_message* message) {
        return order.signature.empty() ? 0 : appendValue(message, order.signature, order.value);
    });
}

int Service::answer(sd_bus_message* call) {
    return conclude(call, (this->*find(methods, call)->answer)(call));
}

int Service::answerOther(sd_bus_message* call) {
    const Method* const method = find(otherMethods, call);
    return conclude(call, method == nullptr ? unknownMethod(call) : (this->*method->answer)(call));
}

template <typename AddContents>
int Service::reply(sd_bus_message* call, AddContents addContents) {
    sd_bus_message* raw = nullptr;
    int result = sd_bus_message_new_method_return(call, &raw);
    const Message owned(raw);
    if (result >= 0) {
        result = addContents(raw);
    }
    return result < 0 ? result : send(call, raw);
}

int Service::refuse(sd_bus_message* call, const char* error, const std::string& text) {
    const sd_bus_error contents{error, text.c_str(), 0};
    sd_bus_message* raw = nullptr;
    const int result = sd_bus_message_new_method_error(call, &raw, &contents);
    const Message owned(raw);
    return result < 0 ? result : send(call, raw);
}

int Service::unknownObject(sd_bus_message* call) {
    return refuse(call, SD_BUS_ERROR_UNKNOWN_OBJECT,
                  std::string("Unknown object '").append(sd_bus_message_get_path(call)) + "'.");
}

int Service::unknownInterface(sd_bus_message* call, const char* interface) {
    return refuse(call, SD_BUS_ERROR_UNKNOWN_INTERFACE,
                  std::string("Unknown interface '").append(interface) + "'.");
}

int Service::unknownMethod(sd_bus_message* call) {
    const char* const interface = sd_bus_message_get_interface(call);
    return refuse(call, SD_BUS_ERROR_UNKNOWN_METHOD,
                  std::string("Unknown method ")
                      .append(sd_bus_message_get_member(call))
                      .append(" or interface ")
                      .append(interface == nullptr ? "(null)" : interface)
                      .append("."));
}

int Service::send(sd_bus_message* call, sd_bus_message* answer) {
    const int result = sd_bus_send(nullptr, answer, nullptr);
    if (result >= 0) {
        logCall(call, answerText(answer));
    }
    return result;
}

int Service::conclude(sd_bus_message* call, int result) {
    if (result >= 0) {
        return 1;
    }
    sd_bus_message* raw = nullptr;
    const int made = sd_bus_message_new_method_errno(call, &raw, result, nullptr);
    const Message owned(raw);
    if (made < 0 || send(call, raw) < 0) {
        logCall(call, noAnswer);
    }
    return 1;
}

void Service::logCall(sd_bus_message* call, const std::string& result) {
    if (!log_) {
        return;
    }
    const Method* method = find(methods, call);
    if (method == nullptr) {
        method = find(otherMethods, call);
    }
    log_(callText(call, method == nullptr ? noNames : method->arguments) + " -> " + result);
}

int Service::ping(sd_bus_message* call) {
    return reply(call, [](sd_bus_message*) { return 0; });
}

int Service::getMachineId(sd_bus_message* call) {
    sd_id128_t machine;
    const int result = sd_id128_get_machine(&machine);
    std::array<char, SD_ID128_STRING_MAX> text{};
    return result < 0 ? result : reply(call, [&](sd_bus_message* message) {
        return sd_bus_message_append(message, "s", sd_id128_to_string(machine, text.data()));
    });
}

int Service::set(sd_bus_message* call) {
    const char* interface = nullptr;
    const char* name = nullptr;
    const int result = sd_bus_message_read(call, "ss", &interface, &name);
    return result < 0 ? result
                      : refuse(call, SD_BUS_ERROR_UNKNOWN_PROPERTY,
                               std::string("Unknown interface ")
                                   .append(interface)
                                   .append(" or property ")
                                   .append(name)
                                   .append("."));
}

int Service::get(sd_bus_message* call) {
    const char* interface = nullptr;
    const char* name = nullptr;
    if (const int result = sd_bus_message_read(call, "ss", &interface, &name); result < 0) {
        return result;
    }
    const ObjectNode* node = tree_.find(sd_bus_message_get_path(call));
    if (node == nullptr) {
        return unknownObject(call);
    }
    const board::PublishedInterface* published = node->find(interface);
    if (published == nullptr) {
        return unknownInterface(call, interface);
    }
    for (const board::Property& property : published->properties) {
        if (property.name == name) {
            return reply(call,
                         [&](sd_bus_message* message) { return appendVariant(message, property); });
        }
    }
    return refuse(call, SD_BUS_ERROR_UNKNOWN_PROPERTY,
                  std::string("Unknown property '").append(name) + "'.");
}

// An empty interface name asks for the properties of all interfaces.
int Service::getAll(sd_bus_message* call) {
    const char* interface = nullptr;
    if (const int result = sd_bus_message_read(call, "s", &interface); result < 0) {
        return result;
    }
    const ObjectNode* node = tree_.find(sd_bus_message_get_path(call));
    if (node == nullptr) {
        return unknownObject(call);
    }
    const std::string_view wanted(interface);
    if (!wanted.empty() && node->find(wanted) == nullptr) {
        return unknownInterface(call, interface);
    }
    return reply(call, [&](sd_bus_message* message) {
        return appendContainer(message, 'a', "{sv}", [&] {
            int result = 0;
            for (const board::PublishedInterface* published : node->interfaces) {
                if (result >= 0 && (wanted.empty() || published->interface == wanted)) {
                    result = appendEntries(message, *published);
                }
            }
            return result;
        });
    });
}

int Service::getManagedObjects(sd_bus_message* call) {
    const std::string_view path = sd_bus_message_get_path(call);
    const ObjectNode* manager = tree_.find(path);
    if (manager == nullptr) {
        return unknownObject(call);
    }
    if (!manager->manager) {
        return unknownInterface(call, objectManagerInterface);
    }
    return reply(call, [&](sd_bus_message* message) {
        return appendContainer(message, 'a', "{oa{sa{sv}}}", [&] {
            int result = 0;
            for (const ObjectNode& node : tree_.nodes()) {
                if (result >= 0 && isBelow(node.path, path)) {
                    result = appendObject(message, node);
                }
            }
            return result;
        });
    });
}

int Service::introspect(sd_bus_message* call) {
    const std::string xml = tree_.introspection(sd_bus_message_get_path(call));
    return xml.empty() ? unknownObject(call) : reply(call, [&](sd_bus_message* message) {
        return sd_bus_message_append(message, "s", xml.c_str());
    });
}

} // namespace standin
