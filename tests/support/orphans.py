"""Processes whose parent has ended."""

import ctypes

PR_SET_CHILD_SUBREAPER = 36


def adopt_orphans():
    """Makes this process the parent of every process below it whose own parent ends."""
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
