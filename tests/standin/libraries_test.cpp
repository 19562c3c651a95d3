// Tests the stand-in's libraries through the platform's contracts, on a board of its own.
#include "platform/cpld_driver.h"
#include "platform/debug_log.h"
#include "platform/hal.h"
#include "platform/sysinfo.h"

#include "board/board_loader.h"
#include "standin/image/image.h"
#include "standin/image/image_writer.h"
#include "standin/lib/log_file.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace standin {
namespace {

constexpr const char* payloads = "PICPWR_PAYLOADS";

std::string directory;

// Writes the board before any test runs: the libraries look for a board only at their first call.
class Libraries : public testing::Environment {
public:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "/boardXXXXXX";
        directory = mkdtemp(pattern.data());
        writeImage(board::parseBoard(R"(
faults = [
    "named-read PICPWR_2_DSTAT status 7",
    "raw-read 0x1010-0x1011 status 8",
    "hal-object PICPWR_PAYLOADS once",
    "named-read PICPWR_3_DSTAT delay 60ms once",
    "named-read PICPWR_3_DBYP delay 60ms status 5",
    "raw-read 0x1030 delay 60ms once",
    "named-read PICPWR_4_DSTAT delay forever",
    "raw-read 0x1040 delay forever",
    "hal-read PICPWR_PAYLOADS delay 60ms once",
    "sysinfo 150 status 9 2 times",
    "sysinfo 151 delay 60ms",
    "sysinfo 152 delay forever",
]
[[slot]]
id = 1
dstat = 3
module_class = 0x2A
payload_offset = 0x10
payload = [1, 2, 3, 4]
[hal.PICPWR_PAYLOADS]
interrupt_callback = true
unregister_status = -4
most_bytes = 3
[override.named]
BLOB = [9, 8, 7]
[override.raw]
0xFFFF = 0x55
)",
                                     "b"),
                   directory + "/" + imageFileName);
        for (const char* const log : {"calls", "debug"}) {
            std::ofstream(directory + "/" + log);
        }
        setenv(boardDirectoryVariable, directory.c_str(), 1);
        setenv(debugLogVariable, (directory + "/debug").c_str(), 1);
        setenv(callLogVariable, (directory + "/calls").c_str(), 1);
        // Each library looks for the board once. Other tests of this program change the variable.
        SysInfoTree* root = nullptr;
        i2c_parse_sysinfo(0, &root);
    }
    void TearDown() override { std::filesystem::remove_all(directory); }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new Libraries);

// Returns the text that a log has received since the last call, and empties the log.
std::string received(const std::string& log) {
    const std::string path = directory + "/" + log;
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    std::filesystem::resize_file(path, 0);
    return content.str();
}

// The milliseconds that a call takes.
template <typename Call>
long long durationOf(Call call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    const auto duration = std::chrono::steady_clock::now() - start;
    return std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
}

class StandinLibrary : public testing::Test {
protected:
    StandinLibrary() {
        received("calls");
        received("debug");
    }
    board::Bytes bytes_;
    std::uint32_t size_ = 0;
};

TEST_F(StandinLibrary, namedReadAppendsAndTellsTheSize) {
    bytes_ = {1};
    EXPECT_EQ(ReadIO_Str("BLOB", bytes_, &size_), 0);
    EXPECT_EQ(bytes_, (board::Bytes{1, 9, 8, 7}));
    EXPECT_EQ(size_, 3U);
    EXPECT_EQ(received("calls"), "ReadIO_Str BLOB = 0\n");
}

TEST_F(StandinLibrary, unknownOrFaultyNameFails) {
    EXPECT_EQ(ReadIO_Str("UNKNOWN", bytes_, &size_), -1);
    EXPECT_EQ(ReadIO_Str("PICPWR_2_DSTAT", bytes_, &size_), 7);
    EXPECT_TRUE(bytes_.empty());
    EXPECT_EQ(size_, 0U);
    EXPECT_EQ(received("calls"), "ReadIO_Str UNKNOWN = -1\nReadIO_Str PICPWR_2_DSTAT = 7\n");
}

