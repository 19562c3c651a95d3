// The device number of the machine's own I2C buses, for C and C++.
#pragma once

enum { I2C_DEVICE_MAJOR = 89 }; // major number of the I2C character devices
