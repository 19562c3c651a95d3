"""The front end: the menu, the options of the command line, and the questions for what is missing."""

from . import nodes, payloads, registers, service, texts, topology
from .replay import BAD, END, Thrown

ASK_ALL = "Enter the PICPWR ID: (Enter 0 for all PICPWRs)"
ASK_ONE = "Enter the PICPWR ID:"
NO_DEVICE_TYPE = 166
EXIT = 100

# Argument that may be missing, question, highest answer, operation.
OPTIONS = {
    1: ("p", ASK_ALL, 255, registers.picpwr_info),
    2: ("p", ASK_ONE, 63, payloads.cir_payload),
    3: ("p", ASK_ONE, 63, payloads.oem_area),
    4: (None, "", 0, payloads.riser_map),
    5: ("m", texts.CLASS_MENU, 255, registers.control_registers),
    6: ("p", ASK_ALL, 255, topology.picpwr_nodes),
    7: ("d", texts.DEVICE_MENU, 255, topology.nodes_of(filtered=True)),
    8: ("d", texts.DEVICE_MENU, 255, topology.nodes_of(filtered=False)),
    9: (None, "", 0, nodes.asking(nodes.create_dynamic_nodes)),
    10: (None, "", 0, nodes.asking(nodes.delete_node)),
    11: (None, "", 0, service.on_bus(service.info)),
    12: ("m", texts.TYPE_MENU, 255, service.on_bus(service.all_paths)),
    13: (None, "", 0, nodes.asking(nodes.read_property)),
    14: (None, "", 0, nodes.asking(nodes.update_property)),
    15: (None, "", 0, nodes.asking(nodes.recover)),
}
NOTHING_GIVEN = {"p": 0, "d": NO_DEVICE_TYPE, "m": 0, "f": 0}


def run_option(replay, option, given):
    if option not in OPTIONS:
        return
    missing, question, highest, operation = OPTIONS[option]
    complete = True
    if missing == "d" and given["d"] >= NO_DEVICE_TYPE or missing in ("p", "m") and \
            given[missing] == 0:
        replay.write(question)
        answer = replay.number()
        if answer is BAD:
            replay.write("\nscanf error")
            complete = False
        else:
            answer = 0 if answer is END else answer & 0xFF
            given = {**given, missing: answer, "f": 0}
            complete = answer <= highest
    if not complete or operation(replay, given) != 0:
        replay.write("Unable to perform the desired operation\n")


def guarded(replay, option, given):
    try:
        run_option(replay, option, given)
    except Thrown as error:
        replay.write(f"Exception : {error}\n")


def interactive(replay):
    option = 0
    while option != EXIT:
        replay.write(texts.MAIN_MENU)
        number = replay.number()
        if number is BAD:
            replay.write("\nscanf error")
            return
        option = option if number is END else number & 0xFF
        guarded(replay, option, NOTHING_GIVEN)


def one_shot(replay, words):
    given = dict(zip((word[1] for word in words[::2]), map(int, words[1::2])))
    values = {letter: given.get(letter, 0) & 0xFF for letter in "opdmfi"}
    if values["o"] == 9:
        nodes.create_nodes(replay, values["d"], values["i"], given.get("n", -1), given.get("t", 0))
    else:
        guarded(replay, values["o"], values)


def run(replay, arguments):
    """Prints all that the tool has to print."""
    if arguments:
        one_shot(replay, arguments.split(" "))
    else:
        interactive(replay)
