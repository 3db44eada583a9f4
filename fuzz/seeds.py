"""Writes the seeds of a fuzz target into a folder:  seeds.py [--cut] FOLDER LIST...

The seeds are told in text, so that they can be read. A file NAME.txt holds one seed a line, with \\n, \\t, \\\\ and
\\x41 for what a line cannot hold. A file NAME.hex is one seed, a record with a field a line: its name, a colon
and its bytes in hexadecimal. In both, a line that begins with a # is a comment, and an empty one is nothing.

With --cut, a record is also cut off at every length.
"""

import os
import re
import shutil
import sys

_ESCAPE = re.compile(rb"\\(?:x([0-9a-f]{2})|(.))", re.DOTALL)
_PLAIN = {b"n": b"\n", b"t": b"\t", b"\\": b"\\"}


def unescaped(line):
    """The bytes of a line."""
    return _ESCAPE.sub(lambda match: bytes([int(match[1], 16)]) if match[1] else _PLAIN[match[2]], line)


def field(line):
    """The bytes of a field of a record."""
    return bytes.fromhex(line.split(b"#")[0].split(b":")[1].decode())


def seeds(path):
    """The seeds of one file."""
    with open(path, "rb") as file:
        lines = [line for line in file.read().split(b"\n") if line and not line.startswith(b"#")]
    if path.endswith(".hex"):
        return [b"".join(map(field, lines))]
    return list(map(unescaped, lines))


def beginnings(seed):
    """A seed, and all that it begins with."""
    return [seed[:length] for length in range(len(seed), -1, -1)]


def write(folder, paths, cut=False):
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    for path in paths:
        found = seeds(path)
        if cut and path.endswith(".hex"):
            found = beginnings(found[0])
        for number, seed in enumerate(found, 1):
            with open(os.path.join(folder, f"{os.path.basename(path)}-{number:02}"), "wb") as file:
                file.write(seed)


if __name__ == "__main__":
    cut = sys.argv[1] == "--cut"
    folder, *lists = sys.argv[1 + cut:]
    write(folder, lists, cut)
