"""Computes what the tool has to report about a module.

report() lays out the properties that the service publishes. shown_properties() derives these
properties from the tool's listing of the module's payload."""

import re

NO_END_POINT = [0] * 6

# Label, property, shift, mask.
NUMBERS = (
    ("PayloadFrmtVer", "PayloadFrmtVer", 0, 0xFF),
    ("DeviceClass", "DeviceClass", 0, 0xFF),
    ("StaticPaylodSize", "StaticPaylodSize", 0, 0xFF),
    ("DeviceId", "DeviceId", 0, 0xFFFF),
    ("VendorId", "VendorId", 0, 0xFFFF),
    ("DeviceVer", "DeviceVer", 0, 0xFF),
)
LONG = NUMBERS + (
    ("NumWires - NUM_PWIRES", "NumWires", 0, 0x07),
    ("NumWires - NUM_XWIRES", "NumWires", 4, 0x0F),
    ("TargetI2cDevType - TARGET_I2C_GPIO_DEV_TYPE", "TargetI2cDevType", 5, 0x07),
    ("TargetI2cDevType - NUM_EP_DESCRIPTORS", "TargetI2cDevType", 0, 0x1F),
    ("TargetI2cDevAddr - TARGET_I2C_GPIO_DEV_ADDRESS", "TargetI2cDevAddr", 0, 0x7F),
)
SHORT = NUMBERS + (
    ("NumPwires", "NumPwires", 0, 0x07),
    ("TargetI2cGpioDevType", "TargetI2cGpioDevType", 5, 0x07),
    ("TargetI2cGpioDevAddr", "TargetI2cGpioDevAddr", 0, 0x7F),
)

# Label, bit of byte 0, sentence when the bit is set, sentence when it is clear.
FLAGS = (
    ("USB_HUB_PRES", 0, "(Hub) USB goes through a USB Hub to get to this endpoint.",
     "(no Hub) USB is directly wired from DSL to endpoint."),
    ("HOT_PLUG", 1, "Notify BIOS that this endpoint is hotplug-capable. "
                    "Applicable to NVME direct attach storage or similar EP.",
     "Endpoint is not hotplug-capable."),
    ("INDIRECT", 2, "PCIe switch case: EP PCIe lane comes from a PCIe switch.",
     "normal riser case: EP PCIe lane routing is directly from DSLs."),
    ("I2C_MUX_PRES", 3, "(mux) I2C goes through a mux to get to this endpoint.",
     "(no mux) I2C is directly wired from DSL to endpoint."),
)
# Label, byte, shift, mask, text of the value.
HEXADECIMAL = "0x{:02X}"
DECIMAL = "{}"
PARTS = (
    ("PICPWR_INDEX", 0, 4, 0x0F, HEXADECIMAL),
    ("EP_I2C_SOURCE", 1, 0, 0x0F, HEXADECIMAL),
    ("EP_TYPE", 1, 5, 0x07, HEXADECIMAL),
    ("I2C_MUX_DCH", 2, 0, 0x0F, DECIMAL),
    ("EP_LANE_WIDTH", 2, 5, 0x07, HEXADECIMAL),
    ("EP_USB_SOURCE", 3, 0, 0x0F, HEXADECIMAL),
    ("USB_HUB_DCH", 3, 4, 0x0F, DECIMAL),
    ("DSL_LANE_OFFSET_LOWER", 4, 0, 0x07, HEXADECIMAL),
    ("DSL_INDEX_LOWER", 4, 4, 0x07, HEXADECIMAL),
    ("DSL_LANE_OFFSET_UPPER", 5, 0, 0x07, HEXADECIMAL),
    ("DSL_INDEX_UPPER", 5, 4, 0x07, HEXADECIMAL),
)


def numbers(rows, properties):
    return [
        (label, HEXADECIMAL.format(properties[name] >> shift & mask))
        for label, name, shift, mask in rows
    ]


def decoded_end_point(end_point):
    return [
        (label, yes if end_point[0] >> bit & 1 else no) for label, bit, yes, no in FLAGS
    ] + [
        (label, text.format(end_point[byte] >> shift & mask))
        for label, byte, shift, mask, text in PARTS
    ]


