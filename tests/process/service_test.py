#!/usr/bin/env python3
"""The service under zolt_sim, held against an independent client and against the CPLD's view."""

import json
import os
import pathlib
import re
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import MAIN_MENU, SIM, TIMEOUT_SECONDS, TOOL, Scratch, run  # noqa: E402

SERVICE = "com.tesk.bmc.zolt"
PREFIX = "/com/tesk/bmc/zolt/"
INTERFACES = {"bp": "backplaneCIR", "puck": "puckCIR", "rfc": "rfcCIR"}  # the others: cemCIR
TYPES = ("bp", "puck", "rfc", "riser", "ftulm", "karnRaid", "karnNonRaid", "rida", "flop", "bi",
         "battery")

# Two modules of each layout, with every field away from 0.
BOARD = """
[[slot]]
id = 1
dstat = 3
[slot.module]
type = "riser"
object = "riser1"
format_version = 3
device_class = 0x11
device_id = 0x1234
vendor_id = 0x1590
device_version = 2
xwires = 5
pwires = 6
target_type = 7
target_address = 0x50
[[slot.module.end_point]]
picpwr_index = 5
i2c_mux_present = true
hot_plug = true
usb_hub_present = true
type = 6
i2c_source = 7
lane_width = 4
i2c_mux_channel = 9
usb_hub_channel = 10
usb_source = 11
dsl_index_lower = 1
dsl_lane_offset_lower = 2
dsl_index_upper = 3
dsl_lane_offset_upper = 4

[[slot]]
id = 2
dstat = 3
[slot.module]
type = "puck"
object = "puck1"
format_version = 1
device_class = 0x1A
device_id = 0x0102
vendor_id = 0x0B
device_version = 7
xwires = 15
pwires = 3
target_type = 2
target_address = 0x7F

[[slot]]
id = 3
dstat = 3
[slot.module]
type = "bp"
object = "bp1"
format_version = 2
device_class = 0x2A
device_id = 0xBEEF
vendor_id = 0x1590
xwires = 1
pwires = 2
target_type = 3
target_address = 0x21
[slot.module.backplane]
bay_id = 4
"""

# Field of the CPLD's view: field of the bus's view, as either prints it.
SHARED_HEADER = {
    "PAYLOAD_FORMAT_VERSION": "PayloadFrmtVer",
    "DEVICE_CLASS": "DeviceClass",
    "STATIC_PAYLOAD_SIZE": "StaticPaylodSize",
    "DEVICE_ID": "DeviceId",
    "VENDOR_ID": "VendorId",
    "CHECKSUM": "checksum",
}
CARD = SHARED_HEADER | {
    "DEVICE_VERSION": "DeviceVer",
    "NUM_XWIRES": "NumWires - NUM_XWIRES",
    "NUM_PWIRES": "NumWires - NUM_PWIRES",
    "TARGET_I2C_GPIO_DEV_TYPE": "TargetI2cDevType - TARGET_I2C_GPIO_DEV_TYPE",
    "TARGET_I2C_GPIO_DEV_ADDRESS": "TargetI2cDevAddr - TARGET_I2C_GPIO_DEV_ADDRESS",
    "NUM_EP_DESCRIPTORS": "TargetI2cDevType - NUM_EP_DESCRIPTORS",
} | {
    name: name
    for name in (
        "PICPWR_INDEX", "EP_TYPE", "EP_I2C_SOURCE", "EP_LANE_WIDTH", "I2C_MUX_DCH",
        "USB_HUB_DCH", "EP_USB_SOURCE", "DSL_INDEX_LOWER", "DSL_LANE_OFFSET_LOWER",
        "DSL_INDEX_UPPER", "DSL_LANE_OFFSET_UPPER",
    )
}
SHORT = {name: field for name, field in SHARED_HEADER.items() if name != "CHECKSUM"} | {
    "DEVICE_VERSION": "DeviceVer",
    "NUM_PWIRES": "NumPwires",
    "TARGET_I2C_GPIO_DEV_TYPE": "TargetI2cGpioDevType",
    "TARGET_I2C_GPIO_DEV_ADDRESS": "TargetI2cGpioDevAddr",
}
BACKPLANE = SHARED_HEADER | {
    "NUM_XWIRES": "NumWires - NUM_XWIRES",
    "NUM_PWIRES": "NumWires - NUM_PWIRES",
    "TARGET_I2C_GPIO_DEV_TYPE": "TargetI2cDevType - TARGET_I2C_GPIO_DEV_TYPE",
    "TARGET_I2C_GPIO_DEV_ADDRESS": "TargetI2cDevAddr - TARGET_I2C_GPIO_DEV_ADDRESS",
}


def fields(report, separator):
    """The first value of each name in a listing, as a number where it is one."""
    found = {}
    for line in report.splitlines():
        name, sign, value = line.partition(separator)
        if sign:
            value = value.strip()
            number = re.fullmatch(r"0x[0-9A-F]+|\d+", value)
            found.setdefault(name.strip(), int(value, 0) if number else value)
    return found


