#include "capture/service.h"

#include "bus/service_names.h"
#include "capture/bus_message.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace capture {

namespace {

struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
struct FreeMessage {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Connection = std::unique_ptr<sd_bus, CloseBus>;
using Message = std::unique_ptr<sd_bus_message, FreeMessage>;

class Error {
public:
    Error() = default;
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;
    ~Error() { sd_bus_error_free(&error_); }

    [[nodiscard]] sd_bus_error* get() { return &error_; }

    // A call may fail before there is an error to fill.
    [[nodiscard]] BusError of(int result) {
        if (sd_bus_error_is_set(&error_) == 0) {
            sd_bus_error_set_errno(&error_, std::abs(result));
        }
        return {.name = error_.name != nullptr ? error_.name : "",
                .text = error_.message != nullptr ? error_.message : ""};
    }

private:
    sd_bus_error error_{};
};

BusError errorOf(int result) {
    Error error;
    return error.of(result);
}

struct Call {
    const char* service;
    const char* path;
    const char* interface;
    const char* method;
    const char* argument = nullptr; ///< a text, if the method has one
};

// Sends a call and waits for the reply. Returns null after an error.
Message reply(sd_bus* bus, const Call& call, std::optional<BusError>& error) {
    sd_bus_message* raw = nullptr;
    int result = sd_bus_message_new_method_call(bus, &raw, call.service, call.path, call.interface,
                                                call.method);
    const Message request(raw);
    if (result >= 0 && call.argument != nullptr) {
        result = sd_bus_message_append_basic(request.get(), 's', call.argument);
    }
    if (result < 0) {
        error = errorOf(result);
        return nullptr;
    }
    Error failure;
    sd_bus_message* answer = nullptr;
    result = sd_bus_call(bus, request.get(), 0, failure.get(), &answer);
    if (result < 0) {
        error = failure.of(result);
        return nullptr;
    }
    return Message(answer);
}

bool beginsWith(sd_bus_message* message, std::string_view type) {
    return std::string_view(sd_bus_message_get_signature(message, 1)).starts_with(type);
}

class ServiceReader {
public:
    ServiceReader(sd_bus* bus, ServiceReading& reading, const Progress& progress)
        : bus_(bus), reading_(&reading), progress_(&progress) {}

    void read() {
        PropertiesReading info = properties(zolt::infoPath, zolt::infoInterface);
        reading_->reach = reachAfter(info.error);
        if (reading_->reach != ServiceReading::Reach::service) {
            return;
        }
        reading_->info = std::move(info);
        constexpr unsigned types = std::size(zolt::moduleTypeSuffixes);
        for (unsigned type = 1; type <= types; ++type) {
            (*progress_)("service", type, types + 1);
            readType(static_cast<std::uint8_t>(type));
        }
    }

private:
    // Whether there is a bus, and the service on it, after the first call.
    [[nodiscard]] ServiceReading::Reach reachAfter(const std::optional<BusError>& error) const {
        using enum ServiceReading::Reach;
        if (sd_bus_is_ready(bus_) <= 0) {
            return error ? noBus : service;
        }
        if (!error || error->name != "org.freedesktop.DBus.Error.ServiceUnknown") {
            return service;
        }
        // The service itself may also answer so.
        std::optional<BusError> failure;
        const Message answer = reply(bus_,
                                     {"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                      "org.freedesktop.DBus", "NameHasOwner", zolt::zoltService},
                                     failure);
        int isOwned = 0;
        const bool isKnown =
            answer != nullptr && sd_bus_message_read_basic(answer.get(), 'b', &isOwned) > 0;
        return isKnown && isOwned == 0 ? noService : service;
    }

    PropertiesReading properties(const std::string& path, const char* interface) {
        PropertiesReading reading{.path = path, .interface = interface};
        const Message answer = reply(bus_,
                                     {zolt::zoltService, path.c_str(),
                                      "org.freedesktop.DBus.Properties", "GetAll", interface},
                                     reading.error);
        if (answer == nullptr) {
            return reading;
        }
        const int result = beginsWith(answer.get(), "a{sv}")
                               ? readPropertyMap(answer.get(), path, interface, room_,
                                                 reading.properties, reading.unkept)
                               : readContents(answer.get(), room_, reading.other.emplace());
        if (result < 0) {
            return {.path = path, .interface = interface, .error = errorOf(result)};
        }
        return reading;
    }

    void readType(std::uint8_t type) {
        ManagerReading manager{.path = zolt::managerPath(type)};
        const Message answer = reply(bus_,
                                     {zolt::zoltService, manager.path.c_str(),
                                      "org.freedesktop.DBus.ObjectManager", "GetManagedObjects"},
                                     manager.error);
        if (answer != nullptr) {
            const int result = beginsWith(answer.get(), "a{oa{sa{sv}}}")
                                   ? readObjects(answer.get(), room_, manager)
                                   : readContents(answer.get(), room_, manager.other.emplace());
            if (result < 0) {
                manager = {.path = std::move(manager.path), .error = errorOf(result)};
            }
        }
        const auto moduleClass = static_cast<std::uint8_t>(type - 1);
        readObjectsOf(manager, zolt::cirInterface(moduleClass));
        reading_->managers.push_back(std::move(manager));
    }

    // Asks for the properties of each object, sorted by path as the view does.
    void readObjectsOf(const ManagerReading& manager, const char* interface) {
        std::set<std::string_view> paths;
        for (const auto& published : manager.interfaces) {
            paths.insert(published.path);
        }
        for (const std::string_view path : paths) {
            if (asked_.emplace(path, interface).second) {
                reading_->objects.push_back(properties(std::string(path), interface));
            }
        }
    }

    sd_bus* bus_;
    ServiceReading* reading_;
    const Progress* progress_;
    BusRoom room_;
    std::set<std::pair<std::string, std::string>> asked_; // paths and interfaces
};

} // namespace

void readService(Observation& observation, const Progress& progress) {
    progress("service", 0, std::size(zolt::moduleTypeSuffixes) + 1);
    sd_bus* raw = nullptr;
    const int result = sd_bus_open_system(&raw);
    const Connection bus(raw);
    observation.service.reach = ServiceReading::Reach::noBus;
    if (result >= 0) {
        ServiceReader(bus.get(), observation.service, progress).read();
    }
}

} // namespace capture
