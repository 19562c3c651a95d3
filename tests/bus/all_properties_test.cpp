#include "bus/all_properties.h"

#include "tests/bus/bus_test.h"
#include "tests/bus/modules.h"
#include "tests/bus/reports.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zolt::all_properties_test {
namespace {

using namespace test;
using board::ServiceOrder;
using Action = board::ServiceOrder::Action;

constexpr const char* path = "/com/tesk/bmc/zolt/riser/slot_1";
constexpr const char* cem = "com.tesk.bmc.zolt.cemCIR";

std::string printed(std::uint8_t moduleClass) {
    return viewed([&](sdbusplus::bus_t& bus) { PrintAllProperties(bus, moduleClass, path); });
}

board::ServiceModel publishing(const char* interface, std::vector<board::Property> properties,
                               std::vector<ServiceOrder> orders = {}) {
    return {.managers = {},
            .interfaces = {{path, interface, std::move(properties)}},
            .orders = std::move(orders)};
}

std::string printedOf(std::vector<board::Property> properties,
                      std::vector<ServiceOrder> orders = {}) {
    SystemBus bus;
    bus.publish(publishing(cem, std::move(properties), std::move(orders)));
    return printed(3);
}

// The object has all four interfaces. Each class reads its own.
TEST(PrintAllProperties, everyClassHasItsInterfaceAndReport) {
    PropertyMap puck = shortProperties();
    puck["DeviceVer"] = std::uint8_t{0x77};
    SystemBus bus;
    bus.publish({.managers = {},
                 .interfaces =
                     {
                         {path, "com.tesk.bmc.zolt.backplaneCIR", published(backPlaneProperties())},
                         {path, "com.tesk.bmc.zolt.puckCIR", published(puck)},
                         {path, "com.tesk.bmc.zolt.rfcCIR", published(shortProperties())},
                         {path, "com.tesk.bmc.zolt.cemCIR", published(cemProperties())},
                     },
                 .orders = {}});
    EXPECT_EQ(printed(0), backPlaneReport + "\n\n");
    EXPECT_EQ(printed(1), "PayloadFrmtVer       : 0x02\n"
                          "DeviceClass          : 0x0B\n"
                          "StaticPaylodSize     : 0x10\n"
                          "DeviceId             : 0x100\n"
                          "VendorId             : 0x0B\n"
                          "DeviceVer            : 0x77\n"
                          "NumPwires            : 0x07\n"
                          "TargetI2cGpioDevType : 0x07\n"
                          "TargetI2cGpioDevAddr : 0x7F\n"
                          "\n\n");
    EXPECT_EQ(printed(2), shortReport + "\n\n");
    for (const std::uint8_t moduleClass :
         std::initializer_list<std::uint8_t>{3, 4, 5, 6, 7, 8, 9, 10, 11, 255}) {
        EXPECT_EQ(printed(moduleClass), cemReport + "\n\n");
    }
}

TEST(PrintAllProperties, handsOutTheWholeReport) {
    SystemBus service;
    service.publish(publishing(cem, published(cemProperties())));
    std::string handed;
    (void)viewed([&](sdbusplus::bus_t& bus) {
        PrintAllProperties(bus, 3, path);
        handed = handedOut();
    });
    EXPECT_EQ(handed, cemReport + "\n\n");
}

TEST(PrintAllProperties, orderAndNumberOfThePropertiesDoNotMatter) {
    auto properties = published(cemProperties());
    std::ranges::reverse(properties);
    properties.push_back({"Unknown", "a{sv}", board::listOf()});
    properties.push_back({"AlsoUnknown", "s", "text"});
    EXPECT_EQ(printedOf(properties), cemReport + "\n\n");
}

std::string caught(const std::string& error) {
    return "PrintAllProperties: catch error: " + error + "\n";
}

TEST(PrintAllProperties, missingPropertyYieldsAnErrorInsteadOfTheReport) {
    PropertyMap properties = cemProperties();
    properties.erase("PayloadFrmtVer");
    EXPECT_EQ(printedOf(published(properties)), caught("std::get: wrong index for variant"));
    EXPECT_EQ(printedOf({}), caught("std::get: wrong index for variant"));
}

TEST(PrintAllProperties, propertyOfAnotherTypeYieldsAnErrorInsteadOfTheReport) {
    for (const char* signature : {"y", "u", "x"}) {
        auto properties = published(cemProperties());
        std::ranges::find(properties, "DeviceId", &board::Property::name)->signature = signature;
        std::ranges::find(properties, "DeviceId", &board::Property::name)->value = 1;
        EXPECT_EQ(printedOf(properties), caught("std::get: wrong index for variant")) << signature;
    }
}

// The view skips a value of an unknown type and takes it for six zero bytes.
TEST(PrintAllProperties, endpointOfNoKnownTypePrintsAsZeroBytes) {
    auto properties = published(cemProperties());
    auto& endpoint = *std::ranges::find(properties, "EndPoint1", &board::Property::name);
    endpoint.signature = "ay";
    std::string expected = cemReport;
    const std::string bytes = "0x01, 0x02, 0x03, 0x04, 0x05, 0x06";
    expected.replace(expected.find(bytes), bytes.size(), "0x00, 0x00, 0x00, 0x00, 0x00, 0x00");
    EXPECT_EQ(printedOf(properties), expected + "\n\n");
}

TEST(PrintAllProperties, busCannotBeReached) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    EXPECT_EQ(printed(3), caught("sd_bus_message_new_method_call: System.Error.ENOTCONN: "
                                 "Transport endpoint is not connected"));
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

TEST(PrintAllProperties, pathIsInvalid) {
    const SystemBus bus;
    EXPECT_EQ(
        viewed([](sdbusplus::bus_t& connection) { PrintAllProperties(connection, 3, "no path"); }),
        caught("sd_bus_message_new_method_call: org.freedesktop.DBus.Error.InvalidArgs: "
               "Invalid argument"));
}

TEST(PrintAllProperties, serviceIsAbsent) {
    const SystemBus bus;
    EXPECT_EQ(printed(3), caught("sd_bus_call: org.freedesktop.DBus.Error.ServiceUnknown: The name "
                                 "com.tesk.bmc.zolt was not provided by any .service files"));
}

TEST(PrintAllProperties, objectIsUnknown) {
    SystemBus bus;
    bus.publish({.managers = {}, .interfaces = {}, .orders = {}});
    EXPECT_EQ(printed(3), caught("sd_bus_call: org.freedesktop.DBus.Error.UnknownObject: "
                                 "Unknown object '/com/tesk/bmc/zolt/riser/slot_1'."));
}

TEST(PrintAllProperties, interfaceIsUnknown) {
    SystemBus bus;
    bus.publish(publishing(cem, published(cemProperties())));
    EXPECT_EQ(printed(0), caught("sd_bus_call: org.freedesktop.DBus.Error.UnknownInterface: "
                                 "Unknown interface 'com.tesk.bmc.zolt.backplaneCIR'."));
    EXPECT_EQ(printed(1), caught("sd_bus_call: org.freedesktop.DBus.Error.UnknownInterface: "
                                 "Unknown interface 'com.tesk.bmc.zolt.puckCIR'."));
    EXPECT_EQ(printed(2), caught("sd_bus_call: org.freedesktop.DBus.Error.UnknownInterface: "
                                 "Unknown interface 'com.tesk.bmc.zolt.rfcCIR'."));
}

TEST(PrintAllProperties, accessIsRefused) {
    EXPECT_EQ(printedOf({}, {{.action = Action::error,
                              .name = "org.freedesktop.DBus.Error.AccessDenied",
                              .text = "not for you"}}),
              caught("sd_bus_call: org.freedesktop.DBus.Error.AccessDenied: not for you"));
}

TEST(PrintAllProperties, answerDoesNotComeInTime) {
    setenv("SYSTEMD_BUS_TIMEOUT", "50ms", 1);
    EXPECT_EQ(printedOf({}, {{.delay = std::chrono::seconds(60)}}),
              caught("sd_bus_call: org.freedesktop.DBus.Error.Timeout: Connection timed out"));
    unsetenv("SYSTEMD_BUS_TIMEOUT");
}

TEST(PrintAllProperties, replyOfAnotherSignature) {
    EXPECT_EQ(printedOf({}, {{.action = Action::reply, .signature = "s", .value = "text"}}),
              caught("sd_bus_message_enter_container emplace_container: System.Error.ENXIO: "
                     "No such device or address"));
}

TEST(PrintAllProperties, serviceLeavesInsteadOfAnswering) {
    EXPECT_EQ(printedOf({}, {{.action = Action::leave}}),
              caught("sd_bus_call: org.freedesktop.DBus.Error.NoReply: "
                     "Message recipient disconnected from message bus without replying"));
}

} // namespace
} // namespace zolt::all_properties_test
