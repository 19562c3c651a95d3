#include "platform/sysinfo.h"

int i2c_parse_sysinfo(int /*deviceType*/, SysInfoTree** root) {
    *root = nullptr;
    return -1;
}

void free_sysinfo(SysInfoTree* /*root*/) {}
