"""The ways in which each kind of call may fail, by the contract of the call."""

import errno
import signal

from board import Cell

OPEN_ERRORS = (errno.ENOENT, errno.EACCES, errno.EINTR, errno.EAGAIN, errno.ENXIO, errno.ENODEV,
               errno.EBUSY, errno.EMFILE, errno.ENFILE, errno.ENOMEM)
IOCTL_ERRORS = (errno.EIO, errno.ENXIO, errno.EREMOTEIO, errno.ETIMEDOUT, errno.EINTR, errno.EAGAIN,
                errno.EINVAL, errno.ENOTTY, errno.ENOMEM)
READ_ERRORS = (errno.EIO, errno.EINTR, errno.EAGAIN)
WRITE_ERRORS = (errno.EINTR, errno.EAGAIN, errno.EPIPE, errno.ENOSPC, errno.EIO, errno.EBADF)
MESSAGE_ERRORS = (errno.EBADMSG, errno.ENOMEM, errno.ENXIO)


def words(*ways):
    return lambda _: [(way, 0) for way in ways]


def errors(*numbers):
    return lambda _: [("errno", number) for number in numbers]


def statuses(*numbers):
    return lambda _: [("status", number) for number in numbers]


def delivered(record):
    """How many bytes a read of the HAL delivered."""
    status, content = record.result.split(" ")
    return len(content) // 2 if status == "0" and content != "-" else 0


def hal_read(record):
    yield from (("status", 7), ("status", -1), ("dirty", 7), ("empty", 0), ("bad_alloc", 0),
                ("exception", 0))
    count = delivered(record)
    # Every length that cuts a header, then some.
    for length in sorted({1, 2, 3, 11, 12, 16, count // 2, count - 1}):
        if 0 < length < count:
            yield "short", length


def ioctl(record):
    yield from errors(*IOCTL_ERRORS)(record)
    yield "short", 0


def write(record):
    yield from errors(*WRITE_ERRORS)(record)
    yield "signal", int(signal.SIGPIPE)
    if int(record.asked) > 1:
        yield "short", 0


def bus_call(record):
    yield "remote", 0
    yield from errors(errno.ETIMEDOUT, errno.ECONNRESET, errno.ENOTCONN, errno.ENOBUFS,
                      errno.ENOMEM, errno.EINTR, errno.EAGAIN)(record)


WAYS = {
    "named": hal_read,
    "bulk": hal_read,
    "raw": statuses(9, -5),
    "block": statuses(9, -5),
    "object": words("null", "bad_alloc", "exception"),
    "callback?": words("bad_alloc"),
    "unregister": lambda _: [("status", 9), ("bad_alloc", 0)],
    "name": words("bad_alloc"),
    "dlog": statuses(-1),
    "destroy": words(),
    "parse": lambda _: [("status", 5), ("status", -22), ("tree", 5), ("null", 0), ("empty", 0)],
    "free": words(),
    "open": errors(*OPEN_ERRORS),
    "ioctl": ioctl,
    "close": errors(errno.EIO, errno.EINTR),
    "read": lambda _: [("end", 0), ("short", 0), *(("errno", n) for n in READ_ERRORS)],
    "write": write,
    "sd_bus_default_system": errors(errno.ENOENT, errno.ECONNREFUSED, errno.EACCES, errno.ENOMEM,
                                    errno.EINTR, errno.EMFILE),
    "sd_bus_flush_close_unref": words(),
    "sd_bus_message_new_method_call": errors(errno.EINVAL, errno.ENOMEM, errno.ENOTCONN),
    "sd_bus_message_append_basic": errors(errno.EINVAL, errno.ENOMEM),
    "sd_bus_call": bus_call,
    "sd_bus_message_is_method_error": words("true"),
    **{f"sd_bus_message_{name}": errors(*MESSAGE_ERRORS)
       for name in ("enter_container", "exit_container", "at_end", "verify_type", "peek_type",
                    "read_basic", "skip")},
}

# The call, with its way, for which the next calls fail, too: the path that one failure does not
# reach.
TOGETHER = {
    ("named", "status"): 2,  # the raw read that follows fails as well
    ("named", "dirty"): 2,
    ("object", "null"): 2,  # the second question, too
}


def cells_of(number, record):
    """Way and cell of every failure of one call."""
    for way, amount in WAYS[record.kind](record):
        label = f"{way} {errno.errorcode[amount]}" if way == "errno" else way
        yield label, Cell(number, way, amount)
        more = TOGETHER.get((record.kind, way))
        if more:
            yield f"{label} x{more}", Cell(number, way, amount, more)
