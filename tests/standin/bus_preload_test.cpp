// Runs whole programs on the stand-in's buses, through the preload library.
#include "standin/i2c_bus/wire.h"
#include "tests/standin/bus_fault.h"
#include "tests/standin/running_bus_server.h"
#include "tests/support/emulation.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace standin {
namespace {

// Returns the path of a file that the build names in the environment. Without these files no test
// may run: the redirections of a shell without the preload library would create files in /dev.
std::string fromEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    if (value == nullptr || access(value, R_OK) != 0) {
        (void)std::fprintf(stderr, "%s names no file: run this through the build\n", name);
        std::exit(EXIT_FAILURE);
    }
    return value;
}

BusState boardWithEeprom() {
    BusState state;
    BusCore& core = state.core();
    EXPECT_EQ(busCoreAddBus(&core, 5), 0);
    EXPECT_EQ(busCoreAddBus(&core, 6), 0);
    EXPECT_EQ(busCoreSetProperty(&core, 5, 0, 8, 17), 0);
    EXPECT_EQ(busCoreSetProperty(&core, 5, 0, 10, 0x22), 0);
    std::vector<std::uint8_t> content(256, 0xFF);
    std::ranges::copy(std::string_view("ZOLT EEPROM\x01\x02\x03\x7F."), content.begin());
    EXPECT_EQ(state.addMemory(5, 0x50, content, 1, false), 0);
    EXPECT_EQ(state.addMemory(5, 0x57, {0xAB}, 2, true), 0);
    const BusCoreFault fault = busFault(6, BUS_CORE_OPEN, EACCES);
    EXPECT_EQ(busCoreAddFault(&core, &fault), 0);
    return state;
}

// Removes the lines in which this machine's loader says that the preload library belongs to another
// architecture. The loader says so for each program of this machine.
std::string withoutLoader(const std::string& output) {
    std::istringstream lines(output);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("ERROR: ld.so: object '" + fromEnvironment("I2C_PRELOAD"))) {
            kept.append(line).append(lines.eof() ? "" : "\n");
        }
    }
    return kept;
}

class Preload : public testing::Test {
protected:
    // Runs a shell command. Returns the text of both its outputs, followed by its exit status.
    [[nodiscard]] std::string run(const std::string& command) const {
        return shell(WIRE_ENVIRONMENT "=" + server_.socket(), command);
    }
    // The shell itself runs on the buses, too.
    [[nodiscard]] static std::string shell(const std::string& variable,
                                           const std::string& command) {
        // AddressSanitizer demands to come before any preload library, unless told otherwise.
        setenv("ON_THE_BUSES", ("exec 2>&1; " + command).c_str(), 1);
        FILE* const pipe =
            popen(("exec env ASAN_OPTIONS=verify_asan_link_order=0 LD_PRELOAD=" +
                   fromEnvironment("I2C_PRELOAD") + " " + variable + " sh -c \"$ON_THE_BUSES\"")
                      .c_str(),
                  "r");
        std::string output;
        std::array<char, 4096> piece;
        for (std::size_t length = 0;
             (length = std::fread(piece.data(), 1, piece.size(), pipe)) > 0;) {
            output.append(piece.data(), length);
        }
        if (zolt::test::isEmulated()) {
            output = withoutLoader(output);
        }
        const int status = pclose(pipe);
        return output + "[" + std::to_string(WEXITSTATUS(status)) + "]";
    }
    [[nodiscard]] std::string log() const {
        std::ostringstream content;
        content << std::ifstream(server_.log()).rdbuf();
        return content.str();
    }
    static std::string probe() { return fromEnvironment("OPEN_PROBE"); }
    static std::string tool() { return fromEnvironment("ZOLT_TEST"); }

    RunningBusServer server_{boardWithEeprom()};
};

// The shell and other programs of this machine, on the buses.
class OtherPrograms : public Preload {
protected:
    void SetUp() override {
        if (zolt::test::isEmulated()) {
            GTEST_SKIP() << "emulated: a program of this machine cannot load the other "
                            "architecture's library";
        }
    }
};

