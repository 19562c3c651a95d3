#include "standin/log/log_line.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace standin {

namespace {

constexpr std::int64_t microsecondsOfSecond = 1'000'000;

// Holds back the signals that the kernel sends to a thread whose write fails. Drops those that have
// come meanwhile, and keeps a signal that was waiting before.
class HeldSignals {
public:
    HeldSignals() {
        sigset_t waiting;
        sigpending(&waiting);
        sigemptyset(&ours_);
        for (const int signal : {SIGPIPE, SIGXFSZ}) {
            if (sigismember(&waiting, signal) == 0) {
                sigaddset(&ours_, signal);
            }
        }
        pthread_sigmask(SIG_BLOCK, &ours_, &before_);
    }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    ~HeldSignals() {
        constexpr timespec noWait{};
        while (sigtimedwait(&ours_, nullptr, &noWait) > 0) {
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }

private:
    sigset_t ours_;
    sigset_t before_;
};

} // namespace

std::int64_t monotonicTime() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * microsecondsOfSecond + now.tv_nsec / 1000;
}

std::string timeText(std::int64_t start, std::int64_t now) {
    const std::int64_t passed = now - start;
    std::array<char, 48> text;
    (void)std::snprintf(text.data(), text.size(), "%06lld.%06lld",
                        static_cast<long long>(passed / microsecondsOfSecond),
                        static_cast<long long>(passed % microsecondsOfSecond));
    return text.data();
}

int writeLine(int file, std::string_view line) {
    const HeldSignals held;
    const std::string whole = std::string(line).append("\n");
    for (std::string_view rest = whole; !rest.empty();) {
        const ssize_t written = write(file, rest.data(), rest.size());
        if (written > 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return written == 0 ? EIO : errno;
        }
    }
    return 0;
}

} // namespace standin
