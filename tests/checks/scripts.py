"""Holds the shell scripts and the lists of packages in order:  scripts.py ROOT

A script in script/ or .ci/ is executable, for plain sh, stops at the first failure, and parses; so is what has no
ending in examples/. A list of packages has comments on top, then one package a line, sorted.
"""

import os
import re
import subprocess
import sys

import tree

_PACKAGE = re.compile(r"[a-z0-9][a-z0-9+.-]+")


def script_faults(root, path):
    full = os.path.join(root, path)
    lines = tree.read(root, path).splitlines()
    if lines[:1] != ["#!/bin/sh"]:
        yield "does not begin with #!/bin/sh"
    if not os.access(full, os.X_OK):
        yield "is not executable"
    if "set -eu" not in lines:
        yield "has no set -eu"
    parsed = subprocess.run(["sh", "-n", full], capture_output=True, text=True)
    if parsed.returncode != 0:
        yield "does not parse: " + parsed.stderr.strip()


def list_faults(root, path):
    lines = tree.read(root, path).splitlines()
    while lines and lines[0].startswith("#"):
        lines.pop(0)
    if not lines:
        yield "names no package"
    for line in lines:
        if not _PACKAGE.fullmatch(line):
            yield f"not one package: {line!r}"
    if lines != sorted(set(lines)):
        yield "is not sorted, or names a package twice"


def check(root):
    faults = []
    examples = [path for path in tree.files(root, "examples") if "." not in os.path.basename(path)]
    for path in tree.files(root, "script", ".ci") + examples:
        kind = list_faults if path.endswith(".txt") else script_faults
        faults += (f"{path}: {fault}" for fault in kind(root, path))
    return faults


if __name__ == "__main__":
    tree.finish("scripts", check(sys.argv[1]))
