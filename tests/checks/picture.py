"""Holds the picture of the floors, docs/architecture/floors.svg, against floors.txt:  picture.py ROOT

picture.py --draw ROOT  draws it anew.
"""

import os
import sys
from xml.sax.saxutils import escape

import floors
import tree

PICTURE = "docs/architecture/floors.svg"
NAMES = {8: "TOOL", 7: "SERVICES", 6: "FILES", 5: "KEYS AND CONTEXT", 4: "STREAMS", 3: "LOG", 2: "VALUES",
         1: "FAILURES", 0: "GROUND"}

# In pixels. The width of a character is that of a fixed-width font of 12.
WIDTH = 960
LEFT = 220
CHARACTER = 7.3
BOX = 22
GAP = 8

_HEAD = """\
<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}">
<title>The floors: a file includes only files of its own floor or a lower one</title>
<style>
text {{ font: 12px "DejaVu Sans Mono", monospace; fill: black }}
.name {{ font: bold 13px "DejaVu Sans", sans-serif }}
rect, path {{ fill: white; stroke: black }}
.guest {{ stroke-dasharray: 4 3 }}
.arrow {{ fill: black }}
.page {{ stroke: none }}
</style>
<rect class="page" width="{width}" height="{height}"/>
"""


def text(x, y, what, style=""):
    return f'<text x="{x:g}" y="{y:g}"{style}>{escape(what)}</text>'


def box(x, y, what, guest):
    style = ' class="guest" rx="4"' if guest else ""
    return [f'<rect x="{x:g}" y="{y:g}" width="{box_width(what):g}" height="{BOX}"{style}/>',
            text(x + 7, y + 15, what)]


def box_width(what):
    return round(len(what) * CHARACTER + 14)


def names_on(living, floor):
    """(name, is a guest) of all that lives on a floor, folders first."""
    paths = sorted((not path.endswith("/"), path) for path, home in living.items() if home == floor)
    return [(path.removeprefix("nelvo/").rstrip("/"), guest) for guest, path in paths]


def draw_floor(floor, names, top):
    """The lines of a floor, and where it ends."""
    lines = []
    x, y = LEFT, top + GAP
    for name, guest in names:
        if x + box_width(name) > WIDTH - GAP:
            x, y = LEFT, y + BOX + GAP
        lines += box(x, y, name, guest)
        x += box_width(name) + GAP
    end = y + BOX + GAP
    middle = (top + end) / 2 + 4
    return [text(30, middle, str(floor), ' class="name"'), text(52, middle, NAMES[floor], ' class="name"'),
            *lines, f'<path d="M 24 {end} H {WIDTH}"/>'], end


def draw(living):
    lines = []
    end = 0
    for floor in sorted(NAMES, reverse=True):
        drawn, end = draw_floor(floor, names_on(living, floor), end)
        lines += drawn
    lines += [f'<path d="M 10 {GAP} V {end - GAP}"/>', f'<path class="arrow" d="M 10 {end} l -5 -12 h 10 z"/>']
    y = end + 2 * GAP
    lines += box(LEFT, y, "a folder", False)
    lines += box(LEFT + 90, y, "a guest, which lives on another floor than its folder", True)
    lines.append(text(4, y + 15, "may include"))
    return _HEAD.format(width=WIDTH, height=y + BOX + GAP) + "\n".join([*lines, "</svg>", ""])


def homes(root):
    return floors.read_floors(tree.read(root, floors.FLOORS), [])


def check(root):
    faults = [f"{path} lives on floor {floor}, which the picture lacks"
              for path, floor in homes(root).items() if floor not in NAMES]
    if not os.path.isfile(os.path.join(root, PICTURE)) or tree.read(root, PICTURE) != draw(homes(root)):
        faults.append(f"{PICTURE} is not what picture.py --draw gives")
    return faults


if __name__ == "__main__":
    if sys.argv[1] == "--draw":
        with open(os.path.join(sys.argv[2], PICTURE), "w", encoding="utf-8") as file:
            file.write(draw(homes(sys.argv[2])))
    else:
        tree.finish("picture", check(sys.argv[1]))
