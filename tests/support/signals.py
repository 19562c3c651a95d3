"""Gives the programs that a test starts the signals of a program that a terminal starts.

Shells ignore SIGINT and SIGQUIT in what they start with "&", nohup ignores SIGHUP, and children
inherit that: a shell cannot trap a signal that was ignored when it started.
"""

import signal

# Python ignores SIGPIPE itself and restores it in the programs that subprocess starts.
DEFAULT = ("SIGALRM", "SIGCHLD", "SIGHUP", "SIGQUIT", "SIGTERM", "SIGUSR1", "SIGUSR2")


def restore():
    """Restores the default dispositions and unblocks all signals."""
    for name in DEFAULT:
        signal.signal(getattr(signal, name), signal.SIG_DFL)
    signal.signal(signal.SIGINT, signal.default_int_handler)
    signal.pthread_sigmask(signal.SIG_SETMASK, ())
