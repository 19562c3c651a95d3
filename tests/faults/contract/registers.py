"""Registers of the CPLD: by name, else by raw address. Options 1 and 5."""

from board import data

RAW_READ_FAILED = 11


def result(text):
    """Status and bytes of a read."""
    status, content = text.split(" ")
    return int(status), data(content)


def raw(replay, address, high=7, low=0):
    status, content = result(replay.call("raw", f"{address} 1"))
    if status == 0:
        content = bytes([content[0] >> low & (1 << high - low + 1) - 1])
        replay.allocate_before_text()
    return status, content


def raw_word(replay, address):
    status, content = result(replay.call("block", f"{address} 2 1"))
    if status == 0:
        replay.allocate_before_text()
    return status, content


def field(replay, name, address, high=7, low=0):
    """A field of one byte: its status, and its bytes at status 0."""
    status, content = result(replay.call("named", name))
    return (0, content) if status == 0 else raw(replay, address, high, low)


def word(replay, name, address):
    status, content = result(replay.call("named", name))
    return (0, content) if status == 0 else raw_word(replay, address)


def number(content, size=1):
    """The register's value; nothing when the platform delivered too little."""
    return None if len(content) < size else int.from_bytes(content[:size], "little")


def picpwr_base(n):
    return 0x1000 + 14 * (n - 1)


# Suffix, byte in the block, bits, label, format of the value.
PICPWR_BYTES = (
    ("_DBYP", 0, 5, 5, "DBYP", "{}"),
    ("_DPEN", 0, 4, 4, "DPEN", "{}"),
    ("_APEN", 0, 3, 3, "APEN", "{}"),
    ("_ASTAT", 0, 0, 0, "ASTAT", "{}"),
    ("_MOD_CLASS", 1, 7, 0, "Module Class", "0x{:02X}"),
    ("_MOD_CLASS_IDX", 2, 7, 0, "Module Class Index", "{}"),
)


def picpwr(replay, n):
    """The report of one slot. Returns the status that ends the whole report."""
    base = picpwr_base(n)

    def line(label, value):
        replay.write(f"PICPWR {n:02} {label:18} = {value}\n")

    def unread(label, status):
        replay.write(f"Unable to read PICPWR {label} using CPLD raw API, status {status}\n")

    status, content = field(replay, f"PICPWR_{n}_DSTAT", base, 7, 6)
    if status != 0:
        unread(f"{n} DSTAT", status)
        return 0
    dstat = number(content)
    replay.write("\n")
    if dstat is not None and dstat <= 3:
        line("DSTAT", f"{dstat:02b}b")
    if dstat == 0:
        return 0
    for suffix, byte, high, low, label, text in PICPWR_BYTES:
        status, content = field(replay, f"PICPWR_{n}{suffix}", base + byte, high, low)
        if status != 0:
            unread(f"{n} {label}", status)
            return 0
        if content:
            line(label, text.format(content[0]))
    status, content = word(replay, f"PICPWR_{n}_PAYLOAD_OFFSET", base + 3)
    if status != 0:
        unread("payload offset", status)
        return RAW_READ_FAILED
    if number(content, 2) is not None:
        line("Payload Offset", number(content, 2))
    for k in range(1, 9):
        status, content = raw(replay, base + 5 + k)
        if status != 0:
            unread(f"{n} DSL{k}_ID", status)
        else:
            line(f"DSL{k}_ID", content[0])
    return 0


def picpwr_info(replay, given):
    for n in range(1, 64):
        if given["p"] in (0, n):
            status = picpwr(replay, n)
            if status != 0:
                return status
    return 0


WORD, RAW_ONLY = "word", "raw only"

