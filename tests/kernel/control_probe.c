// Gives the kernel module boards that are wrong, and prints how the module refuses them. Each case
// opens the control device anew.
#include "standin/kernel/bus_module.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>

static struct BusCore board;
static uint8_t memory[0x10000];

static void tell(const char* name, long result) {
    printf("%s: %s\n", name, result < 0 ? strerrorname_np(errno) : "accepted");
}

static int openControl(void) {
    return open("/dev/" BUS_MODULE_DEVICE, O_RDWR | O_NONBLOCK);
}

static void load(const char* name, const void* tables) {
    const int control = openControl();
    tell(name, ioctl(control, BUS_MODULE_LOAD, tables));
    close(control);
}

// A board with all kinds of entries. The cases change one of them.
static void describe(void) {
    memset(&board, 0, sizeof(board));
    board.busCount = 2;
    board.buses[0].number = 5;
    board.buses[1] =
        (struct BusCoreBus){.number = 6, .isIndexNode = true, .parent = 5, .typeName = "PUCK"};
    board.deviceCount = 1;
    board.devices[0] = (struct BusCoreDevice){.bus = 5,
                                              .address = 0x50,
                                              .hasNode = true,
                                              .memory = memory,
                                              .memorySize = 256,
                                              .pointerWidth = 1};
    board.propertyCount = 1;
    board.properties[0] = (struct BusCoreProperty){.bus = 5, .target = 0x50, .id = 1};
    board.faultCount = 1;
    board.faults[0] = (struct BusCoreFault){.bus = 9, .operation = BUS_CORE_OPEN, .error = 1};
}

#define WITH(change)                                                                               \
    describe();                                                                                    \
    board.change;                                                                                  \
    load(#change, &board)

static void wrongBoards(void) {
    load("no tables", NULL);
    load("tables of the kernel", (const void*)0xFFFF000000000000);
    WITH(busCount = 257);
    WITH(busCount = 0xFFFFFFFF);
    WITH(deviceCount = 1025);
    WITH(propertyCount = 4097);
    WITH(faultCount = 257);
    WITH(buses[0].number = 1048576);
    WITH(buses[0].number = 6);
    WITH(buses[1].parent = 7);
    WITH(devices[0].bus = 7);
    WITH(devices[0].address = 0);
    WITH(devices[0].address = 0x80);
    WITH(devices[0].memory = (uint8_t*)8);
    WITH(devices[0].memory = (uint8_t*)0xFFFF000000000000);
    WITH(devices[0].memorySize = 0);
    WITH(devices[0].memorySize = 257);
    WITH(devices[0].memorySize = 0x10001);
    WITH(devices[0].memorySize = 0xFFFFFFFF);
    WITH(devices[0].pointerWidth = 3);
    WITH(properties[0].target = 0x51);
    WITH(faults[0].error = 0);
    WITH(faults[0].error = -1);
    WITH(faults[0].error = 4096);
    WITH(faults[0].delay = 1);
    WITH(faults[0].delay = BUS_CORE_FOREVER);
}

static void rightBoards(void) {
    describe();
    load("unchanged", &board);
    describe();
    memset(board.buses[1].typeName, '%', sizeof(board.buses[1].typeName));
    memset(board.devices[0].typeName, '%', sizeof(board.devices[0].typeName));
    load("names without an end", &board);
    describe();
    board.devices[0].pointerWidth = 2;
    board.devices[0].memorySize = 0x10000;
    load("the largest memory", &board);
    describe();
    board.faults[0] = (struct BusCoreFault){.bus = 5, .operation = BUS_CORE_PLAIN, .delay = 1};
    load("a fault with a delay alone", &board);
    memset(&board, 0, sizeof(board));
    load("an empty board", &board);
}

static void calls(void) {
    char bytes[64];
    const int control = openControl();
    tell("second open", openControl());
    tell("state without a transaction", ioctl(control, BUS_MODULE_STATE, &board));
    tell("done without a transaction", ioctl(control, BUS_MODULE_DONE, 0));
    tell("read without a transaction", read(control, bytes, sizeof(bytes)));
    tell("write", write(control, bytes, sizeof(bytes)));
    tell("seek", lseek(control, 1, SEEK_SET));
    tell("unknown request", ioctl(control, 0x1234, 0));
    describe();
    tell("first board", ioctl(control, BUS_MODULE_LOAD, &board));
    tell("second board", ioctl(control, BUS_MODULE_LOAD, &board));
    close(control);
}

int main(void) {
    wrongBoards();
    rightBoards();
    calls();
    return EXIT_SUCCESS;
}
