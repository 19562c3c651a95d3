#!/usr/bin/env python3
"""Compares the tool's reports of the service with the CPLD's view and with another client."""

import json
import os
import pathlib
import resource
import select
import signal
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from cir_report import report, shown_properties  # noqa: E402
from programs import (  # noqa: E402
    ASK_ALL,
    INFO,
    MAIN_MENU,
    MODULE_TYPES,
    SANITIZED,
    SIM,
    SLOT_42,
    Scratch,
    Session,
    TIMEOUT_SECONDS,
    TOOL,
    not_emulated,
    run,
)

SERVICE = "com.tesk.bmc.zolt"
PREFIX = "/com/tesk/bmc/zolt/"
TYPES = ("bp", "puck", "rfc", "riser", "ftulm", "karnRaid", "karnNonRaid", "rida", "flop", "bi",
         "battery")

# Modules of every layout. Each field that both views show differs from 0 in at least one module.
# The backplane has no end points, because the CPLD's view does not show them.
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
[[slot.module.end_point]]
picpwr_index = 15
i2c_mux_present = true
indirect = true
hot_plug = true
type = 7
i2c_source = 8
lane_width = 5
i2c_mux_channel = 10
pcie_order_lower = 11
pcie_group_lower = 6
pcie_order_upper = 12
pcie_group_upper = 7
[[slot.module.end_point]]
picpwr_index = 8
type = 1
i2c_source = 2
lane_width = 3
i2c_mux_channel = 4
usb_hub_channel = 5
usb_source = 6
dsl_index_lower = 7
dsl_lane_offset_lower = 5
dsl_index_upper = 6
dsl_lane_offset_upper = 3
[[slot.module.end_point]]
picpwr_index = 1
hot_plug = true
type = 2
i2c_source = 15
lane_width = 7
i2c_mux_channel = 15
usb_hub_channel = 15
usb_source = 15
dsl_index_lower = 4
dsl_lane_offset_lower = 7
dsl_index_upper = 5
dsl_lane_offset_upper = 6

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

[[slot]]
id = 4
dstat = 3
[slot.module]
type = "rfc"
object = "rfc1"
format_version = 4
device_class = 0x1B
device_id = 0xFEDC
vendor_id = 0x0C
device_version = 8
xwires = 9
pwires = 5
target_type = 6
target_address = 0x44

