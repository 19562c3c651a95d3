"""Describes random boards, with odd values, overrides and faults. A seed always gives the same board.

Every description is one that zolt_sim accepts.
"""

import random

MODULE_TYPES = ("bp", "puck", "rfc", "riser", "ftulm", "karnRaid", "karnNonRaid", "rida", "flop", "bi",
                "battery")
DEVICE_TYPES = ("PICPWR", "PUCK", "BP", "RSR", "KARN", 60, 164, "FAN_MCU", 0)
REGISTERS = ("DSTAT", "DBYP", "DPEN", "APEN", "ASTAT", "MOD_CLASS", "MOD_CLASS_IDX", "PAYLOAD_OFFSET")

# Table, number of instances, fields with their highest value; 1: true or false.
CONTROL = (
    ("connector_1c", 1, {"card_present": 1, "payload_offset": 65535}),
    ("connector_4c_plus", 1, {"module_class": 255, "payload_offset": 65535}),
    ("downstream_karn", 2, {"flop_index": 255, "payload_offset": 65535, "fru_wp": 1}),
    ("downstream_m2_card", 2, {"flop_index": 255, "payload_offset": 65535, "fru_wp": 1}),
    ("downstream_tulm", 2, {"backplane_index": 255, "payload_offset": 65535, "fru_wp": 1}),
    ("backplane", 8, {"pwr_policy": 3, "smbus_reset": 1, "bp_reset": 1, "ready": 1,
                      "downstream_mode": 1, "picpwr_index": 255}),
    ("cem_riser", 24, {"pwr_policy": 3, "fru_wp": 1, "bmc_pwr_en": 1, "picpwr_index": 255}),
    ("karn", 2, {"pwr_policy": 3, "fru_wp": 1, "picpwr_index": 255}),
    ("m2_interposer", 2, {"pwr_policy": 3, "fru_wp": 1, "picpwr_index": 255}),
    ("rida", 2, {"pwr_policy": 3, "fru_wp": 1, "picpwr_index": 255}),
    ("puck", 16, {"pwr_policy": 3, "fru_wp": 1, "picpwr_index": 255}),
    ("remote_fan", 1, {"pwr_policy": 3, "picpwr_index": 255}),
    ("flop", 16, {"pwr_policy": 3, "fru_wp": 1, "ocp_present": 1, "unhide": 1, "num_links": 3,
                  "card_type": 15, "picpwr_index": 255}),
    ("battery_interposer", 2, {"pwr_policy": 3, "bmc_pwr_en": 1, "battery_ready": 1,
                               "picpwr_index": 255}),
)

VALUES = (
    ("y", "255"), ("n", "-32768"), ("i", "-1"), ("u", "4294967295"), ("x", "-9"), ("t", "-1"),
    ("d", "1.5"), ("o", "'/a/b'"), ("g", "'a{sv}'"), ("as", "['x', '']"), ("ay", "[]"),
    ("(yyyyyy)", "[1, 2, 3, 4, 5, 6]"), ("a{sv}", "[['k', ['q', 7]]]"), ("v", "['as', ['deep']]"),
)


class Description:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.lines = [f'name = "random board {seed}"']

    def chance(self, percent):
        return self.random.randrange(100) < percent

    def number(self, highest):
        """A number, often one at the end of its range."""
        return self.random.choice((0, 1, highest, self.random.randint(0, highest)))

    def bytes(self, most):
        values = (f"{self.random.randrange(256):02x}" for _ in range(self.random.randint(0, most)))
        return f'"{" ".join(values)}"'

    def truth(self):
        return self.random.choice(("true", "false"))

    def text(self, most):
        letters = "ABCxyz0189 -._%\\\\"
        text = "".join(self.random.choice(letters) for _ in range(self.random.randint(0, most)))
        return f"'{text}'"

    def table(self, header):
        self.lines.append(f"\n{header}")

    def key(self, name, value):
        self.lines.append(f"{name} = {value}")

    def maybe(self, percent, name, value):
        if self.chance(percent):
            self.key(name, value)

    def value(self):
        kind = self.random.randrange(4)
        if kind == 0:
            return self.truth()
        if kind == 1:
            return str(self.number(65535))
        if kind == 2:
            return self.text(12)
        signature, value = self.random.choice(VALUES)
        return f'{{ signature = "{signature}", value = {value} }}'


