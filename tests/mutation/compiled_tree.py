"""A copy of the tree with a build, in which single objects can be made once more from changed sources.

Ninja makes the build once. After that, the commands of the build run without it: they compile the
changed objects into a directory of their own, and link programs with these objects in front of the
archives that hold the original ones. So nothing of the build has to be made again after a mutant.
"""

import collections
import json
import os
import pathlib
import shlex
import shutil
import subprocess
import sys

MUTANT = "mutant"  # the directory of changed objects and programs. The loader's paths fit its depth.


class Failed(Exception):
    """A command of the build failed."""


def make_copy(source, copy):
    """Copies the files that Git knows or would add. Files that have not changed keep their times."""
    listed = subprocess.run(["git", "-C", source, "ls-files", "-co", "--exclude-standard", "-z"],
                            check=True, stdout=subprocess.PIPE)
    names = set(filter(None, listed.stdout.decode().split("\0")))
    for path in sorted(copy.rglob("*")) if copy.exists() else ():
        if (path.is_file() or path.is_symlink()) and str(path.relative_to(copy)) not in names:
            path.unlink()
    for name in names:
        original, other = source / name, copy / name
        if not os.path.lexists(original):
            other.unlink(missing_ok=True)
        elif original.is_symlink() or not other.exists() or other.read_bytes() != original.read_bytes():
            other.parent.mkdir(parents=True, exist_ok=True)
            other.unlink(missing_ok=True)
            shutil.copy(original, other, follow_symlinks=False)


def quietly(command, **more):
    """Runs a command, and shows its output only if it fails."""
    done = subprocess.run(command, check=False, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, **more)
    if done.returncode != 0:
        sys.exit(f"{command[0]} failed:\n{done.stdout}")


def words_of(command):
    words = shlex.split(command)
    return words[1:] if words and pathlib.Path(words[0]).name == "ccache" else words


def compiling(words, output):
    """Returns the command that compiles into another file and writes no list of headers."""
    result = []
    words = iter(words)
    for word in words:
        if word in ("-MQ", "-MF"):
            next(words)
        elif word == "-o":
            result += [word, output]
            next(words)
        elif word != "-MD":
            result.append(word)
    return result


class CompiledTree:
    def __init__(self, source, directory, options):
        self.tree, self.build = directory / "tree", directory / "build"
        make_copy(source, self.tree)
        if not (self.build / "build.ninja").exists():
            environment = dict(os.environ, CC="gcc", CXX="g++")
            quietly(["meson", "setup", self.build, self.tree, *options, "-Ddebug=false"],
                    env=environment)
        quietly(["ninja", "--quiet", "-C", self.build])
        self._read_commands()
        self._read_headers()

    def _ninja(self, *arguments):
        done = subprocess.run(["ninja", "-C", self.build, "-t", *arguments], check=True,
                              stdout=subprocess.PIPE, text=True)
        return done.stdout

    def _read_commands(self):
        compiled = [rule for rule in json.loads(self._ninja("compdb", "-x"))
                    if rule["output"].endswith(".o") or "." not in pathlib.Path(rule["output"]).name
                    or rule["output"].endswith(".a")]
        self.commands = {rule["output"]: words_of(rule["command"]) for rule in compiled}
        self.members = {output: [word for word in words if word.endswith(".o")]
                        for output, words in self.commands.items() if output.endswith(".a")}

    def _read_headers(self):
        """Fills the table of the objects that are compiled from a file."""
        self.objects_of = collections.defaultdict(list)
        made = ""
        for line in self._ninja("deps").splitlines():
            if line.startswith("    "):
                path = (self.build / line.strip()).resolve()
                if path.is_relative_to(self.tree):
                    self.objects_of[str(path.relative_to(self.tree))].append(made)
            elif line:
                made = line.split(":")[0]

    def links(self, program):
        """Returns the objects of a program, also those in archives."""
        objects = []
        for word in self.commands[program]:
            objects += self.members.get(word, [word] if word.endswith(".o") else [])
        return objects

    def _run(self, words):
        # Each mutant is new to a cache of compilations.
        path = [place for place in os.get_exec_path() if pathlib.Path(place).name != "ccache"]
        environment = dict(os.environ, CCACHE_DISABLE="1", PATH=os.pathsep.join(path))
        done = subprocess.run(words, cwd=self.build, env=environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
        if done.returncode != 0:
            raise Failed

    def compile(self, made, *more):
        """Compiles an object from the sources as they are now. Returns the bytes of the object."""
        output = self.build / MUTANT / made
        output.parent.mkdir(parents=True, exist_ok=True)
        self._run([*compiling(self.commands[made], str(output)), "-w", *more])
        return output.read_bytes()

    def original(self, made):
        return (self.build / made).read_bytes()

    def link(self, program, changed):
        """Links a program with changed objects instead of the original ones."""
        output = str(self.placed(program))
        words = []
        remaining = iter(self.commands[program])
        for word in remaining:
            if word == "-o":
                next(remaining)
                archived = [made for archive in self.commands[program]
                            for made in self.members.get(archive, []) if made in changed]
                words += [word, output, *(f"{MUTANT}/{made}" for made in archived)]
            else:
                words.append(f"{MUTANT}/{word}" if word in changed else word)
        self._run(words)

    def placed(self, program):
        """Returns where the suites find a program."""
        return self.build / MUTANT / pathlib.Path(program).name

    def place(self, program, original=None):
        """Puts the original program, or another one, where the suites find it."""
        place = self.placed(program)
        place.parent.mkdir(exist_ok=True)
        place.unlink(missing_ok=True)
        shutil.copy(original or self.build / program, place)
