"""Writes down what the benchmarks ran on and against:  machine.py FILE PACKAGE...

FILE gets the date of today, the processor, the names of the system and the compiler, the revision of this tree, and
the version of each Debian package.
"""

import datetime
import json
import os
import platform
import re
import subprocess
import sys


def output(*command):
    """Empty if the command fails: this tree may have come without its history."""
    return subprocess.run(command, check=False, capture_output=True, text=True).stdout.strip()


def first_match(pattern, path):
    with open(path, encoding="utf-8") as file:
        match = re.search(pattern, file.read(), re.MULTILINE)
    return match[1] if match else "unknown"


def versions(names):
    """{package: version}, without what Debian adds to it."""
    lines = output("dpkg-query", "--show", "--showformat=${Package} ${Version}\n", *names).splitlines()
    return {name: re.sub(r"^\d+:|[-+~].*$", "", version) for name, version in map(str.split, lines)}


def main(arguments):
    path, *packages = arguments
    machine = {
        "date": datetime.date.today().isoformat(),
        "processor": first_match(r"^model name\s*: (.*)$", "/proc/cpuinfo"),
        "processors": len(os.sched_getaffinity(0)),
        "system": first_match(r'^PRETTY_NAME="(.*)"$', "/etc/os-release"),
        "kernel": platform.release(),
        "compiler": output("c++", "--version").splitlines()[0],
        "revision": output("git", "describe", "--always", "--dirty") or "unknown",
        "versions": versions(packages),
    }
    with open(path, "w", encoding="utf-8") as file:
        json.dump(machine, file, indent=1)


if __name__ == "__main__":
    main(sys.argv[1:])
