"""Holds docs/formats.md against the golden records of the tests:  formats.py ROOT

The page has each record of tests/data once, with the same bytes, as a table of three columns under a paragraph that
names it. Each row begins where the one before it ends:

    A date (`date.hex`):

    | Offset | Bytes | Value |
    |---|---|---|
    | 0 | `01 00 00 00` | UTC |
    | 4 | `80 51 01 00 00 00 00 00` | 86400 |
"""

import re
import sys

import tree

PAGE = "docs/formats.md"
DATA = "tests/data"
_HEAD = "| Offset | Bytes | Value |"
_FRAME = "|---|---|---|"
_NAMED = re.compile(r"`(\w+)\.hex`")
_ROW = re.compile(r"\| (\d+) \| `([0-9a-f]{2}(?: [0-9a-f]{2})*)` \| \S.* \|")


def record(text):
    """The bytes of a record of the tests, which has a field a line."""
    fields = (line.split("#")[0] for line in text.splitlines())
    return bytes.fromhex("".join(field.rpartition(":")[2] for field in fields))


def table(name, rows, faults):
    """The bytes of a table, from its rows."""
    data = b""
    for row in rows:
        match = _ROW.fullmatch(row)
        if not match:
            faults.append(f"{PAGE}: {name}: not a row of offset, bytes and value: {row}")
            continue
        if int(match[1]) != len(data):
            faults.append(f"{PAGE}: {name}: offset {match[1]} is in truth {len(data)}")
        data += bytes.fromhex(match[2])
    return data


def page_records(text, faults):
    """(name, bytes) of each table of bytes, and of each name that has none."""
    paragraphs = [paragraph.splitlines() for paragraph in re.split(r"\n{2,}", text)]
    for above, lines in zip([[]] + paragraphs, paragraphs + [[]]):
        names = _NAMED.findall(" ".join(above))
        if not lines or lines[0] != _HEAD:
            faults += (f"{PAGE}: no table under the name of {name}" for name in names)
        elif not names:
            faults.append(f"{PAGE}: a table without a name: {' '.join(lines[2:3])}")
        else:
            yield names[-1], table(names[-1], [line for line in lines[1:] if line != _FRAME], faults)


def check(root):
    faults = []
    data = {path.removeprefix(DATA + "/").removesuffix(".hex"): record(tree.read(root, path))
            for path in tree.files(root, DATA)}
    shown = list(page_records(tree.read(root, PAGE), faults))
    there = [name for name, _ in shown]
    faults += (f"{PAGE}: lacks {name}" for name in data if name not in there)
    faults += (f"{PAGE}: {name} stands there twice" for name in sorted(set(there)) if there.count(name) > 1)
    for name, record_bytes in shown:
        if name not in data:
            faults.append(f"{PAGE}: {name} is no record of {DATA}")
        elif record_bytes != data[name]:
            faults.append(f"{PAGE}: {name} is {record_bytes.hex(' ')}, and {DATA} has {data[name].hex(' ')}")
    return faults


if __name__ == "__main__":
    tree.finish("formats", check(sys.argv[1]))
