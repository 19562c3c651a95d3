// Makes system calls on an I2C bus that no ordinary program makes, and prints their results. A bus
// of the kernel and a bus of the preload library must give the same ones. Argument: the bus's path.
// The bus has a memory of 256 bytes at 0x50, a device node at 0x60, and no other devices.
#undef _FORTIFY_SOURCE

#include <errno.h>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>

enum {
    EEPROM = 0x50,
    NODE = 0x60,
    NOBODY = 0x22,
    CONTROL = 0x0080,
    MOST_MESSAGES = 42,
    LONGEST_MESSAGE = 8192,
    RECORD = 164,
};

static int bus;
static uint8_t large[LONGEST_MESSAGE + 1];
static uint8_t* volatile nowhere; // keeps the compiler from seeing that it is null

static void tell(const char* name, long result) {
    if (result < 0) {
        printf("%s: %ld %s\n", name, result, strerrorname_np(errno));
    } else {
        printf("%s: %ld\n", name, result);
    }
}

static void tellBytes(const char* name, long result, const uint8_t* bytes, size_t count) {
    if (result < 0) {
        tell(name, result);
        return;
    }
    printf("%s: %ld", name, result);
    for (size_t i = 0; i < count; ++i) {
        printf(" %02x", bytes[i]);
    }
    printf("\n");
}

static long transfer(struct i2c_msg* messages, uint32_t count) {
    struct i2c_rdwr_ioctl_data data = {messages, count};
    return ioctl(bus, I2C_RDWR, &data);
}

static long one(uint16_t address, uint16_t flags, uint16_t length, void* bytes) {
    struct i2c_msg message = {address, flags, length, bytes};
    return transfer(&message, 1);
}

static void transfers(void) {
    uint8_t bytes[4] = {0};
    struct i2c_msg messages[MOST_MESSAGES + 1];
    for (int i = 0; i <= MOST_MESSAGES; ++i) {
        messages[i] = (struct i2c_msg){EEPROM, I2C_M_RD, 1, bytes};
    }
    tell("no argument", ioctl(bus, I2C_RDWR, NULL));
    tell("no messages", transfer(NULL, 1));
    tell("0 messages", transfer(messages, 0));
    tell("42 messages", transfer(messages, MOST_MESSAGES));
    tell("43 messages", transfer(messages, MOST_MESSAGES + 1));
    tell("write 1 byte", one(EEPROM, 0, 1, bytes));
    tellBytes("read 3 bytes", one(EEPROM, I2C_M_RD, 3, bytes), bytes, 3);
    tellBytes("read 8192 bytes", one(EEPROM, I2C_M_RD, LONGEST_MESSAGE, large), large, 3);
    tell("read 8193 bytes", one(EEPROM, I2C_M_RD, LONGEST_MESSAGE + 1, large));
    tell("write 8193 bytes", one(EEPROM, 0, LONGEST_MESSAGE + 1, large));
    tell("read to nowhere", one(EEPROM, I2C_M_RD, 1, NULL));
    tell("write from nowhere", one(EEPROM, 0, 1, NULL));
    tell("write nothing", one(EEPROM, 0, 0, bytes));
    tell("read nothing", one(EEPROM, I2C_M_RD, 0, bytes));
    tell("write nothing from nowhere", one(EEPROM, 0, 0, NULL));
    tell("write nothing to nobody", one(NOBODY, 0, 0, bytes));
    tell("read from nobody", one(NOBODY, I2C_M_RD, 1, bytes));
    tell("read from the node", one(NODE, I2C_M_RD, 1, bytes));
    tell("read from address 0", one(0, I2C_M_RD, 1, bytes));
    tell("read beyond 7 bits", one(0x80 | EEPROM, I2C_M_RD, 1, bytes));
    tell("safe for DMA", one(EEPROM, I2C_M_RD | I2C_M_DMA_SAFE, 1, bytes));
    tell("10 bits", one(EEPROM, I2C_M_RD | I2C_M_TEN, 1, bytes));
    tell("no start", one(EEPROM, I2C_M_RD | I2C_M_NOSTART, 1, bytes));
    tell("length from the device, no room", one(EEPROM, I2C_M_RD | I2C_M_RECV_LEN, 1, bytes));
    large[0] = 1;
    tell("length from the device", one(EEPROM, I2C_M_RD | I2C_M_RECV_LEN, 40, large));
    tell("length from the device, of a write", one(EEPROM, I2C_M_RECV_LEN, 40, large));
    messages[0].addr = NOBODY;
    memset(bytes, 0xEE, sizeof(bytes));
    tellBytes("a failure leaves the bytes", -transfer(messages, 2), bytes, 4);
}