// Returns the open probe's output if every function has this outcome. The functions that create
// files are left out unless @p creates is true.
std::string everyName(const std::string& outcome, bool creates = true) {
    std::string text;
    for (const char* const name : {"open", "open64", "__open", "__open64", "__open_2", "__open64_2",
                                   "openat", "__openat_2", "openat64", "__openat64_2", "creat",
                                   "creat64", "fopen", "fopen64", "freopen", "freopen64"}) {
        if (!creates && std::string_view(name).starts_with("creat")) {
            continue;
        }
        const std::string_view called = name;
        const bool closes = outcome.size() < 5 &&
                            (called == "open64" || called == "fopen64" || called == "freopen64");
        text.append(name).append(": ").append(outcome).append(closes ? ", closed on exec\n" : "\n");
    }
    return text + "[0]";
}

// Returns the status probe's output if every function has this outcome. The functions that check
// access are left out unless @p access is given.
std::string everyLook(const std::string& outcome, const char* access = nullptr) {
    std::string text;
    for (const char* const name : {"stat", "stat64", "lstat", "lstat64", "fstatat", "access",
                                   "eaccess", "euidaccess", "fstatat64", "statx", "faccessat"}) {
        if (std::string_view(name).find("access") == std::string_view::npos) {
            text.append(name).append(": ").append(outcome).append("\n");
        } else if (access != nullptr) {
            text.append(name).append(":").append(access).append("\n");
        }
    }
    return text + "[0]";
}

TEST_F(Preload, everyOpenFunctionOpensABus) {
    EXPECT_EQ(run(probe() + " /dev/i2c-5"), everyName("bus"));
}

TEST_F(Preload, everyOpenFunctionFailsWithTheServersError) {
    EXPECT_EQ(run(probe() + " /dev/i2c-6"), everyName("Permission denied"));
    EXPECT_EQ(run(probe() + " /dev/i2c-7"), everyName("No such file or directory"));
}

TEST_F(Preload, withoutAServerThereIsNoBus) {
    EXPECT_EQ(shell("", probe() + " /dev/i2c-5"), everyName("No such file or directory"));
}

TEST_F(Preload, otherPathsAreLeftAlone) {
    EXPECT_EQ(run(probe() + " /dev/null"), everyName("file"));
    for (const char* const path : {"/dev/i2c-", "/dev/i2c-05", "/dev/i2c-5x", "/dev/i2c--1",
                                   "/dev/i2c-99999999999", "/dev/i2c/5"}) {
        EXPECT_EQ(run(probe() + " " + path + " create-nothing"),
                  everyName("No such file or directory", false));
    }
}

struct Spelling {
    const char* directory; ///< the current directory
    std::string path;
};

// A command that runs a probe. With these paths the open probe must create nothing: if the library
// did not recognize a path, the probe would create a file in /dev.
std::string probing(const std::string& probe, const Spelling& spelling) {
    return std::string("cd ")
        .append(spelling.directory)
        .append(" && ")
        .append(probe)
        .append(" ")
        .append(spelling.path);
}

TEST_F(Preload, everySpellingOfABusesPathLeadsToTheBus) {
    const std::string longest = [] {
        std::string path = "/dev/";
        while (path.size() + sizeof "./i2c-5" < 4096) {
            path += "./";
        }
        return path + "i2c-5";
    }();
    const Spelling spellings[] = {
        {"/", "//dev/i2c-5"},
        {"/", "/dev///i2c-5"},
        {"/", "/dev/./i2c-5"},
        {"/", "/dev/../dev/i2c-5"},
        {"/", "/proc/self/root/dev/i2c-5"},
        {"/", longest},
        {"/", "dev/i2c-5"},
        {"/dev", "i2c-5"},
        {"/dev", "./i2c-5"},
        {"/dev", "../dev/i2c-5"},
        {"/tmp", "../dev/i2c-5"},
    };
    for (const Spelling& spelling : spellings) {
        EXPECT_EQ(run(probing(probe(), spelling).append(" create-nothing")),
                  everyName("bus", false))
            << spelling.directory << " " << spelling.path;
        EXPECT_EQ(run(probing(fromEnvironment("STATUS_PROBE"), spelling)),
                  everyLook("20660 89:5", " there usable"))
            << spelling.directory << " " << spelling.path;
    }
}