def module(text, index):
    device_class = text.random.choice((0x11, 0x12, 0x1A, 0x1B, 0x2A, text.number(255)))
    text.table("[slot.module]")
    text.key("device_class", device_class)
    if text.chance(70):
        text.key("type", f'"{text.random.choice(MODULE_TYPES)}"')
        text.key("object", f'"module_{index}"')
    for key, highest in (("format_version", 255), ("device_id", 65535), ("vendor_id", 65535),
                         ("device_version", 255), ("xwires", 15), ("pwires", 7),
                         ("target_type", 7), ("target_address", 127)):
        text.maybe(60, key, text.number(highest))
    text.maybe(10, "static_payload_size", text.number(255))
    text.maybe(10, "num_end_points", text.number(31))
    text.maybe(15, "checksum", text.number(255))
    oem = text.chance(40)
    if oem:
        text.maybe(20, "oem_area_size", text.number(255))
        text.maybe(20, "oem_descriptors", text.number(255))
    if device_class == 0x2A:
        text.table("[slot.module.backplane]")
        for key, highest in (("bay_id", 255), ("backplane_id", 1023), ("last_slot", 63), ("type", 3)):
            text.maybe(60, key, text.number(highest))
    elif device_class not in (0x1A, 0x1B):
        for _ in range(text.random.randrange(4)):
            text.table("[[slot.module.end_point]]")
            text.key("picpwr_index", text.number(15))
            text.maybe(50, "indirect", "true")
            text.maybe(50, "type", text.number(7))
    if oem:
        for _ in range(text.random.randint(1, 4)):
            kind = text.random.choice((1, 2, 3, 9))
            text.table("[[slot.module.oem]]")
            text.key("type", kind)
            text.maybe(20, "size", text.number(255))
            for key in {1: ("src_id",), 2: ("bay_id", "location"), 3: ("slot_presence",)}.get(kind, ()):
                text.key(key, text.number(255))
            if kind == 9:
                text.key("data", text.bytes(6))


def slots(text):
    numbers = sorted(text.random.sample(range(1, 64), text.random.randint(0, 8)))
    for index, number in enumerate(numbers):
        text.table("[[slot]]")
        text.key("id", number)
        text.key("dstat", text.random.choice((0, 1, 2, 3, 3, 3)))
        for flag in ("dbyp", "dpen", "apen", "astat"):
            text.maybe(50, flag, text.truth())
        text.maybe(40, "module_class", text.number(255))
        text.maybe(40, "module_class_index", text.number(255))
        text.maybe(60, "dsl_ids", text.bytes(8))
        kind = text.random.randrange(4)
        # Near the end of the block, a bulk read of 375 bytes does not fit. No payload follows.
        is_last = number == numbers[-1]
        if kind == 0:
            text.maybe(30, "payload_offset", text.number(65535))
        elif kind == 1:
            text.key("payload", text.bytes(247))
            text.maybe(50, "oem_area", text.bytes(40))
            if is_last:
                text.maybe(60, "payload_offset", 24575 - 247 - 40 - text.number(200))
        else:
            module(text, index)
    return numbers


def control_registers(text):
    for table, instances, fields in CONTROL:
        for instance in range(1, instances + 1):
            if text.chance(30):
                text.table(f"[[{table}]]")
                text.key("id", instance)
                for field, highest in fields.items():
                    text.maybe(60, field, text.truth() if highest == 1 else text.number(highest))


def riser_map(text):
    if text.chance(20):
        return
    text.table("[riser_map]")
    if text.chance(25):
        text.key("bytes", text.bytes(1500))
        return
    text.key("config_major", text.number(255))
    text.maybe(80, "description", text.text(48))
    text.maybe(50, "karn_hwuid", text.number(65535))
    text.maybe(10, "records", text.number(255))
    text.maybe(15, "checksum", text.number(255))
    for _ in range(text.random.randrange(5)):
        text.table("[[riser_map.record]]")
        text.key("picpwr", text.number(255))
        text.maybe(80, "location", text.text(8))
        text.maybe(80, "part_number", text.text(8))
        text.maybe(50, "slots", f"[{', '.join(str(text.number(255)) for _ in range(4))}]")
        text.maybe(10, "payload_size", text.number(255))
        text.maybe(10, "dsl_payloads", text.number(255))
        for _ in range(text.random.randrange(3)):
            text.table("[[riser_map.record.dsl]]")
            text.key("id", text.number(255))
            text.key("type", text.random.randrange(5))


def overrides(text, numbers):
    if numbers and text.chance(50):
        text.table("[override.named]")
        names = {f"PICPWR_{text.random.choice(numbers)}_{text.random.choice(REGISTERS)}"
                 for _ in range(3)}
        for name in sorted(names):
            text.key(name, text.bytes(3))
    if text.chance(50):
        text.table("[override.raw]")
        for address in sorted(text.random.sample(range(0x1000, 0x1372), 5)
                              + text.random.sample(range(0x2A01, 0x3000), 5)):
            text.key(f"0x{address:04X}", text.number(255))


