"""The programs of tests of a build, and which of them a mutant is shown, in which order."""

import collections
import dataclasses
import json
import os
import pathlib
import re
import subprocess

_OBJECT = re.compile(r"-o (tests/\S+)/CMakeFiles/(\w+)\.dir/\S+")
_SUITE = re.compile(r"^(?:TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\((\w+),", re.M)
_LINKED = re.compile(r"^build (\S+): CXX_EXECUTABLE_LINKER\S* .*?(?:\|\| (.*))?$", re.M)
_SOURCE_SYMBOL = re.compile(r"\bFILE\s+LOCAL\s+DEFAULT\s+ABS (\S+\.cpp)$", re.M)

# Programs that are left out.
LEFT_OUT = {
    "logging_receiver_stress_test": "has many processes rotate one log, which takes a minute where others build",
}

# Suites that need a process of their own.
ALONE = {
    "ThreadContextMemory": "no case before it may have asked for a context",
}


@dataclasses.dataclass(frozen=True)
class Step:
    """A program of tests that is built and run: those suites of it, or the whole but for some."""

    program: str
    suites: tuple = ()
    without: tuple = ()

    def filter(self):
        """As googletest wants it, with the suites that have types or values."""
        wanted = ":".join(form.format(suite) for suite in self.suites for form in ("{}.*", "*/{}.*", "{}/*")) or "*"
        return wanted + ("-" + ":".join(f"{suite}.*" for suite in self.without) if self.without else "")


def programs_of(commands, root):
    """{program: its test sources}, of what CMake says about how each file is compiled."""
    found = collections.defaultdict(list)
    for entry in commands:
        match = _OBJECT.search(entry["command"])
        path = os.path.relpath(entry["file"], root)
        if match and path.endswith("_test.cpp") and path.startswith("tests/"):
            found[f"{match[1]}/{match[2]}"].append(path)
    return {program: sorted(sources) for program, sources in sorted(found.items())
            if os.path.basename(program) not in LEFT_OUT}


def started_by(build_lines):
    """{program: the programs that it starts}, of what ninja is told."""
    lists = {match[1]: (match[2] or "").split() for match in _LINKED.finditer(build_lines)}
    return {program: [each for each in before if each in lists] for program, before in lists.items()}


def test_folder(path):
    """Where the tests of a source of the product stand."""
    folder = os.path.dirname(path)
    return "tests/" + folder.removeprefix("nelvo/")


def mirrors(path, source):
    """Whether a source of tests is about this source: tests/core/guid_failure_test.cpp is about nelvo/core/guid.h."""
    stem = os.path.splitext(os.path.basename(path))[0]
    return os.path.dirname(source) == test_folder(path) and os.path.basename(source).startswith(stem + "_")


class Programs:
    """What is known about a build once all of its programs are there."""

    def __init__(self, root, build):
        self._root, self._build = pathlib.Path(root), pathlib.Path(build)
        commands = json.loads((self._build / "compile_commands.json").read_text(encoding="utf-8"))
        self.sources = programs_of(commands, root)
        self._started = started_by((self._build / "build.ninja").read_text(encoding="utf-8"))
        self._holds = {}
        self.seconds = {}  # how long each took without a change

    def look(self):
        """Finds out of which sources each program was made."""
        for program in self.sources:
            files = [program, *self._started.get(program, ())]
            listed = subprocess.run(["readelf", "--symbols", "--wide", *files], cwd=self._build, check=True,
                                    capture_output=True, text=True, errors="replace").stdout
            self._holds[program] = set(_SOURCE_SYMBOL.findall(listed))

    def _suites(self, source):
        return _SUITE.findall((self._root / source).read_text(encoding="utf-8"))

    def parts(self, step):
        """The step, and those suites of it by themselves that have to be alone."""
        suites = [suite for source in self.sources[step.program] for suite in self._suites(source)]
        alone = tuple(suite for suite in step.suites or suites if suite in ALONE)
        rest = tuple(suite for suite in step.suites if suite not in ALONE)
        if rest or not step.suites:
            yield Step(step.program, rest, () if rest else alone)
        for suite in alone:
            yield Step(step.program, (suite,))

    def _are_about(self, path):
        for program, sources in self.sources.items():
            suites = [suite for source in sources if mirrors(path, source) for suite in self._suites(source)]
            if suites:
                yield Step(program, tuple(dict.fromkeys(suites)))

    def _others(self, compiled):
        """The programs that hold any of these sources, the quickest first."""
        names = {os.path.basename(path) for path in compiled}
        found = [program for program in self.sources if names & self._holds.get(program, names)]
        return sorted(found, key=lambda program: (self.seconds.get(program, 0), program))

    def steps(self, path, compiled):
        """Where a change to a source is looked for: in the suites about it, in all programs of its folder, and in
        all others that have anything of it. compiled: the sources that have to be compiled again."""
        near = list(self._are_about(path))
        folder = test_folder(path)
        whole = [program for program in self.sources if os.path.dirname(program) == folder]
        whole += [program for program in self._others(compiled) if program not in whole]
        return [part for step in near + [Step(program) for program in whole] for part in self.parts(step)]
