"""What the checks share: a walk over the tree, the way they report, and made trees for their own tests."""

import os
import sys
import tempfile

_OUTSIDE = {".git", "build", "__pycache__"}


def files(root, *folders):
    """The paths of the files in the folders (in the whole tree if none is named), relative to the root."""
    found = []
    for folder in folders or ("",):
        for path, names, leaves in os.walk(os.path.join(root, folder)):
            names[:] = [name for name in names if name not in _OUTSIDE]
            found += (os.path.relpath(os.path.join(path, leaf), root)
                      for leaf in leaves if leaf not in _OUTSIDE)
    return sorted(found)


def read(root, path):
    """The text of a file. Bytes that are no UTF-8 do no harm."""
    with open(os.path.join(root, path), encoding="utf-8", errors="surrogateescape") as file:
        return file.read()


def finish(name, faults):
    """Ends the check: its faults on standard error and status 1, or status 0 if there are none."""
    for fault in faults:
        print(fault, file=sys.stderr)
    print(f"{name}: {len(faults)} fault(s)" if faults else f"{name}: all in order")
    sys.exit(1 if faults else 0)


class MadeTree(tempfile.TemporaryDirectory):
    """A temporary folder with these files: made_tree({"a/b.h": "text"}). The value of "with" is its path."""

    def __init__(self, contents):
        super().__init__(prefix="nelvo-check-", dir="/dev/shm" if os.path.isdir("/dev/shm") else None)
        for path, text in contents.items():
            full = os.path.join(self.name, path)
            os.makedirs(os.path.dirname(full), exist_ok=True)
            with open(full, "w", encoding="utf-8", errors="surrogateescape") as file:
                file.write(text)
