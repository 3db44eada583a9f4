"""Holds the units of packaging/ against systemd's own verifier, where that is installed:  units.py ROOT"""

import os
import shutil
import subprocess
import sys

import tree

VERIFIER = "systemd-analyze"


def units(root):
    return [path for path in tree.files(root, "packaging") if path.endswith(".service")]


def check(root, verifier):
    faults = []
    for path in units(root):
        # The unit alone counts, and not what the system has of others. The manual need not be installed.
        said = subprocess.run([verifier, "verify", "--man=no", "--recursive-errors=no", os.path.join(root, path)],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if said.returncode != 0:
            faults += (f"{path}: {line}" for line in said.stdout.splitlines() or ["refused without a word"])
    return faults


def main(root):
    verifier = shutil.which(VERIFIER)
    if verifier:
        tree.finish("units", check(root, verifier))
    print(f"units: there is no {VERIFIER} here, so nobody has looked at {', '.join(units(root))}")


if __name__ == "__main__":
    main(sys.argv[1])
