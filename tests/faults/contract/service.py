"""The service on the system bus. Options 11 and 12."""

from board import data
from cir_report import backplane, card, header_alone

from .replay import Thrown

SERVICE = "com.tesk.bmc.zolt"
PLACE = "/com/tesk/bmc/zolt/"
SUFFIXES = ("bp", "puck", "rfc", "riser", "ftulm", "karnRaid", "karnNonRaid", "rida", "flop", "bi",
            "battery")
WORDS = ("DeviceId", "VendorId")
WRONG_TYPE = "std::get: wrong index for variant"
READING = ("enter_container", "exit_container", "at_end", "verify_type", "peek_type", "read_basic",
           "skip")


class BusError(Thrown):
    """A failed call of sd-bus."""


def checked(replay, kind, asked="", label=""):
    """A call of sd-bus. A negative result is an exception that bears the call's name."""
    result, _, error = replay.call(kind, asked).partition(" ")
    if int(result) < 0:
        replay.allocate()
        raise BusError(f"{kind}{label}: {error}")
    return int(result)


class Reader:
    """Reads the containers of one reply."""

    def __init__(self, replay):
        self._replay = replay

    def value(self):
        """The one value that the reply holds."""
        kind, asked, rest = self._next()
        if kind == "verify_type":
            while kind in ("verify_type", "peek_type"):
                kind, asked, rest = self._next()
            if kind == "skip":
                return "skipped", None
            value = asked[1:], self.value()
            self._next("variant")
            return value
        if kind == "read_basic":
            return data(rest).decode("latin-1") if asked in "so" \
                else int.from_bytes(data(rest), "little")
        if asked[0] == "a":
            return self._array(" emplace_container" if asked[1] == "{"
                               else " emplace_back_container")
        values = []
        while self._replay.next_kind() != "sd_bus_message_exit_container":
            values.append(self.value())
        self._next("tuple")
        return values

    def _array(self, label):
        elements = []
        while True:
            _, _, rest = self._next(label)
            if rest == "end":
                break
            if "emplace_container" in label:
                self._next()
                key = self.value()
                elements.append((key, self.value()))
                self._next("pair")
            else:
                elements.append(self.value())
        self._next(label)
        return elements

    # Takes the next call: its name, what it asked for, what it read.
    def _next(self, within=""):
        record = self._replay.call_of("sd_bus_message_")
        kind = record.kind.removeprefix("sd_bus_message_")
        code, _, rest = record.result.partition(" ")
        if int(code) < 0:
            self._replay.allocate()
            raise BusError(f"{self._label(kind, record.asked, within)}: {rest}")
        if kind == "at_end":
            rest = "end" if int(code) > 0 else ""
        return kind, record.asked, rest

    @staticmethod
    def _label(kind, asked, within):
        if kind in ("verify_type", "peek_type"):
            return "sd_bus_message_verify_type variant"
        if kind == "skip":
            within = "variant"
        elif kind == "read_basic":
            within = {"s": "string", "o": "string", "b": "bool"}.get(asked, "fundamental")
        elif kind == "enter_container":
            within = {"e": "pair", "r": "tuple", "v": "variant"}.get(
                asked[0], "emplace_container" if asked[1] == "{" else "emplace_back_container")
        return f"sd_bus_message_{kind} {within.strip()}"


def first_of_each(entries):
    found = {}
    for key, value in entries:
        found.setdefault(key, value)
    return found


def method_call(replay, path, interface, member, argument=None):
    checked(replay, "sd_bus_message_new_method_call",
            f"{SERVICE} {path} org.freedesktop.DBus.{interface} {member}")
    if argument:
        checked(replay, "sd_bus_message_append_basic", f"s {argument}", " string")
    checked(replay, "sd_bus_call", "0")
    return Reader(replay).value()


def all_properties(replay, path, interface):
    return first_of_each(method_call(replay, path, "Properties", "GetAll", interface))


def on_bus(view):
    def run(replay, given):
        connected = not replay.call("sd_bus_default_system").startswith("-")
        error = None
        try:
            view(replay, given)
        except Thrown as thrown:
            error = thrown
        if connected:
            replay.call("sd_bus_flush_close_unref")
        if error:
            raise error
        return 0
    return run


def info(replay, _):
    try:
        properties = all_properties(replay, PLACE + "info", SERVICE + ".pcardInfo")
        replay.write("PrintZoltInfoProperties: \n")
        for name in sorted(properties, key=lambda name: name.encode("latin-1")):
            replay.write(f"Property Name  = {name}\nProperty Value = ")
            signature, value = properties[name]
            if signature != ("b" if name in ("FRUreadComplete", "SlotMappingComplete") else "q"):
                raise Thrown(WRONG_TYPE)
            replay.write(f"{value}\n")
    except Thrown as error:
        replay.write(f"PrintZoltInfoProperties: catch error: {error}\n")
    replay.write("\n")


def report(properties, module_class):
    """The report of a module, from its properties with their types."""
    lines, width, end_points = {0: (backplane, 48, 16), 1: (header_alone, 21, 0),
                          2: (header_alone, 21, 0)}.get(module_class, (card, 48, 4))

    class Typed(dict):
        def __missing__(self, name):
            raise Thrown(WRONG_TYPE)

    typed = Typed()
    for name, (signature, value) in properties.items():
        if signature == ("q" if name in WORDS else "y"):
            typed[name] = value
    for i in range(end_points):
        signature, value = properties.get(f"EndPoint{i}", ("skipped", None))
        if signature == "skipped":
            typed[f"EndPoint{i}"] = [0] * 6
        elif signature == "(yyyyyy)":
            typed[f"EndPoint{i}"] = value
    return "".join(f"{label:{width}}: {value}\n" for label, value in lines(typed)) + "\n\n"


def properties_of(replay, path, module_class):
    interface = {0: "backplaneCIR", 1: "puckCIR", 2: "rfcCIR"}.get(module_class, "cemCIR")
    try:
        properties = all_properties(replay, path, f"{SERVICE}.{interface}")
        replay.allocate_before_text()
        replay.write(report(properties, module_class))
    except Thrown as error:
        replay.write(f"PrintAllProperties: catch error: {error}\n")


def all_paths(replay, given):
    module_type = given["m"]
    manager = PLACE + SUFFIXES[module_type - 1] if 1 <= module_type <= 11 else ""
    found = False
    try:
        objects = method_call(replay, manager, "ObjectManager", "GetManagedObjects")
        found = checked(replay, "sd_bus_message_is_method_error") == 0
    except BusError as error:
        replay.write(f"failed to get managed objects err{error}\n")
    if not found:
        replay.write(
            "PrintAllDevicesPath: GetManagedObjects() failed to get GetManagedObjects !.\n")
        return
    if not objects:
        replay.write("No DBUS objects of this module type are present\n")
    for path in sorted(first_of_each(objects), key=lambda path: path.encode("latin-1")):
        replay.write(path + "\n")
        properties_of(replay, path, module_type - 1 & 0xFF)
