// Tests the service with systemd's busctl as its client.
#include "standin/service/service.h"

#include "tests/support/bus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <system_error>

namespace standin {
namespace {

using zolt::test::SystemBus;
using Action = board::ServiceOrder::Action;

struct Outcome {
    std::string text; ///< of both output streams
    int status;

    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << outcome.status << ": " << outcome.text;
}

Outcome busctl(const std::string& arguments) {
    FILE* pipe = popen(("busctl --system --no-pager " + arguments + " 2>&1").c_str(), "re");
    std::string text;
    std::array<char, 4096> piece;
    for (std::size_t count = 0; (count = fread(piece.data(), 1, piece.size(), pipe)) > 0;) {
        text.append(piece.data(), count);
    }
    return {text, WEXITSTATUS(pclose(pipe))};
}

board::ServiceModel twoModules(std::vector<board::ServiceOrder> orders = {}) {
    return {
        .managers = {"/com/tesk/bmc/zolt/bp", "/com/tesk/bmc/zolt/puck"},
        .interfaces =
            {{"/com/tesk/bmc/zolt/info",
              "com.tesk.bmc.zolt.pcardInfo",
              {{"FRUreadComplete", "b", true}, {"CardCount", "q", 2}}},
             {"/com/tesk/bmc/zolt/bp/b",
              "com.tesk.bmc.zolt.backplaneCIR",
              {{"DeviceId", "q", 0x1234},
               {"EndPoint0", "(yyyyyy)", board::listOf(1, 2, 3, 4, 5, 6)},
               {"Odd <&\"", "a{sv}", board::listOf(board::listOf("key", board::listOf("y", 7)))}}},
             {"/com/tesk/bmc/zolt/bp/a", "com.tesk.bmc.zolt.backplaneCIR", {}},
             {"/com/tesk/bmc/zolt/bp/b", "com.tesk.bmc.zolt.extra", {{"Note", "s", "text"}}}},
        .orders = std::move(orders)};
}

constexpr const char* all = "call com.tesk.bmc.zolt /com/tesk/bmc/zolt/bp/b "
                            "org.freedesktop.DBus.Properties GetAll s ";

class ServiceOnBus : public testing::Test {
protected:
    explicit ServiceOnBus() { bus_.publish(twoModules()); }

