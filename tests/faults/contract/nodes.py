"""Control transactions on the I2C buses. Options 9, 10, 13, 14 and 15."""

import os

from . import texts
from .replay import BAD, END, Deviation

FAILED = 2
NO_ANSWER = 0xFFFFFFFF
CONTROL = 0x80
READ = 1
DEVICE_PART = {38: 16, 50: 100, 54: 256, 58: 40}


class Invalid(Exception):
    """The operator typed no number."""


def signed(value):
    return (value & NO_ANSWER ^ 0x80000000) - 0x80000000


def ask(replay, prompt, invalid, base=10):
    replay.write(prompt)
    number = replay.number(base)
    if number is BAD:
        replay.write(f"\nInvalid {invalid}\n")
        raise Invalid
    return -1 if number is END else signed(number)


def ask_type(replay):
    return ask(replay, texts.DEVICE_MENU, "Device Type")


def ask_target(replay):
    return ask(replay, "Enter Target Address:", "Target Address", 16)


def asking(run):
    """An option that asks for all that it needs."""
    def option(replay, _):
        try:
            return run(replay)
        except Invalid:
            return FAILED
    return option


def open_bus(replay, path):
    descriptor, error = replay.call("open", path).split(" ")
    if int(descriptor) < 0:
        replay.write(f"I2C Open error ({os.strerror(int(error))})\n")
        return False
    return True


def control_record(command, numbers, names=()):
    content = bytearray(164)
    content[0:4] = b"TESK"
    for offset, value in ((4, command), *numbers):
        content[offset:offset + 4] = (value & NO_ANSWER).to_bytes(4, "little")
    for offset, name in names:
        content[offset:offset + 15] = name.encode()[:15].ljust(15, b"\0")
    return content.hex()


def transact(replay, record, reply_length=0):
    """Result, text of the errno, numbers of the reply."""
    sent, result, error, reply = replay.call("ioctl").split(" ")
    expected = f"0,{CONTROL},{record}" + (f",0,{READ},{reply_length}" if reply_length else "")
    if sent != expected:
        raise Deviation(f"transaction {sent} instead of {expected}")
    content = bytes(reply_length) if reply == "-" else bytes.fromhex(reply)
    numbers = [int.from_bytes(content[i:i + 4], "little") for i in range(0, reply_length, 4)]
    return int(result), os.strerror(int(error)), numbers


def query(replay, prop, target):
    result, error, numbers = transact(replay, control_record(5, [(8, target), (12, prop)]), 4)
    if result < 0:
        replay.write(f"Status is {result} ({error})\n")
        return NO_ANSWER
    return numbers[0]


def create(replay, kind, index, target=None, path=""):
    """Creates an index node; with a target and the path of its bus, a device node. Returns status and
    bus of the reply; nothing on failure."""
    answer8 = query(replay, 8, 0)
    answer10 = query(replay, 10, 0)
    names = [(78, texts.device_name(kind))]
    numbers = [(18, index), (30, answer10), (74, answer8)]
    if target is not None:
        numbers += [*DEVICE_PART.items(), (70, target)]
        names.append((94, path))
    result, error, reply = transact(replay, control_record(6, numbers, names), 8)
    if result < 0:
        replay.write(f"Status is {result} ({error})\n")
    replay.call("close")
    return tuple(map(signed, reply)) if result >= 0 else None


def create_nodes(replay, kind, index, parent, target):
    reply = None
    if open_bus(replay, f"/dev/i2c-{parent}"[:15]):
        reply = create(replay, kind, index)
        if reply:
            replay.write(f"Index Node Status:Node Status: [{reply[0]}] &  "
                         f"Name: [/dev/i2c-{reply[1]}]\n")
    if not reply or reply[1] == -1 or target == 0:
        replay.write("Index Node Creation Failed.\n")
        return
    path = f"/dev/i2c-{reply[1]}"
    reply = None
    if open_bus(replay, path):
        reply = create(replay, kind, index, target, path)
        if reply:
            replay.write(f"Device Node Status: [{reply[0]}] &  Name: [/dev/i2c-{reply[1]}]\n")
    if not reply:
        replay.write("Device Node Creation Failed.\n")


def create_dynamic_nodes(replay):
    kind = ask_type(replay)
    index = ask(replay, "Enter Index:", "Index")
    parent = ask(replay, "Enter Parent Node Num:", "Parent Node")
    create_nodes(replay, kind, index, parent, ask_target(replay))
    return 0


def delete_node(replay):
    parent = ask(replay, "Enter Parent Node Num:", "Index Node")
    target = ask_target(replay)
    if open_bus(replay, f"/dev/i2c-{parent}"):
        result, error, _ = transact(replay, control_record(7, [(8, target)]))
        if result >= 0:
            replay.call("close")
            replay.write(f"Device Remove Status: [{result}] Under Parent Node: "
                         f"[/dev/i2c-{parent}]\n")
            return 0
        replay.write(f"Status is {result} ({error})\n")
        replay.call("close")
    replay.write("Device Node Creation Failed.\n")
    return 0


def read_property(replay):
    parent = ask(replay, "Enter Parent Node Num:", "Index Node")
    prop = ask(replay, "Enter Property Type:", "Property Type")
    target = ask_target(replay)
    if not open_bus(replay, f"/dev/i2c-{parent}"):
        return FAILED
    value = query(replay, prop, target)
    if value == NO_ANSWER:
        replay.write("Property Read Failed.\n")
        replay.call("close")
        return FAILED
    replay.call("close")
    replay.write(f"Property ID: [{prop}] and Property Value: [{signed(value)}]\n")
    return 0


def update_property(replay):
    kind = ask_type(replay)
    parent = ask(replay, "Enter Parent Node Num:", "Parent Node")
    index = ask(replay, "Enter Index:", "Index")
    target = ask_target(replay)
    prop = ask(replay, "Enter Property Type:", "Property Type")
    value = ask(replay, "Enter Property Value:", "Property Value")
    path = f"/dev/i2c-{parent}"[:15]
    if open_bus(replay, path):
        result, _, _ = transact(replay, control_record(
            4, [(8, index), (12, target), (16, value), (20, prop)],
            [(24, texts.device_name(kind))]))
        if result >= 0:
            replay.call("close")
            replay.write(f"Updated Property ID : {prop} and value : {value} "
                         f"for node_name [{path}]\n")
            return 0
        replay.write(f"IOCTL failed with status {result}\n")
        replay.call("close")
    replay.write("Failed to update property. \n")
    return FAILED


MODES = ((96, "RESET_STOP"), (97, "RESET_HOLD_CLOCK_LOW"), (98, "RESET_CLOCK_UNRAVEL"))


def recover(replay):
    path = f"/dev/i2c-{ask(replay, 'Enter Node Num:', 'Device Type')}"
    status = 0
    for mode, name in MODES:
        status = FAILED
        if open_bus(replay, path):
            result, _, _ = transact(replay, control_record(8, [(8, mode)]))
            replay.write(f"Status [{result}] for node name: [{path}]\n")
            if result < 0:
                replay.write(f"IOCTL failed with status {result}\n")
            else:
                status = 0
            replay.call("close")
        if status != 0:
            replay.write(f"I2C_CP_MODE_TYPE_{name} failed. \n")
    return status
