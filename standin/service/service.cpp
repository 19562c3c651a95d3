#include "standin/service/service.h"

#include "standin/service/reply_contents.h"
#include "standin/service/value_message.h"

#include <cerrno>
#include <pwd.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace standin {

namespace {

constexpr const char* objectManager = "org.freedesktop.DBus.ObjectManager";

void require(int result, const char* call) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(),
                                std::string("cannot put the service on the bus: ") + call);
    }
}

void requestName(sd_bus* bus, const char* name) {
    const int result = sd_bus_request_name(bus, name, 0);
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

// Sends a reply with the contents that @p addContents appends.
template <typename AddContents>
int reply(sd_bus_message* call, AddContents addContents) {
    sd_bus_message* raw = nullptr;
    int result = sd_bus_message_new_method_return(call, &raw);
    const std::unique_ptr<sd_bus_message, UnrefMessage> owned(raw);
    if (result >= 0) {
        result = addContents(raw);
    }
    return result < 0 ? result : sd_bus_send(nullptr, raw, nullptr);
}

int unknownObject(sd_bus_message* call) {
    return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "Unknown object '%s'.",
                                      sd_bus_message_get_path(call));
}

int unknownInterface(sd_bus_message* call, const char* interface) {
    return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_INTERFACE,
                                      "Unknown interface '%s'.", interface);
}

} // namespace

const Service::Method Service::methods[] = {
    {"org.freedesktop.DBus.Properties", "GetAll", &Service::getAll},
    {"org.freedesktop.DBus.Properties", "Get", &Service::get},
    {objectManager, "GetManagedObjects", &Service::getManagedObjects},
    {"org.freedesktop.DBus.Introspectable", "Introspect", &Service::introspect},
};

Service::Service(sd_event* loop, const std::string& address, board::ServiceModel model)
    : model_(std::move(model)), tree_(model_) {
    sd_bus* raw = nullptr;
    require(sd_bus_new(&raw), "sd_bus_new");
    bus_.reset(raw);
    require(sd_bus_set_address(raw, address.c_str()), "sd_bus_set_address");
    require(sd_bus_set_bus_client(raw, 1), "sd_bus_set_bus_client");
    require(sd_bus_start(raw), "sd_bus_start");
    // A fallback gets every call before sd-bus's own handlers of objects and properties.
    require(sd_bus_add_fallback(raw, nullptr, "/", onCall, this), "sd_bus_add_fallback");
    requestName(raw, model_.name.c_str());
    require(sd_bus_attach_event(raw, loop, SD_EVENT_PRIORITY_NORMAL), "sd_bus_attach_event");
}

const Service::Method* Service::methodOf(sd_bus_message* call) {
    for (const Method& method : methods) {
        if (sd_bus_message_is_method_call(call, method.interface, method.member) > 0) {
            return &method;
        }
    }
    return nullptr;
}

int Service::onCall(sd_bus_message* call, void* service, sd_bus_error*) {
    auto& self = *static_cast<Service*>(service);
    if (methodOf(call) == nullptr) {
        return 0; // sd-bus answers it
    }
    const board::ServiceOrder* order = self.orderFor(call);
    if (order == nullptr) {
        return self.answer(call);
    }
    return order->delay.count() > 0 ? self.delay(call, *order) : self.obey(call, *order);
}

const board::ServiceOrder* Service::orderFor(sd_bus_message* call) {
    const std::string_view path = sd_bus_message_get_path(call);
    const bool ofManager = sd_bus_message_is_method_call(call, objectManager, nullptr) > 0;
    const std::string_view interface = ofManager ? objectManager : firstText(call);
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
    auto& over = *static_cast<Delayed*>(delayed);
    Service& service = *over.service;
    const int result = service.obey(over.call.get(), *over.order);
    service.delayed_.erase(over.self);
    // The client may be gone by now: a failed answer is no failure of the timer.
    return result < 0 ? 0 : result;
}

int Service::obey(sd_bus_message* call, const board::ServiceOrder& order) {
    switch (order.action) {
    case board::ServiceOrder::Action::error: {
        const sd_bus_error error{order.name.c_str(), order.text.c_str(), 0};
        return sd_bus_reply_method_error(call, &error);
    }
    case board::ServiceOrder::Action::reply:
        return replyWith(call, order);
    case board::ServiceOrder::Action::leave:
        return leave();
    case board::ServiceOrder::Action::answer:
        break;
    }
    return answer(call);
}

int Service::leave() {
    sd_bus_close(bus_.get());
    return 1;
}

int Service::replyWith(sd_bus_message* call, const board::ServiceOrder& order) {
    return reply(call, [&](sd_bus_message* message) {
        return order.signature.empty() ? 0 : appendValue(message, order.signature, order.value);
    });
}

int Service::answer(sd_bus_message* call) {
    return (this->*methodOf(call)->answer)(call);
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
    return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_PROPERTY, "Unknown property '%s'.",
                                      name);
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
        return unknownInterface(call, objectManager);
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
    return xml.empty() ? unknownObject(call) : sd_bus_reply_method_return(call, "s", xml.c_str());
}

} // namespace standin
