#include "board/bus_names.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>

namespace board {
namespace {

const std::string longest(255, 'a');
const std::string tooLong(256, 'a');

struct Row {
    std::string_view text;
    bool isPath;
    bool isProperty;
    bool isInterface;
};

const Row rows[] = {
    {"", false, false, false},
    {"a", false, true, false},
    {"_", false, true, false},
    {"Zz_09", false, true, false},
    {"9a", false, false, false},
    {"a-b", false, false, false},
    {"a b", false, false, false},
    {"\xC3\xA4", false, false, false},
    {std::string_view("a\0", 2), false, false, false},
    {"a.b", false, false, true},
    {"com.tesk.bmc.zolt.riser_1", false, false, true},
    {"a.9b", false, false, false},
    {"a..b", false, false, false},
    {".a", false, false, false},
    {"a.", false, false, false},
    {".", false, false, false},
    {"a.b/c", false, false, false},
    {"/", true, false, false},
    {"/a", true, false, false},
    {"/9/_/Zz_09", true, false, false},
    {"/com/tesk/bmc/zolt/riser/riser1", true, false, false},
    {"a/b", false, false, false},
    {"//", false, false, false},
    {"/a/", false, false, false},
    {"/a//b", false, false, false},
    {"/a.b", false, false, false},
    {"/a-b", false, false, false},
    {longest, false, true, false},
    {tooLong, false, false, false},
};

TEST(BusNames, followTheRulesOfTheirKind) {
    for (const Row& row : rows) {
        EXPECT_EQ(isObjectPath(row.text), row.isPath) << row.text;
        EXPECT_EQ(isPropertyName(row.text), row.isProperty) << row.text;
        EXPECT_EQ(isInterfaceName(row.text), row.isInterface) << row.text;
    }
}

TEST(BusNames, endAtALength) {
    EXPECT_TRUE(isInterfaceName("a." + longest.substr(2)));
    EXPECT_FALSE(isInterfaceName("a." + longest.substr(1)));
    EXPECT_TRUE(isObjectPath("/" + std::string(65535, 'a')));
    EXPECT_FALSE(isObjectPath("/" + std::string(65536, 'a')));
}

// libsystemd refuses to send a wrong name. It lets a digit begin a property's name.
TEST(BusNames, areThoseThatTheBusSends) {
    constexpr std::string_view characters = "/./.aZ_09-";
    std::mt19937 random(1);
    unsigned right = 0;
    for (unsigned i = 0; i < 20000; ++i) {
        std::string text(random() % 6, '/');
        for (char& character : text) {
            character = characters[random() % characters.size()];
        }
        const bool isName = sd_bus_member_name_is_valid(text.c_str()) > 0;
        EXPECT_EQ(isObjectPath(text), sd_bus_object_path_is_valid(text.c_str()) > 0) << text;
        EXPECT_EQ(isInterfaceName(text), sd_bus_interface_name_is_valid(text.c_str()) > 0) << text;
        EXPECT_EQ(isPropertyName(text), isName && text[0] != '0' && text[0] != '9') << text;
        right += isObjectPath(text) || isInterfaceName(text) || isPropertyName(text) ? 1U : 0U;
    }
    EXPECT_GT(right, 1000U);
}

} // namespace
} // namespace board
