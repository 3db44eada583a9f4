"""Holds the markers of intentional oddities against the tests and docs/oddities.md:  oddities.py ROOT

A comment in nelvo/ or tool/ that ends with "Kept: Suite.Case" marks an oddity that stays, and names the test
that pins it. The test stands in tests/, and docs/oddities.md has one row for each marker and nothing else:

    | what happens | `nelvo/core/guid.cpp` | `Guid.ParseFailureCarriesToStringsText` |

oddities.py --missing ROOT  prints a row for each marker that has none, with the marker's comment for a text.
"""

import re
import sys

import tree

TABLE = "docs/oddities.md"
_MARKER = re.compile(r"^(.*)\bKept:(.*)$", re.MULTILINE)
_NAMED_TEST = re.compile(r" (\w+\.\w+)")
_TEST = re.compile(r"^\s*(?:TYPED_)?TEST(?:_F|_P)?\s*\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.MULTILINE)
_ROW = re.compile(r"\| *(\S.*?) *\| *`([^`|]+)` *\| *`([^`|]+)` *\|")
_FRAME = re.compile(r"\|( What +\| Where +\| Test +|[-| ]+)\|")


def comment_above(text, end):
    """The sentences of the comment whose last line, the marker's, begins at the end of this text."""
    lines = []
    for line in reversed(text[:end].splitlines()):
        if not line.strip().startswith("//"):
            break
        lines.insert(0, line.strip().lstrip("/").strip())
    return " ".join(lines)


def markers(root, faults):
    """{(file, test): comment} of all markers."""
    found = {}
    for path in tree.files(root, "nelvo", "tool"):
        text = tree.read(root, path)
        for match in _MARKER.finditer(text):
            name = _NAMED_TEST.fullmatch(match[2].rstrip())
            if match[1].strip() != "//" or not name:
                faults.append(f"{path}: not of the form '// Kept: Suite.Case': {match[0].strip()}")
                continue
            found[path, name[1]] = comment_above(text, match.start())
    return found


def tests(root):
    """The names of all tests, Suite.Case."""
    return {f"{suite}.{case}"
            for path in tree.files(root, "tests") if path.endswith(".cpp")
            for suite, case in _TEST.findall(tree.read(root, path))}


def rows(root, faults):
    """(file, test) of each row of the table."""
    found = []
    for line in tree.read(root, TABLE).splitlines():
        match = _ROW.fullmatch(line)
        if match:
            found.append((match[2], match[3]))
        elif line.startswith("|") and not _FRAME.fullmatch(line):
            faults.append(f"{TABLE}: not a row of what, where and test: {line}")
    return found


def check(root):
    faults = []
    marked = markers(root, faults)
    there = tests(root)
    listed = rows(root, faults)
    faults += (f"{path}: there is no test {test}" for path, test in marked if test not in there)
    faults += (f"{TABLE}: no row for {test} in {path}" for path, test in marked if (path, test) not in listed)
    faults += (f"{TABLE}: no marker names {test} in {path}"
               for path, test in listed if (path, test) not in marked)
    faults += (f"{TABLE}: two rows for {test} in {path}"
               for path, test in sorted(set(listed)) if listed.count((path, test)) > 1)
    return faults


def missing_rows(root):
    faults = []
    listed = rows(root, faults)
    return [f"| {what} | `{path}` | `{test}` |"
            for (path, test), what in markers(root, faults).items() if (path, test) not in listed]


if __name__ == "__main__":
    if sys.argv[1] == "--missing":
        print("\n".join(missing_rows(sys.argv[2])))
    else:
        tree.finish("oddities", check(sys.argv[1]))
