"""Puts a library into a command on a board."""


def preloaded(library):
    """The words in front of a command that load a library before the one that zolt_sim sets."""
    return "sh", "-c", 'LD_PRELOAD="$0:$LD_PRELOAD" exec "$@"', library
