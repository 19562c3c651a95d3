"""A board under the stand-in, and the tool on it: one run of the tool for each cell."""

import dataclasses
import os
import pathlib
import signal
import subprocess
import tempfile

from preload import preloaded

# The bus command that leaves the board as it was: it asks for a property.
READS_ONLY = 5


@dataclasses.dataclass(frozen=True)
class Session:
    """How the operator starts the tool, and the lines that he types."""

    board: str
    arguments: str = ""
    typed: tuple[str, ...] = ()
    # How many of the lines belong to the option under test; the menu reads the others.
    own_lines: int | None = None

    def __str__(self):
        return f"{self.board} '{self.arguments}' '{','.join(self.typed)}'"


@dataclasses.dataclass(frozen=True)
class Cell:
    """What fails: a call by its number, or a memory allocation by its number."""

    call: int = 0
    way: str = ""
    amount: int = 0
    calls: int = 1
    allocation: int = 0

    def __str__(self):
        return f"{self.call} {self.calls} {self.way or '-'} {self.amount} {self.allocation}"


CLEAN = Cell()


@dataclasses.dataclass(frozen=True)
class Record:
    """One line of the log."""

    kind: str
    printed: int
    allocations: int
    asked: str
    result: str


@dataclasses.dataclass
class Run:
    """What one run left behind."""

    status: int
    output: bytes
    complaints: str
    records: list[Record]
    failures: int = 0  # that the cell ordered, and that took place

    def ends_by(self, number):
        return os.WIFSIGNALED(self.status) and os.WTERMSIG(self.status) == number

    @property
    def how_it_ended(self):
        if os.WIFSIGNALED(self.status):
            number = os.WTERMSIG(self.status)
            return "hung" if number == signal.SIGALRM else signal.Signals(number).name
        return f"exit status {os.WEXITSTATUS(self.status)}"

    def changed_the_board(self):
        """Whether the run sent a command that the board does not forget."""
        return any(
            record.kind == "ioctl" and bus_command(record) != READS_ONLY for record in self.records
        )


def bus_command(record):
    """The command of a control transaction: the second number of the record that it sends."""
    sent = record.result.split(",")[2]
    return int.from_bytes(bytes.fromhex(sent[8:16]), "little")


def data(text):
    """The bytes of a log's hexadecimal digits."""
    return b"" if text == "-" else bytes.fromhex(text)


def records(text):
    found = []
    for line in text.split("\n"):
        fields = line.split("\t")
        if len(fields) == 5:
            found.append(Record(fields[0], int(fields[1]), int(fields[2]), fields[3], fields[4]))
    return found


def fast_place():
    """Each run writes its log and its output: into memory, where the machine allows that."""
    return "/dev/shm" if os.access("/dev/shm", os.W_OK) else None


class Board:
    """Runs cells on one board. A board that a run has changed starts anew before the next one."""

    def __init__(self, name, tool=None, seconds=10):
        self._seconds = seconds  # until a run counts as hung
        self._command = [
            os.environ["ZOLT_SIM"], "--board", name, "--",
            *preloaded(os.environ["FAILING_CALLS"]), tool or os.environ["ZOLT_TEST"],
        ]
        self._directory = tempfile.TemporaryDirectory(dir=fast_place())
        self._path = pathlib.Path(self._directory.name)
        self._process = None
        self._output = self._path / "out"
        self._complaints = self._path / "err"
        self._log = self._path / "log"

    def run(self, session, cell=CLEAN):
        self._start()
        order = (cell.call, cell.calls, cell.way, cell.amount, cell.allocation,
                 self._seconds,
                 "".join(line + "," for line in session.typed), session.arguments)
        self._process.stdin.write("\t".join(map(str, order)) + "\n")
        self._process.stdin.flush()
        status = self._process.stdout.readline()
        if not status:
            raise RuntimeError("the board ended: " + self._complaint())
        with open(self._log, "rb") as file:
            length, failures = (int.from_bytes(file.read(8), "little") for _ in range(2))
            log = file.read(length)
        run = Run(int(status), self._output.read_bytes(), self._complaint(),
                  records(log.decode("latin-1")), failures)
        if run.changed_the_board():
            self.stop()
        return run

    def _complaint(self):
        return self._complaints.read_text("latin-1") if self._complaints.exists() else ""

    def _start(self):
        if self._process is None:
            self._process = subprocess.Popen(
                self._command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                env=dict(
                    os.environ, FAULTS=str(self._path), TMPDIR=str(self._path),
                    # The library itself sees what stays. A search of all memory takes longer.
                    ASAN_OPTIONS=os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0",
                ),
            )

    def stop(self):
        if self._process is not None:
            self._process.stdin.close()
            self._process.wait()
            self._process.stdout.close()
            self._process = None

    def close(self):
        self.stop()
        self._directory.cleanup()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()
