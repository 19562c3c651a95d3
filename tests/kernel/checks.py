"""The checks: scripts that run on a board's I2C buses, NAME.sh, with their expected output, NAME.stdout.

A script finds these variables: SIM, the words that start a command on the board; TOOL, the tool;
PROBE, the program bus_probe; I2C, the directory of i2c-tools. A check whose name begins with kernel_
needs buses of the kernel. All others give the same output on the preload library.
"""

import pathlib
import shlex

DIRECTORY = pathlib.Path(__file__).parent / "checks"
BOARD = DIRECTORY / "board.toml"


class Check:
    def __init__(self, path):
        self.name = path.stem
        self.needs_kernel = path.stem.startswith("kernel_")
        self.expected = path.with_suffix(".stdout").read_bytes()
        self._path = path

    def script(self, sim, **variables):
        """Returns the script with its variables. The words of sim end with the board."""
        values = dict(variables, SIM=shlex.join(sim))
        setting = "".join(f"export {name}={shlex.quote(value)}\n" for name, value in values.items())
        return setting.encode() + self._path.read_bytes()


def all_checks():
    return [Check(path) for path in sorted(DIRECTORY.glob("*.sh"))]
