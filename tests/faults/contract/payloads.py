"""Payloads, OEM areas and the riser slot map. Options 2, 3 and 4."""

import re

from . import listings, registers
from .replay import BAD, END, Thrown

NOTHING_TO_SHOW, OUT_OF_MEMORY = 2, 4
WINDOW = 0x91000000
PAYLOADS = 0x2A01
RISER_MAP = 0x8A00


def discovered(replay, n):
    status, content = registers.field(replay, f"PICPWR_{n}_DSTAT", picpwr_base(n), 7, 6)
    if status != 0:
        replay.write(f"Unable to read PICPWR DSTAT using CPLD raw API, status {status}\n")
        return registers.RAW_READ_FAILED
    dstat = registers.number(content)
    if dstat == 0:
        replay.write(f"\nDISCOVERY_STATUS (DSTAT) = 0 for PICPWR {n}\n")
    return 0 if dstat else NOTHING_TO_SHOW


def picpwr_base(n):
    return registers.picpwr_base(n) & 0xFFFF


def has_payload(replay, n):
    status, content = registers.field(replay, f"PICPWR_{n}_MOD_CLASS", picpwr_base(n) + 1)
    if status != 0:
        replay.write(
            f"Unable to read PICPWR {n} module class using CPLD raw API, status {status}\n")
        content = b"\0"
    module_class = registers.number(content)
    if module_class == 0:
        replay.write("\nNo CIR payload is present for this PICPWR\n")
    return 0 if module_class else NOTHING_TO_SHOW


def payload_offset(replay, n):
    """Status and offset."""
    status, content = registers.word(replay, f"PICPWR_{n}_PAYLOAD_OFFSET", picpwr_base(n) + 3)
    if status != 0:
        replay.write(f"Unable to read PICPWR payload offset using CPLD raw API, status {status}\n")
        return registers.RAW_READ_FAILED, 0
    offset = registers.number(content, 2)
    return (NOTHING_TO_SHOW, 0) if offset is None else (0, offset)


def release(replay, name):
    """The handle gives its object back: an exception of the object comes after that."""
    error = None
    try:
        if replay.call("callback?") == "1":
            status = replay.call("unregister")
            replay.call("dlog", "5 273 [~HAL_cfgdata]: UnregisterInterruptCallback for "
                                f"[{name}], ret= {status}")
    except Thrown as thrown:
        error = thrown
    replay.call("destroy")
    replay.call("dlog", f"5 273 [~HAL_cfgdata]: Deleted halData for [{name}]")
    if error:
        raise error


def bulk(replay, length, offset):
    """Reads through the HAL: a status, and the bytes."""
    name = ""
    if replay.call("object", "PICPWR_PAYLOADS") == "0" and \
            replay.call("object", "PICPWR_PAYLOADS") == "0":
        replay.call("dlog", re.compile(
            r"2 273 [^. ]+\.cpp\.\d+\.ReadIO: \[ReadIO\]: ERROR, halData is NULL"))
        return -1, b""
    try:
        replay.call("name")
        name = "PICPWR_PAYLOADS"
        status, content = registers.result(
            replay.call("bulk", f"{length} {offset + 1 & 0xFFFFFFFF}"))
    except Thrown:
        try:
            release(replay, name)
        except Thrown:
            pass
        raise
    release(replay, name)
    return status, content


def fetched(replay, offset, length):
    """Status and bytes."""
    status, content = bulk(replay, length, offset)
    if status == 0:
        return 0, content
    if not replay.gets_memory():
        replay.write("Failed to allocate memory for PICPWR payload\n")
        return OUT_OF_MEMORY, b""
    status, content = registers.result(
        replay.call("block", f"{PAYLOADS + offset} {length} 1"))
    if status != 0:
        replay.write(f"Unable to read PICPWR payload using CPLD raw API, status {status}\n")
        return registers.RAW_READ_FAILED, b""
    replay.allocate()
    return 0, offset.to_bytes(2, "little") + content


def shown(replay, form, show):
    if form != 0:
        show(form)
        return 0
    choice = 0
    while choice != 3:
        replay.write("1 : Raw Dump\n2 : Human Readable\n3 : Go Back\n")
        number = replay.number()
        if number in (BAD, END):
            replay.write("scanf error\n")
            return NOTHING_TO_SHOW
        choice = number & 0xFF
        show(choice)
    return 0


def display(replay, choice, dump, listing):
    if choice == 1:
        replay.write(dump())
    elif choice == 2:
        replay.write(listings.listed(listing()))
    elif choice != 3:
        replay.write("Invalid option entered\n")


def located(replay, n, length, checks):
    """Status, payload offset and bytes, when the checks pass."""
    status = next(filter(None, (check(replay, n) for check in checks)), 0)
    if status != 0:
        return status, 0, b""
    status, offset = payload_offset(replay, n)
    if status != 0:
        return status, 0, b""
    status, content = fetched(replay, offset, length)
    return status, offset, content


def stated_size(content):
    return content[2] * 8 if len(content) > 2 else None


def cir_payload(replay, given):
    status, offset, payload = located(replay, given["p"], 247, (discovered, has_payload))
    if status != 0:
        return status
    size = stated_size(payload) or 0

    def show(choice):
        display(replay, choice,
                lambda: listings.hex_dump(WINDOW + PAYLOADS + offset, payload[:size]),
                lambda: listings.cir_payload(payload))
    return shown(replay, given["f"], show)


def oem_area(replay, given):
    status, offset, content = located(replay, given["p"], 375, (discovered,))
    if status != 0:
        return status
    size = stated_size(content)
    if size is not None and size > 375:
        replay.write("Invalid payload size\n")
        return NOTHING_TO_SHOW
    area = b""
    if size is not None and size < len(content):
        area = content[size:size + content[size]]
    replay.allocate()

    def show(choice):
        if not area:
            replay.write("OEM area is not present for this PICPWR\n\n\n")
            return
        display(replay, choice,
                lambda: listings.hex_dump(WINDOW + PAYLOADS + offset + size, area),
                lambda: listings.oem_area(area))
    return shown(replay, given["f"], show)


def riser_map(replay, given):
    status, blob = registers.result(replay.call("named", "RISER_SLOT_AMP_BLOB"))
    if status != 0:
        if not replay.gets_memory():
            replay.write("Failed to allocate memory for riser slot mapping blob\n")
            return OUT_OF_MEMORY
        blob = b""
        for i in range(1024):
            status, byte = registers.result(replay.call("raw", f"{0xFFFF0000 + RISER_MAP + i} 1"))
            if status != 0:
                replay.write("Unable to read RISER_SLOT_MAP_BLOB using CPLD raw API, "
                             f"status {status}\n")
                return registers.RAW_READ_FAILED
            blob += byte
        replay.allocate()

    def show(choice):
        replay.allocate()  # each display has its own copy
        display(replay, choice, lambda: listings.hex_dump(WINDOW + RISER_MAP, blob),
                lambda: listings.riser_map(blob))
    return shown(replay, given["f"], show)