    SystemBus bus_;
};

TEST_F(ServiceOnBus, treeHasEveryObject) {
    EXPECT_EQ(busctl("tree --list com.tesk.bmc.zolt"), (Outcome{"/\n"
                                                                "/com\n"
                                                                "/com/tesk\n"
                                                                "/com/tesk/bmc\n"
                                                                "/com/tesk/bmc/zolt\n"
                                                                "/com/tesk/bmc/zolt/bp\n"
                                                                "/com/tesk/bmc/zolt/bp/a\n"
                                                                "/com/tesk/bmc/zolt/bp/b\n"
                                                                "/com/tesk/bmc/zolt/info\n"
                                                                "/com/tesk/bmc/zolt/puck\n",
                                                                0}));
}

// Returns busctl's table with one blank between columns, whatever widths busctl gives them.
Outcome introspected(const std::string& arguments) {
    Outcome outcome = busctl("introspect com.tesk.bmc.zolt " + arguments);
    const auto bothBlank = [](char left, char right) { return left == ' ' && right == ' '; };
    outcome.text.erase(std::unique(outcome.text.begin(), outcome.text.end(), bothBlank),
                       outcome.text.end());
    return outcome;
}

TEST_F(ServiceOnBus, introspectionNamesPropertiesAndTheirTypes) {
    EXPECT_EQ(introspected("/com/tesk/bmc/zolt/info com.tesk.bmc.zolt.pcardInfo"),
              (Outcome{"NAME TYPE SIGNATURE RESULT/VALUE FLAGS\n"
                       ".CardCount property q 2 -\n"
                       ".FRUreadComplete property b true -\n",
                       0}));
}

TEST_F(ServiceOnBus, introspectionOfAnObjectManager) {
    const std::string manager = " org.freedesktop.DBus.ObjectManager";
    EXPECT_EQ(introspected("/com/tesk/bmc/zolt/bp" + manager),
              (Outcome{"NAME TYPE SIGNATURE RESULT/VALUE FLAGS\n"
                       ".GetManagedObjects method - a{oa{sa{sv}}} -\n",
                       0}));
    EXPECT_EQ(introspected("/com/tesk/bmc/zolt/bp/a" + manager),
              (Outcome{"NAME TYPE SIGNATURE RESULT/VALUE FLAGS\n", 0}));
}

TEST_F(ServiceOnBus, getAnswersWithAValueOfItsType) {
    const std::string get = "get-property com.tesk.bmc.zolt /com/tesk/bmc/zolt/bp/b "
                            "com.tesk.bmc.zolt.backplaneCIR ";
    EXPECT_EQ(busctl(get + "DeviceId"), (Outcome{"q 4660\n", 0}));
    EXPECT_EQ(busctl(get + "EndPoint0"), (Outcome{"(yyyyyy) 1 2 3 4 5 6\n", 0}));
}

TEST_F(ServiceOnBus, getAllAnswersInTheModelsOrder) {
    EXPECT_EQ(busctl(std::string(all) + "com.tesk.bmc.zolt.backplaneCIR"),
              (Outcome{"a{sv} 3 \"DeviceId\" q 4660 \"EndPoint0\" (yyyyyy) 1 2 3 4 5 6 "
                       "\"Odd <&\\\"\" a{sv} 1 \"key\" y 7\n",
                       0}));
}

TEST_F(ServiceOnBus, getAllWithoutAnInterfaceAnswersForAllOfThem) {
    EXPECT_EQ(busctl(std::string(all) + "''"),
              (Outcome{"a{sv} 4 \"DeviceId\" q 4660 \"EndPoint0\" (yyyyyy) 1 2 3 4 5 6 "
                       "\"Odd <&\\\"\" a{sv} 1 \"key\" y 7 \"Note\" s \"text\"\n",
                       0}));
}

TEST_F(ServiceOnBus, managerListsTheObjectsBelowIt) {
    EXPECT_EQ(busctl("call com.tesk.bmc.zolt /com/tesk/bmc/zolt/bp "
                     "org.freedesktop.DBus.ObjectManager GetManagedObjects"),
              (Outcome{"a{oa{sa{sv}}} 2 \"/com/tesk/bmc/zolt/bp/b\" 2 "
                       "\"com.tesk.bmc.zolt.backplaneCIR\" 3 \"DeviceId\" q 4660 "
                       "\"EndPoint0\" (yyyyyy) 1 2 3 4 5 6 \"Odd <&\\\"\" a{sv} 1 \"key\" y 7 "
                       "\"com.tesk.bmc.zolt.extra\" 1 \"Note\" s \"text\" "
                       "\"/com/tesk/bmc/zolt/bp/a\" 1 \"com.tesk.bmc.zolt.backplaneCIR\" 0\n",
                       0}));
    EXPECT_EQ(busctl("call com.tesk.bmc.zolt /com/tesk/bmc/zolt/puck "
                     "org.freedesktop.DBus.ObjectManager GetManagedObjects"),
              (Outcome{"a{oa{sa{sv}}} 0\n", 0}));
}

TEST_F(ServiceOnBus, unknownObjectsInterfacesAndPropertiesAreRefused) {
    const std::string properties = " org.freedesktop.DBus.Properties ";
    const std::string service = "call com.tesk.bmc.zolt ";
    EXPECT_EQ(busctl(service + "/com/tesk/bmc/zolt/none" + properties + "GetAll s a.b"),
              (Outcome{"Call failed: Unknown object '/com/tesk/bmc/zolt/none'.\n", 1}));
    EXPECT_EQ(busctl(service + "/com/tesk/bmc/zolt/none" + properties + "Get ss a.b C"),
              (Outcome{"Call failed: Unknown object '/com/tesk/bmc/zolt/none'.\n", 1}));
    EXPECT_EQ(busctl(service + "/com/tesk/bmc/zolt/none "
                               "org.freedesktop.DBus.ObjectManager GetManagedObjects"),
              (Outcome{"Call failed: Unknown object '/com/tesk/bmc/zolt/none'.\n", 1}));
    EXPECT_EQ(busctl(service + "/com/tesk/bmc/zolt/none "
                               "org.freedesktop.DBus.Introspectable Introspect"),
              (Outcome{"Call failed: Unknown object '/com/tesk/bmc/zolt/none'.\n", 1}));
    EXPECT_EQ(busctl(service + "/com/tesk/bmc/zolt/bp/b" + properties + "GetAll s a.b"),
              (Outcome{"Call failed: Unknown interface 'a.b'.\n", 1}));
    EXPECT_EQ(busctl(service + "/com/tesk/bmc/zolt/bp/b" + properties + "Get ss a.b C"),
              (Outcome{"Call failed: Unknown interface 'a.b'.\n", 1}));
    EXPECT_EQ(busctl(service + "/com/tesk/bmc/zolt/bp/b" + properties +
                     "Get ss com.tesk.bmc.zolt.extra C"),
              (Outcome{"Call failed: Unknown property 'C'.\n", 1}));
    EXPECT_EQ(
        busctl(service + "/com/tesk/bmc/zolt/bp/b "
                         "org.freedesktop.DBus.ObjectManager GetManagedObjects"),
        (Outcome{"Call failed: Unknown interface 'org.freedesktop.DBus.ObjectManager'.\n", 1}));
}

TEST_F(ServiceOnBus, argumentsOfAnotherTypeAreRefused) {
    for (const char* arguments : {"GetAll", "GetAll u 1", "Get s a.b"}) {
        const Outcome outcome = busctl(std::string("call com.tesk.bmc.zolt /com/tesk/bmc/zolt/bp/b "
                                                   "org.freedesktop.DBus.Properties ") +
                                       arguments);
        EXPECT_EQ(outcome, (Outcome{"Call failed: No such device or address\n", 1})) << arguments;
    }
}

TEST_F(ServiceOnBus, leavesOtherInterfacesToSdBus) {
    EXPECT_EQ(busctl("call com.tesk.bmc.zolt / org.freedesktop.DBus.Peer Ping"), (Outcome{"", 0}));
}

TEST(ServiceOrders, affectTheirObjectAndInterfaceOnly) {
    SystemBus bus;
    bus.publish(twoModules({{.path = "/com/tesk/bmc/zolt/bp/b",
                             .interface = "com.tesk.bmc.zolt.extra",
                             .action = Action::error,
                             .name = "com.tesk.bmc.Error.Busy",
                             .text = "busy"}}));
    EXPECT_EQ(busctl(std::string(all) + "com.tesk.bmc.zolt.extra"),
              (Outcome{"Call failed: busy\n", 1}));
    EXPECT_EQ(busctl(std::string(all) + "com.tesk.bmc.zolt.backplaneCIR").status, 0);
    EXPECT_EQ(busctl("get-property com.tesk.bmc.zolt /com/tesk/bmc/zolt/info "
                     "com.tesk.bmc.zolt.pcardInfo CardCount"),
              (Outcome{"q 2\n", 0}));
}

TEST(ServiceOrders, takeEffectAfterTheGivenNumberOfCalls) {
    SystemBus bus;
    bus.publish(twoModules({{.interface = "com.tesk.bmc.zolt.extra",
                             .after = 2,
                             .action = Action::reply,
                             .signature = "u",
                             .value = 7}}));
    const std::string extra = std::string(all) + "com.tesk.bmc.zolt.extra";
    EXPECT_EQ(busctl(extra), (Outcome{"a{sv} 1 \"Note\" s \"text\"\n", 0}));
    EXPECT_EQ(busctl(extra), (Outcome{"a{sv} 1 \"Note\" s \"text\"\n", 0}));
    EXPECT_EQ(busctl(extra), (Outcome{"u 7\n", 0}));
    EXPECT_EQ(busctl(extra), (Outcome{"u 7\n", 0}));
}

TEST(ServiceOrders, replyWithoutContents) {
    SystemBus bus;
    bus.publish(twoModules({{.interface = "com.tesk.bmc.zolt.extra", .action = Action::reply}}));
    EXPECT_EQ(busctl(std::string(all) + "com.tesk.bmc.zolt.extra"), (Outcome{"", 0}));
}

TEST(ServiceOrders, delayDoesNotHoldUpOtherCalls) {
    SystemBus bus;
    bus.publish(
        twoModules({{.interface = "com.tesk.bmc.zolt.extra", .delay = std::chrono::seconds(60)}}));
    EXPECT_EQ(busctl("--expect-reply=false " + std::string(all) + "com.tesk.bmc.zolt.extra"),
              (Outcome{"", 0}));
    EXPECT_EQ(busctl("--timeout=10 " + std::string(all) + "com.tesk.bmc.zolt.backplaneCIR").status,
              0);
}

TEST(ServiceOrders, delayHoldsUpItsOwnCall) {
    SystemBus bus;
    bus.publish(twoModules(
        {{.interface = "com.tesk.bmc.zolt.extra", .delay = std::chrono::milliseconds(300)}}));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(busctl(std::string(all) + "com.tesk.bmc.zolt.extra"),
              (Outcome{"a{sv} 1 \"Note\" s \"text\"\n", 0}));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

TEST(ServiceOrders, applyToTheGivenNumberOfCallsAndThenLetLaterOrdersApply) {
    SystemBus bus;
    bus.publish(twoModules({{.interface = "com.tesk.bmc.zolt.extra",
                             .after = 1,
                             .times = 2,
                             .action = Action::reply,
                             .signature = "u",
                             .value = 7},
                            {.interface = "com.tesk.bmc.zolt.extra",
                             .after = 1,
                             .times = 1,
                             .action = Action::reply,
                             .signature = "u",
                             .value = 8}}));
    const std::string extra = std::string(all) + "com.tesk.bmc.zolt.extra";
    const Outcome normal{"a{sv} 1 \"Note\" s \"text\"\n", 0};
    EXPECT_EQ(busctl(extra), normal); // passes both
    EXPECT_EQ(busctl(extra), (Outcome{"u 7\n", 0}));
    EXPECT_EQ(busctl(extra), (Outcome{"u 7\n", 0}));
    EXPECT_EQ(busctl(extra), (Outcome{"u 8\n", 0})); // counts for the second order only now
    EXPECT_EQ(busctl(extra), normal);
}

TEST(ServiceOrders, callWithoutAnAnswerHoldsUpNoOtherCall) {
    SystemBus bus;
    bus.publish(twoModules({{.interface = "com.tesk.bmc.zolt.extra",
                             .times = 1,
                             .delay = board::ServiceOrder::forever}}));
    const std::string extra = std::string(all) + "com.tesk.bmc.zolt.extra";
    EXPECT_EQ(busctl("--timeout=1 " + extra), (Outcome{"Call failed: Connection timed out\n", 1}));
    EXPECT_EQ(busctl(extra), (Outcome{"a{sv} 1 \"Note\" s \"text\"\n", 0}));
}

TEST(ServiceOrders, leavingEndsTheService) {
    SystemBus bus;
    bus.publish(twoModules({{.interface = "com.tesk.bmc.zolt.extra", .action = Action::leave}}));
    EXPECT_EQ(busctl(std::string(all) + "com.tesk.bmc.zolt.extra"),
              (Outcome{"Call failed: Message recipient disconnected from message bus without "
                       "replying\n",
                       1}));
    EXPECT_EQ(busctl(std::string(all) + "com.tesk.bmc.zolt.backplaneCIR").status, 1);
}

// The board loader refuses such a value. If it misses one, the service must not end.
TEST(Service, valueThatDoesNotFitIsAnErrorReply) {
    board::ServiceModel model = twoModules();
    model.interfaces[3].properties = {{"Note", "y", "text"}};
    SystemBus bus;
    bus.publish(std::move(model));
    EXPECT_EQ(busctl(std::string(all) + "com.tesk.bmc.zolt.extra"),
              (Outcome{"Call failed: Invalid argument\n", 1}));
    EXPECT_EQ(busctl(std::string(all) + "com.tesk.bmc.zolt.backplaneCIR").status, 0);
}

TEST(Service, throwsWithoutABusOrItsName) {
    SystemBus bus;
    EXPECT_THROW(Service(nullptr, "unix:path=/nonexistent/bus", {}), std::system_error);
    bus.publish(twoModules());
    sd_event* loop = nullptr;
    ASSERT_GE(sd_event_new(&loop), 0);
    EXPECT_THROW(Service(loop, getenv("DBUS_SYSTEM_BUS_ADDRESS"), {}), std::system_error);
    sd_event_unref(loop);
}

} // namespace
} // namespace standin
