"""The listings of payloads and blobs. A listing ends at the first byte that is not there."""

HEADER = (
    (1, "DEVICE_CLASS                  = 0x{:02X}\n"),
    (2, "STATIC_PAYLOAD_SIZE           = {}\n"),
)
END_POINT = (
    ("PICPWR_INDEX", 0, 7, 4), ("I2C_MUX_PRES", 0, 3, 3), ("INDIRECT", 0, 2, 2),
    ("HOT_PLUG", 0, 1, 1), ("EP_TYPE", 1, 7, 5), ("EP_I2C_SOURCE", 1, 3, 0),
    ("EP_LANE_WIDTH", 2, 7, 5), ("I2C_MUX_DCH", 2, 3, 0),
)
INDIRECT = (
    ("PCIE_SW_PORT_DISC_ORDER_LOWER", 3, 7, 4), ("PCIE_SW_GROUP_LOWER", 3, 2, 0),
    ("PCIE_SW_PORT_DISC_ORDER_UPPER", 4, 7, 4), ("PCIE_SW_GROUP_UPPER", 4, 2, 0),
)
DIRECT = (
    ("USB_HUB_PRES", 0, 0, 0), ("USB_HUB_DCH", 3, 7, 4), ("EP_USB_SOURCE", 3, 3, 0),
    ("DSL_INDEX_LOWER", 4, 6, 4), ("DSL_LANE_OFFSET_LOWER", 4, 2, 0),
    ("DSL_INDEX_UPPER", 5, 6, 4), ("DSL_LANE_OFFSET_UPPER", 5, 2, 0),
)
BACKPLANE = (
    ("PWR CBL COUNT", 16, 7, 6), ("STARTING SLOT OFFSET", 16, 5, 2), ("BP LOCATION", 17, 6, 4),
    ("LAST VALID CONN DESC", 17, 3, 0), ("MAX PCIE SPEED", 18, 7, 6),
    ("LAST VALID SLOT DESC", 18, 5, 0), ("BP_TYPE", 19, 4, 3), ("LAST VALID SWITCH PORT", 19, 2, 0),
)


def bits(value, high, low):
    return value >> low & (1 << high - low + 1) - 1


def listed(lines):
    """The lines of a listing up to the first one for which a byte is missing."""
    text = ""
    try:
        for line in lines:
            text += line
    except IndexError:
        pass
    return text


def cir_line(name, value):
    return f"{name:29} = {value}\n"


def cir_payload(payload):
    p = payload
    yield "\n\nPAYLOAD HEADER :\n\n"
    yield cir_line("PAYLOAD_FORMAT_VERSION", p[0])
    for byte, text in HEADER:
        yield text.format(p[byte])
    yield cir_line("DEVICE_ID", f"0x{p[4] << 8 | p[5]:02X}")
    yield cir_line("VENDOR_ID", f"0x{p[6] << 8 | p[7]:02X}")
    backplane, puck = p[1] == 0x2A, p[1] in (0x1A, 0x1B)
    if not backplane:
        yield cir_line("DEVICE_VERSION", p[8])
    if not puck:
        yield cir_line("NUM_XWIRES", bits(p[10], 7, 4))
    yield cir_line("NUM_PWIRES", bits(p[10], 2, 0))
    yield cir_line("TARGET_I2C_GPIO_DEV_TYPE", bits(p[11], 7, 5))
    yield cir_line("TARGET_I2C_GPIO_DEV_ADDRESS", f"0x{bits(p[12], 6, 0):02X}")
    if backplane:
        yield cir_line("BP DESCRIPTOR VERSION", p[13])
        yield cir_line("BAY_ID", p[14])
        yield cir_line("BACKPLANE_ID", (p[16] & 3) * 256 + p[15])
        for name, byte, high, low in BACKPLANE:
            yield cir_line(name, bits(p[byte], high, low))
    elif not puck:
        yield cir_line("NUM_EP_DESCRIPTORS", bits(p[11], 4, 0))
        for i in range(1, bits(p[11], 4, 0) + 1):
            yield f"\n\nEND POINT {i}\n\n"
            start = 13 + 6 * (i - 1)
            for name, byte, high, low in END_POINT:
                yield cir_line(name, bits(p[start + byte], high, low))
            for name, byte, high, low in INDIRECT if p[start] & 4 else DIRECT:
                yield cir_line(name, bits(p[start + byte], high, low))
    if puck or p[2] != 0:
        yield f"\n\nCHECKSUM                      = {p[15 if puck else p[2] * 8 - 1]}\n\n\n"


OEM_TYPES = {
    1: (("SRC ID", 2), ("DST ID", 3)),
    2: (("BAY ID", 2), ("STARTING SLOT OFFSET", 3), ("LOCATION", 4)),
}


