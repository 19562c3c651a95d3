#include "bus/zolt_info_properties.h"

#include "tests/bus/bus_test.h"

#include <gtest/gtest.h>

namespace zolt::zolt_info_properties_test {
namespace {

using namespace test;
using board::Property;
using board::ServiceOrder;
using Action = board::ServiceOrder::Action;

constexpr const char* infoPath = "/com/tesk/bmc/zolt/info";
constexpr const char* infoInterface = "com.tesk.bmc.zolt.pcardInfo";

board::ServiceModel publishing(std::vector<board::Property> properties,
                               std::vector<ServiceOrder> orders = {}) {
    return {.managers = {},
            .interfaces = {{infoPath, infoInterface, std::move(properties)}},
            .orders = std::move(orders)};
}

std::string printed() {
    return viewed(PrintZoltInfoProperties);
}

std::string printedOf(std::vector<board::Property> properties,
                      std::vector<ServiceOrder> orders = {}) {
    SystemBus bus;
    bus.publish(publishing(std::move(properties), std::move(orders)));
    return printed();
}

TEST(PrintZoltInfoProperties, printsThePropertiesInTheOrderOfTheirNames) {
    EXPECT_EQ(printedOf({{"presentCards", "q", 12},
                         {"SlotMappingComplete", "b", false},
                         {"CardCount", "q", 65535},
                         {"FRUreadComplete", "b", true}}),
              "PrintZoltInfoProperties: \n"
              "Property Name  = CardCount\n"
              "Property Value = 65535\n"
              "Property Name  = FRUreadComplete\n"
              "Property Value = 1\n"
              "Property Name  = SlotMappingComplete\n"
              "Property Value = 0\n"
              "Property Name  = presentCards\n"
              "Property Value = 12\n"
              "\n");
}

TEST(PrintZoltInfoProperties, interfaceWithoutPropertiesHasItsHeadingAlone) {
    EXPECT_EQ(printedOf({}), "PrintZoltInfoProperties: \n\n");
}

TEST(PrintZoltInfoProperties, handsOutTheWholeListing) {
    SystemBus service;
    service.publish(publishing({}));
    std::string handed;
    (void)outputOf([&] {
        auto bus = sdbusplus::bus::new_default_system();
        PrintZoltInfoProperties(bus);
        handed = handedOut();
    });
    EXPECT_EQ(handed, "PrintZoltInfoProperties: \n\n");
}

TEST(PrintZoltInfoProperties, flagOfAnotherTypeEndsTheListing) {
    EXPECT_EQ(printedOf({{"CardCount", "q", 3}, {"FRUreadComplete", "q", 1}, {"Later", "q", 4}}),
              "PrintZoltInfoProperties: \n"
              "Property Name  = CardCount\n"
              "Property Value = 3\n"
              "Property Name  = FRUreadComplete\n"
              "Property Value = PrintZoltInfoProperties: catch error: "
              "std::get: wrong index for variant\n"
              "\n");
}

// The view takes 16-bit numbers only, not even a byte or the six bytes of an endpoint.
TEST(PrintZoltInfoProperties, numberOfAnotherTypeEndsTheListing) {
    const std::vector<std::pair<std::string, board::Value>> others{
        {"b", true},
        {"y", 1},
        {"u", 1},
        {"s", "text"},
        {"(yyyyyy)", board::listOf(1, 2, 3, 4, 5, 6)},
        {"a{sv}", board::listOf()}};
    for (const auto& [signature, value] : others) {
        EXPECT_EQ(printedOf({{"CardCount", signature, value}, {"Later", "q", 4}}),
                  "PrintZoltInfoProperties: \n"
                  "Property Name  = CardCount\n"
                  "Property Value = PrintZoltInfoProperties: catch error: "
                  "std::get: wrong index for variant\n"
                  "\n")
            << signature;
    }
}

TEST(PrintZoltInfoProperties, onlyTheExactNamesAreFlags) {
    EXPECT_EQ(printedOf({{"FRUreadCompleted", "q", 7},
                         {"FRUreadcomplete", "q", 8},
                         {"SlotMappingComplet", "q", 9},
                         {"SlotMappingComplete", "b", true}}),
              "PrintZoltInfoProperties: \n"
              "Property Name  = FRUreadCompleted\n"
              "Property Value = 7\n"
              "Property Name  = FRUreadcomplete\n"
              "Property Value = 8\n"
              "Property Name  = SlotMappingComplet\n"
              "Property Value = 9\n"
              "Property Name  = SlotMappingComplete\n"
              "Property Value = 1\n"
              "\n");
}

TEST(PrintZoltInfoProperties, valueOfAnUnknownTypeEndsTheListingAtItsOwnPlace) {
    EXPECT_EQ(printedOf({{"Zebra", "as", board::listOf("a", "b")}, {"Apple", "q", 1}}),
              "PrintZoltInfoProperties: \n"
              "Property Name  = Apple\n"
              "Property Value = 1\n"
              "Property Name  = Zebra\n"
              "Property Value = PrintZoltInfoProperties: catch error: "
              "std::get: wrong index for variant\n"
              "\n");
}

std::string caught(const std::string& error) {
    return "PrintZoltInfoProperties: catch error: " + error + "\n\n";
}

TEST(PrintZoltInfoProperties, busCannotBeReached) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    EXPECT_EQ(printed(), caught("sd_bus_message_new_method_call: System.Error.ENOTCONN: "
                                "Transport endpoint is not connected"));
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

TEST(PrintZoltInfoProperties, serviceIsAbsent) {
    const SystemBus bus;
    EXPECT_EQ(printed(), caught("sd_bus_call: org.freedesktop.DBus.Error.ServiceUnknown: The name "
                                "com.tesk.bmc.zolt was not provided by any .service files"));
}

TEST(PrintZoltInfoProperties, objectIsUnknown) {
    SystemBus bus;
    bus.publish({.managers = {}, .interfaces = {}, .orders = {}});
    EXPECT_EQ(printed(), caught("sd_bus_call: org.freedesktop.DBus.Error.UnknownObject: "
                                "Unknown object '/com/tesk/bmc/zolt/info'."));
}

TEST(PrintZoltInfoProperties, interfaceIsUnknown) {
    SystemBus bus;
    bus.publish(
        {.managers = {}, .interfaces = {{infoPath, "com.tesk.bmc.zolt.other", {}}}, .orders = {}});
    EXPECT_EQ(printed(), caught("sd_bus_call: org.freedesktop.DBus.Error.UnknownInterface: "
                                "Unknown interface 'com.tesk.bmc.zolt.pcardInfo'."));
}

TEST(PrintZoltInfoProperties, serviceRefusesAccess) {
    EXPECT_EQ(printedOf({}, {{.interface = infoInterface,
                              .action = Action::error,
                              .name = "org.freedesktop.DBus.Error.AccessDenied",
                              .text = "not for you"}}),
              caught("sd_bus_call: org.freedesktop.DBus.Error.AccessDenied: not for you"));
}

TEST(PrintZoltInfoProperties, busRefusesAccess) {
    SystemBus bus("<deny send_destination=\"com.tesk.bmc.zolt\" "
                  "send_interface=\"org.freedesktop.DBus.Properties\"/>");
    bus.publish(publishing({}));
    EXPECT_EQ(impersonal(printed()),
              caught("sd_bus_call: org.freedesktop.DBus.Error.AccessDenied: "
                     "Rejected send message, N matched rules; type=\"method_call\", "
                     "sender=\"NAME\" (PEER) interface=\"org.freedesktop.DBus.Properties\" "
                     "member=\"GetAll\" error name=\"(unset)\" requested_reply=\"0\" "
                     "destination=\"com.tesk.bmc.zolt\" (PEER)"));
}

TEST(PrintZoltInfoProperties, answerDoesNotComeInTime) {
    SystemBus bus;
    bus.publish(publishing({}, {{.delay = std::chrono::seconds(60)}}));
    setenv("SYSTEMD_BUS_TIMEOUT", "50ms", 1);
    EXPECT_EQ(printed(),
              caught("sd_bus_call: org.freedesktop.DBus.Error.Timeout: Connection timed out"));
    unsetenv("SYSTEMD_BUS_TIMEOUT");
}

TEST(PrintZoltInfoProperties, slowAnswerWithinTheTimeoutIsTaken) {
    EXPECT_EQ(printedOf({{"CardCount", "q", 1}}, {{.delay = std::chrono::milliseconds(50)}}),
              "PrintZoltInfoProperties: \n"
              "Property Name  = CardCount\n"
              "Property Value = 1\n"
              "\n");
}

TEST(PrintZoltInfoProperties, replyOfAnotherSignature) {
    const std::string mismatch =
        caught("sd_bus_message_enter_container emplace_container: System.Error.ENXIO: "
               "No such device or address");
    EXPECT_EQ(printedOf({}, {{.action = Action::reply, .signature = "s", .value = "text"}}),
              mismatch);
    EXPECT_EQ(
        printedOf({}, {{.action = Action::reply, .signature = "a{ss}", .value = board::listOf()}}),
        mismatch);
    EXPECT_EQ(printedOf({}, {{.action = Action::reply}}), mismatch);
}

TEST(PrintZoltInfoProperties, serviceLeavesInsteadOfAnswering) {
    EXPECT_EQ(printedOf({}, {{.action = Action::leave}}),
              caught("sd_bus_call: org.freedesktop.DBus.Error.NoReply: "
                     "Message recipient disconnected from message bus without replying"));
}

} // namespace
} // namespace zolt::zolt_info_properties_test