static void controls(void) {
    uint8_t record[RECORD] = "TESK\x05"; // get the property 8 of the bus
    uint8_t reply[9] = {0};
    struct i2c_msg get[] = {{0, CONTROL, RECORD, record}, {0, I2C_M_RD, 4, reply}};
    record[12] = 8;
    tellBytes("property", transfer(get, 2), reply, 5);
    tell("property without a reply", transfer(get, 1));
    get[1].len = 5;
    tell("property with a long reply", transfer(get, 2));
    get[1].len = 4;
    get[1].flags = I2C_M_RD | I2C_M_DMA_SAFE;
    get[0].flags = CONTROL | I2C_M_DMA_SAFE;
    tellBytes("property, safe for DMA", transfer(get, 2), reply, 5);
    get[1].flags = I2C_M_RD;
    get[0].flags = CONTROL | I2C_M_RD;
    tell("request that reads", transfer(get, 2));
    get[0].flags = CONTROL;
    get[0].addr = EEPROM;
    tell("request to a device", transfer(get, 2));
    get[0].addr = 0;
    get[0].len = RECORD - 1;
    tell("short record", transfer(get, 2));
    get[0].len = RECORD;
    record[12] = 9;
    memset(reply, 0xEE, sizeof(reply));
    tell("property that is not there", transfer(get, 2));
    tellBytes("a failure leaves the reply", 0, reply, 5);
    record[4] = 99;
    tell("unknown command", transfer(get, 2));
    record[0] = 'X';
    tell("no magic", transfer(get, 2));
}

static long smbus(uint8_t direction, uint8_t command, uint32_t size, union i2c_smbus_data* data) {
    struct i2c_smbus_ioctl_data access = {direction, command, size, data};
    return ioctl(bus, I2C_SMBUS, &access);
}

static void smbusAccesses(void) {
    union i2c_smbus_data data = {.block = {0}};
    tell("slave", ioctl(bus, I2C_SLAVE, EEPROM));
    tell("smbus without an argument", ioctl(bus, I2C_SMBUS, NULL));
    tell("quick write", smbus(I2C_SMBUS_WRITE, 0, I2C_SMBUS_QUICK, NULL));
    tell("quick read", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_QUICK, NULL));
    tell("send byte", smbus(I2C_SMBUS_WRITE, 2, I2C_SMBUS_BYTE, NULL));
    tellBytes("receive byte", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_BYTE, &data), data.block, 1);
    tell("receive byte to nowhere", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_BYTE, NULL));
    data.byte = 0x42;
    tell("write byte", smbus(I2C_SMBUS_WRITE, 9, I2C_SMBUS_BYTE_DATA, &data));
    tellBytes("read byte", smbus(I2C_SMBUS_READ, 9, I2C_SMBUS_BYTE_DATA, &data), data.block, 1);
    data.word = 0x1234;
    tell("write word", smbus(I2C_SMBUS_WRITE, 9, I2C_SMBUS_WORD_DATA, &data));
    tellBytes("read word", smbus(I2C_SMBUS_READ, 9, I2C_SMBUS_WORD_DATA, &data), data.block, 2);
    data.word = 0x5678;
    tellBytes("call", smbus(I2C_SMBUS_WRITE, 9, I2C_SMBUS_PROC_CALL, &data), data.block, 2);
    tell("read block", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_BLOCK_DATA, &data));
    data.block[0] = 2;
    tell("write block", smbus(I2C_SMBUS_WRITE, 16, I2C_SMBUS_BLOCK_DATA, &data));
    data.block[0] = 0;
    tell("write empty block", smbus(I2C_SMBUS_WRITE, 16, I2C_SMBUS_BLOCK_DATA, &data));
    data.block[0] = 33;
    tell("write long block", smbus(I2C_SMBUS_WRITE, 16, I2C_SMBUS_BLOCK_DATA, &data));
    data.block[0] = 4;
    tellBytes("read i2c block", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_I2C_BLOCK_DATA, &data),
              data.block, 5);
    data.block[0] = 0;
    tell("read empty i2c block", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_I2C_BLOCK_DATA, &data));
    tell("write empty i2c block", smbus(I2C_SMBUS_WRITE, 0, I2C_SMBUS_I2C_BLOCK_DATA, &data));
    data.block[0] = 33;
    tell("read long i2c block", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_I2C_BLOCK_DATA, &data));
    tell("write long i2c block", smbus(I2C_SMBUS_WRITE, 0, I2C_SMBUS_I2C_BLOCK_DATA, &data));
    tellBytes("read old i2c block", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_I2C_BLOCK_BROKEN, &data),
              data.block, 4);
    tell("block call", smbus(I2C_SMBUS_WRITE, 0, I2C_SMBUS_BLOCK_PROC_CALL, &data));
    data.block[0] = 0;
    tell("empty block call", smbus(I2C_SMBUS_WRITE, 0, I2C_SMBUS_BLOCK_PROC_CALL, &data));
    tell("unknown access", smbus(I2C_SMBUS_READ, 0, 9, &data));
    tell("unknown direction", smbus(2, 0, I2C_SMBUS_BYTE, &data));
    tell("slave nobody", ioctl(bus, I2C_SLAVE, NOBODY));
    tell("quick write to nobody", smbus(I2C_SMBUS_WRITE, 0, I2C_SMBUS_QUICK, NULL));
    tell("receive byte from nobody", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_BYTE, &data));
}