[[slot]]
id = 5
dstat = 3
[slot.module]
type = "flop"
object = "flop1"
format_version = 5
device_class = 0x12
device_id = 0x4321
vendor_id = 0x0D
device_version = 255
xwires = 6
pwires = 1
target_type = 1
target_address = 1
[[slot.module.end_point]]
picpwr_index = 6
indirect = true
type = 5
i2c_source = 4
lane_width = 2
i2c_mux_channel = 3
pcie_order_lower = 9
pcie_group_lower = 5
pcie_order_upper = 10
pcie_group_upper = 3
"""


class ServiceTest(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)

    def on_board(self, board, *command, **options):
        path = self.scratch.file("board.toml", board)
        done = run(SIM, "--board", path, "--", *command, **options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout


class CpldAndBusViews(ServiceTest):
    def test_of_one_module_agree(self):
        for slot, path in enumerate(("riser/riser1", "puck/puck1", "bp/bp1", "rfc/rfc1",
                                     "flop/flop1"), 1):
            module_type = str(TYPES.index(path.split("/")[0]) + 1)
            cpld = self.on_board(BOARD, TOOL, "-o", "2", "-p", str(slot), "-f", "2")
            bus = self.on_board(BOARD, TOOL, "-o", "12", "-m", module_type)
            self.assertEqual(bus, report(PREFIX + path, shown_properties(cpld)))

    def test_of_a_module_with_a_wrong_length_agree(self):
        for units in (1, 3, 6, 7, 20):
            board = BOARD.replace(
                'object = "riser1"', f'object = "riser1"\nstatic_payload_size = {units}'
            )
            cpld = self.on_board(board, TOOL, "-o", "2", "-p", "1", "-f", "2")
            bus = self.on_board(board, TOOL, "-o", "12", "-m", "4")
            self.assertEqual(bus, report(PREFIX + "riser/riser1", shown_properties(cpld)))


class Busctl(ServiceTest):
    def busctl(self, board, *arguments):
        return self.on_board(board, "busctl", "--system", *arguments)

    def properties(self, board, path, interface):
        reply = json.loads(
            self.busctl(board, "--json=short", "call", SERVICE, path,
                        "org.freedesktop.DBus.Properties", "GetAll", "s", interface)
        )
        return {name: each["data"] for name, each in reply["data"][0].items()}

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
    SIGNATURES = {"DeviceId": "q", "VendorId": "q"}

    def properties(self, interfaces):
        """Returns the properties of an object's only interface, each of the type that the tool
        demands."""
        (properties,) = interfaces.values()
        for name, each in properties.items():
            usual = "(yyyyyy)" if name.startswith("EndPoint") else "y"
            self.assertEqual(each["type"], self.SIGNATURES.get(name, usual), name)
        return {name: each["data"] for name, each in properties.items()}

    def test_every_type_prints_the_properties_that_another_client_reads(self):
        both = (
            f"busctl --system --json=short call {SERVICE} {PREFIX}$1"
            ' org.freedesktop.DBus.ObjectManager GetManagedObjects; exec "$2" -o 12 -m "$3"'
        )
        for number, family in enumerate(TYPES, 1):
            done = run(SIM, "--", "sh", "-c", both, "sh", family, TOOL, str(number))
            reply, _, printed = done.stdout.partition("\n")
            (objects,) = json.loads(reply)["data"]
            expected = "".join(
                report(path, self.properties(interfaces))
                for path, interfaces in sorted(objects.items())
            )
            self.assertEqual(expected == "", family == "battery", family)
            self.assertEqual(
                printed, expected or "No DBUS objects of this module type are present\n"
            )


@unittest.skipIf(SANITIZED, "a sanitizer needs more address space than the limit")
class Memory(ServiceTest):
    ROOM = 4 << 20  # enough for the reply, not enough for the objects made of it

    @not_emulated("the emulator shares the memory of the program, and crashes without it")
    def test_that_runs_out_in_a_view_ends_the_option_only(self):
        board = "".join(
            f'[[service.object]]\npath = "riser/r{i}"\ninterface = "cemCIR"\n'
            "[service.object.properties]\na = true\nb = true\nc = true\nd = true\n"
            for i in range(10_000)
        )
        session = Session(
            self, SIM, "--board", self.scratch.file("board.toml", board), "--",
            "sh", "-c", 'echo $$ >&2; exec "$1"', "sh", TOOL,
        )
        tool = int(session.told())
        session.expect(MAIN_MENU)
        session.type("11\n")
        session.expect(INFO + MAIN_MENU)
        used = int(pathlib.Path(f"/proc/{tool}/statm").read_text().split()[0])
        most = used * resource.getpagesize() + self.ROOM
        resource.prlimit(tool, resource.RLIMIT_AS, (most, most))
        session.type("12\n4\n11\n100\n")
        session.ends_with(
            MODULE_TYPES + "Exception : std::bad_alloc\n" + MAIN_MENU + INFO + MAIN_MENU
        )


class Dialogue(ServiceTest):
    # Two orders fail a listing of objects. The other orders and the two objects fail the report of
    # one object.
    BOARD = BOARD + """
