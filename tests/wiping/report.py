"""Runs the tests of keys in each way in which they are built, and sums up:  report.py BUILD

BUILD has a folder for each way (tests/wiping/CMakeLists.txt).
"""

import os
import re
import subprocess
import sys

WAYS = ("O0", "O2", "O3", "lto")
_CASES = re.compile(r"^\[=+\] (\d+) tests? .*ran\.", re.M)
_FREED = re.compile(r"^freed blocks: (\d+), with secrets: (\d+)$", re.M)


class Run:
    """One program of tests: its cases, the blocks that it freed, and those of them with secrets."""

    def __init__(self, path):
        result = subprocess.run([path, "--gtest_brief=1"], capture_output=True, text=True, errors="replace",
                                check=False)
        self.output = result.stdout + result.stderr
        cases, freed = _CASES.search(self.output), _FREED.search(self.output)
        self.has_run = cases is not None and freed is not None
        self.has_passed = self.has_run and result.returncode == 0 and freed[2] == "0"
        self.has_failed = self.has_run and result.returncode != 0 and freed[2] != "0"
        self.cases = int(cases[1]) if cases else 0
        self.blocks, self.finds = (int(freed[1]), int(freed[2])) if freed else (0, 0)


def left_in_memory(path, *arguments):
    """How many keys a program finds in all its memory; None if it cannot tell."""
    # Where calls are bound late, the loader keeps the registers on the stack meanwhile.
    result = subprocess.run([path, *arguments], capture_output=True, text=True, check=False,
                            env={**os.environ, "LD_BIND_NOW": "1"})
    return int(result.stdout) if result.returncode == 0 else None


def check(folder):
    """The row of one way, and what is wrong with it."""
    tests = sorted(name for name in os.listdir(folder) if name.endswith("_test") and name != "planted_test")
    runs = {name: Run(os.path.join(folder, name)) for name in tests}
    planted = Run(os.path.join(folder, "planted_test"))
    memory = os.path.join(folder, "wiped_keys")
    left, planted_left = left_in_memory(memory), left_in_memory(memory, "with a plain copy")

    faults = [f"{name} fails:\n{run.output}" for name, run in runs.items() if not run.has_passed]
    faults += [f"{name} runs no case" for name, run in runs.items() if run.cases == 0]
    if not tests:
        faults.append("there are no tests")
    if not planted.has_failed:
        faults.append(f"a plain allocator is not noticed:\n{planted.output}")
    if left != 0:
        faults.append(f"keys left in memory: {left}")
    if not planted_left:
        faults.append("a plain copy in memory is not noticed")

    row = [sum(getattr(run, value) for run in runs.values()) for value in ("cases", "blocks", "finds")]
    return row + [left, planted.finds], faults


def main(build):
    print("       cases  freed blocks  with secrets  left in memory  with secrets, by a plain allocator")
    failures = []
    for way in WAYS:
        row, faults = check(os.path.join(build, way))
        print("{:5}{:>7}{:>14}{:>14}{:>16}{:>36}".format(way, *map(str, row)))
        failures += [f"{way}: {fault}" for fault in faults]
    for failure in failures:
        print(failure, file=sys.stderr)
    print("wiping: " + ("FAILED" if failures else "nothing is left"))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
