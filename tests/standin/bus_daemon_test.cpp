#include "standin/service/bus_daemon.h"

#include "tests/support/private_directory.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <systemd/sd-bus.h>
#include <utility>

namespace standin {
namespace {

using zolt::test::PrivateDirectory;

// Connects a client. Returns 0 if it gets a name on the bus, otherwise a negative errno.
int connect(const std::string& address) {
    sd_bus* bus = nullptr;
    (void)sd_bus_new(&bus);
    (void)sd_bus_set_address(bus, address.c_str());
    (void)sd_bus_set_bus_client(bus, 1);
    int result = sd_bus_start(bus);
    if (result >= 0) {
        const char* name = nullptr;
        result = sd_bus_get_unique_name(bus, &name);
    }
    sd_bus_flush_close_unref(bus);
    return result < 0 ? result : 0;
}

pid_t processOf(const std::filesystem::path& directory) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "cmdline");
        std::string line;
        std::getline(file, line);
        if (line.starts_with("dbus-daemon") && line.contains(directory.string())) {
            return std::stoi(entry.path().filename().string());
        }
    }
    return 0;
}

TEST(BusDaemon, acceptsConnectionsOnceItIsConstructed) {
    const PrivateDirectory directory;
    const BusDaemon daemon(directory.path());
    EXPECT_EQ(daemon.address(), "unix:path=" + (directory.path() / "bus").string());
    EXPECT_EQ(connect(daemon.address()), 0);
}

TEST(BusDaemon, hasAProcessGroupOfItsOwn) {
    const PrivateDirectory directory;
    const BusDaemon daemon(directory.path());
    const pid_t process = processOf(directory.path());
    ASSERT_GT(process, 0);
    EXPECT_EQ(getpgid(process), process);
}

TEST(BusDaemon, isGoneOnceItIsStopped) {
    const PrivateDirectory directory;
    BusDaemon daemon(directory.path());
    const pid_t process = processOf(directory.path());
    daemon.stop();
    EXPECT_EQ(kill(process, 0), -1);
    EXPECT_EQ(connect(daemon.address()), -ECONNREFUSED);
    daemon.stop(); // a second stop does nothing
}

TEST(BusDaemon, canBeStartedAgainInItsPlace) {
    const PrivateDirectory directory;
    BusDaemon first(directory.path());
    first.stop();
    const BusDaemon second(directory.path());
    EXPECT_EQ(second.address(), first.address());
    EXPECT_EQ(connect(first.address()), 0);
}

TEST(BusDaemon, directoryMayHaveAnyName) {
    const PrivateDirectory directory("a b%;<&,=\xC3\xA9");
    const BusDaemon daemon(directory.path());
    EXPECT_TRUE(daemon.address().ends_with("a%20b%25%3b%3c%26%2c%3d%c3%a9/bus"));
    EXPECT_EQ(connect(daemon.address()), 0);
}

TEST(BusDaemon, reportsAFailedStartInTheDaemonsWords) {
    const PrivateDirectory directory;
    try {
        const BusDaemon daemon(directory.path(), "<nonsense/>");
        FAIL();
    } catch (const std::runtime_error& error) {
        const std::string text = error.what();
        EXPECT_TRUE(text.starts_with("dbus-daemon does not start: ")) << text;
        EXPECT_TRUE(text.contains("<nonsense>")) << text;
        EXPECT_NE(text.back(), '\n');
    }
}

// Another PATH for as long as the object lives.
class OtherPath {
public:
    explicit OtherPath(const std::string& path) {
        if (const char* const inherited = getenv("PATH"); inherited != nullptr) {
            inherited_ = inherited;
        }
        setenv("PATH", path.c_str(), 1);
    }
    OtherPath(const OtherPath&) = delete;
    OtherPath& operator=(const OtherPath&) = delete;
    ~OtherPath() { inherited_ ? setenv("PATH", inherited_->c_str(), 1) : unsetenv("PATH"); }

private:
    std::optional<std::string> inherited_;
};

// Puts a shell script into the path in place of the daemon, for as long as the object lives.
class OtherDaemon {
public:
    explicit OtherDaemon(const std::string& script)
        : path_(directory_.path().string() + ":/usr/bin:/bin") {
        const std::filesystem::path file = directory_.path() / "dbus-daemon";
        std::ofstream(file) << "#!/bin/sh\n" << script << '\n';
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }

private:
    const PrivateDirectory directory_;
    const OtherPath path_;
};

// The message of the daemon that does not start.
std::string refusal(std::chrono::milliseconds patience = std::chrono::seconds(30)) {
    const PrivateDirectory directory;
    try {
        const BusDaemon daemon(directory.path(), {}, patience);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "it starts";
}

TEST(BusDaemon, reportsAMissingDaemon) {
    const OtherPath nowhere("/nonexistent");
    EXPECT_EQ(refusal(), "dbus-daemon does not start: no directory of PATH has it");
}

TEST(BusDaemon, reportsTheEndOfTheDaemon) {
    for (const auto& [script, cause] : std::initializer_list<std::pair<const char*, const char*>>{
             {"exit 3", "it ended with status 3"},
             {"echo no room >&2; exit 1", "no room"},
             {"ulimit -c 0; kill -SEGV $$", "signal 11 ended it"},
             {"exec >&-; exec sleep 60", "it was killed, or it closed its output"},
         }) {
        const OtherDaemon other(script);
        EXPECT_EQ(refusal(), std::string("dbus-daemon does not start: ") + cause) << script;
    }
}

TEST(BusDaemon, reportsADaemonThatDoesNotGetReady) {
    constexpr const char* message = "dbus-daemon has not printed its address within 200 ms";
    {
        const OtherDaemon silent("exec sleep 60");
        EXPECT_EQ(refusal(std::chrono::milliseconds(200)), message);
    }
    const OtherDaemon halting("printf unix:path=; exec sleep 60");
    EXPECT_EQ(refusal(std::chrono::milliseconds(200)), message);
}

TEST(BusDaemon, reportsAMissingDirectory) {
    try {
        const BusDaemon daemon("/nonexistent");
        ADD_FAILURE();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "/nonexistent/bus.conf: No such file or directory");
    }
}

} // namespace
} // namespace standin