def hal(text):
    if text.chance(30):
        text.table("[hal.PICPWR_PAYLOADS]")
        text.maybe(50, "interrupt_callback", "true")
        text.maybe(50, "unregister_status", text.random.choice((-1, 7)))
        text.maybe(50, "most_bytes", text.random.choice((0, 1, 20, 246, 247, 300, 374)))


def service(text):
    if text.chance(50):
        text.table("[service.info]")
        for name in ("FRUreadComplete", "CardCount", "Zebra"):
            text.maybe(70, name, text.value())
    for index in range(text.random.randrange(4)):
        kind = text.random.choice(MODULE_TYPES)
        text.table("[[service.object]]")
        text.key("path", f'"{kind}/extra_{index}"')
        text.key("interface", f'"{text.random.choice(("cemCIR", "puckCIR", "other"))}"')
        text.table("[service.object.properties]")
        for name in ("DeviceId", "checksum", "Owner"):
            text.maybe(70, name, text.value())
    for _ in range(text.random.randrange(3)):
        text.table("[[service.order]]")
        text.key("path", f'"{text.random.choice(MODULE_TYPES)}"')
        if text.chance(70):
            text.key("action", '"error"')
            text.key("error", '"com.example.Refused"')
            text.key("text", text.text(10))
        else:
            text.key("action", '"reply"')
            text.key("signature", '"as"')
            text.key("value", "['x']")


def i2c(text):
    for index in range(text.random.randrange(6)):
        text.table("[[i2c.index_node]]")
        kind = text.random.choice(DEVICE_TYPES)
        text.key("device_type", kind if isinstance(kind, int) else f'"{kind}"')
        for key in ("index", "slot_number", "slot_type", "sub_node_count"):
            text.maybe(60, key, text.random.choice((-2147483648, -1, 0, 3, 2147483647)))
        text.maybe(80, "name", text.text(16))
        text.maybe(60, "physical_bus", 20 + index)
        text.maybe(60, "discoverable", text.random.choice(("true", "false", "2", "255")))
        text.maybe(40, "is_sl_src", text.number(255))
        for key in ("picpwr", "sl_src", "bay_id"):
            text.maybe(40, key, text.number(255))
        text.maybe(40, "hw_uid", text.number(65535))
        for _ in range(text.random.randrange(3)):
            text.table("[[i2c.index_node.sub]]")
            text.maybe(70, "name", text.text(24))
            text.maybe(50, "sub_index", text.random.choice((-1, 0, 5)))
            text.maybe(50, "discoverable", text.truth())
    for kind in text.random.sample((1, 16, 24, 100), text.random.randrange(3)):
        text.table("[[i2c.type]]")
        text.key("device_type", kind)
        text.maybe(60, "status", text.random.choice((-5, 0, 1, 9)))
        text.maybe(60, "root", text.random.choice(('"none"', '"empty"', '"nodes"')))


def fault(text):
    status = text.random.choice(("", " status 9", " status -5"))
    slot = text.random.randint(1, 63)
    first = text.random.choice((0x1000, 0x1800, 0x2400, 0x2A01, 0x8A00)) + text.random.randrange(200)
    return text.random.choice((
        f"named-read PICPWR_{slot}_*{status}",
        f"named-read PICPWR_*_{text.random.choice(REGISTERS)}{status}",
        f"named-read *_{text.random.choice(('FRU_WP', 'PICPWR_INDEX', 'PWR_POLICY'))}{status}",
        f"named-read RISER_SLOT_AMP_BLOB{status}",
        f"named-read *{status}",
        f"raw-read 0x{first:04X}-0x{first + text.random.choice((0, 3, 60)):04X}{status}",
        "hal-object PICPWR_PAYLOADS",
        f"hal-read PICPWR_PAYLOADS{status}",
        f"hal-read PICPWR_PAYLOADS 0x{first & 0xFFF:04X}{status}",
        "bus absent",
        "service absent",
        f"object {text.random.choice(MODULE_TYPES)}",
        "object info error com.example.Other",
        f"sysinfo {text.random.choice((1, 16, 24, 100))}{status}",
    ))


def random_board(seed):
    """The description of a board, as text."""
    text = Description(seed)
    faults = [fault(text) for _ in range(text.random.randrange(5))]
    text.key("faults", f"[{', '.join(repr(each) for each in faults)}]")
    numbers = slots(text)
    control_registers(text)
    riser_map(text)
    overrides(text, numbers)
    hal(text)
    service(text)
    i2c(text)
    return "\n".join(text.lines) + "\n"
