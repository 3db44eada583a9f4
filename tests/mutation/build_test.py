"""Shows how the tree is copied and commands are run, and what a mutant's verdict follows from."""

import contextlib
import os
import pathlib
import sys
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../checks"))

import build
import mutants
from build import CAUGHT, NOT_COMPILED, SURVIVED, Build, Unbuilt
from programs import Step
from tree import MadeTree

SOURCE = "bool F(int a)\n{\n    return a == 1;\n}\n"


class Copies(unittest.TestCase):
    def setUp(self):
        made = MadeTree({"from/a": "a", "from/b/c": "c", "from/build/x": "x", "from/b/.git": "x", "to/build/kept": "k"})
        self.addCleanup(made.cleanup)
        self.source, self.target = (pathlib.Path(made.name, name) for name in ("from", "to"))
        build.copy_tree(self.source, self.target)

    def files(self):
        return sorted(str(path.relative_to(self.target)) for path in self.target.rglob("*") if path.is_file())

    def test_have_all_but_what_was_built(self):
        self.assertEqual(["a", "b/c", "build/kept"], self.files())

    def test_what_is_equal_keeps_its_time(self):
        for path in ("a", "b/c"):
            os.utime(self.target / path, (7, 7))
        (self.source / "b/c").write_text("d", encoding="utf-8")
        build.copy_tree(self.source, self.target)
        self.assertEqual(7, os.stat(self.target / "a").st_mtime)
        self.assertNotEqual(7, os.stat(self.target / "b/c").st_mtime)
        self.assertEqual("d", (self.target / "b/c").read_text(encoding="utf-8"))

    def test_what_is_gone_goes(self):
        (self.source / "a").unlink()
        (self.source / "b/c").unlink()
        (self.source / "b/.git").unlink()
        (self.source / "b").rmdir()
        build.copy_tree(self.source, self.target)
        self.assertEqual(["build/kept"], self.files())
        self.assertFalse((self.target / "b").exists())

    def test_programs_stay_programs(self):
        os.chmod(self.source / "a", 0o755)
        (self.source / "a").write_text("b", encoding="utf-8")
        build.copy_tree(self.source, self.target)
        self.assertTrue(os.access(self.target / "a", os.X_OK))


class Runs(unittest.TestCase):
    def run_script(self, script, limit=30.0):
        return build.run(["/bin/sh", "-c", script], "/", limit)

    def test_have_a_status_and_all_output(self):
        self.assertEqual((3, "out\nerr\n"), self.run_script("echo out; echo err >&2; exit 3"))

    def test_end_at_the_limit_with_what_they_started(self):
        begin = time.monotonic()
        status, output = self.run_script("echo begun; sleep 55 & sleep 55", 0.5)
        self.assertEqual((None, "begun\n"), (status, output))
        self.assertLess(time.monotonic() - begin, 30)

    def test_that_close_their_output_end_at_the_limit_too(self):
        self.assertEqual((None, ""), self.run_script("exec >&- 2>&-; sleep 55", 0.5))

    def test_that_never_stop_talking_fill_no_memory(self):
        status, output = self.run_script("yes", 0.5)
        self.assertEqual((None, build._KEPT_OUTPUT), (status, len(output)))


class KnownSteps:
    sources = {"tests/core/a_test": [], "tests/run/run_test": []}

    def __init__(self):
        self.seconds = {}

    @staticmethod
    def parts(step):
        return [step]

    @staticmethod
    def steps(path, compiled):
        return [Step("tests/core/a_test", ("A",)), Step("tests/run/run_test")]


class MadeBuild(Build):
    """A build whose programs are scripts: what they would do is told by the text that they were built from."""

    def __init__(self, root, statuses, unbuilt=()):
        super().__init__(root, root + "/build/mutate/0", 1.0)
        self.statuses, self.unbuilt = statuses, unbuilt
        self.programs = KnownSteps()
        self.done = []
        build.copy_tree(root, self.tree)

    def source(self):
        return (self.tree / "nelvo/core/a.cpp").read_text(encoding="utf-8")

    def _build(self, programs):
        self.done.append(("build", *programs, self.source() != SOURCE))
        return (1 if programs[0] in self.unbuilt else 0), ""

    def _test(self, step):
        self.done.append(("test", step.program, step.filter()))
        status = self.statuses.get(step.program, 0)
        return status, "[ RUN      ] A.B\n[  FAILED  ] A.B (0 ms)\n" if status == 1 else ""


class Verdicts(unittest.TestCase):
    def judge(self, statuses, unbuilt=()):
        with MadeTree({"nelvo/core/a.cpp": SOURCE}) as root:
            mutant = mutants.mutants_of("nelvo/core/a.cpp", SOURCE)[0]
            self.build = MadeBuild(root, statuses, unbuilt)
            verdict = self.build.try_mutant(mutant, [mutant.path])
            self.assertEqual(SOURCE, self.build.source())
        return verdict

    def test_what_no_program_notices_has_survived(self):
        self.assertEqual((SURVIVED, ""), self.judge({}))
        self.assertEqual([("build", "tests/core/a_test", True), ("test", "tests/core/a_test", "A.*:*/A.*:A/*"),
                          ("build", "tests/run/run_test", True), ("test", "tests/run/run_test", "*")], self.build.done)

    def test_the_first_program_that_fails_has_caught_it(self):
        self.assertEqual((CAUGHT, "A.B"), self.judge({"tests/core/a_test": 1}))
        self.assertEqual(2, len(self.build.done))
        self.assertEqual((CAUGHT, "A.B"), self.judge({"tests/run/run_test": 1}))

    def test_so_has_one_that_crashes_or_does_not_end(self):
        self.assertEqual((CAUGHT, "run_test, status 139"), self.judge({"tests/run/run_test": 139}))
        self.assertEqual((CAUGHT, "run_test, which did not end"), self.judge({"tests/run/run_test": None}))

    def test_what_does_not_compile_is_no_mutant(self):
        self.assertEqual((NOT_COMPILED, ""), self.judge({}, ["tests/core/a_test"]))
        self.assertEqual((NOT_COMPILED, ""), self.judge({}, ["tests/run/run_test"]))

    def test_a_program_that_fails_without_a_change_ends_it_all(self):
        with MadeTree({"nelvo/core/a.cpp": SOURCE}) as root:
            with self.assertRaisesRegex(Unbuilt, "tests/run/run_test fails without a change: status 7"):
                MadeBuild(root, {"tests/run/run_test": 7}).test_unchanged()
            good = MadeBuild(root, {})
            good.test_unchanged()
            self.assertEqual(set(KnownSteps.sources), set(good.programs.seconds))

    def test_the_source_is_put_back_when_something_goes_wrong(self):
        with MadeTree({"nelvo/core/a.cpp": SOURCE}) as root:
            mutant = mutants.mutants_of("nelvo/core/a.cpp", SOURCE)[0]
            broken = MadeBuild(root, {})
            broken._test = None
            with contextlib.suppress(TypeError):
                broken.try_mutant(mutant, [mutant.path])
            self.assertEqual(SOURCE, broken.source())


if __name__ == "__main__":
    unittest.main(argv=["build_test"])