[[service.order]]
path = "karnRaid"
delay_ms = 60000
[[service.order]]
path = "puck"
action = "reply"
signature = "a{oas}"
value = []
[[service.order]]
path = "riser/riser1"
delay_ms = 60000
[[service.order]]
path = "flop/flop1"
action = "reply"
signature = "s"
value = "text"
[[service.object]]
path = "rida/rida1"
interface = "puckCIR"
[[service.object]]
path = "bp/bp1"
interface = "backplaneCIR"
[service.object.properties]
DeviceId = { signature = "y", value = 5 }
"""
    CALL = "sd_bus_call: org.freedesktop.DBus.Error."
    MISMATCH = (
        "sd_bus_message_enter_container emplace_container: System.Error.ENXIO: "
        "No such device or address"
    )
    GONE = "System.Error.ENOTCONN: Transport endpoint is not connected"

    def unlisted(self, error):
        return (
            f"failed to get managed objects err{error}\n"
            "PrintAllDevicesPath: GetManagedObjects() failed to get GetManagedObjects !.\n"
        )

    def failed(self, path, error):
        return f"{PREFIX}{path}\nPrintAllProperties: catch error: {error}\n"

    def test_goes_on_after_every_failure_of_the_bus(self):
        session = Session(
            self, SIM, "--board", self.scratch.file("board.toml", self.BOARD), "--",
            "sh", "-c", 'echo $$ >&2; exec "$1"', "sh", TOOL,
            env=dict(os.environ, SYSTEMD_BUS_TIMEOUT="1s"),
        )
        session.told()
        session.expect(MAIN_MENU)
        for family, printed in (
            ("karnRaid", self.unlisted(self.CALL + "Timeout: Connection timed out")),
            ("puck", self.unlisted(self.MISMATCH)),
            ("riser", self.failed("riser/riser1", self.CALL + "Timeout: Connection timed out")),
            ("flop", self.failed("flop/flop1", self.MISMATCH)),
            ("rida", self.failed("rida/rida1", self.CALL + "UnknownInterface: Unknown interface "
                                                           "'com.tesk.bmc.zolt.cemCIR'.")),
            ("bp", self.failed("bp/bp1", "std::get: wrong index for variant")),
            ("battery", "No DBUS objects of this module type are present\n"),
        ):
            session.type(f"12\n{TYPES.index(family) + 1}\n")
            session.expect(MODULE_TYPES + printed + MAIN_MENU)
        session.type("11\n")
        session.expect(INFO + MAIN_MENU)

        self.end(self.bus_of(session.process.pid))
        session.type("11\n12\n3\n1\n42\n100\n")
        session.ends_with(
            f"PrintZoltInfoProperties: catch error: sd_bus_message_new_method_call: {self.GONE}\n\n"
            + MAIN_MENU + MODULE_TYPES
            + self.unlisted(f"sd_bus_message_new_method_call: {self.GONE}") + MAIN_MENU
            + ASK_ALL + SLOT_42 + MAIN_MENU
        )

    def bus_of(self, sim):
        """Returns the process of the bus daemon that a zolt_sim has started."""
        children = pathlib.Path(f"/proc/{sim}/task/{sim}/children").read_text().split()
        (bus,) = (
            int(child) for child in children
            if pathlib.Path(f"/proc/{child}/comm").read_text() == "dbus-daemon\n"
        )
        return bus

    def end(self, bus):
        """Kills a daemon and waits until it has ended, and its socket with it."""
        watch = os.pidfd_open(bus)
        self.addCleanup(os.close, watch)
        os.kill(bus, signal.SIGKILL)
        ready, _, _ = select.select([watch], [], [], TIMEOUT_SECONDS)
        self.assertTrue(ready)


class BusThatComesBack(ServiceTest):
    def test_serves_the_next_operation(self):
        # The tool's bus address leads nowhere at first. Before the second operation a link leads
        # from there to the bus of the stand-in.
        address = self.scratch.path / "bus"
        script = (
            f'path="${{DBUS_SYSTEM_BUS_ADDRESS#unix:path=}}"; path="${{path%%,*}}"; '
            f'echo "$path" >&2; export DBUS_SYSTEM_BUS_ADDRESS=unix:path={address}; exec "$@"'
        )
        session = Session(
            self, SIM, "--board", self.scratch.file("board.toml", BOARD), "--",
            "sh", "-c", script, "sh", TOOL,
        )
        socket = session.told()
        session.expect(MAIN_MENU)
        session.type("11\n")
        session.expect(
            "PrintZoltInfoProperties: catch error: sd_bus_message_new_method_call: "
            "System.Error.ENOTCONN: Transport endpoint is not connected\n\n" + MAIN_MENU
        )
        os.symlink(socket, address)
        session.type("11\n100\n")
        session.ends_with(INFO + MAIN_MENU)


if __name__ == "__main__":
    tap.main()