TEST_F(StandinLibrary, rawReadTakesSixteenBitsOrTheirSignExtension) {
    std::uint8_t byte = 0;
    EXPECT_EQ(cpld_read_device(&byte, 0x1000, 1), 0);
    EXPECT_EQ(byte, 0xC0);
    EXPECT_EQ(cpld_read_device(&byte, 0xFFFF, 1), 0);
    EXPECT_EQ(byte, 0x55);
    byte = 0;
    EXPECT_EQ(cpld_read_device(&byte, 0xFFFFFFFF, 1), 0);
    EXPECT_EQ(byte, 0x55);
    for (const std::uint32_t address : {0x10000U, 0x12A00U, 0xFFFF1000U, 0x80001000U}) {
        EXPECT_EQ(cpld_read_device(&byte, address, 1), -22) << address;
    }
    EXPECT_EQ(cpld_read_device(&byte, 0x1000, 2), -22);
    EXPECT_EQ(cpld_read_device(&byte, 0x1000, 0), -22);
    EXPECT_EQ(byte, 0x55); // refused reads leave the buffer alone
}

TEST_F(StandinLibrary, blockReadIsWholeOrNothing) {
    std::array<std::uint8_t, 4> block{};
    EXPECT_EQ(cpld_read_block_device(block.data(), 0x2A11, 4, 1), 0);
    EXPECT_EQ(block, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
    block = {};
    EXPECT_EQ(cpld_read_block_device(block.data(), 0x100E, 4, 1), 8); // 0x1010 fails
    EXPECT_EQ(cpld_read_block_device(block.data(), 0xFFFE, 4, 1), -22);
    EXPECT_EQ(cpld_read_block_device(block.data(), 0x2A11, 4, 2), -22);
    EXPECT_EQ(cpld_read_block_device(block.data(), 0x2A11, 0, 1), -22);
    EXPECT_EQ(cpld_read_block_device(block.data(), 0x2A11, 0xFFFFFFFF, 1), -22);
    EXPECT_EQ(block, (std::array<std::uint8_t, 4>{}));
    EXPECT_EQ(cpld_read_block_device(block.data(), 0x1012, 2, 1), 0);
    EXPECT_EQ(received("calls"), "cpld_read_block_device 0x2A11 4 1 = 0\n"
                                 "cpld_read_block_device 0x100E 4 1 = 8\n"
                                 "cpld_read_block_device 0xFFFE 4 1 = -22\n"
                                 "cpld_read_block_device 0x2A11 4 2 = -22\n"
                                 "cpld_read_block_device 0x2A11 0 1 = -22\n"
                                 "cpld_read_block_device 0x2A11 4294967295 1 = -22\n"
                                 "cpld_read_block_device 0x1012 2 1 = 0\n");
}

TEST_F(StandinLibrary, objectMissingOnceIsFoundAtTheSecondRequest) {
    EXPECT_EQ(HAL_cfgdata::ReadHALConfig("OTHER"), nullptr);
    EXPECT_EQ(HAL_cfgdata::ReadHALConfig(payloads), nullptr);
    const std::unique_ptr<HAL_cfgbase> object(HAL_cfgdata::ReadHALConfig(payloads));
    ASSERT_NE(object, nullptr);
    EXPECT_NE(dynamic_cast<HAL_i2c*>(object.get()), nullptr);
    EXPECT_EQ(object->Name(), payloads);
    EXPECT_GE(durationOf([&] { EXPECT_EQ(object->ReadIO(bytes_, 1, 0), 0); }), 60);
    bytes_ = {99, 99, 99};
    EXPECT_EQ(object->ReadIO(bytes_, 2, 0x12), 0); // index 0x12 is payload offset 0x11
    EXPECT_EQ(bytes_, (board::Bytes{2, 3}));
    EXPECT_EQ(object->ReadIO(bytes_, 4, 0x11), 0); // more than most_bytes
    EXPECT_EQ(bytes_, (board::Bytes{1, 2, 3}));
    EXPECT_EQ(object->ReadIO(bytes_, 1, 0x5FFF), 0);
    EXPECT_EQ(object->ReadIO(bytes_, 2, 0x5FFF), -1);
    EXPECT_EQ(object->ReadIO(bytes_, 1, 0x6001), -1);
    EXPECT_EQ(object->ReadIO(bytes_, 0xFFFFFFFF, 2), -1);
    EXPECT_TRUE(object->IsInterruptCallbackRegistered());
    EXPECT_EQ(object->UnregisterInterruptCallback(), -4);
    EXPECT_FALSE(object->IsInterruptCallbackRegistered());
}

TEST_F(StandinLibrary, delayedCallsSucceedOrFailWhenTheDelayIsOver) {
    std::uint8_t byte = 0;
    EXPECT_GE(durationOf([&] { EXPECT_EQ(ReadIO_Str("PICPWR_3_DSTAT", bytes_, &size_), 0); }), 60);
    EXPECT_EQ(bytes_, board::Bytes{0});
    EXPECT_GE(durationOf([&] { EXPECT_EQ(ReadIO_Str("PICPWR_3_DBYP", bytes_, &size_), 5); }), 60);
    EXPECT_GE(durationOf([&] { EXPECT_EQ(cpld_read_device(&byte, 0x1030, 1), 0); }), 60);
    SysInfoTree* root = nullptr;
    EXPECT_GE(durationOf([&] { EXPECT_EQ(i2c_parse_sysinfo(151, &root), -19); }), 60);
    EXPECT_EQ(received("calls"), "ReadIO_Str PICPWR_3_DSTAT = 0\n"
                                 "ReadIO_Str PICPWR_3_DBYP = 5\n"
                                 "cpld_read_device 0x1030 1 = 0\n"
                                 "i2c_parse_sysinfo 151 = -19 none\n");
}

// A caught signal must not shorten the delay.
TEST_F(StandinLibrary, delayOutlastsCaughtSignals) {
    struct sigaction caught {};
    caught.sa_handler = [](int) {};
    struct sigaction before {};
    sigaction(SIGALRM, &caught, &before);
    const itimerval soon{.it_interval = {.tv_sec = 0, .tv_usec = 5000},
                         .it_value = {.tv_sec = 0, .tv_usec = 5000}};
    setitimer(ITIMER_REAL, &soon, nullptr);
    EXPECT_GE(durationOf([&] { EXPECT_EQ(ReadIO_Str("PICPWR_3_DBYP", bytes_, &size_), 5); }), 60);
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &before, nullptr);
}

