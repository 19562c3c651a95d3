#include "zolt_board/ordered_work.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stop_token>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace zolt_board {

namespace {

// The results of a window of items. The window moves on with each result that is taken.
class Window {
public:
    Window(std::size_t items, std::size_t size) : items_(items), results_(size) {}

    // The next item to work on; none when all are given out or the work has ended.
    std::optional<std::size_t> next(const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        const bool isOpen = changed_.wait(
            lock, stop, [&] { return next_ == items_ || next_ < taken_ + results_.size(); });
        return isOpen && next_ < items_ ? std::optional(next_++) : std::nullopt;
    }

    void put(std::size_t item, WorkResult result) {
        {
            const std::lock_guard lock(mutex_);
            results_[item % results_.size()] = std::move(result);
        }
        changed_.notify_all();
    }

    // Waits for the result of the first item that is not taken yet.
    WorkResult take() {
        WorkResult result;
        {
            std::unique_lock lock(mutex_);
            std::optional<WorkResult>& place = results_[taken_ % results_.size()];
            changed_.wait(lock, [&] { return place.has_value(); });
            result = std::move(*place);
            place.reset();
            ++taken_;
        }
        changed_.notify_all();
        return result;
    }

private:
    std::mutex mutex_;
    std::condition_variable_any changed_;
    std::size_t items_;
    std::size_t next_ = 0;  ///< item that is given out next
    std::size_t taken_ = 0; ///< number of results that are taken
    std::vector<std::optional<WorkResult>> results_;
};

// Starts threads that work on the items. There may be fewer than wanted, but one.
std::vector<std::jthread> startThreads(std::size_t wanted, Window& window,
                                       const std::function<WorkResult(std::size_t)>& work) {
    std::vector<std::jthread> threads;
    threads.reserve(wanted);
    try {
        while (threads.size() < wanted) {
            threads.emplace_back([&window, &work](const std::stop_token& stop) {
                while (const auto item = window.next(stop)) {
                    window.put(*item, work(*item));
                }
            });
        }
    } catch (const std::system_error&) {
        // The machine has no thread left. Without any, the caller works alone.
    }
    return threads;
}

} // namespace

void workInOrder(std::size_t items, const std::function<WorkResult(std::size_t item)>& work,
                 const std::function<void(std::size_t item, const WorkResult& result)>& take) {
    const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t wanted = std::min(items, processors);
    Window window(items, std::max<std::size_t>(1, wanted * waitingPerThread));
    const std::vector<std::jthread> threads =
        wanted > 1 ? startThreads(wanted, window, work) : std::vector<std::jthread>();
    for (std::size_t item = 0; item < items; ++item) {
        take(item, threads.empty() ? work(item) : window.take());
    }
}

} // namespace zolt_board
