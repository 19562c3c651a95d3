"""Where the programs under test are: the build says so through the environment."""

import os
import pathlib
import subprocess
import tempfile

SIM = os.environ["ZOLT_SIM"]
TOOL = os.environ["ZOLT_TEST"]
OTHER_PLATFORM = os.environ.get("OTHER_PLATFORM", "")

MAIN_MENU = """
------------------------------------------------
ZOLT Test Tool
------------------------------------------------
  1 : PICPWR info
  2 : CIR payloads
  3 : OEM area
  4 : Riser slot mapping blob
  5 : Control registers
  6 : PICPWR nodes info
  7 : Discoverable nodes info
  8 : All I2C nodes info
  9 : Create dynamic device node
 10 : Delete dynamic device node
 11 : DBUS Zolt Info Properties
 12 : DBUS Zolt CIR Properties
 13 : Read Node Proprty
 14 : Update Node Property
 15 : Perform Bus Recovery
100 : Exit \nEnter option :"""

TIMEOUT_SECONDS = 60


def run(*command, **options):
    """Runs a command to its end; text in and out."""
    options.setdefault("timeout", TIMEOUT_SECONDS)
    options.setdefault("input", "")
    return subprocess.run(command, capture_output=True, text=True, check=False, **options)


class Scratch:
    """A directory in which zolt_sim makes its own, so that leftovers show."""

    def __init__(self):
        self._directory = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self._directory.name)
        self.environment = dict(os.environ, TMPDIR=str(self.path))

    def file(self, name, text=""):
        path = self.path / name
        path.write_text(text)
        return str(path)

    def left_behind(self):
        return [str(path) for path in self.path.glob("zolt_sim.*")]

    def close(self):
        self._directory.cleanup()
