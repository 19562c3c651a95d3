// The byte-wide registers of a PICPWR, in the order of the report.
#pragma once

#include "console/output.h"
#include "cpld/picpwr_block.h"

namespace zolt {

/// A register with its line of the report, and the line that shows a failure.
struct PicpwrRow {
    PicpwrRegister field;
    Line<Number, Number> value;  ///< number of the PICPWR, value
    Line<Number, Number> unread; ///< number of the PICPWR, status of the raw read
};

/// The registers that the report shows between DSTAT and the payload offset, in order.
constexpr PicpwrRow picpwrByteRows[] = {
    {picpwrDbyp, line<"PICPWR %02d DBYP               = %d\n">,
     line<"Unable to read PICPWR %d DBYP using CPLD raw API, status %d\n">},
    {picpwrDpen, line<"PICPWR %02d DPEN               = %d\n">,
     line<"Unable to read PICPWR %d DPEN using CPLD raw API, status %d\n">},
    {picpwrApen, line<"PICPWR %02d APEN               = %d\n">,
     line<"Unable to read PICPWR %d APEN using CPLD raw API, status %d\n">},
    {picpwrAstat, line<"PICPWR %02d ASTAT              = %d\n">,
     line<"Unable to read PICPWR %d ASTAT using CPLD raw API, status %d\n">},
    {picpwrModuleClass, line<"PICPWR %02d Module Class       = 0x%02X\n">,
     line<"Unable to read PICPWR %d Module Class using CPLD raw API, status %d\n">},
    {picpwrModuleClassIndex, line<"PICPWR %02d Module Class Index = %d\n">,
     line<"Unable to read PICPWR %d Module Class Index using CPLD raw API, status %d\n">},
};

} // namespace zolt
