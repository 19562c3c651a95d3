"""Walks through the calls of one run, in order, and collects the text that the run has to print."""

import re

BAD = object()  # the operator typed no number
END = object()  # there was nothing to read
# Libraries that answer a failed allocation of theirs themselves: with a result, or by going on.
ABSORBING = ("libc.", "libsystemd.")


class Deviation(Exception):
    """The run differs from the contract."""


class Thrown(Exception):
    """A std::exception in the tool; its text."""


class Cut(Exception):
    """The run ended here, as it had to: by a signal, or because its input ended in the menu."""


class Replay:
    """The log of a run, the text that belongs to it, and the console's input."""

    def __init__(self, run):
        self._records = [r for r in run.records if r.kind not in ("write", "left", "end", "cut")]
        self._at = 0
        self._is_cut = any(
            r.kind == "cut" or (r.kind == "write" and r.result == "signal") for r in run.records
        )
        self._shown = len(run.output)
        self._lost = [lost for lost in map(lost_text, run.records) if lost]
        self._parts = []
        self._length = 0
        self._input = b""
        self._input_ended = False

    @property
    def text(self):
        """The text that the run has printed, without what a failed write lost."""
        text = "".join(self._parts)
        for start, length in reversed(self._lost):
            text = text[:start] + text[start + length:]
        return text

    def all_seen(self):
        return self._at == len(self._records)

    def next_kind(self):
        """The kind of the record that comes next; nothing at the end."""
        return self._records[self._at].kind if not self.all_seen() else ""

    def write(self, text):
        self._parts.append(text)
        self._length += len(text)
        if self._is_cut and self._length > self._shown:
            raise Cut

    def call(self, kind, asked=""):
        """The result of the next call, which has to be this one.

        All text has to be out before it. An asked text that is a pattern has to match.
        """
        self.allocate()
        record = self._next(kind)
        expected = asked.fullmatch(record.asked) if isinstance(asked, re.Pattern) \
            else record.asked == asked
        if record.kind != kind or not expected:
            raise Deviation(f"call '{record.kind} {record.asked}' instead of '{kind} {asked}'")
        return self._taken(record).result

    def call_of(self, family):
        """The next call, which has to be one of a family: its name starts so."""
        self.allocate()
        record = self._next(family)
        if not record.kind.startswith(family):
            raise Deviation(f"call '{record.kind}' instead of one of '{family}'")
        return self._taken(record)

    def allocate(self):
        """The tool may ask for memory here. When it gets none, an exception says so."""
        if self._failed_allocation():
            raise Thrown("std::bad_alloc")

    def allocate_before_text(self):
        """The same, where the text that follows is not printed when the memory is missing."""
        if self._failed_allocation(self._length - self._lost_before(self._length)):
            raise Thrown("std::bad_alloc")

    def gets_memory(self):
        """The same for an allocation whose failure the tool asks about."""
        return not self._failed_allocation()

    def number(self, base=10):
        """Reads one number as scanf does: the number, BAD or END."""
        while (letter := self._letter()) is not END and letter.isspace():
            pass
        digits = b""
        while letter is not END and re.fullmatch(rb"-?(0?[xX]?[0-9a-fA-F]*|0)" if base == 16
                                                 else rb"-?[0-9]*", digits + letter):
            digits += letter
            letter = self._letter()
        if letter is not END:
            self._input = letter + self._input
        if digits in (b"", b"-"):
            return END if letter is END else BAD
        return int(digits, base)

    def _letter(self):
        if not self._input and not self._input_ended:
            self._failed_allocation()  # the stream's buffer: a stream works without
            record = self._next("read")
            if record.kind != "read":
                raise Deviation(f"call '{record.kind} {record.asked}' instead of a question")
            self._check_printed(record)
            count, rest = record.result.split(" ")
            self._input = bytes.fromhex(rest) if int(count) > 0 else b""
            self._input_ended = int(count) == 0
        letter, self._input = self._input[:1], self._input[1:]
        return letter or END

    def _next(self, kind):
        if self.all_seen():
            if self._is_cut:
                raise Cut
            raise Deviation(f"no call '{kind}'")
        record = self._records[self._at]
        self._at += 1
        return record

    def _taken(self, record):
        self._check_printed(record)
        if "throw " in record.result:
            raise Thrown(record.result.partition("throw ")[2])
        return record

    def _check_printed(self, record):
        printed = self._length - self._lost_before(self._length)
        if record.printed != printed:
            raise Deviation(f"{record.printed} bytes instead of {printed} are out before "
                            f"'{record.kind} {record.asked}'")

    def _lost_before(self, length):
        return sum(lost for start, lost in self._lost if start < length)

    # Skips allocations without which the C++ library, or a stream of the C library, goes on.
    def _failed_allocation(self, printed=None):
        while self.next_kind() == "alloc":
            record = self._records[self._at]
            if printed is not None and record.printed != printed:
                return False
            self._at += 1
            library = record.asked.split(" ")[1]
            if record.result != "__cxa_allocate_exception" and not library.startswith(ABSORBING):
                return True
        return False


def lost_text(record):
    """Start and length of the text that a failed write loses: the tool does not write it again."""
    if record.kind != "write" or not record.result.startswith("-1 "):
        return None
    passes = record.result in ("-1 4", "-1 11")  # EINTR, EAGAIN
    return None if passes else (record.printed, int(record.asked))
