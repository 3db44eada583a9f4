"""Looks at what tests/memcheck/run.py runs, and at what it says of it:  memcheck_test.py ROOT"""

import contextlib
import io
import os
import sys
import unittest
from unittest import mock

from tree import MadeTree

sys.path.append(os.path.join(sys.argv[1], "tests", "memcheck"))
import run


def test(name, *command, place="/b"):
    return {"name": name, "command": list(command), "properties": [{"name": "WORKING_DIRECTORY", "value": place}]}


class Memcheck(unittest.TestCase):
    def test_runs_each_program_of_its_folders_once_and_whole(self):
        tests = [test("A.one", "/b/tests/io/io_calls_test", "--gtest_filter=A.one", place="/b/tests/io"),
                 test("A.two", "/b/tests/io/io_calls_test", "--gtest_filter=A.two", place="/b/tests/io"),
                 test("B.one", "/b/tests/core/core_test"), test("not built")]
        self.assertEqual({"io_calls_test": (["/b/tests/io/io_calls_test", "--gtest_brief=1", "--gtest_filter=*"],
                                             "/b/tests/io")}, run.commands("/b", tests))

    def test_runs_some_cases_of_some_programs(self):
        tests = [test("A.one", "/b/tests/fs/fs_test"), test("A.two", "/b/tests/fs/fs_calls_test")]
        found = run.commands("/b", tests)
        self.assertEqual(["fs_test"], list(found))
        self.assertIn("*FileInfo*", found["fs_test"][0][2])

    def test_cuts_the_seeds_of_each_replay_off(self):
        tests = [test("fuzz.a", "/b/fuzz/a_replay", "--seeds", "seeds/a", "corpus/a", place="/b/fuzz"),
                 test("fuzz.replay_test", "/usr/bin/python3", "replay_test.py", "/b/fuzz/planted_replay")]
        self.assertEqual({"a_replay": (["/b/fuzz/a_replay", "--cuts", "seeds/a", "corpus/a"], "/b/fuzz")},
                         run.commands("/b", tests))

    def main(self, status, pattern=""):
        program = f"#!/bin/sh\necho said\nexit {status}\n"
        with MadeTree({"tests/io/io_test": program}) as root:
            path = os.path.join(root, "tests", "io", "io_test")
            os.chmod(path, 0o755)
            with mock.patch.object(run, "tests_of", lambda build: [test("A.one", path, place=root)]), \
                    mock.patch.object(run, "VALGRIND", []), \
                    contextlib.redirect_stdout(io.StringIO()) as out, contextlib.redirect_stderr(out):
                return run.main(root, pattern), out.getvalue()

    def test_tells_which_passed(self):
        status, output = self.main(0)
        self.assertEqual(0, status)
        self.assertRegex(output, "^io_test +passed +[0-9.]+ s\nmemcheck: 1 of 1 programs passed\n$")

    def test_shows_what_a_failure_said(self):
        status, output = self.main(99)
        self.assertEqual(1, status)
        self.assertRegex(output, "^io_test +FAILED +[0-9.]+ s\nsaid\n\nmemcheck: 0 of 1 programs passed\n$")

    def test_nothing_to_run_fails(self):
        status, output = self.main(0, "none")
        self.assertEqual((1, True), (status, output.startswith("there is nothing to run\n")))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
