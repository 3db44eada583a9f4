"""Words that no file of the tree may hold, in its text or in its path:  words.py ROOT

Unfinished work, tests that do not run, and references to what a reader of this tree cannot look up.
"""

import re
import sys

import tree

# A bracket in each pattern keeps it from matching itself.
FORBIDDEN = re.compile(
    r"\bTO[D]O\b|FIX[M]E|GTEST_[S]KIP|DISABLE[D]_"
    r"|\b[Pp]arts? [0-9]+\.[0-9]"
    r"|(?i:speci[f]ication|house[ ]plan|\bhouse\.m[d]|\bspec\.m[d]|\bissue[s]? #?[0-9])")


def check(root):
    faults = []
    for path in tree.files(root):
        if FORBIDDEN.search(path):
            faults.append(f"{path}: its name")
        for number, line in enumerate(tree.read(root, path).splitlines(), 1):
            match = FORBIDDEN.search(line)
            if match:
                faults.append(f"{path}:{number}: {match[0]}")
    return faults


if __name__ == "__main__":
    tree.finish("words", check(sys.argv[1]))
