"""A copy of the tree with a build of its own, in which one mutant after the other stands."""

import contextlib
import os
import pathlib
import re
import selectors
import shutil
import signal
import subprocess
import sys
import time

from programs import Programs, Step

_CELL = pathlib.Path(__file__).with_name("cell.py")
_LEFT_BEHIND = {".git", "build", "__pycache__"}
_KEPT_OUTPUT = 1 << 20
_BUILD_LIMIT = 900.0
_FAILED = re.compile(r"^\[  FAILED  \] ([^\s,]+)", re.M)
# As quickly as it compiles and links, and with the checks of the standard library.
_OPTIONS = ("-DCMAKE_CXX_FLAGS_DEBUG=-O0 -g0 -w", "-DCMAKE_COMPILE_WARNING_AS_ERROR=OFF", "-DNELVO_EXAMPLES=OFF",
            "-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")

CAUGHT, SURVIVED, NOT_COMPILED = "caught", "survived", "does not compile"


def copy_tree(source, target):
    """Makes a folder the same as another. What is equal keeps its time, so that it is not built again."""
    source, target = pathlib.Path(source), pathlib.Path(target)
    target.mkdir(parents=True, exist_ok=True)
    wanted = [entry for entry in os.scandir(source) if entry.name not in _LEFT_BEHIND]
    for entry in set(os.listdir(target)) - {entry.name for entry in wanted} - {"build"}:
        path = target / entry
        shutil.rmtree(path) if path.is_dir() and not path.is_symlink() else path.unlink()
    for entry in wanted:
        copied = target / entry.name
        if entry.is_dir(follow_symlinks=False):
            copy_tree(entry.path, copied)
        elif not copied.is_file() or copied.read_bytes() != pathlib.Path(entry.path).read_bytes():
            shutil.copyfile(entry.path, copied)
            shutil.copymode(entry.path, copied)


def run(command, folder, limit, environment=None):
    """Runs a command with all that it starts in its group: its status, None at the limit, and its output."""
    process = subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
    output, end = bytearray(), time.monotonic() + limit
    with process, selectors.DefaultSelector() as selector:
        selector.register(process.stdout, selectors.EVENT_READ)
        while True:
            left = end - time.monotonic()
            if left <= 0 or not selector.select(left):
                break
            piece = os.read(process.stdout.fileno(), 65536)
            if not piece:
                break
            output += piece[:max(0, _KEPT_OUTPUT - len(output))]
        status = None
        with contextlib.suppress(subprocess.TimeoutExpired):
            status = process.wait(max(0.0, end - time.monotonic()))
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
    return status, output.decode(errors="replace")


class Unbuilt(Exception):
    """The tree cannot be built, or fails its tests, as it is."""


class Build:
    """The copy of one worker."""

    def __init__(self, root, folder, limit):
        self._root = pathlib.Path(root)
        self.tree = pathlib.Path(folder) / "tree"
        self.folder = self.tree / "build/debug"
        self._limit = limit
        self._environment = {**os.environ, "CCACHE_DIR": str(pathlib.Path(folder).parent / "ccache"),
                             "CCACHE_BASEDIR": str(self.tree), "CCACHE_NOHASHDIR": "1",
                             "CCACHE_DEPEND": "1", "CCACHE_SLOPPINESS": "pch_defines,time_macros"}
        self.programs = None

    def prepare(self, wanted=lambda path: True):
        """Brings the copy up to date and builds all programs of tests that are wanted by their paths. The others are
        built when a mutant needs them."""
        copy_tree(self._root, self.tree)
        status, output = self._run(["cmake", "--preset", "debug", *_OPTIONS])
        if status != 0:
            raise Unbuilt(output)
        self.programs = Programs(self.tree, self.folder)
        programs = [program for program in self.programs.sources if wanted(self.folder / program)]
        status, output = self._build(programs) if programs else (0, "")
        if status != 0:
            raise Unbuilt(output)
        self.programs.look()

    def test_unchanged(self):
        """Runs all programs once as they are: each has to pass, and the time that it takes is kept."""
        failures = []
        for program in self.programs.sources:
            begin = time.monotonic()
            for part in self.programs.parts(Step(program)):
                status, output = self._test(part)
                if status != 0:
                    failures.append(f"{output}{program} fails without a change: status {status}")
            self.programs.seconds[program] = time.monotonic() - begin
        if failures:
            raise Unbuilt("\n".join(failures))

    def try_mutant(self, mutant, compiled):
        """What becomes of a mutant, and who caught it."""
        path = self.tree / mutant.path
        text = path.read_text(encoding="utf-8")
        path.write_text(mutant.change.of(text), encoding="utf-8")
        try:
            return self._look_for_change(self.programs.steps(mutant.path, compiled))
        finally:
            path.write_text(text, encoding="utf-8")

    def _look_for_change(self, steps):
        for step in steps:
            if self._build([step.program])[0] != 0:
                return NOT_COMPILED, ""
            status, output = self._test(step)
            if status is None:
                return CAUGHT, f"{os.path.basename(step.program)}, which did not end"
            if status != 0:
                failed = _FAILED.search(output)
                return CAUGHT, failed[1] if failed else f"{os.path.basename(step.program)}, status {status}"
        return SURVIVED, ""

    def _run(self, command):
        return run(command, self.tree, _BUILD_LIMIT, self._environment)

    def _build(self, programs):
        return self._run(["ninja", "-C", str(self.folder), "-j", "1", *programs])

    def _test(self, step):
        path = self.folder / step.program
        return run([sys.executable, "-I", "-S", "-B", str(_CELL), str(path.parent), str(path), "--gtest_brief=1",
                    "--gtest_fail_fast", f"--gtest_filter={step.filter()}"], self.folder, self._limit)
