#include "capture/service.h"

#include "capture/bus_message.h"
#include "tests/support/bus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace capture {
namespace {

using board::listOf;
using board::Property;
using board::ServiceModel;
using board::ServiceOrder;
using board::Value;
using zolt::test::SystemBus;
using Action = ServiceOrder::Action;
using Reach = ServiceReading::Reach;

const std::string root = "/com/tesk/bmc/zolt/";
const std::string infoPath = root + "info";
const std::string infoInterface = "com.tesk.bmc.zolt.pcardInfo";
const std::string cemInterface = "com.tesk.bmc.zolt.cemCIR";

std::vector<std::string> allManagers() {
    std::vector<std::string> paths;
    for (const char* const type : {"bp", "puck", "rfc", "riser", "ftulm", "karnRaid", "karnNonRaid",
                                   "rida", "flop", "bi", "battery"}) {
        paths.push_back(root + type);
    }
    return paths;
}

ServiceModel publishing(std::vector<board::PublishedInterface> interfaces,
                        std::vector<ServiceOrder> orders = {}) {
    interfaces.push_back({infoPath, infoInterface, {{"FRUreadComplete", "b", true}}});
    return {.managers = allManagers(),
            .interfaces = std::move(interfaces),
            .orders = std::move(orders)};
}

ServiceReading read() {
    Observation observation;
    readService(observation, noProgress);
    return std::move(observation.service);
}

ServiceReading readOf(ServiceModel model) {
    SystemBus bus;
    bus.publish(std::move(model));
    return read();
}

// A value as text, to compare whole values: a list in brackets, a text in quotes.
std::string shown(const Value& value) {
    struct Show {
        std::string operator()(bool truth) const { return truth ? "true" : "false"; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(double real) const { return std::to_string(real); }
        std::string operator()(const std::string& text) const { return "'" + text + "'"; }
        std::string operator()(const Value::List& list) const {
            std::string all = "[";
            for (const Value& each : list) {
                all += (all.size() > 1 ? " " : "") + shown(each);
            }
            return all + "]";
        }
    };
    return std::visit(Show{}, value.content);
}

std::string shown(const std::vector<Property>& properties) {
    std::string all;
    for (const Property& property : properties) {
        all += property.name + " " + property.signature + " " + shown(property.value) + "\n";
    }
    return all;
}

TEST(Service, aMachineWithoutABusIsTold) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    const ServiceReading reading = read();
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    EXPECT_EQ(reading.reach, Reach::noBus);
    EXPECT_FALSE(reading.info.has_value());
    EXPECT_TRUE(reading.managers.empty());
}

TEST(Service, aBusWithoutTheServiceIsTold) {
    const SystemBus bus;
    const ServiceReading reading = read();
    EXPECT_EQ(reading.reach, Reach::noService);
    EXPECT_FALSE(reading.info.has_value());
    EXPECT_TRUE(reading.managers.empty());
}

TEST(Service, aServiceThatAnswersLikeAMissingOneIsThere) {
    const ServiceReading reading =
        readOf(publishing({}, {{.path = infoPath,
                                .action = Action::error,
                                .name = "org.freedesktop.DBus.Error.ServiceUnknown",
                                .text = "gone fishing"}}));
    EXPECT_EQ(reading.reach, Reach::service);
    ASSERT_TRUE(reading.info && reading.info->error);
    EXPECT_EQ(reading.info->error->name, "org.freedesktop.DBus.Error.ServiceUnknown");
    EXPECT_EQ(reading.info->error->text, "gone fishing");
    EXPECT_EQ(reading.managers.size(), 11U);
}

TEST(Service, eachObjectIsAskedForTheInterfaceOfItsView) {
    const ServiceReading reading = readOf(publishing({
        {root + "riser/b", cemInterface, {{"DeviceVer", "y", 2}}},
        {root + "riser/a", cemInterface, {{"DeviceVer", "y", 1}}},
        {root + "bp/x", "com.tesk.bmc.zolt.backplaneCIR", {{"DeviceId", "q", 65535}}},
        {root + "puck/y", "com.tesk.bmc.zolt.puckCIR", {}},
        {root + "rfc/z", "com.tesk.bmc.zolt.rfcCIR", {}},
        {root + "battery/w", cemInterface, {}},
    }));
    ASSERT_TRUE(reading.info.has_value());
    EXPECT_EQ(reading.info->path, infoPath);
    EXPECT_EQ(reading.info->interface, infoInterface);
    EXPECT_EQ(shown(reading.info->properties), "FRUreadComplete b true\n");

    std::vector<std::string> managers;
    for (const ManagerReading& manager : reading.managers) {
        managers.push_back(manager.path);
        EXPECT_FALSE(manager.error.has_value());
        EXPECT_FALSE(manager.isCut);
    }
    EXPECT_EQ(managers, allManagers());

    std::vector<std::string> objects;
    for (const PropertiesReading& object : reading.objects) {
        objects.push_back(object.path.substr(root.size()) + " " + object.interface);
    }
    EXPECT_EQ(objects, (std::vector<std::string>{
                           "bp/x com.tesk.bmc.zolt.backplaneCIR",
                           "puck/y com.tesk.bmc.zolt.puckCIR",
                           "rfc/z com.tesk.bmc.zolt.rfcCIR",
                           "riser/a com.tesk.bmc.zolt.cemCIR",
                           "riser/b com.tesk.bmc.zolt.cemCIR",
                           "battery/w com.tesk.bmc.zolt.cemCIR",
                       }));
    EXPECT_EQ(shown(reading.objects[3].properties), "DeviceVer y 1\n");

    // The reply of the manager has the same interface, beside those of D-Bus.
    const auto& published = reading.managers[0].interfaces;
    const auto own = std::ranges::find(published, "com.tesk.bmc.zolt.backplaneCIR",
                                       &board::PublishedInterface::interface);
    ASSERT_NE(own, published.end());
    EXPECT_EQ(own->path, root + "bp/x");
    EXPECT_EQ(shown(own->properties), "DeviceId q 65535\n");
}

TEST(Service, aPropertyOfAnyTypeKeepsTypeAndValue) {
    const std::vector<Property> properties{
        {"a", "y", 255},
        {"b", "n", -32768},
        {"c", "q", 65535},
        {"d", "i", -2147483647},
        {"e", "u", std::int64_t{4294967295}},
        {"f", "x", std::int64_t{-9223372036854775807}},
        {"g", "t", std::int64_t{-1}}, // the pattern of the highest number
        {"h", "d", 1.5},
        {"i", "b", false},
        {"j", "s", "text \xC3\xA4"},
        {"k", "o", "/an/object"},
        {"l", "g", "a{sv}"},
        {"m", "(yyyyyy)", listOf(1, 2, 3, 4, 5, 6)},
        {"n", "as", listOf("x", "")},
        {"o", "ay", listOf()},
        {"p", "a{s(iv)}", listOf(listOf("key", listOf(-1, listOf("as", listOf("deep")))))},
        {"q", "v", listOf("v", listOf("q", 7))},
    };
    const ServiceReading reading =
        readOf(publishing({{root + "flop/f", cemInterface, properties}}));
    ASSERT_EQ(reading.objects.size(), 1U);
    EXPECT_EQ(shown(reading.objects[0].properties), shown(properties));
    EXPECT_TRUE(reading.objects[0].unkept.empty());
}

TEST(Service, errorsKeepNameAndText) {
    const std::string path = root + "riser/r";
    const ServiceReading reading = readOf(publishing(
        {{path, cemInterface, {}}},
        {{.path = path, .action = Action::error, .name = "com.example.No", .text = "not for you"},
         {.path = root + "bp",
          .action = Action::error,
          .name = "com.example.Never",
          .text = "x"}}));
    ASSERT_TRUE(reading.managers[0].error.has_value());
    EXPECT_EQ(reading.managers[0].error->name, "com.example.Never");
    EXPECT_EQ(reading.managers[0].error->text, "x");
    ASSERT_EQ(reading.objects.size(), 1U);
    ASSERT_TRUE(reading.objects[0].error.has_value());
    EXPECT_EQ(reading.objects[0].error->name, "com.example.No");
    EXPECT_EQ(reading.objects[0].error->text, "not for you");
}

TEST(Service, aServiceThatLeavesIsAnErrorOfEachLaterCall) {
    const ServiceReading reading =
        readOf(publishing({}, {{.path = root + "puck", .action = Action::leave}}));
    EXPECT_EQ(reading.reach, Reach::service);
    ASSERT_EQ(reading.managers.size(), 11U);
    EXPECT_FALSE(reading.managers[0].error.has_value());
    EXPECT_EQ(reading.managers[1].error->name, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(reading.managers[10].error->name, "org.freedesktop.DBus.Error.ServiceUnknown");
}

TEST(Service, repliesOfAnotherTypeKeepTypeAndValue) {
    const std::string path = root + "riser/r";
    const ServiceReading reading = readOf(publishing(
        {{path, cemInterface, {}}},
        {{.path = infoPath, .action = Action::reply}, // without contents
         {.path = path, .action = Action::reply, .signature = "as", .value = listOf("a", "b")},
         {.path = root + "bp", .action = Action::reply, .signature = "u", .value = 7}}));
    ASSERT_TRUE(reading.info->other.has_value());
    EXPECT_EQ(reading.info->other->signature, "");
    EXPECT_FALSE(reading.info->other->value.has_value());
    EXPECT_FALSE(reading.info->error.has_value());
    ASSERT_TRUE(reading.managers[0].other.has_value());
    EXPECT_EQ(reading.managers[0].other->signature, "u");
    EXPECT_EQ(shown(*reading.managers[0].other->value), "7");
    ASSERT_TRUE(reading.objects.at(0).other.has_value());
    EXPECT_EQ(reading.objects[0].other->signature, "as");
    EXPECT_EQ(shown(*reading.objects[0].other->value), "['a' 'b']");
}

TEST(Service, anObjectInAReplyOfItsOwnIsAskedOnce) {
    // One path twice, and one object without interfaces.
    const Value objects = listOf(listOf(root + "bp/x", listOf(listOf("com.example.I", listOf()))),
                                 listOf(root + "bp/x", listOf()));
    const ServiceReading reading =
        readOf(publishing({}, {{.path = root + "bp",
                                .interface = "org.freedesktop.DBus.ObjectManager",
                                .action = Action::reply,
                                .signature = "a{oa{sa{sv}}}",
                                .value = objects}}));
    ASSERT_EQ(reading.managers[0].interfaces.size(), 2U);
    EXPECT_EQ(reading.managers[0].interfaces[0].interface, "com.example.I");
    EXPECT_EQ(reading.managers[0].interfaces[1].path, root + "bp/x");
    EXPECT_EQ(reading.managers[0].interfaces[1].interface, "");
    ASSERT_EQ(reading.objects.size(), 1U);
    EXPECT_TRUE(reading.objects[0].error.has_value()); // there is no such object
}

// Builds a message of which a test reads the contents.
class BusMessage : public testing::Test {
public:
    BusMessage() {
        bus_.publish({}); // a connection needs a bus
        EXPECT_GE(sd_bus_open_system(&connection_), 0);
        EXPECT_GE(sd_bus_message_new_method_call(connection_, &message_, nullptr, "/a", "a.b", "C"),
                  0);
    }
    ~BusMessage() override {
        sd_bus_message_unref(message_);
        sd_bus_flush_close_unref(connection_);
    }
    BusMessage(const BusMessage&) = delete;
    BusMessage& operator=(const BusMessage&) = delete;

protected:
    sd_bus_message* sealed() {
        if (!isSealed_) {
            EXPECT_GE(sd_bus_message_seal(message_, 1, 0), 0);
            isSealed_ = true;
        }
        EXPECT_GE(sd_bus_message_rewind(message_, 1), 0);
        return message_;
    }

    int readProperties() {
        return readPropertyMap(sealed(), "/path", "an.Interface", room_, properties_, unkept_);
    }

    SystemBus bus_;
    sd_bus* connection_ = nullptr;
    sd_bus_message* message_ = nullptr;
    bool isSealed_ = false;
    BusRoom room_;
    std::vector<Property> properties_;
    std::vector<UnkeptProperty> unkept_;
};

TEST_F(BusMessage, aFileDescriptorCannotBeKeptAndTheNextPropertyCan) {
    ASSERT_GE(sd_bus_message_append(message_, "a{sv}", 3, "first", "h", 0, "second", "(ivs)", 1,
                                    "h", 0, "x", "third", "q", 5),
              0);
    EXPECT_EQ(readProperties(), 0);
    EXPECT_EQ(shown(properties_), "third q 5\n");
    ASSERT_EQ(unkept_.size(), 2U);
    EXPECT_EQ(unkept_[0].path, "/path");
    EXPECT_EQ(unkept_[0].interface, "an.Interface");
    EXPECT_EQ(unkept_[0].name, "first");
    EXPECT_EQ(unkept_[0].signature, "h");
    EXPECT_EQ(unkept_[1].signature, "(ivs)");
}

// A value of variants in variants, as deep as the number says.
void appendNested(sd_bus_message* message, unsigned depth) {
    if (depth == 0) {
        ASSERT_GE(sd_bus_message_append(message, "y", 1), 0);
        return;
    }
    ASSERT_GE(sd_bus_message_open_container(message, 'v', depth == 1 ? "y" : "v"), 0);
    appendNested(message, depth - 1);
    ASSERT_GE(sd_bus_message_close_container(message), 0);
}

TEST_F(BusMessage, aValueNestedTooDeeplyCannotBeKept) {
    ASSERT_GE(sd_bus_message_open_container(message_, 'a', "{sv}"), 0);
    for (const unsigned depth : {deepestValue, deepestValue + 1}) {
        ASSERT_GE(sd_bus_message_open_container(message_, 'e', "sv"), 0);
        ASSERT_GE(sd_bus_message_append(message_, "s", std::to_string(depth).c_str()), 0);
        appendNested(message_, depth + 1); // the property's own variant does not count
        ASSERT_GE(sd_bus_message_close_container(message_), 0);
    }
    ASSERT_GE(sd_bus_message_close_container(message_), 0);
    EXPECT_EQ(readProperties(), 0);
    ASSERT_EQ(properties_.size(), 1U);
    EXPECT_EQ(properties_[0].name, "32");
    ASSERT_EQ(unkept_.size(), 1U);
    EXPECT_EQ(unkept_[0].name, "33");
}

TEST_F(BusMessage, aValueWithoutRoomCannotBeKeptAndASmallerOneCan) {
    const std::string longText(3000, 'x');
    ASSERT_GE(sd_bus_message_append(message_, "a{sv}", 3, "list", "ay", 5, 1, 2, 3, 4, 5, "text",
                                    "s", longText.c_str(), "small", "y", 1),
              0);
    room_ = {.values = 5, .textBytes = 2000};
    EXPECT_EQ(readProperties(), 0);
    // The list takes all room but leaves nothing for the others.
    EXPECT_EQ(properties_.size(), 0U);
    EXPECT_EQ(unkept_.size(), 3U);

    properties_.clear();
    unkept_.clear();
    room_ = {.values = 20, .textBytes = 2000};
    EXPECT_EQ(readProperties(), 0);
    EXPECT_EQ(shown(properties_), "list ay [1 2 3 4 5]\nsmall y 1\n");
    ASSERT_EQ(unkept_.size(), 1U);
    EXPECT_EQ(unkept_[0].name, "text");
}

TEST_F(BusMessage, objectsWithoutRoomAreCut) {
    ASSERT_GE(sd_bus_message_append(message_, "a{oa{sa{sv}}}", 2, "/a", 1, "i.a", 1, "p", "q", 5,
                                    "/b", 1, "i.b", 0),
              0);
    room_.values = 4;
    ManagerReading reading;
    EXPECT_EQ(readObjects(sealed(), room_, reading), 0);
    ASSERT_EQ(reading.interfaces.size(), 1U);
    EXPECT_EQ(shown(reading.interfaces[0].properties), "p q 5\n");
    EXPECT_TRUE(reading.isCut);
}

TEST_F(BusMessage, contentsOfSeveralTypesHaveNoValue) {
    ASSERT_GE(sd_bus_message_append(message_, "si", "a", 1), 0);
    OtherReply contents;
    EXPECT_EQ(readContents(sealed(), room_, contents), 0);
    EXPECT_EQ(contents.signature, "si");
    EXPECT_FALSE(contents.value.has_value());
}

TEST_F(BusMessage, contentsOfAnotherTypeAreNoProperties) {
    ASSERT_GE(sd_bus_message_append(message_, "as", 1, "a"), 0);
    EXPECT_LT(readProperties(), 0);
    EXPECT_TRUE(properties_.empty());
}

} // namespace
} // namespace capture
