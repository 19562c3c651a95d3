/* The floor under option 12 for the module type "riser". This program makes the tool's calls on
 * bare sd-bus and writes the same text at the same points. It reads no more of a reply than it
 * prints, and expects every reply to be correct. */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <systemd/sd-bus.h>

static void require(int result) {
    if (result < 0) {
        exit(EXIT_FAILURE); // NOLINT(concurrency-mt-unsafe): the program has one thread
    }
}

/* The properties: first the numbers, then the endpoints. */
static const char* const names[] = {
    "PayloadFrmtVer", "DeviceClass", "StaticPaylodSize", "DeviceId",         "VendorId",
    "DeviceVer",      "NumWires",    "TargetI2cDevType", "TargetI2cDevAddr", "checksum",
    "EndPoint0",      "EndPoint1",   "EndPoint2",        "EndPoint3",
};
enum { VERSION, CLASS, SIZE, DEVICE, VENDOR, REVISION, WIRES, GPIO, ADDRESS, CHECKSUM, ENDPOINTS };
enum { NAMES = sizeof names / sizeof *names };

struct cir {
    unsigned number[ENDPOINTS];
    uint8_t endpoint[4][6];
};

static sd_bus_message* call(sd_bus* bus, const char* path, const char* interface,
                            const char* member, const char* argument) {
    sd_bus_message* request = NULL;
    sd_bus_message* reply = NULL;
    require(sd_bus_message_new_method_call(bus, &request, "com.tesk.bmc.zolt", path, interface,
                                           member));
    if (argument != NULL) {
        require(sd_bus_message_append_basic(request, 's', argument));
    }
    require(sd_bus_call(bus, request, 0, NULL, &reply));
    sd_bus_message_unref(request);
    return reply;
}

static void read_value(sd_bus_message* reply, int name, struct cir* cir) {
    if (name >= ENDPOINTS) {
        uint8_t* bytes = cir->endpoint[name - ENDPOINTS];
        require(sd_bus_message_read(reply, "v", "(yyyyyy)", &bytes[0], &bytes[1], &bytes[2],
                                    &bytes[3], &bytes[4], &bytes[5]));
    } else if (name == DEVICE || name == VENDOR) {
        uint16_t word = 0;
        require(sd_bus_message_read(reply, "v", "q", &word));
        cir->number[name] = word;
    } else {
        uint8_t byte = 0;
        require(sd_bus_message_read(reply, "v", "y", &byte));
        cir->number[name] = byte;
    }
}

static void read_cir(sd_bus* bus, const char* path, struct cir* cir) {
    sd_bus_message* reply =
        call(bus, path, "org.freedesktop.DBus.Properties", "GetAll", "com.tesk.bmc.zolt.cemCIR");
    require(sd_bus_message_enter_container(reply, 'a', "{sv}"));
    while (sd_bus_message_at_end(reply, 0) == 0) {
        const char* text = NULL;
        int name = 0;
        require(sd_bus_message_enter_container(reply, 'e', "sv"));
        require(sd_bus_message_read_basic(reply, 's', &text));
        while (name < NAMES && strcmp(names[name], text) != 0) {
            ++name;
        }
        if (name < NAMES) {
            read_value(reply, name, cir);
        } else {
            require(sd_bus_message_skip(reply, "v"));
        }
        require(sd_bus_message_exit_container(reply));
    }
    require(sd_bus_message_exit_container(reply));
    sd_bus_message_unref(reply);
}

static void print_hex(const char* label, unsigned value) {
    printf("%-48s: 0x%02X\n", label, value);
}

static void print_text(const char* label, const char* text) {
    printf("%-48s: %s\n", label, text);
}

