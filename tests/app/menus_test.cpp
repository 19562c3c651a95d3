#include "app/menus.h"

#include "tests/support/console.h"

#include <gtest/gtest.h>

namespace zolt {
namespace {

using test::outputOf;

TEST(MainMenu, printsEveryLine) {
    EXPECT_EQ(outputOf(printMainMenu), "\n"
                                       "------------------------------------------------\n"
                                       "ZOLT Test Tool\n"
                                       "------------------------------------------------\n"
                                       "  1 : PICPWR info\n"
                                       "  2 : CIR payloads\n"
                                       "  3 : OEM area\n"
                                       "  4 : Riser slot mapping blob\n"
                                       "  5 : Control registers\n"
                                       "  6 : PICPWR nodes info\n"
                                       "  7 : Discoverable nodes info\n"
                                       "  8 : All I2C nodes info\n"
                                       "  9 : Create dynamic device node\n"
                                       " 10 : Delete dynamic device node\n"
                                       " 11 : DBUS Zolt Info Properties\n"
                                       " 12 : DBUS Zolt CIR Properties\n"
                                       " 13 : Read Node Proprty\n"
                                       " 14 : Update Node Property\n"
                                       " 15 : Perform Bus Recovery\n"
                                       "100 : Exit \n"
                                       "Enter option :");
}

TEST(ModuleClassMenu, printsEveryLine) {
    EXPECT_EQ(outputOf(printModuleClassMenu), " 1 : 1C Connector\n"
                                              " 2 : 4C+ Connector\n"
                                              " 3 : KARN Downstream of FLOP\n"
                                              " 4 : M.2 Card Downstream Of FLOP\n"
                                              " 5 : TULMs Downstream Of BP\n"
                                              " 6 : Backplane\n"
                                              " 7 : CEM Risers\n"
                                              " 8 : KARN\n"
                                              " 9 : M.2 Interposer\n"
                                              "10 : RIDA\n"
                                              "11 : PUCK\n"
                                              "12 : RFC\n"
                                              "13 : FLOP\n"
                                              "14 : Battery Interposer\n"
                                              "15 : All module classes\n"
                                              "Enter the module class :");
}

TEST(ModuleTypeMenu, printsEveryLine) {
    EXPECT_EQ(outputOf(printModuleTypeMenu), " 1 : Backplane\n"
                                             " 2 : PUCK\n"
                                             " 3 : RFC\n"
                                             " 4 : Riser\n"
                                             " 5 : FTULM\n"
                                             " 6 : KARN_RAID\n"
                                             " 7 : KARN_NON_RAID\n"
                                             " 8 : RIDA\n"
                                             " 9 : FLOP\n"
                                             "10 : Battery interposer\n"
                                             "11 : Battery\n"
                                             "Enter the module type :\n");
}

} // namespace
} // namespace zolt
