#include "console/standard_output.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace zolt {
namespace {

// Makes another descriptor the standard output until the object is destroyed.
class StandsIn {
public:
    explicit StandsIn(int descriptor) : saved_(dup(STDOUT_FILENO)) {
        dup2(descriptor, STDOUT_FILENO);
    }
    StandsIn(const StandsIn&) = delete;
    StandsIn& operator=(const StandsIn&) = delete;
    ~StandsIn() {
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
    }

private:
    int saved_;
};

struct Pipe {
    Pipe() { EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0); }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    void closeEnd(std::size_t end) {
        if (ends[end] >= 0) {
            close(ends[end]);
            ends[end] = -1;
        }
    }
    std::array<int, 2> ends{-1, -1};
};

// Returns the bytes that can be read without waiting.
std::string readNow(int descriptor) {
    fcntl(descriptor, F_SETFL, O_NONBLOCK);
    std::string all;
    std::array<char, 4096> piece;
    for (ssize_t got = 0; (got = read(descriptor, piece.data(), piece.size())) > 0;) {
        all.append(piece.data(), static_cast<std::size_t>(got));
    }
    return all;
}

std::string readToTheEnd(int descriptor) {
    std::string all;
    std::array<char, 4096> piece;
    for (ssize_t got = 0; (got = read(descriptor, piece.data(), piece.size())) > 0;) {
        all.append(piece.data(), static_cast<std::size_t>(got));
    }
    return all;
}

void compose(StandardOutput& output, std::string_view text) {
    char* const end = output.room(text.size());
    output.finish(std::copy(text.begin(), text.end(), end));
}

TEST(StandardOutput, keepsTextUntilItIsFlushed) {
    const Pipe pipe;
    const StandsIn standsIn(pipe.ends[1]);
    StandardOutput output;
    output.write("one line\n");
    compose(output, "and ");
    compose(output, "another\n");
    EXPECT_EQ(readNow(pipe.ends[0]), "");
    output.flush();
    EXPECT_EQ(readNow(pipe.ends[0]), "one line\nand another\n");
    output.flush();
    EXPECT_EQ(readNow(pipe.ends[0]), "");
}

TEST(StandardOutput, aLineFeedAloneIsHandedOut) {
    const Pipe pipe;
    const StandsIn standsIn(pipe.ends[1]);
    StandardOutput output;
    output.write("\n");
    EXPECT_EQ(readNow(pipe.ends[0]), "");
    output.flush();
    EXPECT_EQ(readNow(pipe.ends[0]), "\n");
}

// The socket keeps the writes apart.
TEST(StandardOutput, textUpToTheCapacityIsOneWrite) {
    Pipe sockets;
    sockets.closeEnd(0);
    sockets.closeEnd(1);
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.ends.data()), 0);
    const StandsIn standsIn(sockets.ends[1]);
    StandardOutput output;
    constexpr ssize_t whole = StandardOutput::capacity;
    const auto nextWrite = [&] {
        std::string text(2 * StandardOutput::capacity, 0);
        return recv(sockets.ends[0], text.data(), text.size(), MSG_DONTWAIT);
    };
    output.write(std::string(StandardOutput::capacity - 2, 'a'));
    output.write("b");
    compose(output, "c");
    EXPECT_EQ(nextWrite(), -1);
    output.flush();
    EXPECT_EQ(nextWrite(), whole);
    output.write(std::string(StandardOutput::capacity, 'a'));
    EXPECT_EQ(nextWrite(), -1);
    compose(output, "b");
    EXPECT_EQ(nextWrite(), whole);
    output.flush();
    EXPECT_EQ(nextWrite(), 1);
}

TEST(StandardOutput, flushesWhenItIsDestroyed) {
    const Pipe pipe;
    const StandsIn standsIn(pipe.ends[1]);
    {
        StandardOutput output;
        output.write("no end of line");
    }
    EXPECT_EQ(readNow(pipe.ends[0]), "no end of line");
}

TEST(StandardOutput, composedTextThatIsNotFinishedIsNotWritten) {
    const Pipe pipe;
    const StandsIn standsIn(pipe.ends[1]);
    StandardOutput output;
    *output.room(1) = 'x';
    output.flush();
    EXPECT_EQ(readNow(pipe.ends[0]), "");
}