class ServiceTest(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)

    def on_board(self, board, *command, **options):
        path = self.scratch.file("board.toml", board)
        done = run(SIM, "--board", path, "--", *command, **options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout


class TwoViews(ServiceTest):
    def test_of_one_module_agree_field_by_field(self):
        for slot, module_type, names in ((1, "4", CARD), (2, "2", SHORT), (3, "1", BACKPLANE)):
            cpld = fields(self.on_board(BOARD, TOOL, "-o", "2", "-p", str(slot), "-f", "2"), "= ")
            bus = fields(self.on_board(BOARD, TOOL, "-o", "12", "-m", module_type), ": ")
            for name, field in names.items():
                self.assertEqual(cpld[name], bus[field], f"slot {slot}: {name} and {field}")

    def test_agree_on_the_flags_of_an_end_point(self):
        cpld = fields(self.on_board(BOARD, TOOL, "-o", "2", "-p", "1", "-f", "2"), "= ")
        bus = fields(self.on_board(BOARD, TOOL, "-o", "12", "-m", "4"), ": ")
        for name, sentence in (
            ("USB_HUB_PRES", "(Hub) USB goes through a USB Hub to get to this endpoint."),
            ("HOT_PLUG", "Notify BIOS that this endpoint is hotplug-capable. "
                         "Applicable to NVME direct attach storage or similar EP."),
            ("I2C_MUX_PRES", "(mux) I2C goes through a mux to get to this endpoint."),
        ):
            self.assertEqual(cpld[name], 1)
            self.assertEqual(bus[name], sentence)
        self.assertEqual(cpld["INDIRECT"], 0)
        self.assertEqual(
            bus["INDIRECT"], "normal riser case: EP PCIe lane routing is directly from DSLs."
        )


class Busctl(ServiceTest):
    def busctl(self, board, *arguments):
        return self.on_board(board, "busctl", "--system", *arguments)

    def properties(self, board, path, interface):
        reply = json.loads(
            self.busctl(board, "--json=short", "call", SERVICE, path,
                        "org.freedesktop.DBus.Properties", "GetAll", "s", interface)
        )
        return {name: each["data"] for name, each in reply["data"][0].items()}

    def test_reads_the_values_that_the_tool_prints(self):
        for module_type, element in (("4", "riser/riser1"), ("1", "bp/bp1"), ("2", "puck/puck1")):
            family = element.split("/")[0]
            interface = f"{SERVICE}.{INTERFACES.get(family, 'cemCIR')}"
            read = self.properties(BOARD, PREFIX + element, interface)
            printed = fields(self.on_board(BOARD, TOOL, "-o", "12", "-m", module_type), ": ")
            for name, value in read.items():
                if isinstance(value, list):
                    if name != "EndPoint0" or family == "bp":
                        text = ", ".join(f"0x{byte:02X}" for byte in value)
                        self.assertEqual(printed[name], text)
                elif name in printed and not name.startswith(("Num", "Target")):
                    self.assertEqual(printed[name], value, name)

    def test_reads_the_information_object(self):
        self.assertEqual(
            self.properties(BOARD, PREFIX + "info", SERVICE + ".pcardInfo"),
            {"FRUreadComplete": True, "SlotMappingComplete": True},
        )

    def test_introspects_every_object(self):
        tree = self.busctl(BOARD, "tree", "--list", SERVICE).split()
        for path in ["info", "riser/riser1", "puck/puck1", "bp/bp1", *TYPES]:
            self.assertIn(PREFIX + path, tree)
        shown = self.busctl(BOARD, "introspect", SERVICE, PREFIX + "riser/riser1")
        self.assertRegex(shown, r"\.DeviceId +property +q +4660")
        self.assertRegex(shown, r"\.EndPoint0 +property +\(yyyyyy\) ")

    def test_finds_the_object_managers(self):
        reply = json.loads(
            self.busctl(BOARD, "--json=short", "call", SERVICE, PREFIX + "puck",
                        "org.freedesktop.DBus.ObjectManager", "GetManagedObjects")
        )
        self.assertEqual(list(reply["data"][0]), [PREFIX + "puck/puck1"])


class DemoBoard(unittest.TestCase):
    def test_publishes_every_module_type_and_one_has_no_objects(self):
        empty = []
        for number, family in enumerate(TYPES, 1):
            done = run(SIM, "--", TOOL, "-o", "12", "-m", str(number))
            if done.stdout == "No DBUS objects of this module type are present\n":
                empty.append(family)
            else:
                self.assertTrue(done.stdout.startswith(PREFIX + family + "/"), done.stdout[:200])
                self.assertNotIn("catch error", done.stdout)
        self.assertEqual(empty, ["battery"])


class BusThatComesBack(ServiceTest):
    def test_serves_the_next_operation(self):
        # The first operation finds no bus at the tool's address; before the second one the bus of
        # the stand-in is linked there.
        address = self.scratch.path / "bus"
        script = (
            f'path="${{DBUS_SYSTEM_BUS_ADDRESS#unix:path=}}"; path="${{path%%,*}}"; '
            f'echo "$path" >&2; export DBUS_SYSTEM_BUS_ADDRESS=unix:path={address}; exec "$@"'
        )
        process = subprocess.Popen(
            [SIM, "--board", self.scratch.file("board.toml", BOARD), "--",
             "sh", "-c", script, "sh", TOOL],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        )
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        socket = process.stderr.readline().strip()
        refused = (
            "PrintZoltInfoProperties: catch error: sd_bus_message_new_method_call: "
            "System.Error.ENOTCONN: Transport endpoint is not connected\n\n"
        )
        process.stdin.write("11\n")
        process.stdin.flush()
        expected = MAIN_MENU + refused + MAIN_MENU
        self.assertEqual(process.stdout.read(len(expected)), expected)
        os.symlink(socket, address)
        output, _ = process.communicate("11\n100\n", timeout=TIMEOUT_SECONDS)
        self.assertEqual(
            output,
            "PrintZoltInfoProperties: \n"
            "Property Name  = FRUreadComplete\nProperty Value = 1\n"
            "Property Name  = SlotMappingComplete\nProperty Value = 1\n\n" + MAIN_MENU,
        )


if __name__ == "__main__":
    tap.main()
