#include "standin/i2c_bus/preload/bus_path.h"

#include "tests/support/emulation.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace standin {
namespace {

long numberOf(const std::string& path, int directory = AT_FDCWD) {
    errno = 4321;
    const long number = busNumber(directory, path.c_str());
    EXPECT_EQ(errno, 4321) << path;
    return number;
}

TEST(BusPath, theUsualPathOfABusHasItsNumber) {
    EXPECT_EQ(numberOf("/dev/i2c-0"), 0);
    EXPECT_EQ(numberOf("/dev/i2c-5"), 5);
    EXPECT_EQ(numberOf("/dev/i2c-999999999"), 999999999);
}

TEST(BusPath, aNameIsThatOfABusOnlyWhenItEndsWithANumber) {
    for (const char* const name : {"i2c-", "i2c-05", "i2c-00", "i2c-5x", "i2c-5/", "i2c--1",
                                   "i2c-+1", "i2c- 1", "i2c-1000000000", "i2c", "xi2c-5", ""}) {
        EXPECT_EQ(numberOf(std::string("/dev/") + name), -1) << name;
        EXPECT_EQ(numberOf(std::string("/dev/./") + name), -1) << name;
    }
    EXPECT_EQ(busNumber(AT_FDCWD, nullptr), -1);
    EXPECT_EQ(numberOf(""), -1);
    EXPECT_EQ(numberOf("/"), -1);
}

TEST(BusPath, otherPathsToTheDirectoryLeadToTheBus) {
    for (const char* const parent : {"//dev/", "/dev//", "/dev/./", "/dev/../dev/",
                                     "/proc/self/root/dev/", "/proc/../dev/./"}) {
        EXPECT_EQ(numberOf(std::string(parent) + "i2c-5"), 5) << parent;
    }
    for (const char* const parent : {"/", "/de/", "/devs/", "/dev/fd/../", "/dev/missing/../",
                                     "/dev/null/../", "/proc/", "/dev/i2c-5/../"}) {
        EXPECT_EQ(numberOf(std::string(parent) + "i2c-5"), -1) << parent;
    }
}

TEST(BusPath, aRelativePathStartsFromItsDirectory) {
    const int devices = open("/dev", O_PATH | O_DIRECTORY);
    EXPECT_EQ(numberOf("i2c-5", devices), 5);
    EXPECT_EQ(numberOf("./i2c-5", devices), 5);
    EXPECT_EQ(numberOf("i2c-5", -1), -1);
    EXPECT_EQ(numberOf("/dev/./i2c-5", -1), 5); // an absolute path needs no directory
    close(devices);
}

TEST(BusPath, aRelativePathStartsFromTheRoot) {
    if (zolt::test::isEmulated()) {
        GTEST_SKIP() << "emulated: the emulator has another root directory";
    }
    const int root = open("/", O_RDONLY | O_DIRECTORY);
    EXPECT_EQ(numberOf("i2c-5", root), -1);
    EXPECT_EQ(numberOf("dev/i2c-5", root), 5);
    close(root);
}

TEST(BusPath, aPathMayBeAsLongAsTheKernelAllows) {
    const auto path = [](std::size_t length) {
        const std::string name = "i2c-5";
        return "/dev" + std::string(length - 4 - name.size(), '/') + name;
    };
    EXPECT_EQ(numberOf(path(4095)), 5);
    EXPECT_EQ(numberOf(path(4096)), -1);
    EXPECT_EQ(numberOf(path(100000)), -1);
}

} // namespace
} // namespace standin
