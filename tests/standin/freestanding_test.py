#!/usr/bin/env python3
"""Fails if a static library needs more than itself and the memory functions of any kernel."""

import subprocess
import sys

ALLOWED = {"memcmp", "memcpy", "memmove", "memset"}


def symbols(nm, library, kind):
    lines = subprocess.run([nm, "--format=posix", kind, library], check=True, capture_output=True,
                           text=True).stdout.splitlines()
    return {line.split()[0] for line in lines if line and not line.endswith(":")}


def main():
    nm, library = sys.argv[1:]
    own = symbols(nm, library, "--defined-only")
    foreign = symbols(nm, library, "--undefined-only") - own - ALLOWED
    if not own or foreign:
        sys.exit(f"{library} defines {len(own)} symbols and needs {sorted(foreign)}")


if __name__ == "__main__":
    main()