TEST_F(Preload, aPathThatOnlyLooksLikeABusesPathIsLeftAlone) {
    const Spelling spellings[] = {
        {"/", "i2c-5"},
        {"/", "/dev/fd/../i2c-5"}, // /dev/fd is a link to another directory
        {"/", "/dev/missing/../i2c-5"},
        {"/dev", "./i2c-05"},
        {"/dev", "../i2c-5"},
    };
    for (const Spelling& spelling : spellings) {
        EXPECT_EQ(run(probing(probe(), spelling).append(" create-nothing")),
                  everyName("No such file or directory", false))
            << spelling.directory << " " << spelling.path;
        EXPECT_EQ(run(probing(fromEnvironment("STATUS_PROBE"), spelling)),
                  everyLook("No such file or directory", ""))
            << spelling.directory << " " << spelling.path;
    }
    EXPECT_EQ(run("cd $(mktemp -d) && : > i2c-5 && " + probe() + " i2c-5 && " + probe() +
                  " $PWD/i2c-5 >/dev/null && rm i2c-5 && rmdir $PWD"),
              everyName("file"));
}

TEST_F(Preload, aLinkToTheDirectoryIsFollowedAndALinkToABusIsNot) {
    const std::string begin = "cd $(mktemp -d) && ln -s /dev devices && ln -s /dev/i2c-5 bus && ";
    const std::string end = "; rm devices bus && rmdir $PWD";
    EXPECT_EQ(run(begin + probe() + " devices/i2c-5 create-nothing" + end),
              everyName("bus", false));
    EXPECT_EQ(run(begin + probe() + " bus create-nothing" + end),
              everyName("No such file or directory", false));
}

TEST_F(OtherPrograms, aBusIsNeitherADirectoryNorNew) {
    const auto reading = [](int bus) {
        return "dd if=/dev/i2c-" + std::to_string(bus) + " iflag=directory count=0 status=none";
    };
    const auto creating = [](int bus) {
        return "dd of=/dev/i2c-" + std::to_string(bus) + " conv=excl count=0 status=none";
    };
    for (const int bus : {5, 6}) { // bus 5 opens, bus 6 does not
        const std::string failure = "dd: failed to open '/dev/i2c-" + std::to_string(bus) + "': ";
        EXPECT_EQ(run(reading(bus)), failure + "Not a directory\n[1]");
        EXPECT_EQ(run(creating(bus)), failure + "File exists\n[1]");
    }
    const std::string failure = "dd: failed to open '/dev/i2c-7': No such file or directory\n[1]";
    EXPECT_EQ(run(reading(7)), failure);
    EXPECT_EQ(run(creating(7)), failure);
}

TEST_F(Preload, aNewFileHasTheModeThatItIsCreatedWith) {
    EXPECT_EQ(run("cd $(mktemp -d) && umask 027 && : > new && stat -c %a new && rm new && "
                  "rmdir $PWD"),
              "640\n[0]");
}

TEST_F(OtherPrograms, anOpenBusIsInherited) {
    EXPECT_EQ(run("exec 3<>/dev/i2c-5; " + probe() + " <&3"), "inherited: bus\n[0]");
    EXPECT_EQ(run(probe() + " </dev/null"), "inherited: file\n[0]");
}

TEST_F(Preload, aBusOfTheMachineIsOutOfReach) {
    const std::string claim = "LD_PRELOAD=$LD_PRELOAD:" + fromEnvironment("REAL_BUS_CLAIM") + " ";
    EXPECT_EQ(run(probe() + " /dev/zero"), everyName("file"));
    EXPECT_EQ(run(claim + probe() + " /dev/zero"), everyName("No such file or directory"));
    EXPECT_EQ(run(claim + probe() + " </dev/zero"), "inherited: nothing\n[0]");
    EXPECT_EQ(run(claim + probe() + " </dev/null"), "inherited: file\n[0]");
    const std::string look = fromEnvironment("STATUS_PROBE") + " /dev/zero | grep -v access";
    EXPECT_EQ(run(look), everyLook("20666 1:5"));
    EXPECT_EQ(run(claim + look), everyLook("No such file or directory"));
}

TEST_F(Preload, aBusLooksLikeACharacterDevice) {
    const std::string look = fromEnvironment("STATUS_PROBE");
    EXPECT_EQ(run(look + " /dev/i2c-5"), everyLook("20660 89:5", " there usable"));
    EXPECT_EQ(run(look + " /dev/i2c-6"), everyLook("20660 89:6", " there usable"));
    EXPECT_EQ(run(look + " /dev/i2c-7"), everyLook("No such file or directory", ""));
    EXPECT_EQ(run(look + " /dev/null"), everyLook("20666 1:3", " there usable"));
    EXPECT_EQ(run(look + " </dev/null"), "fstat: 20666 1:3\nfstat64: 20666 1:3\n"
                                         "fstatat: 20666 1:3\nstatx: 20666 1:3\n[0]");
}

