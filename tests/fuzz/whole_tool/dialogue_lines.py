#!/usr/bin/env python3
"""Writes each line that a dialogue's expected output has, once. A build runs this script: the first
argument is the file to write, the second one a file that names the dialogues, for Ninja."""

import pathlib
import sys

TRANSCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "transcripts"
sys.path.insert(0, str(TRANSCRIPTS))

from transcript import read_text, read_transcript  # noqa: E402 (the path comes first)


def main():
    output, dependencies = sys.argv[1:]
    texts = sorted((TRANSCRIPTS / "texts").iterdir())
    contents = {path.name: read_text(path) for path in texts}
    dialogues = sorted(TRANSCRIPTS.glob("*/*.transcript"))
    lines = set()
    for path in dialogues:
        lines.update(read_transcript(path, contents).contents["stdout"].split(b"\n"))
    pathlib.Path(output).write_bytes(b"".join(line + b"\n" for line in sorted(lines)))
    # A directory changes when it gets a new file.
    sources = texts + dialogues + sorted({path.parent for path in texts + dialogues})
    pathlib.Path(dependencies).write_text(f"{output}: {' '.join(map(str, sources))}\n")


if __name__ == "__main__":
    main()
