"""Holds the includes against floors.txt:  floors.py ROOT

Each folder of nelvo/ and tool/ has a home floor, and a guest is a component (a header with its source, or one
of the two alone) that stands on another floor than its folder. floors.txt has one line for each folder and
one for each guest, the floor and the path:

    2 nelvo/core/util/
    0 nelvo/core/util/format

1. A file includes only files of its own floor or a lower one.
2. Components form no cycle, on one floor neither.
3. Of the files of the tree, an example includes headers of nelvo/ alone.
"""

import os
import re
import sys

import tree

FLOORS = "tests/checks/floors.txt"
_LINE = re.compile(r"(\d) ((?:nelvo|tool)/[a-z0-9_/]*)")
_INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(["<])([^">]+)[">]', re.MULTILINE)


def component(path):
    return os.path.splitext(path)[0]


def folder(path):
    return os.path.dirname(path) + "/"


def read_floors(text, faults):
    """The floor of each path that floors.txt names."""
    floors = {}
    for number, line in enumerate(text.splitlines(), 1):
        match = _LINE.fullmatch(line)
        if not match:
            faults.append(f"{FLOORS}:{number}: not a floor and a path: {line!r}")
        elif match[2] in floors:
            faults.append(f"{FLOORS}:{number}: {match[2]} has a line already")
        else:
            floors[match[2]] = int(match[1])
    return floors


def stale_lines(floors, sources):
    """What floors.txt says of things that are not there, or that it need not say."""
    there = {component(path) for path in sources} | {folder(path) for path in sources}
    for path, floor in floors.items():
        if path not in there:
            yield f"{FLOORS}: {path} does not exist"
        elif not path.endswith("/") and floors.get(folder(path)) == floor:
            yield f"{FLOORS}: {path} is no guest, {floor} is its folder's floor"


def includes(root, path, faults):
    """The files of the project that a file includes."""
    for match in _INCLUDE.finditer(tree.read(root, path)):
        target = match[2]
        if os.path.isfile(os.path.join(root, target)):
            if match[1] == "<":
                faults.append(f"{path}: <{target}> is a file of this tree, which is included in quotes")
            yield target
        elif match[1] == '"':
            faults.append(f'{path}: "{target}" is no path from the root of this tree')


def find_cycle(edges):
    """The components of one cycle in the order of its includes, or nothing."""
    done = set()

    def search(node, trail):
        if node in trail:
            return trail[trail.index(node):] + [node]
        if node in done:
            return None
        done.add(node)
        for target in sorted(edges.get(node, ())):
            cycle = search(target, trail + [node])
            if cycle:
                return cycle
        return None

    return next(filter(None, (search(node, []) for node in sorted(edges))), None)


def example_faults(root):
    """Includes of examples that whoever has the library alone could not follow."""
    faults = []
    for path in tree.files(root, "examples"):
        if path.endswith((".h", ".cpp")):
            faults += (f"{path}: includes {target}, which is no header of the library"
                       for target in includes(root, path, faults)
                       if not target.startswith("nelvo/") or not target.endswith(".h"))
    return faults


def check(root):
    faults = []
    floors = read_floors(tree.read(root, FLOORS), faults)
    files = [path for path in tree.files(root, "nelvo", "tool") if os.path.basename(path) != "CMakeLists.txt"]
    sources = [path for path in files if path.endswith((".h", ".cpp"))]
    faults += (f"{path}: neither a header (.h) nor a source (.cpp)" for path in files if path not in sources)
    faults += stale_lines(floors, sources)
    faults += (f"{FLOORS}: no line for the folder {path}"
               for path in sorted({folder(path) for path in sources}) if path not in floors)

    def floor_of(path):
        return floors.get(component(path), floors.get(folder(path)))

    edges = {}
    for path in sources:
        for target in includes(root, path, faults):
            here, there = floor_of(path), floor_of(target)
            if not target.startswith(("nelvo/", "tool/")):
                faults.append(f"{path}: includes {target}, which stands on no floor")
            elif here is not None and there is not None and there > here:
                faults.append(f"{path} (floor {here}) includes {target} (floor {there})")
            if component(target) != component(path):
                edges.setdefault(component(path), set()).add(component(target))
    cycle = find_cycle(edges)
    if cycle:
        faults.append("cycle: " + " -> ".join(cycle))
    return faults + example_faults(root)


if __name__ == "__main__":
    tree.finish("floors", check(sys.argv[1]))