TEST_F(OtherPrograms, anOpenBusLooksLikeACharacterDevice) {
    const std::string look = fromEnvironment("STATUS_PROBE");
    EXPECT_EQ(run(look + " <>/dev/i2c-5"), "fstat: 20660 89:5\nfstat64: 20660 89:5\n"
                                           "fstatat: 20660 89:5\nstatx: 20660 89:5\n[0]");
    EXPECT_EQ(run("test -c /dev/i2c-5 && test -w /dev/i2c-5 && ls -l /dev/i2c-5 | cut -c1-10"),
              "crw-rw----\n[0]");
}

TEST_F(Preload, aFileOfABusReadsAndWritesADevice) {
    const std::string transfer = fromEnvironment("TRANSFER_PROBE") + " /dev/i2c-5 ";
    EXPECT_EQ(run(transfer + "0x50"),
              "write: 1 \nread: 6 EEPROM\nwrite: 6 \nwrite: 1 \n__read_chk: 5 OTHER\n[0]");
    const std::string failure = ": No such device or address\n";
    EXPECT_EQ(run(transfer + "0x51"), "write" + failure + "read" + failure + "write" + failure +
                                          "write" + failure + "__read_chk" + failure + "[0]");
}

TEST_F(OtherPrograms, noByteIsReadWithoutADevice) {
    EXPECT_EQ(run("cat /dev/i2c-5"), "cat: /dev/i2c-5: No such device or address\n[1]");
}

TEST_F(OtherPrograms, readingABusAsAStreamDoesNotBlock) {
    const std::string reason = "/dev/i2c-5: Resource temporarily unavailable\n";
    EXPECT_EQ(run("sort /dev/i2c-5"), "sort: read failed: " + reason + "[2]");
}

class I2cTools : public OtherPrograms {
protected:
    void SetUp() override {
        OtherPrograms::SetUp();
        if (!IsSkipped() &&
            run("PATH=$PATH:/usr/sbin:/sbin command -v i2ctransfer >/dev/null") != "[0]") {
            GTEST_SKIP() << "i2c-tools is not installed";
        }
    }
    [[nodiscard]] std::string tools(const std::string& command) const {
        return run("PATH=$PATH:/usr/sbin:/sbin; " + command);
    }
};

TEST_F(I2cTools, aTransferReadsTheEeprom) {
    EXPECT_EQ(tools("i2ctransfer -y 5 w1@0x50 0x05 r6"), "0x45 0x45 0x50 0x52 0x4f 0x4d\n[0]");
    EXPECT_EQ(tools("i2ctransfer -y 5 w2@0x57 0x00 0x00 r1"), "0xab\n[0]");
}

TEST_F(I2cTools, aTransferWritesTheEeprom) {
    EXPECT_EQ(tools("i2ctransfer -y 5 w3@0x50 0x10 0x61 0x62 && "
                    "i2ctransfer -y 5 w1@0x50 0x10 r3"),
              "0x61 0x62 0xff\n[0]");
}

TEST_F(I2cTools, aTransferWithoutADeviceOrBusFails) {
    EXPECT_EQ(tools("i2ctransfer -y 5 r1@0x51"),
              "Error: Sending messages failed: No such device or address\n[1]");
    EXPECT_EQ(tools("i2ctransfer -y 7 r1@0x50"),
              "Error: Could not open file `/dev/i2c-7' or `/dev/i2c/7': "
              "No such file or directory\n[1]");
    EXPECT_EQ(tools("i2ctransfer -y 6 r1@0x50"),
              "Error: Could not open file `/dev/i2c-6': Permission denied\nRun as root?\n[1]");
}

TEST_F(I2cTools, aDumpShowsTheEeprom) {
    const std::string expected =
        "     0  1  2  3  4  5  6  7  8  9  a  b  c  d  e  f    0123456789abcdef\n"
        "00: 5a 4f 4c 54 20 45 45 50 52 4f 4d 01 02 03 7f 2e    ZOLT EEPROM????.\n"
        "10: ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff    ................\n[0]";
    EXPECT_EQ(tools("i2cdump -y -r 0x00-0x1f 5 0x50 b"), expected);
    EXPECT_EQ(tools("i2cdump -y -r 0x00-0x1f 5 0x50 c"), expected);
    EXPECT_EQ(tools("i2cdump -y -r 0x00-0x1f 5 0x50 i"), expected);
}

