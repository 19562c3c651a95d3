#include "bus/all_devices_path.h"

#include "app/dispatcher.h"
#include "tests/bus/bus_test.h"
#include "tests/bus/modules.h"
#include "tests/bus/reports.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace zolt::all_devices_path_test {
namespace {

using namespace test;
using board::ServiceOrder;
using Action = board::ServiceOrder::Action;

constexpr const char* managerInterface = "org.freedesktop.DBus.ObjectManager";
constexpr const char* none = "No DBUS objects of this module type are present\n";

std::string printed(std::uint8_t moduleType) {
    return viewed([&](sdbusplus::bus_t& bus) { PrintAllDevicesPath(bus, moduleType); });
}

// Returns the lines that the view prints when the call for the objects fails.
std::string failed(const std::string& error) {
    return "failed to get managed objects err" + error +
           "\nPrintAllDevicesPath: GetManagedObjects() failed to get GetManagedObjects !.\n";
}

board::PublishedInterface puck(const std::string& name) {
    return {"/com/tesk/bmc/zolt/puck/" + name, "com.tesk.bmc.zolt.puckCIR",
            published(shortProperties())};
}

board::ServiceModel pucks(const std::vector<std::string>& names,
                          std::vector<ServiceOrder> orders = {}) {
    board::ServiceModel model{
        .managers = {"/com/tesk/bmc/zolt/puck"}, .interfaces = {}, .orders = std::move(orders)};
    for (const std::string& name : names) {
        model.interfaces.push_back(puck(name));
    }
    return model;
}

TEST(PrintAllDevicesPath, listsTheObjectsInTheOrderOfTheirPaths) {
    SystemBus bus;
    bus.publish(pucks({"b", "a", "B"}));
    EXPECT_EQ(printed(2), "/com/tesk/bmc/zolt/puck/B\n" + shortReport +
                              "\n\n"
                              "/com/tesk/bmc/zolt/puck/a\n" +
                              shortReport +
                              "\n\n"
                              "/com/tesk/bmc/zolt/puck/b\n" +
                              shortReport + "\n\n");
}

struct Type {
    std::uint8_t number;
    std::string path;
    const char* interface;
    PropertyMap (*properties)();
    const std::string& report;
};

// The bus has one object of each type. Each type lists its own object only.
TEST(PrintAllDevicesPath, everyTypeHasItsPathInterfaceAndReport) {
    constexpr const char* cem = "com.tesk.bmc.zolt.cemCIR";
    const std::vector<Type> types{
        {1, "/com/tesk/bmc/zolt/bp", "com.tesk.bmc.zolt.backplaneCIR", backPlaneProperties,
         backPlaneReport},
        {2, "/com/tesk/bmc/zolt/puck", "com.tesk.bmc.zolt.puckCIR", shortProperties, shortReport},
        {3, "/com/tesk/bmc/zolt/rfc", "com.tesk.bmc.zolt.rfcCIR", shortProperties, shortReport},
        {4, "/com/tesk/bmc/zolt/riser", cem, cemProperties, cemReport},
        {5, "/com/tesk/bmc/zolt/ftulm", cem, cemProperties, cemReport},
        {6, "/com/tesk/bmc/zolt/karnRaid", cem, cemProperties, cemReport},
        {7, "/com/tesk/bmc/zolt/karnNonRaid", cem, cemProperties, cemReport},
        {8, "/com/tesk/bmc/zolt/rida", cem, cemProperties, cemReport},
        {9, "/com/tesk/bmc/zolt/flop", cem, cemProperties, cemReport},
        {10, "/com/tesk/bmc/zolt/bi", cem, cemProperties, cemReport},
        {11, "/com/tesk/bmc/zolt/battery", cem, cemProperties, cemReport},
    };
    board::ServiceModel model{.managers = {}, .interfaces = {}, .orders = {}};
    for (const Type& type : types) {
        model.managers.push_back(type.path);
        model.interfaces.push_back(
            {type.path + "/slot_1", type.interface, published(type.properties())});
    }
    SystemBus bus;
    bus.publish(std::move(model));
    for (const Type& type : types) {
        EXPECT_EQ(printed(type.number), type.path + "/slot_1\n" + type.report + "\n\n");
    }
}

TEST(PrintAllDevicesPath, typeWithoutObjects) {
    SystemBus bus;
    bus.publish(pucks({}));
    EXPECT_EQ(printed(2), none);
}

TEST(PrintAllDevicesPath, typeThatDoesNotExistHasNoPath) {
    SystemBus bus;
    bus.publish(pucks({"a"}));
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{0, 12, 255}) {
        EXPECT_EQ(printed(type),
                  failed("sd_bus_message_new_method_call: "
                         "org.freedesktop.DBus.Error.InvalidArgs: Invalid argument"));
    }
}

