#include "board/fault_order.h"

#include "board/board_loader.h"

#include <gtest/gtest.h>

namespace board {
namespace {

TEST(FaultOrder, comesBehindTheFaultsOfTheBoard) {
    Board board = parseBoard("faults = ['raw-read 1']", "b");
    orderFault(board, "raw-read 2 once");
    EXPECT_EQ(board.faults,
              (std::vector{parseFaultRule("raw-read 1"), parseFaultRule("raw-read 2 once")}));
}

TEST(FaultOrder, acceptsFaultsThatCanHappen) {
    Board board = parseBoard("[override.named]\nNEW_NAME = 1", "b");
    for (const char* const text : {
             "named-read PICPWR_63_DSTAT",
             "named-read PICPWR_*_DSTAT",
             "named-read [B]P_8_VWIRE_RD?",
             "named-read RISER_SLOT_AMP_BLOB",
             "named-read NEW_NAME",
             "hal-object PICPWR_PAYLOADS",
             "hal-read PICPWR_PAYLOADS",
             "raw-read 0xFFFF",
             "object nothing/here",
             "i2c-open 1048575",
             "i2c-ioctl 1048575 plain",
             "sysinfo 164",
             "bus absent",
             "service absent",
             "hal-object PICPWR_PAYLOADS after 3 2 times delay 1s",
             "i2c-ioctl 5 plain until recovery",
         }) {
        EXPECT_NO_THROW(orderFault(board, text)) << text;
    }
    EXPECT_EQ(board.faults.size(), 16U);
}

TEST(FaultOrder, refusesFaultsThatCanNeverHappen) {
    const std::pair<const char*, const char*> cases[] = {
        {"named-read PICPWR_64_DSTAT", "no register has a name like 'PICPWR_64_DSTAT'; did you "
                                       "mean 'PICPWR_14_DSTAT' or 'PICPWR_24_DSTAT' or "
                                       "'PICPWR_34_DSTAT'?"},
        {"named-read PICPWR_X_DSTAT once", "no register has a name like 'PICPWR_X_DSTAT'; did you "
                                           "mean 'PICPWR_1_DSTAT' or 'PICPWR_2_DSTAT' or "
                                           "'PICPWR_3_DSTAT'?"},
        {"hal-read PICPWR_PAYLOAD",
         "the HAL has no object 'PICPWR_PAYLOAD'; did you mean 'PICPWR_PAYLOADS'?"},
        {"named-read picpwr_*", "no register has a name like 'picpwr_*'"},
        {"named-read [", "no register has a name like '['"},
        {"hal-object NOPE", "the HAL has no object 'NOPE'"},
        {"hal-read PICPWR_PAYLOADS 0x6000", "the object 'PICPWR_PAYLOADS' ends at byte 0x5FFF"},
        {"hal-read PICPWR_* status 3", "the HAL has no object 'PICPWR_*'"},
        {"cosmic-ray", "a fault begins with one of: named-read, raw-read, hal-object, hal-read, "
                       "bus, service, object, i2c-open, i2c-ioctl, sysinfo"},
    };
    Board board = parseBoard("", "b");
    for (const auto& [text, reason] : cases) {
        try {
            orderFault(board, text);
            ADD_FAILURE() << "accepted: " << text;
        } catch (const FaultRuleError& error) {
            EXPECT_STREQ(error.what(), reason) << text;
        }
    }
    EXPECT_TRUE(board.faults.empty());
}

std::string refusalOf(Board& board, const std::string& text) {
    try {
        orderFault(board, text);
        return {};
    } catch (const FaultRuleError& error) {
        return error.what();
    }
}

TEST(FaultOrder, boundsTheNumberOfFaults) {
    Board board = parseBoard("", "b");
    for (int i = 0; i < 256; ++i) {
        ASSERT_EQ(refusalOf(board, i % 2 == 0 ? "i2c-open 5" : "i2c-ioctl 5 plain"), "") << i;
    }
    const char* const full = "the bus driver has room for 256 faults of i2c-open and i2c-ioctl";
    EXPECT_EQ(refusalOf(board, "i2c-open 5"), full);
    EXPECT_EQ(refusalOf(board, "i2c-ioctl 5 plain"), full);
    while (board.faults.size() < 1024) {
        ASSERT_EQ(refusalOf(board, "raw-read 1"), "");
    }
    EXPECT_EQ(refusalOf(board, "raw-read 1"), "a board has at most 1024 faults");
    EXPECT_EQ(board.faults.size(), 1024U);
}

} // namespace
} // namespace board