def oem_area(area):
    yield f"\n\nOEM AREA SIZE               = {area[0]}\n"
    yield f"TOTAL NUMBER OF DESCRIPTORS = {area[1]}\n"
    position = 0
    for _ in range(area[1]):
        start = position + 2
        yield f"\nDESCRIPTOR TYPE             = {area[start]}\n"
        yield f"DESCRIPTOR SIZE             = {area[start + 1]}\n"
        for name, byte in OEM_TYPES.get(area[start], ()):
            yield f"{name:27} = {area[start + byte]}\n"
        if area[start] == 3:
            yield f"SLOT PRESENCE BIT MAP       = 0x{area[start + 2]:X}\n"
        position = (position + area[start + 1]) % 256
    yield f"\n\nCHECKSUM                    = {area[area[0] - 1]}\n\n\n"


def text_at(blob, start, length):
    """The text up to its first NUL. The field has to be there, or the NUL."""
    text, end, _ = blob[start:start + length].partition(b"\0")
    if not end and len(text) < length:
        raise IndexError
    return text.decode("latin-1")


def riser_line(name, value):
    return f"{name:30} = {value}\n"


def two_digits(value):
    return f"0x{value:02X}"


NON_PICPWR = ("KARN CARD PRESENCE", "KARN HWUID MSB", "KARN HWUID LSB", "KARN SLOT NUMBER",
              "KARN SLOT TYPE", "EMBEDDED OCP NIC CARD PRESENCE", "EMBEDDED OCP NIC SLOT NUMBER",
              "EMBEDDED OCP NIC SLOT TYPE", "NUMBER OF PICPWR SLOT DETAILS")
DSL_TYPES = {1: ("SL index",), 2: ("OCP index", "OCP lane index"),
             3: ("switched riser index", "SL index")}


def riser_map(blob):
    yield "\n\nCONFIG DETAILS :\n\n"
    yield riser_line("RISER CONFIG# MAJOR", blob[0])
    yield riser_line("RISER CONFIG# MINOR", blob[1])
    yield riser_line("RISER CONFIG DESCRIPTION", text_at(blob, 2, 48))
    yield "\n\nNON PICPWR SLOT INFORMATION :\n\n"
    for i, name in enumerate(NON_PICPWR, 50):
        yield riser_line(name, two_digits(blob[i]) if "HWUID" in name else blob[i])
    start = 59
    for record in range(1, blob[58] + 1):
        yield f"\n\nPICPWR {record} SLOT INFORMATION :\n\n"
        yield from riser_record(blob, start)
        start += blob[start + 1]
    yield f"\n\nCHECKSUM                       = {blob[start]}\n\n\n"


def riser_record(blob, p):
    yield riser_line("PICPWR ID", blob[p])
    yield riser_line("PAYLOAD SIZE", blob[p + 1])
    yield riser_line("RISER PHYSICAL LOCATION", text_at(blob, p + 2, 8))
    yield riser_line("MECH ASSY XPN", text_at(blob, p + 10, 8))
    yield riser_line("HWUID MSB", two_digits(blob[p + 18]))
    yield riser_line("HWUID LSB", two_digits(blob[p + 19]))
    dsls = blob[p + 20]
    yield riser_line("NO OF DSLs", dsls)
    for k in range(1, dsls + 1):
        yield f"DSL{k}                           = {blob[p + 20 + k]}\n"
    p += 21 + dsls
    slots = blob[p]
    yield riser_line("NO OF SLOTS", slots)
    for j in range(1, slots + 1):
        yield f"SLOT{j} NUMBER                   = {blob[p + 2 * j - 1]}\n"
        yield f"SLOT{j} TYPE                     = {blob[p + 2 * j]}\n"
    p += 1 + 2 * slots
    yield riser_line("NO OF DSL PAYLOADS", blob[p])
    for k in range(1, dsls + 1):
        q = p + 1 + 4 * (k - 1)
        yield f"DSL {k} type                     = {blob[q]}\n"
        for i, name in enumerate(DSL_TYPES.get(blob[q], ()), 1):
            yield f"DSL {k} {name:24} = {blob[q + i]}\n"
        if blob[q] not in DSL_TYPES:
            yield "Invalid DSL type\n"


def hex_dump(base, content):
    text = ("\n+             0  1  2  3  4  5  6  7 :  8  9  A  B  C  D  E  F\n" + "-" * 62 + "\n")
    for i, byte in enumerate(content):
        text += f"0x{base + i:08x} = " if i % 16 == 0 else ""
        text += f"{byte:02x} " + {7: ": ", 15: "\n"}.get(i % 16, "")
    return text + "\n\n"
