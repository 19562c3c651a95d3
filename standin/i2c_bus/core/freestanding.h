// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// All that the core needs from outside: fixed-width types, memory functions, error numbers and the
// kernel's I2C message. A kernel module takes them from the kernel, a program from the C library
// and the kernel's user headers, under the same names.
#pragma once

#ifdef __KERNEL__
#include <linux/string.h>
#include <linux/types.h>
#else
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#endif

#include <linux/errno.h>
#include <linux/i2c.h>
