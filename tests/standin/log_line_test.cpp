#include "standin/log/log_line.h"
#include "standin/log/quoted.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace standin {
namespace {

class LogLine : public testing::Test {
public:
    LogLine() { EXPECT_EQ(pipe2(pipe_.data(), O_CLOEXEC), 0); }
    ~LogLine() override {
        close(pipe_[0]);
        close(pipe_[1]);
    }
    LogLine(const LogLine&) = delete;
    LogLine& operator=(const LogLine&) = delete;

protected:
    [[nodiscard]] std::string received() const {
        std::array<char, 100> text{};
        const ssize_t count = read(pipe_[0], text.data(), text.size());
        return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }

    std::array<int, 2> pipe_{};
};

TEST_F(LogLine, endsWithALineEnd) {
    EXPECT_EQ(writeLine(pipe_[1], "one line"), 0);
    EXPECT_EQ(received(), "one line\n");
    EXPECT_EQ(writeLine(pipe_[1], ""), 0);
    EXPECT_EQ(received(), "\n");
}

TEST_F(LogLine, reportsTheReasonOfALoss) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(writeLine(full, "lost"), ENOSPC);
    close(full);
    EXPECT_EQ(writeLine(-1, "lost"), EBADF);
}

TEST_F(LogLine, aPipeWithoutAReaderEndsNoProcess) {
    close(pipe_[0]);
    EXPECT_EQ(writeLine(pipe_[1], "lost"), EPIPE);
    sigset_t waiting;
    sigpending(&waiting);
    EXPECT_EQ(sigismember(&waiting, SIGPIPE), 0);
    pipe_[0] = -1;
}

TEST_F(LogLine, keepsASignalThatWaitedBefore) {
    sigset_t pipe;
    sigset_t before;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &before);
    (void)raise(SIGPIPE);
    EXPECT_EQ(writeLine(pipe_[1], "x"), 0);
    constexpr timespec noWait{};
    EXPECT_EQ(sigtimedwait(&pipe, nullptr, &noWait), SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(LogLine, aFileOfTheLongestSizeEndsNoProcess) {
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const int file = open(testing::TempDir().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    ASSERT_GE(file, 0);
    const rlimit four{.rlim_cur = 4, .rlim_max = before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &four);
    const int result = writeLine(file, "123456");
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(result, EFBIG);
    EXPECT_EQ(lseek(file, 0, SEEK_END), 4);
    close(file);
}

TEST(LogTime, hasSecondsAndMicroseconds) {
    const std::pair<std::int64_t, const char*> cases[] = {
        {0, "000000.000000"},
        {1, "000000.000001"},
        {999'999, "000000.999999"},
        {1'000'000, "000001.000000"},
        {3'600'000'020, "003600.000020"},
        {999'999'999'999, "999999.999999"},
        {1'000'000'000'000, "1000000.000000"},
    };
    for (const auto& [passed, text] : cases) {
        EXPECT_EQ(timeText(500, 500 + passed), text);
    }
}

TEST(LogTime, doesNotRunBackwards) {
    const std::int64_t before = monotonicTime();
    usleep(1000);
    EXPECT_GE(monotonicTime(), before + 1000);
}

TEST(Quoted, isPrintableText) {
    const auto quotedText = [](std::string_view text) {
        return quoted({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    };
    EXPECT_EQ(quotedText(""), "\"\"");
    EXPECT_EQ(quotedText("a b~"), "\"a b~\"");
    EXPECT_EQ(quotedText("\"\\\n\x7F\xC3\xA4"), "\"\\x22\\x5C\\x0A\\x7F\\xC3\\xA4\"");
}

} // namespace
} // namespace standin
