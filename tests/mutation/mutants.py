"""The mutants of a tree: which there are, which of them are tried, and which are known to be no different."""

import collections
import dataclasses
import functools
import hashlib
import json
import math
import os
import pathlib
import random
import re

import operators

FOLDERS = ("nelvo/context", "nelvo/core", "nelvo/crypto", "nelvo/fs", "nelvo/io", "nelvo/logging",
           "nelvo/monitoring", "nelvo/posix", "nelvo/synch", "tool")
LEAST = 12  # mutants of a folder, however little code it has
MOST_DEPENDANTS = 15  # sources that a header may have behind it to be mutated, since each is compiled again
_INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)
_SOURCES = ("nelvo", "tool", "tests")


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One change to one file. The id depends on the changed lines, and not on where they stand."""

    id: str
    path: str
    line: int
    kind: str
    old: str  # the lines that change
    new: str
    change: operators.Change = dataclasses.field(hash=False, compare=False)

    def key(self):
        return self.path, _plain(self.old), _plain(self.new)

    def place(self):
        return f"{self.path}:{self.line}"


def _plain(lines):
    return " ".join(lines.split())


def mutants_of(path, text):
    """All mutants of a file, from its first line to its last."""
    seen = collections.Counter()
    texts = set()
    found = []
    for change in operators.changes(text):
        begin = text.rfind("\n", 0, change.begin) + 1
        end = text.find("\n", change.end)
        end = len(text) if end < 0 else end
        old, new = text[begin:end], text[begin:change.begin] + change.text + text[change.end:end]
        if (begin, end, new) in texts:
            continue
        texts.add((begin, end, new))
        key = path, _plain(old), _plain(new)
        seen[key] += 1
        digest = hashlib.sha1("\n".join((*key, str(seen[key]))).encode()).hexdigest()[:8]
        found.append(Mutant(digest, path, text.count("\n", 0, change.begin) + 1, change.kind, old, new, change))
    return found


class Tree:
    """The sources under a root, and who includes whom."""

    def __init__(self, root):
        self.root = pathlib.Path(root)
        self.sources = sorted(
            os.path.relpath(os.path.join(folder, name), root) for top in _SOURCES
            for folder, _, names in os.walk(self.root / top) for name in names if name.endswith((".h", ".cpp")))
        self._includers = collections.defaultdict(set)
        for path in self.sources:
            for included in _INCLUDE.findall(self.read(path)):
                self._includers[included].add(path)

    def read(self, path):
        return (self.root / path).read_text(encoding="utf-8")

    @functools.lru_cache(maxsize=None)
    def compiled_with(self, path):
        """The .cpp files that are compiled again when this file changes."""
        seen, left = {path}, [path]
        while left:
            more = self._includers[left.pop()] - seen
            seen |= more
            left += more
        return sorted(each for each in seen if each.endswith(".cpp"))

    @functools.lru_cache(maxsize=None)
    def mutants(self, folder):
        """All mutants below a folder, but for those of headers that too much is behind."""
        return [mutant for path in self.sources if path.startswith(folder + "/")
                if path.endswith(".cpp") or len(self.compiled_with(path)) <= MOST_DEPENDANTS
                for mutant in mutants_of(path, self.read(path))]


def in_turn(mutants, seed):
    """The mutants in the order in which they are tried: by chance, one of each kind at a time."""
    by_kind = {kind: [mutant for mutant in mutants if mutant.kind == kind] for kind in operators.KINDS}
    chance = random.Random(seed)
    for of_kind in by_kind.values():
        chance.shuffle(of_kind)
    longest = max(map(len, by_kind.values()))
    return [of_kind[turn] for turn in range(longest) for of_kind in by_kind.values() if turn < len(of_kind)]


def shares(counts, number):
    """How many mutants each folder gets of a number, in proportion to how many it has."""
    total = sum(counts.values())
    return {folder: min(count, max(LEAST, math.ceil(number * count / total))) for folder, count in counts.items()}


class Equivalents:
    """The mutants that do what the product does, as a file names them:

    [{"file": ..., "line": the text that changes, "change": what it becomes, "reason": ...}, ...]
    """

    def __init__(self, entries):
        self.reasons = {(entry["file"], _plain(entry["line"]), _plain(entry["change"])): entry["reason"]
                        for entry in entries}
        if len(self.reasons) != len(entries):
            raise ValueError("an equivalent mutant is named twice")

    @classmethod
    def load(cls, path):
        with open(path, encoding="utf-8") as file:
            return cls(json.load(file))

    def __contains__(self, mutant):
        return mutant.key() in self.reasons

    def unknown(self, mutants):
        """Entries for what is no mutant (any more)."""
        known = {mutant.key() for mutant in mutants}
        return [" | ".join(key) for key in self.reasons if key not in known]


class Queue:
    """Hands out the mutants of one folder until enough of them were of use. Those that do not compile and those
    that are equivalent are of none, and others take their places."""

    def __init__(self, mutants, equivalents, wanted):
        self.wanted = wanted
        self.equivalent = 0
        self._equivalents = equivalents
        self._rest = iter(mutants)
        self._out = 0  # handed out, and of use as far as is known

    def next(self):
        """The next mutant, or None if none is wanted now."""
        while self._out < self.wanted:
            mutant = next(self._rest, None)
            if mutant is None:
                self.wanted = self._out
                return None
            if mutant in self._equivalents:
                self.equivalent += 1
                continue
            self._out += 1
            return mutant
        return None

    def was_of_no_use(self):
        self._out -= 1

    def progress(self):
        return self._out / self.wanted if self.wanted else 1.0
