r"""Reads transcripts: text files, each of which holds one dialogue with the tool.

    # What the dialogue shows, if its name does not say enough.
    === command
    zolt_sim --board board.toml --fault 'raw-read 0x1038 status 7' -- zolt_test -o 2 -p 1
    === board.toml
    [[slot]]
    id = 1
    === stdin
    2
    === stdout
    Unable to read DSTAT \

A line that starts with === is the heading of a section. The sections:

    command     how zolt_sim starts zolt_test, split as by a shell; it has to name a board
    board.toml  the board, exactly if the command names this file
    stdin       input of the tool (without this section: empty)
    stdout      expected output of the tool, byte for byte
    stderr      what the tool says on standard error (without this section: nothing)
    calls       expected calls of the platform's libraries, in order, one on each line
    debug_log   expected lines of the platform's debug log; * stands for the number of a source line
    i2c_log     expected control transactions of the I2C bus driver, one on each line

Only command and stdout are required. A log is compared only if the transcript has its section.

Every section but the command stands byte for byte, except for the backslash:

    \\                     a backslash
    \xHH                   a byte, written as two hexadecimal digits
    \{NAME}                the whole text of the file texts/NAME, which is written in the same way
    \ at the end of a line nothing; it makes the blanks before it visible
    \ No newline at end    as the last line of a section: the line above ends without a newline
"""

import re
import shlex

SECTIONS = ("command", "board.toml", "stdin", "stdout", "stderr", "calls", "debug_log", "i2c_log")
HEADING = "==="
NO_NEWLINE = r"\ No newline at end"
ESCAPE = re.compile(r"\\(?:(\\)|x([0-9A-Fa-f]{2})|\{([^{}]*)\}|($)|)")


class Malformed(Exception):
    """A transcript that cannot be read: the file, the number of the line, the reason."""

    def __init__(self, path, number, reason):
        super().__init__(f"{path}:{number}: {reason}")


class Transcript:
    """A dialogue: the words of its command, and the bytes of its other sections by their name."""

    def __init__(self, options, arguments, contents):
        self.options = options
        self.arguments = arguments
        self.contents = contents


def read_transcript(path, texts):
    """Reads a file. The texts, by their name, are what \\{NAME} stands for."""
    sections = {}
    lines = None
    for number, line in numbered_lines(path):
        if line.startswith(HEADING):
            name = line[len(HEADING) :].strip()
            if name not in SECTIONS or line != f"{HEADING} {name}":
                raise Malformed(path, number, f"no section is called {line!r}")
            if name in sections:
                raise Malformed(path, number, f"a second section {name}")
            lines = []
            sections[name] = (number, lines)
        elif lines is not None:
            lines.append((number, line))
        elif not line.startswith("#"):
            raise Malformed(path, number, "neither a comment nor in a section")
    for name in ("command", "stdout"):
        if name not in sections:
            raise Malformed(path, 1, f"no section {name}")
    options, arguments = read_command(path, *sections.pop("command"))
    if (board_of(options) == "board.toml") != ("board.toml" in sections):
        raise Malformed(path, 1, "the command names board.toml exactly if that section is there")
    contents = {name: decoded(path, lines, texts) for name, (_, lines) in sections.items()}
    return Transcript(options, arguments, contents)


def read_text(path):
    """Reads a file that holds nothing but one text."""
    return decoded(path, list(numbered_lines(path)), {})


def numbered_lines(path):
    content = path.read_bytes()
    lines = content.split(b"\n")
    if lines.pop() or not lines:
        raise Malformed(path, len(lines) + 1, "the file does not end with a newline")
    for number, line in enumerate(lines, 1):
        if re.search(rb"[^ -~]", line):
            raise Malformed(path, number, r"a byte that is to be written as \xHH")
        if line.endswith(b" "):
            raise Malformed(path, number, r"a blank at the end of the line; put a \ behind it")
        yield number, line.decode("ascii")


def read_command(path, number, lines):
    """Returns the options of zolt_sim and the arguments of zolt_test."""
    try:
        words = shlex.split(" ".join(line for _, line in lines))
    except ValueError as error:
        raise Malformed(path, number, f"the command: {error}") from error
    if words[:1] != ["zolt_sim"] or "--" not in words:
        raise Malformed(path, number, "the command is no zolt_sim ... -- zolt_test ...")
    separator = words.index("--")
    options, tool = words[1:separator], words[separator + 1 :]
    if tool[:1] != ["zolt_test"]:
        raise Malformed(path, number, "the command is no zolt_sim ... -- zolt_test ...")
    if board_of(options) is None:
        raise Malformed(path, number, "zolt_sim's first option has to be --board NAME")
    return options, tool[1:]


def board_of(options):
    return options[1] if options[:1] == ["--board"] and len(options) > 1 else None


def decoded(path, lines, texts):
    """Returns the bytes that the lines stand for."""
    content = b""
    for number, line in lines:
        if line == NO_NEWLINE:
            if not content.endswith(b"\n") or number != lines[-1][0]:
                raise Malformed(path, number, "not behind the last line of a section")
            return content[:-1]
        content += decoded_line(path, number, line, texts) + b"\n"
    return content


def decoded_line(path, number, line, texts):
    def meaning(escape):
        backslash, byte, text, end = escape.groups()
        if backslash or end is not None:
            return backslash or ""
        if byte:
            return chr(int(byte, 16))
        if text in texts:
            return texts[text].decode("latin-1")
        raise Malformed(path, number, f"nothing is written as {line[escape.start():]!r}")

    return ESCAPE.sub(meaning, line).encode("latin-1")


def encoded(content):
    """Returns the lines that stand for some bytes."""
    text = content.decode("latin-1").replace("\\", r"\\")
    text = re.sub(r"[^\n -~]", lambda byte: rf"\x{ord(byte[0]):02X}", text)
    text = re.sub(rf"^{HEADING[0]}(?={HEADING[1:]})", rf"\\x{ord(HEADING[0]):02X}", text, flags=re.M)
    text = re.sub(r" $", r" \\", text, flags=re.M)
    lines = text.split("\n")
    return lines[:-1] if not lines[-1] else lines + [NO_NEWLINE]