// The reply of the manager has properties of every D-Bus type. The view prints none of them.
TEST(PrintAllDevicesPath, managersReplyMayHavePropertiesOfAnyType) {
    board::ServiceModel model = pucks({"a"});
    model.interfaces.push_back(
        {"/com/tesk/bmc/zolt/puck/a",
         "com.tesk.bmc.zolt.everything",
         {{"s", "s", "text"},
          {"x", "x", -1},
          {"t", "t", 1},
          {"d", "d", 0.5},
          {"i", "i", -1},
          {"u", "u", 1},
          {"n", "n", -1},
          {"q", "q", 1},
          {"y", "y", 1},
          {"b", "b", true},
          {"as", "as", board::listOf("a", "b")},
          {"ax", "ax", board::listOf(-1)},
          {"at", "at", board::listOf(1)},
          {"ad", "ad", board::listOf(0.5)},
          {"ai", "ai", board::listOf(-1)},
          {"au", "au", board::listOf(1)},
          {"an", "an", board::listOf(-1)},
          {"aq", "aq", board::listOf(1)},
          {"ay", "ay", board::listOf(1, 2, 3)},
          {"ab", "ab", board::listOf(true, false)},
          {"o", "o", "/a"},
          {"g", "g", "a{sv}"},
          {"(yyyyyy)", "(yyyyyy)", board::listOf(1, 2, 3, 4, 5, 6)},
          {"a{sv}", "a{sv}",
           board::listOf(board::listOf("k", board::listOf("v", board::listOf("y", 1))))}}});
    SystemBus bus;
    bus.publish(std::move(model));
    EXPECT_EQ(printed(2), "/com/tesk/bmc/zolt/puck/a\n" + shortReport + "\n\n");
}

TEST(PrintAllDevicesPath, objectThatFailsDoesNotEndTheListing) {
    board::ServiceModel model =
        pucks({"a", "b", "c", "d"}, {{.path = "/com/tesk/bmc/zolt/puck/b",
                                      .interface = "com.tesk.bmc.zolt.puckCIR",
                                      .action = Action::error,
                                      .name = "com.tesk.bmc.Error.Busy",
                                      .text = "the module is being read"}});
    model.interfaces[2].interface = "com.tesk.bmc.zolt.rfcCIR";
    SystemBus bus;
    bus.publish(std::move(model));
    EXPECT_EQ(printed(2), "/com/tesk/bmc/zolt/puck/a\n" + shortReport +
                              "\n\n"
                              "/com/tesk/bmc/zolt/puck/b\n"
                              "PrintAllProperties: catch error: sd_bus_call: "
                              "com.tesk.bmc.Error.Busy: the module is being read\n"
                              "/com/tesk/bmc/zolt/puck/c\n"
                              "PrintAllProperties: catch error: sd_bus_call: "
                              "org.freedesktop.DBus.Error.UnknownInterface: "
                              "Unknown interface 'com.tesk.bmc.zolt.puckCIR'.\n"
                              "/com/tesk/bmc/zolt/puck/d\n" +
                              shortReport + "\n\n");
}

TEST(PrintAllDevicesPath, objectThatIsSlowDoesNotEndTheListing) {
    SystemBus bus;
    bus.publish(pucks({"a", "b"},
                      {{.path = "/com/tesk/bmc/zolt/puck/a", .delay = std::chrono::seconds(60)}}));
    setenv("SYSTEMD_BUS_TIMEOUT", "50ms", 1);
    EXPECT_EQ(printed(2), "/com/tesk/bmc/zolt/puck/a\n"
                          "PrintAllProperties: catch error: sd_bus_call: "
                          "org.freedesktop.DBus.Error.Timeout: Connection timed out\n"
                          "/com/tesk/bmc/zolt/puck/b\n" +
                              shortReport + "\n\n");
    unsetenv("SYSTEMD_BUS_TIMEOUT");
}

