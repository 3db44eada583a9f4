"""Gives a document to Doxygen:  links.py DOCUMENT

On standard output its links to other files than documents and pictures, which are no pages of the reference, lead from
build/docs to where those stand in the tree.
"""

import os
import re
import sys

_LINK = re.compile(r"(?<!!)(\[[^\]]*\]\()([^)\s#:]+)(?=\))")


def convert(path, text):
    """The text of a document, whose path is one from the root of the tree."""
    def lead(match):
        if match[2].endswith(".md"):
            return match[0]
        target = os.path.normpath(os.path.join(os.path.dirname(path), match[2]))
        return match[1] + os.path.join("../..", target)
    return _LINK.sub(lead, text)


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8") as file:
        sys.stdout.write(convert(os.path.relpath(sys.argv[1]), file.read()))
