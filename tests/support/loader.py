"""What the loader says on standard error when an emulator runs the programs."""

import os
import re

# Whether an emulator of another architecture runs the programs.
EMULATED = os.environ.get("EMULATOR", "") != ""

# The loader of this machine says so for each program of this machine that runs on the board, because
# the preload library belongs to the other architecture.
FOREIGN_LIBRARY = re.compile(
    r"ERROR: ld\.so: object '[^']*/libzolt_sim_i2c\.so' from LD_PRELOAD cannot be preloaded "
    r"\([^)]*\): ignored\.\n"
)


def without_loader(text):
    """Returns a text of standard error without the loader's remarks about the other architecture."""
    return FOREIGN_LIBRARY.sub("", text) if EMULATED else text