TEST(PrintAllDevicesPath, busCannotBeReached) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    EXPECT_EQ(printed(2), failed("sd_bus_message_new_method_call: System.Error.ENOTCONN: "
                                 "Transport endpoint is not connected"));
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

TEST(PrintAllDevicesPath, serviceIsAbsent) {
    const SystemBus bus;
    EXPECT_EQ(printed(2), failed("sd_bus_call: org.freedesktop.DBus.Error.ServiceUnknown: The name "
                                 "com.tesk.bmc.zolt was not provided by any .service files"));
}

TEST(PrintAllDevicesPath, managerIsUnknown) {
    SystemBus bus;
    board::ServiceModel model = pucks({"a"});
    bus.publish(model);
    EXPECT_EQ(printed(1), failed("sd_bus_call: org.freedesktop.DBus.Error.UnknownObject: "
                                 "Unknown object '/com/tesk/bmc/zolt/bp'."));
    model.managers = {"/com/tesk/bmc/zolt"};
    model.interfaces.push_back({"/com/tesk/bmc/zolt/bp", "com.tesk.bmc.zolt.other", {}});
    bus.publish(model);
    EXPECT_EQ(printed(1), failed("sd_bus_call: org.freedesktop.DBus.Error.UnknownInterface: "
                                 "Unknown interface 'org.freedesktop.DBus.ObjectManager'."));
}

std::string refusal(const std::string& interface, const std::string& member) {
    return "sd_bus_call: org.freedesktop.DBus.Error.AccessDenied: Rejected send message, "
           "N matched rules; type=\"method_call\", sender=\"NAME\" (PEER) interface=\"" +
           interface + "\" member=\"" + member +
           "\" error name=\"(unset)\" requested_reply=\"0\" "
           "destination=\"com.tesk.bmc.zolt\" (PEER)";
}

TEST(PrintAllDevicesPath, busRefusesAccessToTheManager) {
    SystemBus bus("<deny send_destination=\"com.tesk.bmc.zolt\" "
                  "send_interface=\"org.freedesktop.DBus.ObjectManager\"/>");
    bus.publish(pucks({"a"}));
    EXPECT_EQ(impersonal(printed(2)), failed(refusal(managerInterface, "GetManagedObjects")));
}

TEST(PrintAllDevicesPath, busRefusesAccessToTheObjects) {
    SystemBus bus("<deny send_destination=\"com.tesk.bmc.zolt\" "
                  "send_interface=\"org.freedesktop.DBus.Properties\"/>");
    bus.publish(pucks({"a", "b"}));
    const std::string caught =
        "PrintAllProperties: catch error: " + refusal("org.freedesktop.DBus.Properties", "GetAll") +
        "\n";
    EXPECT_EQ(impersonal(printed(2)),
              "/com/tesk/bmc/zolt/puck/a\n" + caught + "/com/tesk/bmc/zolt/puck/b\n" + caught);
}

TEST(PrintAllDevicesPath, serviceRefusesAccess) {
    SystemBus bus;
    bus.publish(pucks({"a"}, {{.interface = managerInterface,
                               .action = Action::error,
                               .name = "org.freedesktop.DBus.Error.AccessDenied",
                               .text = "not for you"}}));
    EXPECT_EQ(printed(2),
              failed("sd_bus_call: org.freedesktop.DBus.Error.AccessDenied: not for you"));
}

TEST(PrintAllDevicesPath, answerDoesNotComeInTime) {
    SystemBus bus;
    bus.publish(pucks({"a"}, {{.delay = std::chrono::seconds(60)}}));
    setenv("SYSTEMD_BUS_TIMEOUT", "50ms", 1);
    EXPECT_EQ(printed(2),
              failed("sd_bus_call: org.freedesktop.DBus.Error.Timeout: Connection timed out"));
    unsetenv("SYSTEMD_BUS_TIMEOUT");
}