TEST_F(I2cTools, aDumpOfWordsShowsTheEeprom) {
    const std::string start = "     0,8  1,9  2,a  3,b  4,c  5,d  6,e  7,f\n"
                              "00: 4f5a 4c4f 544c 2054 4520 4545 5045 5250 \n"
                              "08: 4f52 4d4f 014d 0201 0302 7f03 2e7f ff2e \n";
    EXPECT_EQ(tools("i2cdump -y 5 0x50 w").substr(0, start.size()), start);
}

TEST_F(I2cTools, aScanFindsTheDevices) {
    EXPECT_EQ(tools("i2cdetect -y 5 0x50 0x57"),
              "     0  1  2  3  4  5  6  7  8  9  a  b  c  d  e  f\n"
              "00:                                                 \n"
              "10:                                                 \n"
              "20:                                                 \n"
              "30:                                                 \n"
              "40:                                                 \n"
              "50: 50 -- -- -- -- -- -- 57                         \n"
              "60:                                                 \n"
              "70:                                                 \n[0]");
}

TEST_F(I2cTools, oneByteIsSetAndGot) {
    EXPECT_EQ(tools("i2cset -y 5 0x50 0x20 0x77 && i2cget -y 5 0x50 0x20"), "0x77\n[0]");
}

TEST_F(Preload, theToolCreatesNodesThatOutliveIt) {
    EXPECT_EQ(run(tool() + " -o 9 -d 24 -i 3 -n 5 -t 80"),
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-7]\n"
              "Device Node Status: [0] &  Name: [/dev/i2c-7]\n[0]");
    EXPECT_EQ(run(tool() + " -o 9 -d 24 -i 3 -n 5 -t 80"),
              "Index Node Status:Node Status: [1] &  Name: [/dev/i2c-7]\n"
              "Status is -1 (File exists)\n"
              "Device Node Creation Failed.\n[0]");
    const std::string queries = " get-property target=0x00 property=8 -> 2 value=0x00000011\n";
    const std::string others = " get-property target=0x00 property=10 -> 2 value=0x00000022\n";
    const std::string index =
        "/dev/i2c-5 create-node index=3 target=0x00 property8=0x00000011 property10=0x00000022 "
        "device=0,0,0,0,0,0,0,0 type=\"PUCK\" path=\"\" -> 2 status=";
    const std::string device =
        "/dev/i2c-7 create-node index=3 target=0x50 property8=0x00000011 property10=0x00000022 "
        "device=16,0,0,100,256,40,0,0 type=\"PUCK\" path=\"/dev/i2c-7\" -> ";
    const std::string parent = "/dev/i2c-5" + queries + "/dev/i2c-5" + others;
    const std::string node = "/dev/i2c-7" + queries + "/dev/i2c-7" + others;
    EXPECT_EQ(log(), parent + index + "0 bus=7\n" + node + device + "2 status=0 bus=7\n" + //
                         parent + index + "1 bus=7\n" + node + device + "-17 EEXIST\n");
}

TEST_F(Preload, theToolRecoversABus) {
    EXPECT_EQ(run("echo 5 | " + tool() + " -o 15"), "Enter Node Num:"
                                                    "Status [1] for node name: [/dev/i2c-5]\n"
                                                    "Status [1] for node name: [/dev/i2c-5]\n"
                                                    "Status [1] for node name: [/dev/i2c-5]\n[0]");
    EXPECT_EQ(log(), "/dev/i2c-5 recover-bus mode=96 -> 1\n"
                     "/dev/i2c-5 recover-bus mode=97 -> 1\n"
                     "/dev/i2c-5 recover-bus mode=98 -> 1\n");
}

TEST_F(Preload, twoToolsAtOnceCreateDifferentNodes) {
    // Each tool creates 30 nodes. Every node has a bus of its own, and none is missing.
    const std::string creating =
        "for i in $(seq 30); do " + tool() + " -o 9 -d $1 -i $i -n 5 -t 80; done";
    EXPECT_EQ(run("create() { " + creating +
                  "; }; (create 24 & create 12; wait) | "
                  "grep -c '^Device Node Status: .0. '"),
              "60\n[0]");
    EXPECT_EQ(run("for i in $(seq 7 66); do " + probe() +
                  " /dev/i2c-$i create-nothing; done | grep -c '^open: bus$'"),
              "60\n[0]");
    EXPECT_EQ(run(probe() + " /dev/i2c-67 create-nothing"),
              everyName("No such file or directory", false));
}

} // namespace
} // namespace standin
