// What the machine's own I2C buses are known by, to C and C++.
#pragma once

enum { I2C_DEVICE_MAJOR = 89 }; // of the kernel's character devices
