#include "bus/service_client.h"

#include "tests/bus/bus_test.h"
#include "tests/support/exhausted_memory.h"

#include <gtest/gtest.h>

#include <new>

namespace zolt::service_client_test {
namespace {

using namespace test;

// The views' own tests cover the answers of the bus.
TEST(GetManagedObjects, exceptionThatIsNoBusErrorPassesThrough) {
    const std::string path = "/com/tesk/bmc/zolt/puck";
    SystemBus bus;
    bus.publish({.managers = {path},
                 .interfaces = {{path + "/a", "com.tesk.bmc.zolt.puckCIR", {}}},
                 .orders = {}});
    ManagedObjects objects;
    EXPECT_EQ(viewed([&](sdbusplus::bus_t& connection) {
                  const ExhaustedMemory exhausted;
                  EXPECT_THROW((void)getManagedObjects(connection, zoltService, path, objects),
                               std::bad_alloc);
              }),
              "");
    EXPECT_EQ(viewed([&](sdbusplus::bus_t& connection) {
                  EXPECT_TRUE(getManagedObjects(connection, zoltService, path, objects));
              }),
              "");
    EXPECT_EQ(objects.size(), 1U);
}

TEST(GetManagedObjects, errorOfTheBusIsHandedOutAtOnce) {
    const std::string line = "failed to get managed objects errsd_bus_message_new_method_call: "
                             "org.freedesktop.DBus.Error.InvalidArgs: Invalid argument\n";
    const SystemBus bus;
    EXPECT_EQ(viewed([&](sdbusplus::bus_t& connection) {
                  ManagedObjects objects;
                  EXPECT_FALSE(getManagedObjects(connection, zoltService, "", objects));
                  EXPECT_EQ(handedOut(), line);
              }),
              line);
}

} // namespace
} // namespace zolt::service_client_test
