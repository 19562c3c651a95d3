"""Judges one run: whether the tool did what its contract demands."""

import collections
import os
import signal

from contract import front_end
from contract.replay import Cut, Deviation, Replay, Thrown

SHOWN = 200  # bytes of a text around its first difference


def difference(expected, output):
    at = next((i for i, (a, b) in enumerate(zip(expected, output)) if a != b),
              min(len(expected), len(output)))
    start = max(0, at - SHOWN // 2)
    return (f"output differs at byte {at}: {output[start:at + SHOWN]!r} "
            f"instead of {expected[start:at + SHOWN]!r}")


def left_allocations(run):
    """How many allocations of each size the tool did not give back."""
    return collections.Counter(int(r.asked) for r in run.records if r.kind == "left")


def expected_end(run):
    """The signal that has to end the run; nothing for a normal end."""
    signals = [r for r in run.records if r.kind == "write" and r.result == "signal"]
    return signal.SIGPIPE if signals else None


def check_end(run):
    number = expected_end(run)
    if number and run.ends_by(number):
        return
    if number or not os.WIFEXITED(run.status) or os.WEXITSTATUS(run.status) != 0:
        yield run.how_it_ended
    if run.complaints:
        yield f"complaint: {run.complaints[:1000]}"


def check_text(run, session):
    replay = Replay(run)
    is_cut = False
    try:
        front_end.run(replay, session.arguments)
    except Cut:
        is_cut = True
    except Thrown as error:
        yield f"an exception that ends the tool: {error}"
    except Deviation as deviation:
        yield str(deviation)
    else:
        if not replay.all_seen():
            yield f"a call '{replay.next_kind()}' too many"
    output = run.output.decode("latin-1")
    expected = replay.text[:len(output)] if is_cut else replay.text
    if output != expected:
        yield difference(expected, output)


def check_leaks(run, clean):
    ends = [record for record in run.records if record.kind == "end"]
    if not ends:  # ended by a signal, or in the menu without input
        return
    if int(ends[0].asked, 16) != 0:
        yield f"descriptors left open: {ends[0].asked}"
    more = left_allocations(run) - left_allocations(clean)
    if more:
        yield "memory not given back: " + ", ".join(
            f"{count} of {size} bytes" for size, count in sorted(more.items()))


def judge(run, session, clean):
    """The complaints about one run. The clean run of the same session says what memory may stay."""
    complaints = list(check_end(run))
    if not complaints or expected_end(run):
        complaints += check_text(run, session)
        complaints += check_leaks(run, clean)
    return complaints