def end_points(which, properties):
    return [
        (f"EndPoint{i}", ", ".join(map(HEXADECIMAL.format, properties[f"EndPoint{i}"])))
        for i in which
    ]


def card(properties):
    return (
        numbers(LONG, properties)
        + [("EndPoint0", "")]
        + decoded_end_point(properties["EndPoint0"])
        + end_points(range(1, 4), properties)
        + numbers([("checksum", "checksum", 0, 0xFF)], properties)
    )


def backplane(properties):
    return (
        numbers(LONG, properties)
        + end_points(range(16), properties)
        + numbers([("checksum", "checksum", 0, 0xFF)], properties)
    )


def header_alone(properties):
    return numbers(SHORT, properties)


KINDS = {"bp": (backplane, 48), "puck": (header_alone, 21), "rfc": (header_alone, 21)}


def report(path, properties):
    """Returns the tool's report of the object at a path."""
    lines, width = KINDS.get(path.split("/")[-2], (card, 48))
    text = "".join(f"{label:{width}}: {value}\n" for label, value in lines(properties))
    return f"{path}\n{text}\n\n"


# The fields in the tool's listing of an end point: byte and shift.
SHOWN_PARTS = {
    "PICPWR_INDEX": (0, 4), "I2C_MUX_PRES": (0, 3), "INDIRECT": (0, 2), "HOT_PLUG": (0, 1),
    "EP_TYPE": (1, 5), "EP_I2C_SOURCE": (1, 0), "EP_LANE_WIDTH": (2, 5), "I2C_MUX_DCH": (2, 0),
    "PCIE_SW_PORT_DISC_ORDER_LOWER": (3, 4), "PCIE_SW_GROUP_LOWER": (3, 0),
    "PCIE_SW_PORT_DISC_ORDER_UPPER": (4, 4), "PCIE_SW_GROUP_UPPER": (4, 0),
    "USB_HUB_PRES": (0, 0), "USB_HUB_DCH": (3, 4), "EP_USB_SOURCE": (3, 0),
    "DSL_INDEX_LOWER": (4, 4), "DSL_LANE_OFFSET_LOWER": (4, 0),
    "DSL_INDEX_UPPER": (5, 4), "DSL_LANE_OFFSET_UPPER": (5, 0),
}


def listed(listing):
    """Returns the fields of a listing with lines NAME = VALUE."""
    pairs = re.findall(r"^(\S.*?) += (\w+)$", listing, re.M)
    return {name: int(value, 0) for name, value in pairs}


def shown_end_point(fields):
    end_point = list(NO_END_POINT)
    for name, value in fields.items():
        byte, shift = SHOWN_PARTS[name]
        end_point[byte] |= value << shift
    return end_point


def shown_properties(listing):
    """Returns the properties of the module whose payload the tool lists so. A property that the
    listing does not show is 0. The result has every name that any of the reports needs."""
    header, *each = map(listed, re.split(r"\n\nEND POINT \d+\n\n", listing))
    checksum = (each[-1] if each else header).pop("CHECKSUM")
    wires = header.get("NUM_XWIRES", 0) << 4 | header["NUM_PWIRES"]
    target = header["TARGET_I2C_GPIO_DEV_TYPE"] << 5 | header.get("NUM_EP_DESCRIPTORS", 0)
    address = header["TARGET_I2C_GPIO_DEV_ADDRESS"]
    properties = {f"EndPoint{i}": NO_END_POINT for i in range(16)}
    properties |= {f"EndPoint{i}": shown_end_point(fields) for i, fields in enumerate(each)}
    return properties | {
        "PayloadFrmtVer": header["PAYLOAD_FORMAT_VERSION"],
        "DeviceClass": header["DEVICE_CLASS"],
        "StaticPaylodSize": header["STATIC_PAYLOAD_SIZE"],
        "DeviceId": header["DEVICE_ID"],
        "VendorId": header["VENDOR_ID"],
        "DeviceVer": header.get("DEVICE_VERSION", 0),
        "NumWires": wires,
        "NumPwires": wires,
        "TargetI2cDevType": target,
        "TargetI2cGpioDevType": target,
        "TargetI2cDevAddr": address,
        "TargetI2cGpioDevAddr": address,
        "checksum": checksum,
    }
