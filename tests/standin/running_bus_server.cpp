#include "tests/standin/running_bus_server.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <utility>

namespace standin {

namespace {

int endLoop(sd_event_source* source, int /*descriptor*/, std::uint32_t /*events*/,
            void* /*unused*/) {
    return sd_event_exit(sd_event_source_get_event(source), 0);
}

void run(BusState state, const std::string& socket, const std::string& log, int stopping,
         std::promise<void> started) {
    sd_event* loop = nullptr;
    ASSERT_GE(sd_event_new(&loop), 0);
    ASSERT_GE(sd_event_add_io(loop, nullptr, stopping, EPOLLIN, endLoop, nullptr), 0);
    {
        std::ofstream file(log);
        const BusServer server(loop, socket, std::move(state), [&file](const std::string& line) {
            file << line << std::endl; // a client finds the line of its transaction
        });
        started.set_value();
        EXPECT_GE(sd_event_loop(loop), 0);
    }
    sd_event_unref(loop);
}

} // namespace

RunningBusServer::RunningBusServer(BusState state)
    : directory_(testing::TempDir() + "/busXXXXXX"), stopping_(eventfd(0, EFD_CLOEXEC)) {
    if (mkdtemp(directory_.data()) == nullptr) {
        std::abort();
    }
    std::promise<void> started;
    auto isStarted = started.get_future();
    thread_ = std::thread(run, std::move(state), socket(), log(), stopping_, std::move(started));
    isStarted.wait();
}

void RunningBusServer::stop() {
    if (thread_.joinable()) {
        eventfd_write(stopping_, 1);
        thread_.join();
    }
}

RunningBusServer::~RunningBusServer() {
    stop();
    close(stopping_);
    std::filesystem::remove_all(directory_);
}

} // namespace standin
