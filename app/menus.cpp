#include "app/menus.h"

#include "app/dispatcher.h"
#include "console/output.h"

#include <string_view>

namespace zolt {

void printMainMenu() {
    write("\n------------------------------------------------\n"
          "ZOLT Test Tool\n"
          "------------------------------------------------\n");
    for (const OptionRow& row : optionRows()) {
        write(row.number < 10 ? "  " : " "); // numbers are right-aligned in three columns
        print<"%d : %s\n">(row.number, row.label);
    }
    print<"%d : Exit \n">(exitOption);
    write("Enter option :");
}

void printModuleClassMenu() {
    write(" 1 : 1C Connector\n"
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

void printModuleTypeMenu() {
    write(" 1 : Backplane\n"
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

} // namespace zolt
