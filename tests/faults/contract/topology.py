"""The I2C topology. Options 6, 7 and 8."""

from . import texts

PICPWR_TYPE = 16
TYPES = 165


class Tree:
    """What the parser delivers for one device type."""

    def __init__(self, replay, device_type):
        self._replay = replay
        status, self.root, *nodes = replay.call("parse", str(device_type)).split(" ")
        self.has_data = status == "0" and self.root == "tree"
        self.nodes = [node.split(";") for node in nodes]

    def release(self):
        self._replay.call("free", self.root)


def index_of(node):
    return int(node[0].split(",")[0])


def discoverable(node):
    return node[0].split(",")[1] == "1"


def text_of(digits):
    return "" if digits == "-" else bytes.fromhex(digits).decode("latin-1")


def show(replay, node, type_name=None):
    index, found, name, bus, subs, picpwr, is_sl, sl, uid, slot, slot_type, bay = \
        node[0].split(",")
    lines = [
        ("Device Type", type_name), ("Index", index), ("Discoverable Node", found),
        ("Node Name", text_of(name)), ("Physical Bus", bus), ("Sub Node Count", subs),
        ("PICPWR ID", picpwr), ("is_sl_src", is_sl), ("sl_src", sl),
        ("HW_UID", f"0x{int(uid):02X}"), ("Slot Number", slot), ("Slot Type", slot_type),
        ("Bay ID", bay),
    ]
    if type_name is None:
        lines = [line for line in lines if line[0] not in
                 ("Device Type", "Slot Number", "Slot Type")]
    replay.write("\n\nIndex Node Info\n")
    for label, value in lines:
        replay.write(f"{label:17} = {value}\n")
    for sub in node[1:]:
        index, found, name, count = sub.split(",")
        replay.write(f"\nSub Index Node Info\nSub Index         = {index}\n"
                     f"Discoverable Node = {found}\nNode Name         = {text_of(name)}\n"
                     f"Sub Node Count    = {count}\n")


def picpwr_nodes(replay, given):
    wanted = given["p"]
    tree = Tree(replay, PICPWR_TYPE)
    nodes = tree.nodes if tree.has_data else []
    if not tree.has_data:
        replay.write("Receved NULL data.\n")
    if wanted == 0:
        for node in nodes:
            show(replay, node)
            if index_of(node) == 0:
                break
    else:
        found = [node for node in nodes if index_of(node) == wanted]
        if found:
            show(replay, found[0])
        else:
            replay.write(f"PICPWR {wanted} not found in sysfs\n")
    tree.release()
    return 0


def nodes_of(filtered):
    def run(replay, given):
        wanted = given["d"]
        alone = wanted < TYPES
        for device_type in [wanted] if alone else range(TYPES):
            tree = Tree(replay, device_type)
            if not tree.has_data and alone:
                replay.write("Input device type not found in sysfs\n")
            for node in tree.nodes if tree.has_data else []:
                if discoverable(node) or not filtered:
                    show(replay, node, texts.device_name(device_type))
            tree.release()
        return 0
    return run