TEST(StandardOutput, withoutTextAFlushIsNoWrite) {
    const Pipe pipe;
    const StandsIn standsIn(pipe.ends[0]); // the end for reading: it refuses every write
    StandardOutput output;
    errno = 0;
    output.flush();
    EXPECT_EQ(errno, 0);
    output.write("refused");
    output.flush();
    EXPECT_EQ(errno, EBADF);
    errno = 0;
    output.flush();
    EXPECT_EQ(errno, 0);
}

// Lengths around the buffer's capacity, and one that a pipe does not take at once.
TEST(StandardOutput, textsOfAnyLengthArriveWholeAndInOrder) {
    for (const std::size_t length : {StandardOutput::capacity - 1, StandardOutput::capacity,
                                     StandardOutput::capacity + 1, 10 * StandardOutput::capacity}) {
        Pipe pipe;
        std::string expected;
        std::string read;
        std::thread reader([&] { read = readToTheEnd(pipe.ends[0]); });
        {
            const StandsIn standsIn(pipe.ends[1]);
            StandardOutput output;
            for (const char letter : {'a', 'b', 'c'}) {
                const std::string text(length, letter);
                output.write("<");
                output.write(text);
                compose(output, ">");
                expected += "<" + text + ">";
            }
        }
        pipe.closeEnd(1);
        reader.join();
        EXPECT_TRUE(read == expected) << length;
    }
}

TEST(StandardOutput, nonBlockingPipeGetsEverything) {
    Pipe pipe;
    fcntl(pipe.ends[1], F_SETFL, O_NONBLOCK);
    const std::string text(1'000'000, 'x');
    std::string read;
    std::thread reader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        read = readToTheEnd(pipe.ends[0]);
    });
    {
        const StandsIn standsIn(pipe.ends[1]);
        StandardOutput output;
        output.write(text);
    }
    pipe.closeEnd(1);
    reader.join();
    EXPECT_TRUE(read == text);
}

TEST(StandardOutput, waitsForRoomInANonBlockingPipeWithoutTheProcessor) {
    Pipe pipe;
    fcntl(pipe.ends[1], F_SETFL, O_NONBLOCK);
    std::thread reader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
        (void)readToTheEnd(pipe.ends[0]);
    });
    const auto processorTime = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    const auto before = processorTime();
    {
        const StandsIn standsIn(pipe.ends[1]);
        StandardOutput output;
        output.write(std::string(200'000, 'x'));
    }
    EXPECT_LT(processorTime() - before, std::chrono::milliseconds(100));
    pipe.closeEnd(1);
    reader.join();
}

void ignoreSignal(int) {}

// The signal interrupts the write to a blocking pipe, and the wait for room in a non-blocking one.
TEST(StandardOutput, signalDuringAWriteLosesNothing) {
    struct sigaction action {};
    action.sa_handler = ignoreSignal; // without SA_RESTART the call fails with EINTR
    struct sigaction before {};
    sigaction(SIGUSR1, &action, &before);
    const std::string text(1'000'000, 'x');
    const pthread_t writer = pthread_self();
    for (const int mode : {0, O_NONBLOCK}) {
        Pipe pipe;
        fcntl(pipe.ends[1], F_SETFL, mode);
        std::string read;
        std::thread reader([&] {
            for (int i = 0; i < 20; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
                pthread_kill(writer, SIGUSR1);
            }
            read = readToTheEnd(pipe.ends[0]);
        });
        {
            const StandsIn standsIn(pipe.ends[1]);
            StandardOutput output;
            output.write(text);
        }
        pipe.closeEnd(1);
        reader.join();
        EXPECT_TRUE(read == text) << mode;
    }
    sigaction(SIGUSR1, &before, nullptr);
}

TEST(StandardOutput, textThatNobodyReadsIsDropped) {
    Pipe unread;
    unread.closeEnd(0);
    const Pipe next;
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    StandardOutput output;
    {
        const StandsIn standsIn(unread.ends[1]);
        output.write(std::string(StandardOutput::capacity + 1, 'x'));
        output.write("lost");
        output.flush();
    }
    const StandsIn standsIn(next.ends[1]);
    output.write("read");
    output.flush();
    (void)std::signal(SIGPIPE, before);
    EXPECT_EQ(readNow(next.ends[0]), "read");
}

} // namespace
} // namespace zolt
