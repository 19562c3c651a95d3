#include "standin/lib/call_end.h"

#include "standin/image/image.h"

#include <cerrno>
#include <ctime>
#include <unistd.h>

namespace standin {

namespace {

constexpr std::uint32_t millisecondsOfASecond = 1000;
constexpr long nanosecondsOfAMillisecond = 1'000'000;
constexpr long nanosecondsOfASecond = 1'000'000'000;

// A caught signal does not shorten the delay, because the end is a fixed time.
void sleepFor(std::uint32_t milliseconds) {
    timespec end{};
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += milliseconds / millisecondsOfASecond;
    end.tv_nsec += milliseconds % millisecondsOfASecond * nanosecondsOfAMillisecond;
    if (end.tv_nsec >= nanosecondsOfASecond) {
        end.tv_nsec -= nanosecondsOfASecond;
        ++end.tv_sec;
    }
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}

} // namespace

std::int32_t awaitEnd(const CallEnd& end) {
    while (end.delay == ImageFault::forever) {
        pause();
    }
    if (end.delay > 0) {
        sleepFor(end.delay);
    }
    return end.status;
}

} // namespace standin
