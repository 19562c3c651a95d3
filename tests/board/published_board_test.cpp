#include "board/published_board.h"

#include "board/board_loader.h"
#include "tests/board/refusal.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace board {
namespace {

constexpr const char* interfacePrefix = "com.tesk.bmc.zolt.";
constexpr const char* pathPrefix = "/com/tesk/bmc/zolt/";

std::string text(const Value& value) {
    struct Texts {
        std::string operator()(bool truth) const { return truth ? "true" : "false"; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const { return std::to_string(number); }
        std::string operator()(const std::string& string) const { return "'" + string + "'"; }
        std::string operator()(const Value::List& list) const {
            std::string all;
            for (const Value& each : list) {
                all += (all.empty() ? "" : " ") + text(each);
            }
            return "[" + all + "]";
        }
    };
    return std::visit(Texts{}, value.content);
}

// Returns an interface of an object as lines "NAME SIGNATURE VALUE", or "not published".
std::string published(const ServiceModel& model, const std::string& path,
                      const std::string& interface) {
    for (const PublishedInterface& each : model.interfaces) {
        if (each.path == pathPrefix + path && each.interface == interfacePrefix + interface) {
            std::string lines;
            for (const Property& property : each.properties) {
                lines +=
                    property.name + " " + property.signature + " " + text(property.value) + "\n";
            }
            return lines;
        }
    }
    return "not published";
}

ServiceModel publish(const std::string& description) {
    return publishBoard(test::boardOf(description, "b"));
}

// Returns the description of a slot with a module of this type and class.
std::string module(const std::string& type, int deviceClass) {
    return "[[slot]]\nid = 7\n[slot.module]\ntype = '" + type + "'\nobject = 'one'\n" +
           "format_version = 3\ndevice_class = " + std::to_string(deviceClass) +
           "\ndevice_id = 0x1234\nvendor_id = 0x0B\ndevice_version = 2\nxwires = 5\npwires = 7\n" +
           "target_type = 3\ntarget_address = 0x50\n";
}

TEST(PublishedBoard, cardHasFourEndPointsWhateverItsPayloadHas) {
    EXPECT_EQ(published(publish(module("riser", 0x11) +
                                "[[slot.module.end_point]]\npicpwr_index = 1\ntype = 2\n"),
                        "riser/one", "cemCIR"),
              "PayloadFrmtVer y 3\nDeviceClass y 17\nStaticPaylodSize y 3\nDeviceId q 4660\n"
              "VendorId q 11\nDeviceVer y 2\nNumWires y 87\nTargetI2cDevType y 97\n"
              "TargetI2cDevAddr y 80\nEndPoint0 (yyyyyy) [16 64 0 0 0 0]\n"
              "EndPoint1 (yyyyyy) [0 0 0 0 0 0]\nEndPoint2 (yyyyyy) [0 0 0 0 0 0]\n"
              "EndPoint3 (yyyyyy) [0 0 0 0 0 0]\nchecksum y 62\n");
}

TEST(PublishedBoard, puckAndFanControllerHavePropertyNamesOfTheirOwn) {
    const std::string properties =
        "StaticPaylodSize y 2\nDeviceId q 4660\nVendorId q 11\nDeviceVer y 2\nNumPwires y 87\n"
        "TargetI2cGpioDevType y 96\nTargetI2cGpioDevAddr y 80\n";
    EXPECT_EQ(published(publish(module("puck", 0x1A)), "puck/one", "puckCIR"),
              "PayloadFrmtVer y 3\nDeviceClass y 26\n" + properties + "checksum y 135\n");
    EXPECT_EQ(published(publish(module("rfc", 0x1B)), "rfc/one", "rfcCIR"),
              "PayloadFrmtVer y 3\nDeviceClass y 27\n" + properties + "checksum y 134\n");
}

// A backplane has no end points itself, but the service looks for them behind the descriptor. Here
// it finds the padding, or the end points of a payload of another class.
TEST(PublishedBoard, backplaneHasSixteenEndPointsBehindItsDescriptor) {
    EXPECT_NE(published(publish(module("bp", 0x2A)), "bp/one", "backplaneCIR")
                  .find("EndPoint0 (yyyyyy) [0 0 0 0 0 0]\n"),
              std::string::npos);
    const std::string lines = published(publish(module("bp", 0x11) + "[[slot.module.end_point]]\n" +
                                                "[[slot.module.end_point]]\ntype = 4\n"),
                                        "bp/one", "backplaneCIR");
    EXPECT_EQ(std::ranges::count(lines, '\n'), 9 + 16 + 1);
    EXPECT_NE(lines.find("EndPoint0 (yyyyyy) [128 0 0 0 0 0]\nEndPoint1 (yyyyyy) [0 0"),
              std::string::npos);
    EXPECT_NE(lines.find("EndPoint15 (yyyyyy) [0 0 0 0 0 0]\nchecksum y "), std::string::npos);
}

// Behind the payload lies the OEM area: 9, 1, 9, 6, 1, 2, 3, 43 and its checksum.
TEST(PublishedBoard, checksumIsTheLastByteOfTheStatedLength) {
    struct {
        std::string type;
        int deviceClass;
        std::string interface;
        int units;
        int checksum;
    } const cases[] = {
        {"riser", 0x11, "cemCIR", 0, 0},
        {"riser", 0x11, "cemCIR", 1, 11},
        {"riser", 0x11, "cemCIR", 2, 119},
        {"riser", 0x11, "cemCIR", 3, 43},
        {"riser", 0x11, "cemCIR", 255, 0},
        {"bp", 0x2A, "backplaneCIR", 3, 119},
        {"bp", 0x2A, "backplaneCIR", 4, 43},
        // A payload of a header only has its checksum in byte 15, whatever its stated length.
        {"puck", 0x1A, "puckCIR", 0, 119},
        {"puck", 0x1A, "puckCIR", 3, 119},
        {"rfc", 0x1B, "rfcCIR", 1, 119},
        {"rfc", 0x1B, "rfcCIR", 255, 119},
    };
    for (const auto& each : cases) {
        const std::string lines = published(
            publish(module(each.type, each.deviceClass) +
                    "checksum = 119\nstatic_payload_size = " + std::to_string(each.units) +
                    "\n[[slot.module.oem]]\ntype = 9\ndata = [1, 2, 3, 43]\n"),
            each.type + "/one", each.interface);
        EXPECT_TRUE(lines.ends_with("\nchecksum y " + std::to_string(each.checksum) + "\n"))
            << each.type << " of " << each.units << " units:\n"
            << lines;
    }
}

TEST(PublishedBoard, checksumBehindThePayloadBlockIsZero) {
    for (const auto& [units, checksum] : {std::pair(2, 119), std::pair(3, 0)}) {
        const std::string lines =
            published(publish("[[slot]]\nid = 7\npayload_offset = 24559\n[slot.module]\n"
                              "type = 'flop'\nobject = 'one'\nchecksum = 119\n"
                              "static_payload_size = " +
                              std::to_string(units)),
                      "flop/one", "cemCIR");
        EXPECT_TRUE(lines.ends_with("\nchecksum y " + std::to_string(checksum) + "\n")) << lines;
    }
}

TEST(PublishedBoard, everyTypeHasAManager) {
    std::vector<std::string> expected;
    for (const char* const type : {"bp", "puck", "rfc", "riser", "ftulm", "karnRaid", "karnNonRaid",
                                   "rida", "flop", "bi", "battery"}) {
        expected.push_back(std::string(pathPrefix) + type);
    }
    EXPECT_EQ(publish("").managers, expected);
}

TEST(PublishedBoard, moduleWithoutATypeIsNotPublished) {
    EXPECT_EQ(publish("[[slot]]\nid = 7\n[slot.module]\ndevice_class = 1\n").interfaces.size(), 1U);
}

TEST(PublishedBoard, informationObjectIsDescribedOrHasDefaults) {
    EXPECT_EQ(published(publish(""), "info", "pcardInfo"),
              "FRUreadComplete b true\nSlotMappingComplete b true\n");
    EXPECT_EQ(published(publish("[service.info]\nCount = 3\nOdd = {signature = 'as', "
                                "value = ['a', 'b']}\nName = 'x'\n"),
                        "info", "pcardInfo"),
              "Count q 3\nName s 'x'\nOdd as ['a' 'b']\n");
}

TEST(PublishedBoard, serviceObjectsChangeAndAddProperties) {
    const auto model = publish(module("puck", 0x1A) + R"(
[[service.object]]
path = "puck/one"
interface = "puckCIR"
without = ["PayloadFrmtVer", "checksum"]
[service.object.properties]
DeviceId = { signature = "y", value = 5 }
More = true
[[service.object]]
path = "/com/tesk/bmc/zolt/puck/two"
interface = "com.tesk.bmc.zolt.other"
)");
    EXPECT_EQ(published(model, "puck/one", "puckCIR"),
              "DeviceClass y 26\nStaticPaylodSize y 2\nDeviceId y 5\nVendorId q 11\n"
              "DeviceVer y 2\nNumPwires y 87\nTargetI2cGpioDevType y 96\n"
              "TargetI2cGpioDevAddr y 80\nMore b true\n");
    EXPECT_EQ(published(model, "puck/two", "other"), "");
}

TEST(PublishedBoard, faultsHaveTheirTimeAndNumberOfCalls) {
    const auto model = publish("faults = ['object a delay 2s', 'object b delay 1ms fail', "
                               "'object c delay forever', 'object d after 3 2 times']");
    ASSERT_EQ(model.orders.size(), 4U);
    using Action = ServiceOrder::Action;
    const struct {
        const char* path;
        int after;
        int times;
        std::chrono::milliseconds delay;
        Action action;
    } expected[] = {
        {"/com/tesk/bmc/zolt/d", 3, 2, std::chrono::milliseconds(0), Action::error},
        {"/com/tesk/bmc/zolt/c", 0, 0, ServiceOrder::forever, Action::answer},
        {"/com/tesk/bmc/zolt/b", 0, 0, std::chrono::milliseconds(1), Action::error},
        {"/com/tesk/bmc/zolt/a", 0, 0, std::chrono::milliseconds(2000), Action::answer},
    };
    for (std::size_t i = 0; i < model.orders.size(); ++i) {
        EXPECT_EQ(model.orders[i].path, expected[i].path);
        EXPECT_EQ(model.orders[i].after, expected[i].after) << expected[i].path;
        EXPECT_EQ(model.orders[i].times, expected[i].times) << expected[i].path;
        EXPECT_EQ(model.orders[i].delay, expected[i].delay) << expected[i].path;
        EXPECT_EQ(model.orders[i].action, expected[i].action) << expected[i].path;
    }
}

TEST(PublishedBoard, faultsComeBeforeTheDescriptionsOrders) {
    const auto model = publish("faults = ['object bp/bp1', 'object /a/b error com.Error']\n"
                               "[[service.order]]\npath = 'bp'\ndelay_ms = 5\nafter = 2\n"
                               "action = 'reply'\nsignature = 'y'\nvalue = 7\n");
    ASSERT_EQ(model.orders.size(), 3U);
    EXPECT_EQ(model.orders[0].path, "/a/b");
    EXPECT_EQ(model.orders[0].name, "com.Error");
    EXPECT_EQ(model.orders[1].path, "/com/tesk/bmc/zolt/bp/bp1");
    EXPECT_EQ(model.orders[1].name, "org.freedesktop.DBus.Error.Failed");
    EXPECT_EQ(model.orders[2].path, "/com/tesk/bmc/zolt/bp");
    EXPECT_EQ(model.orders[2].after, 2);
    EXPECT_EQ(model.orders[2].delay, std::chrono::milliseconds(5));
    EXPECT_EQ(model.orders[2].signature, "y");
    EXPECT_EQ(text(model.orders[2].value), "7");
}

TEST(PublishedBoard, refusesWithFileLineAndReason) {
    const std::pair<const char*, const char*> cases[] = {
        {"[service]\nabsent = true", "b:2: service: 'absent' is not a key here"},
        {"[[service.object]]\npath = 'bp/x'", "b:1: object: needs 'path' and 'interface'"},
        {"[service.info]\nCount = 65536",
         "b:2: 'Count' must be true, false, a number from 0 to 65535 or a text; "
         "write any other type as { signature = ..., value = ... }"},
        {"[service.info]\nCount = 2020-01-01",
         "b:2: 'Count' must be true, false, a number from 0 to 65535 or a text; "
         "write any other type as { signature = ..., value = ... }"},
        {"[service.info]\nA = {signature = 'y', value = 256}",
         "b:2: A: 'value' does not fit the signature 'y'"},
        {"[service.info]\nA = {signature = 'yy', value = 1}",
         "b:2: A: 'signature' must be one complete D-Bus type, not 'yy'"},
        {"[service.info]\nA = {value = 1}", "b:2: A: 'signature' is missing beside 'value'"},
        {"[service.info]\nA = {signature = 'y'}", "b:2: A: 'value' is missing beside 'signature'"},
        {"[service.info]\nA = {signature = 's', value = \"\\u0000\"}",
         "b:2: A: 'value' does not fit the signature 's'"},
        {"[service.info]\nA = {signature = 'g', value = 'a'}",
         "b:2: A: 'value' does not fit the signature 'g'"},
        {"[[service.order]]\naction = 'reply'\n\nsignature = 'y'",
         "b:1: order: 'value' is missing beside 'signature'"},
        {"[[service.order]]\naction = 'reply'\nvalue = 1",
         "b:1: order: 'signature' is missing beside 'value'"},
        {"[[service.order]]\nsignature = 'y'",
         "b:2: order: 'signature' is a key only where 'action' is 'reply'"},
        {"[[service.order]]\naction = 'error'\nvalue = 1",
         "b:3: order: 'value' is a key only where 'action' is 'reply'"},
        // names that the bus does not allow
        {"[[service.object]]\npath = 'bp/x-1'\ninterface = 'x'",
         "b:2: 'bp/x-1' is no object path of D-Bus"},
        {"[[service.order]]\npath = ''", "b:2: '' is no object path of D-Bus"},
        {"[[service.order]]\npath = '/a/'", "b:2: '/a/' is no object path of D-Bus"},
        {"[[service.object]]\npath = 'a'\ninterface = 'a..b'",
         "b:3: 'a..b' is no interface name of D-Bus"},
        {"[[service.order]]\ninterface = ''", "b:2: '' is no interface name of D-Bus"},
        {"[[service.order]]\nerror = 'Failed'", "b:2: 'Failed' is no error name of D-Bus"},
        {"[service.info]\n'a b' = 1", "b:2: 'a b' is no property name of D-Bus"},
        {"[[service.object]]\npath = 'a'\ninterface = 'x'\nwithout = ['1']",
         "b:4: '1' is no property name of D-Bus"},
        {"[[service.order]]\naction = 'explode'",
         "b:2: order: 'action' must be answer, error, reply or leave"},
    };
    for (const auto& [description, message] : cases) {
        EXPECT_EQ(test::refusalOf(description, "b"), message) << description;
    }
}

} // namespace
} // namespace board
