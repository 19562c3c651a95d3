// A board's I2C buses in the kernel, by the kernel module zolt_bus.
#pragma once

#include "standin/i2c_bus/server/bus_state.h"
#include "standin/i2c_bus/server/descriptor.h"
#include "standin/log/log_line.h"

#include <functional>
#include <memory>
#include <systemd/sd-event.h>
#include <utility>
#include <vector>

namespace standin {

/// The buses exist as long as this object.
class KernelBuses {
public:
    /// @param loop   must outlive this object.
    /// @param state  the buses as they are at the start.
    /// @param log    gets a line for each transaction, before its caller goes on. A delayed
    ///               transaction is logged when it ends; without an end it is not logged.
    /// @throw std::runtime_error when the module is missing, busy or refuses the buses, or when a
    ///        fault delays the opening of a bus
    KernelBuses(sd_event* loop, BusState state, LineLog log);
    KernelBuses(const KernelBuses&) = delete;
    KernelBuses& operator=(const KernelBuses&) = delete;
    ~KernelBuses();

    /// Sets a function that this object calls after each transaction, before its caller goes on.
    void afterEachTransaction(std::function<void()> look) { look_ = std::move(look); }

    /// The buses as of the last transaction, for use in the event loop's thread only. Devices have
    /// no memory here: it is in the kernel.
    [[nodiscard]] const BusCore& core() { return state_.core(); }

private:
    static int onTransaction(sd_event_source* source, int descriptor, std::uint32_t events,
                             void* buses);
    void show();

    struct DisableSource {
        void operator()(sd_event_source* source) const { sd_event_source_disable_unref(source); }
    };

    BusState state_;
    LineLog log_;
    std::function<void()> look_;
    Descriptor module_;
    std::unique_ptr<sd_event_source, DisableSource> source_; // must end before module_ closes
    std::vector<std::uint8_t> bytes_;
};

} // namespace standin
