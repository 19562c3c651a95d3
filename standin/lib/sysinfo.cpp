// The sysinfo parser library of a board whose description says nothing about its topology yet: no
// device type has data.
#include "platform/sysinfo.h"

int i2c_parse_sysinfo(int /*deviceType*/, SysInfoTree** /*root*/) {
    return -1;
}

void free_sysinfo(SysInfoTree* /*root*/) {}