static void settings(void) {
    unsigned long functions = 0;
    tell("slave beyond 7 bits", ioctl(bus, I2C_SLAVE, 0x80));
    tell("slave 0", ioctl(bus, I2C_SLAVE, 0));
    tell("slave with a node", ioctl(bus, I2C_SLAVE, NODE));
    tell("slave with a node, forced", ioctl(bus, I2C_SLAVE_FORCE, NODE));
    tell("slave beyond 7 bits, forced", ioctl(bus, I2C_SLAVE_FORCE, 0x80));
    tell("functions to nowhere", ioctl(bus, I2C_FUNCS, NULL));
    tell("functions", ioctl(bus, I2C_FUNCS, &functions));
    printf("%#lx\n", functions);
    tell("retries", ioctl(bus, I2C_RETRIES, 3));
    tell("no retries", ioctl(bus, I2C_RETRIES, 0));
    tell("too many retries", ioctl(bus, I2C_RETRIES, 1UL << 31));
    tell("timeout", ioctl(bus, I2C_TIMEOUT, 100));
    tell("too long timeout", ioctl(bus, I2C_TIMEOUT, 1UL << 31));
    tell("unknown request", ioctl(bus, 0x0799, 0));
    tell("another unknown request", ioctl(bus, 0x4242, 0));
    tell("seek", lseek(bus, 1, SEEK_SET));
}

static void files(void) {
    uint8_t bytes[4] = {5};
    tell("slave", ioctl(bus, I2C_SLAVE, EEPROM));
    tell("file: write 1 byte", write(bus, bytes, 1));
    tellBytes("file: read 3 bytes", read(bus, bytes, 3), bytes, 3);
    tell("file: write nothing", write(bus, bytes, 0));
    tell("file: read nothing", read(bus, bytes, 0));
    tell("file: read 8193 bytes", read(bus, large, LONGEST_MESSAGE + 1));
    tell("file: write 8193 bytes", write(bus, large, LONGEST_MESSAGE + 1));
    tell("file: read to nowhere", read(bus, nowhere, 1));
    tell("file: write from nowhere", write(bus, nowhere, 1));
    tell("slave nobody", ioctl(bus, I2C_SLAVE, NOBODY));
    tell("file: read from nobody", read(bus, bytes, 1));
    tell("file: write to nobody", write(bus, bytes, 1));
}

static void extensions(void) {
    union i2c_smbus_data data = {.byte = 0x42};
    tell("slave", ioctl(bus, I2C_SLAVE, EEPROM));
    tell("10 bits on", ioctl(bus, I2C_TENBIT, 1));
    tell("slave of 10 bits", ioctl(bus, I2C_SLAVE, 0x3FF));
    tell("slave beyond 10 bits", ioctl(bus, I2C_SLAVE, 0x400));
    tell("10 bits: receive byte", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_BYTE, &data));
    tell("10 bits: read", read(bus, &data, 1));
    tell("10 bits off", ioctl(bus, I2C_TENBIT, 0));
    tell("slave", ioctl(bus, I2C_SLAVE, EEPROM));
    tell("checksums on", ioctl(bus, I2C_PEC, 1));
    tell("checksums: write byte", smbus(I2C_SMBUS_WRITE, 0x30, I2C_SMBUS_BYTE_DATA, &data));
    tell("checksums: read byte", smbus(I2C_SMBUS_READ, 0x30, I2C_SMBUS_BYTE_DATA, &data));
    tell("checksums: read i2c block", smbus(I2C_SMBUS_READ, 0, I2C_SMBUS_I2C_BLOCK_BROKEN, &data));
    tell("checksums off", ioctl(bus, I2C_PEC, 0));
    data.block[0] = 4;
    tellBytes("read i2c block", smbus(I2C_SMBUS_READ, 0x30, I2C_SMBUS_I2C_BLOCK_DATA, &data),
              data.block, 5);
}

int main(int argc, char* argv[]) {
    if (argc != 2) {
        return EXIT_FAILURE;
    }
    bus = open(argv[1], O_RDWR);
    tell("open", bus < 0 ? bus : 0);
    transfers();
    controls();
    smbusAccesses();
    settings();
    files();
    extensions();
    return EXIT_SUCCESS;
}