# Class: prefix, number of instances, base, distance, rows. A row: suffix, offset, bits or kind,
# line with "{i}" for the instance.
POLICY = ("_PWR_POLICY", 0, (7, 6))
CLASSES = {
    1: ("", 0, 0x13BE, 0, (
        ("1C_CARD_PRES", 0, (7, 7), "1C Card Presence                  = {}"),
        ("1C_CONNECTOR_PCARD_PAYLOAD_OFFSET", 1, WORD, "1C Connector PCARD Payload Offset = {}"))),
    2: ("", 0, 0x13C4, 0, (
        ("4C+_CONNECTOR_PCARD_MOD_CLASS", 0, (7, 0),
         "4C+ Connector PCARD Module Class   = 0x{:02X}"),
        ("4C+_CONNECTOR_PCARD_PAYLOAD_OFFSET", 1, WORD,
         "4C+ Connector PCARD Payload Offset = {}"))),
    6: ("BP_", 8, 0x1400, 9, (
        (*POLICY, "Backplane {i} Power Policy          = {}", RAW_ONLY),
        ("_VWIRE_SMBUS_RST", 0, (3, 3), "Backplane {i} SMBus Reset vWire     = {}"),
        ("_VWIRE_BP_RST", 0, (2, 2), "Backplane {i} BP Reset Vwire        = {}", RAW_ONLY),
        ("_VWIRE_RDY", 0, (1, 1), "Backplane {i} ready register vWire  = {}"),
        ("_VWIRE_DOWNSTREAM_MODE", 0, (0, 0), "Backplane {i} vWire Downstream Mode = {}"),
        ("_PICPWR_INDEX", 1, (7, 0), "Backplane {i} PICPWR Index          = {}"))),
    7: ("CEM_RISER_", 24, 0x1800, 5, (
        (*POLICY, "CEM Riser {i} Power Policy      = {}"),
        ("_FRU_WP", 0, (1, 1), "CEM Riser {i} FRU Write Protect = {}"),
        ("_BMC_PWR_EN", 0, (0, 0), "CEM Riser {i} BMC Power Enable  = {}"),
        ("_PICPWR_INDEX", 2, (7, 0), "CEM Riser {i} PICPWR Index      = {}"))),
    12: ("", 0, 0x2200, 0, (
        ("REMOTE_FAN_PWR_POLICY", 0, (7, 6), "RFC Power Policy = {}"),
        ("REMOTE_FAN_PICPWR_INDEX", 1, (7, 0), "RFC PICPWR Index = {}"))),
    13: ("FLOP_", 16, 0x2400, 4, (
        (*POLICY, "FLOP {i} Power Policy      = {}"),
        ("_FRU_WP", 0, (4, 4), "FLOP {i} FRU Write Protect = {}"),
        ("_OCP_PRES", 0, (0, 0), "FLOP {i} OCP Presence      = {}"),
        ("_UNHIDE", 1, (7, 7), "FLOP {i} Unhide            = {}"),
        ("_NUM_LINKS", 1, (5, 4), "FLOP {i} Number of links   = {}", RAW_ONLY),
        ("_PRSNTB", 1, (3, 0), "FLOP {i} Card Type         = {}"),
        ("_PICPWR_INDEX", 2, (7, 0), "FLOP {i} PICPWR Index      = {}"))),
    14: ("BAT_INTRPSR_", 2, 0x2600, 4, (
        (*POLICY, "Battery Interposer {i} Power Policy     = {}"),
        ("_BMC_PWR_EN", 0, (4, 4), "Battery Interposer {i} BMC Power Enable = {}"),
        ("_BATT_RDY", 0, (0, 0), "Battery Interposer {i} Battery Ready    = {}"),
        ("_PICPWR_INDEX", 1, (7, 0), "Battery Interposer {i} PICPWR Index     = {}"))),
}
for place, prefix, base, index, label, what in (
        (3, "DOWNSTREAM_KARN_", 0x13CA, "_FLOP_IDX", "Downstream KARN{i}", "FLOP Index"),
        (4, "DOWNSTREAM_M.2_CARD_", 0x13DC, "_FLOP_IDX", "Downstream M.2 Card{i}", "FLOP Index"),
        (5, "DOWNSTREAM_TULM_", 0x13EE, "_BP_IDX", "Downstream TULM{i}", "Backplane Index")):
    CLASSES[place] = (prefix, 2, base, 6, (
        (index, 0, (7, 0), f"{label} {what:17} = {{}}"),
        ("_PAYLOAD_OFFSET", 1, WORD, f"{label} Payload Offset    = {{}}"),
        ("_FRU_WP", 3, (0, 0), f"{label} FRU Write Protect = {{}}")))
for place, prefix, count, base, label in (
        (8, "KARN_", 2, 0x1A00, "KARN"), (9, "M.2_INTERPOSER_", 2, 0x1C00, "M.2 Interposer"),
        (10, "RIDA_", 2, 0x1E00, "RIDA"), (11, "PUCK_", 16, 0x2000, "PUCK")):
    CLASSES[place] = (prefix, count, base, 4, (
        (*POLICY, f"{label} {{i}} Power Policy      = {{}}"),
        ("_FRU_WP", 0, (0, 0), f"{label} {{i}} FRU Write Protect = {{}}"),
        ("_PICPWR_INDEX", 1, (7, 0), f"{label} {{i}} PICPWR Index      = {{}}")))


def control_register(replay, name, address, row, instance):
    _, _, bits, line, *access = row
    if access:
        status, content = raw(replay, address, *bits)
    elif bits == WORD:
        status, content = word(replay, name, address)
    else:
        status, content = field(replay, name, address, *bits)
    value = number(content, 2 if bits == WORD else 1)
    if status != 0:
        replay.write(f"Unable to read {name} using CPLD raw API, status {status}\n")
    elif value is not None:
        replay.write(line.format(value, i=instance) + "\n")


def control_class(replay, which):
    prefix, count, base, distance, rows = CLASSES[which]
    for instance in range(1, count + 1) if count else (None,):
        for row in rows:
            name = f"{prefix}{instance}{row[0]}" if count else row[0]
            start = base + distance * (instance - 1) if count else base
            control_register(replay, name, start + row[1], row, instance)
        if count:
            replay.write("\n")


def control_registers(replay, given):
    if given["m"] == 15:
        for which in range(1, 15):
            control_class(replay, which)
            replay.write("\n")
    elif given["m"] in CLASSES:
        if given["m"] == 2:
            replay.write("\n")
        control_class(replay, given["m"])
    return 0
