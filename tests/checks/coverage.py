"""Tells how much of the product the tests reach, and holds it against goals:  coverage.py ROOT COUNTS

COUNTS is what "llvm-cov export" writes. Lines and branches are printed for each folder and in total; status 1 if
the total misses a goal or a reader of untrusted bytes has a branch that is never taken. coverage.txt names the
readers, and the branches that no input can take, each with the reason:

    reader nelvo/core/util/xml
    never false nelvo/core/util/hex.cpp: IsDigit(symbol) && IsSmall(symbol): no digit is a letter
"""

import collections
import json
import os
import re
import sys

import tree

LIST = "tests/checks/coverage.txt"
GOALS = {"lines": 95.0, "branches": 90.0}
_READER = re.compile(r"reader (\S+)")
_NEVER = re.compile(r"never (true|false) (\S+): (.+): ([^:]+)")

# A side of a condition: where it stands, as it is written there, and whether it is the true one.
Branch = collections.namedtuple("Branch", "path line text side")


def percent(covered, count):
    return 100.0 * covered / count if count else 100.0


def product(root, counts):
    """What is known of each file of the product, by its path below the root."""
    with open(counts, encoding="utf-8") as file:
        files = json.load(file)["data"][0]["files"]
    paths = {os.path.relpath(file["filename"], os.path.realpath(root)): file for file in files}
    return {path: paths[path] for path in sorted(paths) if path.startswith(("nelvo/", "tool/"))}


def sums(files):
    """{folder: {kind: (covered, count)}}, with the total as the last folder."""
    found = {}
    for path, file in files.items():
        for folder in (os.path.dirname(path), "total"):
            of_folder = found.setdefault(folder, dict.fromkeys(GOALS, (0, 0)))
            for kind, (covered, count) in of_folder.items():
                summary = file["summary"][kind]
                of_folder[kind] = (covered + summary["covered"], count + summary["count"])
    found["total"] = found.pop("total")
    return found


def table(found):
    yield f"{'':28}{'lines':>20}{'branches':>20}"
    for folder, kinds in found.items():
        yield f"{folder:28}" + "".join(f"{percent(covered, count):9.2f} %{f'of {count}':>9}"
                                       for covered, count in (kinds[kind] for kind in GOALS))


def missed_goals(total):
    for kind, goal in GOALS.items():
        reached = percent(*total[kind])
        if reached < goal:
            yield f"{kind}: {reached:.2f} % are reached, {goal:g} % must be"


def text_at(lines, first_line, first_column, last_line, last_column):
    """The condition between two places, which count from 1, on one line. A loop over a range is told whole."""
    piece = lines[first_line - 1:last_line]
    piece[-1] = piece[-1][:last_column - 1]
    piece[0] = piece[0][first_column - 1:]
    text = " ".join("\n".join(piece).split())
    return lines[first_line - 1].strip() if text == ":" else text


def branches(root, path, file):
    """How often each branch of a file is taken, in all instances of what is a template.

    What the compiler decides has no branches.
    """
    lines = tree.read(root, path).splitlines()
    taken = collections.Counter()
    for *place, true_count, false_count, _, _, _ in file["branches"]:
        if "if constexpr" in lines[place[0] - 1]:
            continue
        for side, count in ("true", true_count), ("false", false_count):
            taken[Branch(path, place[0], text_at(lines, *place), side)] += count
    return taken


def read_list(text, faults):
    """The readers, and the branches that are never taken as (path, condition, side)."""
    readers, never = set(), set()
    for number, line in enumerate(text.splitlines(), 1):
        if match := _READER.fullmatch(line):
            readers.add(match[1])
        elif match := _NEVER.fullmatch(line):
            never.add((match[2], match[3], match[1]))
        elif line and not line.startswith("#"):
            faults.append(f"{LIST}:{number}: neither a reader nor a branch with its reason: {line}")
    return readers, never


def reader_faults(root, files):
    faults = []
    readers, never = read_list(tree.read(root, LIST), faults)
    taken = collections.Counter()
    for path, file in files.items():
        if os.path.splitext(path)[0] in readers:
            taken.update(branches(root, path, file))
    untaken = [branch for branch, count in taken.items() if count == 0]
    known = collections.Counter((branch.path, branch.text, branch.side) for branch in untaken)
    faults += (f"{LIST}: {reader} has no source" for reader in
               sorted(readers - {os.path.splitext(path)[0] for path in files}))
    faults += (f"{LIST}: {path}: {text}: {known[path, text, side]} branches are never {side}, not one"
               for path, text, side in sorted(never) if known[path, text, side] != 1)
    faults += (f"{path}:{line}: never {side}: {text}" for path, line, text, side in sorted(untaken)
               if (path, text, side) not in never)
    return faults


def main(root, counts):
    files = product(root, counts)
    found = sums(files)
    print("\n".join(table(found)))
    tree.finish("coverage", list(missed_goals(found["total"])) + reader_faults(root, files))


if __name__ == "__main__":
    main(*sys.argv[1:])
