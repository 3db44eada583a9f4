"""Looks at what tests/wiping/report.py makes of programs that only print:  wiping_test.py ROOT"""

import contextlib
import io
import os
import sys
import unittest

from tree import MadeTree

sys.path.append(os.path.join(sys.argv[1], "tests", "wiping"))
import report


def tests(cases, blocks, finds, status=0):
    return (f"#!/bin/sh\necho '[==========] {cases} tests from 1 test suite ran. (1 ms total)'\n"
            f"echo 'freed blocks: {blocks}, with secrets: {finds}'\nexit {status}\n")


CLEAN = {"one_test": tests(10, 200, 0), "two_test": tests(1, 30, 0), "planted_test": tests(10, 210, 4, 1),
         "wiped_keys": '#!/bin/sh\n[ "$LD_BIND_NOW" = 1 ] && echo $#\n'}
ROW = "{:5}     11           230             0               0                                   4"


class Wiping(unittest.TestCase):
    def report(self, **programs):
        """With other programs in one of the ways; None for none."""
        changed = {name: text for name, text in {**CLEAN, **programs}.items() if text is not None}
        ways = {way: changed if way == "O3" else CLEAN for way in report.WAYS}
        with MadeTree({f"{way}/{name}": text for way in ways for name, text in ways[way].items()}) as root:
            for way in ways:
                for name in ways[way]:
                    os.chmod(os.path.join(root, way, name), 0o755)
            with contextlib.redirect_stdout(io.StringIO()) as out, contextlib.redirect_stderr(out):
                status = report.main(root)
        return status, out.getvalue()

    def assertFails(self, text, **programs):
        status, output = self.report(**programs)
        self.assertEqual(1, status)
        self.assertIn("\nO3: " + text, output)
        self.assertTrue(output.endswith("\nwiping: FAILED\n"))

    def test_sums_up_each_way(self):
        status, output = self.report()
        self.assertEqual([ROW.format(way) for way in ("O0", "O2", "O3", "lto")], output.splitlines()[1:-1])
        self.assertEqual((0, "wiping: nothing is left"), (status, output.splitlines()[-1]))

    def test_a_secret_fails(self):
        self.assertFails("two_test fails:\n[", two_test=tests(1, 30, 1, 1))

    def test_a_secret_that_the_test_itself_does_not_mind_fails(self):
        self.assertFails("two_test fails:\n[", two_test=tests(1, 30, 1))

    def test_a_test_that_does_not_look_fails(self):
        self.assertFails("two_test fails:", two_test="#!/bin/sh\n")

    def test_a_test_without_cases_fails(self):
        self.assertFails("two_test runs no case", two_test=tests(0, 30, 0))

    def test_no_tests_fail(self):
        self.assertFails("there are no tests", one_test=None, two_test=None)

    def test_a_plain_allocator_that_is_not_noticed_fails(self):
        for planted in (tests(10, 210, 0), tests(10, 210, 0, 1), tests(10, 210, 4), "#!/bin/sh\nexit 1\n"):
            self.assertFails("a plain allocator is not noticed:", planted_test=planted)

    def test_keys_in_memory_fail(self):
        self.assertFails("keys left in memory: 2", wiped_keys="#!/bin/sh\necho 2\n")
        self.assertFails("keys left in memory: None", wiped_keys="#!/bin/sh\nexit 1\n")

    def test_a_plain_copy_in_memory_that_is_not_noticed_fails(self):
        self.assertFails("a plain copy in memory is not noticed", wiped_keys="#!/bin/sh\necho 0\n")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