TEST_F(StandinLibrary, sysinfoFaultsCountTheirCalls) {
    SysInfoTree* root = nullptr;
    EXPECT_EQ(i2c_parse_sysinfo(150, &root), 9);
    EXPECT_EQ(root, nullptr);
    EXPECT_EQ(i2c_parse_sysinfo(150, &root), 9);
    EXPECT_EQ(i2c_parse_sysinfo(150, &root), -19); // this board has no topology
    EXPECT_EQ(i2c_parse_sysinfo(-1, &root), -22);
    EXPECT_EQ(i2c_parse_sysinfo(165, &root), -22);
}

// Makes a call in a process of its own, and ends the process by a signal. Returns the signal, or 0
// for a call that came back.
template <typename Call>
int signalThatEnds(int signal, Call call) {
    const pid_t child = fork();
    if (child == 0) {
        call();
        _exit(0);
    }
    usleep(50000);
    kill(child, signal);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST_F(StandinLibrary, callsThatNeverComeBackEndBySignals) {
    for (const int signal : {SIGINT, SIGTERM, SIGKILL}) {
        EXPECT_EQ(signalThatEnds(signal, [&] { ReadIO_Str("PICPWR_4_DSTAT", bytes_, &size_); }),
                  signal);
        EXPECT_EQ(signalThatEnds(signal,
                                 [] {
                                     std::uint8_t byte = 0;
                                     cpld_read_device(&byte, 0x1040, 1);
                                 }),
                  signal);
        EXPECT_EQ(signalThatEnds(signal,
                                 [] {
                                     SysInfoTree* root = nullptr;
                                     i2c_parse_sysinfo(152, &root);
                                 }),
                  signal);
    }
    EXPECT_EQ(received("calls"), "");
}

TEST_F(StandinLibrary, debugLogWritesALine) {
    EXPECT_EQ(dlog_printf(5, 273, "[%s]: ret= %d", "X", -3), 0);
    const std::string text(5000, 'x');
    EXPECT_EQ(dlog_printf(2, 273, "%s", text.c_str()), 0); // cut, not overrun
    EXPECT_EQ(received("debug"), "5 273 [X]: ret= -3\n2 273 " + text.substr(0, 1023 - 6) + "\n");
}

TEST_F(StandinLibrary, missingLogFailsOnlyItsOwnCall) {
    setenv(debugLogVariable, (directory + "/gone").c_str(), 1);
    EXPECT_EQ(dlog_printf(5, 273, "lost"), -1);
    unsetenv(debugLogVariable);
    EXPECT_EQ(dlog_printf(5, 273, "lost"), -1);
    setenv(debugLogVariable, (directory + "/debug").c_str(), 1);
    EXPECT_EQ(received("debug"), "");
}

} // namespace
} // namespace standin
