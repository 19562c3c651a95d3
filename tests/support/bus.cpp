#include "tests/support/bus.h"

#include "standin/service/service.h"

#include <cstdlib>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace zolt::test {

namespace {

void require(bool done) {
    if (!done) {
        std::abort();
    }
}

int onStop(sd_event_source* source, int, std::uint32_t, void*) {
    return sd_event_exit(sd_event_source_get_event(source), 0);
}

void serve(const std::string& address, board::ServiceModel model, int stop,
           std::promise<void>& ready) {
    sd_event* loop = nullptr;
    require(sd_event_new(&loop) >= 0);
    require(sd_event_add_io(loop, nullptr, stop, EPOLLIN, onStop, nullptr) >= 0);
    try {
        standin::Service service(loop, address, std::move(model));
        ready.set_value();
        require(sd_event_loop(loop) >= 0);
    } catch (...) {
        ready.set_exception(std::current_exception());
    }
    sd_event_unref(loop);
}

} // namespace

RunningService::RunningService(const std::string& address, board::ServiceModel model)
    : stop_(eventfd(0, EFD_CLOEXEC)), thread_([this, address, model = std::move(model)]() mutable {
          serve(address, std::move(model), stop_, ready_);
      }) {
    ready_.get_future().get();
}

RunningService::~RunningService() {
    require(eventfd_write(stop_, 1) == 0);
    thread_.join();
    close(stop_);
}

SystemBus::SystemBus(std::string_view policy)
    : daemon_(std::make_unique<standin::BusDaemon>(directory_.path(), policy)) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", daemon_->address().c_str(), 1);
}

SystemBus::~SystemBus() {
    service_.reset();
    daemon_.reset();
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

void SystemBus::publish(board::ServiceModel model) {
    service_.reset();
    service_ = std::make_unique<RunningService>(daemon_->address(), std::move(model));
}

void SystemBus::breakDown() {
    daemon_->stop();
}

void SystemBus::comeBack() {
    service_.reset();
    daemon_ = std::make_unique<standin::BusDaemon>(directory_.path());
}

} // namespace zolt::test
