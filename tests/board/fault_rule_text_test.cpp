#include "board/fault_rule_text.h"

#include <gtest/gtest.h>

#include <string>

namespace board {
namespace {

struct Written {
    std::string rule;
    std::string text{}; ///< empty: the rule itself
};

class FaultRuleText : public testing::TestWithParam<Written> {};

TEST_P(FaultRuleText, saysTheRuleInTheFewestWords) {
    const auto& [rule, text] = GetParam();
    const FaultRule parsed = parseFaultRule(rule);
    EXPECT_EQ(faultRuleText(parsed), text.empty() ? rule : text);
    EXPECT_EQ(parseFaultRule(faultRuleText(parsed)), parsed);
}

INSTANTIATE_TEST_SUITE_P(
    Every, FaultRuleText,
    testing::Values(
        Written{"named-read PICPWR_3_* status 7"}, Written{"named-read NAME"},
        Written{"named-read NAME status -1", "named-read NAME"},
        Written{"raw-read 0x1039 status 7 after 2 once"},
        Written{"raw-read 4153", "raw-read 0x1039"},
        Written{"raw-read 0x101C-0x1029 status -5 17 times"},
        Written{"hal-object PICPWR_PAYLOADS once"},
        Written{"hal-object PICPWR_PAYLOADS fail delay 2s",
                "hal-object PICPWR_PAYLOADS fail delay 2000ms"},
        Written{"hal-object PICPWR_PAYLOADS delay 20ms"},
        Written{"hal-read PICPWR_PAYLOADS status 3 delay 20ms"},
        Written{"hal-read PICPWR_PAYLOADS delay forever"},
        Written{"hal-read PICPWR_PAYLOADS 7", "hal-read PICPWR_PAYLOADS 0x0007"},
        Written{"hal-read PICPWR_PAYLOADS 0x0000-0x5FFF status 2"}, Written{"bus absent"},
        Written{"service absent"}, Written{"object riser/riser1"},
        Written{"object /a/b error org.freedesktop.DBus.Error.NoReply"},
        Written{"object riser/riser1 delay 500ms fail", "object riser/riser1 fail delay 500ms"},
        Written{"object riser/riser1 delay 500ms"}, Written{"i2c-open 5"},
        Written{"i2c-open 5 error ENOENT once until recovery"},
        Written{"i2c-open 5 error EIO", "i2c-open 5"}, Written{"i2c-open 5 fail delay 1ms"},
        Written{"i2c-ioctl 5 plain"},
        Written{"i2c-ioctl 5 plain 0x50 until recovery", "i2c-ioctl 5 plain 80 until recovery"},
        Written{"i2c-ioctl 5 update-property 1"}, Written{"i2c-ioctl 5 get-property"},
        Written{"i2c-ioctl 5 create-node error EBUSY after 3"},
        Written{"i2c-ioctl 5 remove-device delay forever"},
        Written{"i2c-ioctl 5 recover-bus 99 error ETIMEDOUT delay 10ms"}, Written{"sysinfo PUCK"},
        Written{"sysinfo 24", "sysinfo PUCK"}, Written{"sysinfo RFC status 9"}));

} // namespace
} // namespace board