static void print_endpoint(const uint8_t* byte) {
    print_text("EndPoint0", "");
    print_text("USB_HUB_PRES", byte[0] & 1
                                   ? "(Hub) USB goes through a USB Hub to get to this endpoint."
                                   : "(no Hub) USB is directly wired from DSL to endpoint.");
    print_text("HOT_PLUG", byte[0] & 2 ? "Notify BIOS that this endpoint is hotplug-capable. "
                                         "Applicable to NVME direct attach storage or similar EP."
                                       : "Endpoint is not hotplug-capable.");
    print_text("INDIRECT", byte[0] & 4
                               ? "PCIe switch case: EP PCIe lane comes from a PCIe switch."
                               : "normal riser case: EP PCIe lane routing is directly from DSLs.");
    print_text("I2C_MUX_PRES", byte[0] & 8
                                   ? "(mux) I2C goes through a mux to get to this endpoint."
                                   : "(no mux) I2C is directly wired from DSL to endpoint.");
    print_hex("PICPWR_INDEX", byte[0] >> 4);
    print_hex("EP_I2C_SOURCE", byte[1] & 15);
    print_hex("EP_TYPE", byte[1] >> 5);
    printf("%-48s: %d\n", "I2C_MUX_DCH", byte[2] & 15);
    print_hex("EP_LANE_WIDTH", byte[2] >> 5);
    print_hex("EP_USB_SOURCE", byte[3] & 15);
    printf("%-48s: %d\n", "USB_HUB_DCH", byte[3] >> 4);
    print_hex("DSL_LANE_OFFSET_LOWER", byte[4] & 7);
    print_hex("DSL_INDEX_LOWER", (byte[4] >> 4) & 7);
    print_hex("DSL_LANE_OFFSET_UPPER", byte[5] & 7);
    print_hex("DSL_INDEX_UPPER", (byte[5] >> 4) & 7);
}

static void print_cir(const struct cir* cir) {
    print_hex("PayloadFrmtVer", cir->number[VERSION]);
    print_hex("DeviceClass", cir->number[CLASS]);
    print_hex("StaticPaylodSize", cir->number[SIZE]);
    print_hex("DeviceId", cir->number[DEVICE]);
    print_hex("VendorId", cir->number[VENDOR]);
    print_hex("DeviceVer", cir->number[REVISION]);
    print_hex("NumWires - NUM_PWIRES", cir->number[WIRES] & 7);
    print_hex("NumWires - NUM_XWIRES", cir->number[WIRES] >> 4);
    print_hex("TargetI2cDevType - TARGET_I2C_GPIO_DEV_TYPE", cir->number[GPIO] >> 5);
    print_hex("TargetI2cDevType - NUM_EP_DESCRIPTORS", cir->number[GPIO] & 31);
    print_hex("TargetI2cDevAddr - TARGET_I2C_GPIO_DEV_ADDRESS", cir->number[ADDRESS] & 127);
    print_endpoint(cir->endpoint[0]);
    for (int i = 1; i < 4; ++i) {
        const uint8_t* byte = cir->endpoint[i];
        printf("EndPoint%d%39s: 0x%02X, 0x%02X, 0x%02X, 0x%02X, 0x%02X, 0x%02X\n", i, "", byte[0],
               byte[1], byte[2], byte[3], byte[4], byte[5]);
    }
    print_hex("checksum", cir->number[CHECKSUM]);
    printf("\n");
    (void)fflush(stdout);
    printf("\n");
    (void)fflush(stdout);
}

static int compare(const void* left, const void* right) {
    return strcmp(*(const char* const*)left, *(const char* const*)right);
}

static const char** resized(const char** paths, size_t room) {
    paths = realloc(paths, room * sizeof *paths);
    require(paths == NULL ? -1 : 0);
    return paths;
}

int main(void) {
    sd_bus* bus = NULL;
    require(sd_bus_default_system(&bus));
    sd_bus_message* objects = call(bus, "/com/tesk/bmc/zolt/riser",
                                   "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", NULL);
    size_t count = 0;
    size_t room = 64;
    const char** paths = resized(NULL, room);
    require(sd_bus_message_enter_container(objects, 'a', "{oa{sa{sv}}}"));
    while (sd_bus_message_at_end(objects, 0) == 0) {
        if (count == room) {
            room *= 2;
            paths = resized(paths, room);
        }
        require(sd_bus_message_enter_container(objects, 'e', "oa{sa{sv}}"));
        require(sd_bus_message_read_basic(objects, 'o', &paths[count++]));
        require(sd_bus_message_skip(objects, "a{sa{sv}}"));
        require(sd_bus_message_exit_container(objects));
    }
    qsort(paths, count, sizeof *paths, compare);
    for (size_t i = 0; i < count; ++i) {
        struct cir cir = {0};
        printf("%s\n", paths[i]);
        (void)fflush(stdout); /* shows the object before the wait for its properties */
        read_cir(bus, paths[i], &cir);
        print_cir(&cir);
    }
    free(paths);
    sd_bus_message_unref(objects);
    sd_bus_flush_close_unref(bus);
    return EXIT_SUCCESS;
}