TEST(PrintAllDevicesPath, replyOfAnotherSignature) {
    const std::string mismatch = failed("sd_bus_message_enter_container emplace_container: "
                                        "System.Error.ENXIO: No such device or address");
    SystemBus bus;
    for (const char* signature : {"a{sv}", "a{oa{sv}}", "ao"}) {
        bus.publish(pucks({"a"}, {{.interface = managerInterface,
                                   .action = Action::reply,
                                   .signature = signature,
                                   .value = board::listOf()}}));
        EXPECT_EQ(printed(2), mismatch) << signature;
    }
    bus.publish(pucks({"a"}, {{.interface = managerInterface, .action = Action::reply}}));
    EXPECT_EQ(printed(2), mismatch);
}

TEST(PrintAllDevicesPath, serviceLeavesInTheMiddle) {
    SystemBus bus;
    bus.publish(
        pucks({"a", "b", "c"}, {{.path = "/com/tesk/bmc/zolt/puck/b", .action = Action::leave}}));
    EXPECT_EQ(printed(2), "/com/tesk/bmc/zolt/puck/a\n" + shortReport +
                              "\n\n"
                              "/com/tesk/bmc/zolt/puck/b\n"
                              "PrintAllProperties: catch error: sd_bus_call: "
                              "org.freedesktop.DBus.Error.NoReply: "
                              "Message recipient disconnected from message bus without replying\n"
                              "/com/tesk/bmc/zolt/puck/c\n"
                              "PrintAllProperties: catch error: sd_bus_call: "
                              "org.freedesktop.DBus.Error.ServiceUnknown: The name "
                              "com.tesk.bmc.zolt was not provided by any .service files\n");
}

// Waits for this text on standard output. The view prints an object's path before it asks for the
// object's properties.
void waitUntilPrinted(const std::string& text) {
    struct stat output {};
    do {
        usleep(1000);
        ASSERT_EQ(fstat(STDOUT_FILENO, &output), 0);
    } while (output.st_size < static_cast<off_t>(text.size()));
}

class BrokenBus : public testing::Test {
protected:
    static constexpr OptionArgs listPucks{.option = 12, .moduleSelector = 2};
    const std::string untilTheBreak =
        "/com/tesk/bmc/zolt/puck/a\n" + shortReport + "\n\n/com/tesk/bmc/zolt/puck/b\n";
    const std::string fromTheBreak =
        "PrintAllProperties: catch error: sd_bus_call: org.freedesktop.DBus.Error.Disconnected: "
        "Connection reset by peer\n"
        "/com/tesk/bmc/zolt/puck/c\n"
        "PrintAllProperties: catch error: sd_bus_call: System.Error.ENOTCONN: "
        "Transport endpoint is not connected\n";

    void breakInTheMiddle() {
        bus_.publish(pucks({"a", "b", "c"}, {{.path = "/com/tesk/bmc/zolt/puck/b",
                                              .delay = std::chrono::seconds(60)}}));
        const std::string output = outputOf([&] {
            std::thread breaker([&] {
                waitUntilPrinted(untilTheBreak);
                bus_.breakDown();
            });
            runOption(listPucks);
            breaker.join();
        });
        EXPECT_EQ(output, untilTheBreak + fromTheBreak);
    }

    SystemBus bus_;
};

TEST_F(BrokenBus, inTheMiddleOfAListingFailsEveryObjectFromThereOn) {
    breakInTheMiddle();
}

TEST_F(BrokenBus, servesTheNextOperationOnceItIsBack) {
    breakInTheMiddle();
    EXPECT_EQ(outputOf([] { runOption(listPucks); }),
              failed("sd_bus_message_new_method_call: System.Error.ENOTCONN: "
                     "Transport endpoint is not connected"));
    bus_.comeBack();
    bus_.publish(pucks({"a"}));
    EXPECT_EQ(outputOf([] { runOption(listPucks); }),
              "/com/tesk/bmc/zolt/puck/a\n" + shortReport + "\n\n");
    EXPECT_EQ(outputOf([] { runOption({.option = 11}); }),
              "PrintZoltInfoProperties: catch error: sd_bus_call: "
              "org.freedesktop.DBus.Error.UnknownObject: "
              "Unknown object '/com/tesk/bmc/zolt/info'.\n\n");
}

} // namespace
} // namespace zolt::all_devices_path_test
