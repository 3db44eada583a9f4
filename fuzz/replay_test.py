"""Runs the planted target on seeds next to which there are findings:  replay_test.py PROGRAM"""

import os
import signal
import subprocess
import sys
import tempfile
import unittest

PROGRAM = os.path.abspath(sys.argv[1])


class Replay(unittest.TestCase):
    def setUp(self):
        made = tempfile.TemporaryDirectory(prefix="nelvo-replay-")
        self.addCleanup(made.cleanup)
        self.root = made.name
        os.mkdir(self.path("seeds"))

    def path(self, *names):
        return os.path.join(self.root, *names)

    def write(self, data, *names):
        with open(self.path(*names), "wb") as file:
            file.write(data)

    def run_it(self, *arguments):
        return subprocess.run([PROGRAM, *(arguments or ("--seeds", "seeds"))], cwd=self.root,
                              capture_output=True, text=True, check=False)

    def finding_near(self, seed):
        self.write(seed, "seeds", "one")
        self.assertEqual(-signal.SIGABRT, self.run_it().returncode)
        with open(self.path(os.path.basename(PROGRAM) + ".finding"), "rb") as file:
            return file.read()

    def test_a_reader_may_throw_ours_and_run_out_of_memory(self):
        self.write(b"ours", "seeds", "ours")
        self.write(b"memory", "seeds", "memory")
        self.assertEqual(0, self.run_it().returncode)
        self.assertEqual(["seeds"], os.listdir(self.root))

    def test_finds_a_foreign_exception(self):
        self.assertEqual(b"foreign", self.finding_near(b"foreign"))

    def test_tries_every_beginning(self):
        self.assertEqual(b"broken", self.finding_near(b"broken into"))

    def test_tries_every_bit(self):
        self.assertEqual(b"broken", self.finding_near(b"brojen"))

    def test_tries_four_bytes_at_once(self):
        self.assertEqual(b"zero\0\0\0\0", self.finding_near(b"zero1234"))

    def test_runs_a_file_as_it_is(self):
        self.write(b"brojen", "near")
        self.write(b"broken", "finding")
        result = self.run_it("near")
        self.assertEqual((0, "1 inputs\n"), (result.returncode, result.stdout))
        self.assertEqual(-signal.SIGABRT, self.run_it("finding").returncode)

    def test_runs_a_folder_as_it_is(self):
        self.write(b"brojen", "seeds", "near")
        self.assertEqual("1 inputs\n", self.run_it("seeds").stdout)
        self.write(b"broken", "seeds", "finding")
        self.assertEqual(-signal.SIGABRT, self.run_it("seeds").returncode)

    def test_cuts_a_folder_of_cuts_off_and_changes_nothing_else(self):
        self.write(b"brojen", "seeds", "near")
        self.assertEqual("7 inputs\n", self.run_it("--cuts", "seeds").stdout)
        self.write(b"broken into", "seeds", "longer")
        self.assertEqual(-signal.SIGABRT, self.run_it("--cuts", "seeds").returncode)

    def test_tries_the_same_each_time(self):
        self.write(b"ours", "seeds", "one")
        self.write(b"other", "seeds", "two")
        self.assertEqual(self.run_it().stdout, self.run_it().stdout)

    def test_fails_without_seeds(self):
        self.assertEqual(2, self.run_it().returncode)
        for arguments in (["missing"], ["--seeds"], ["--cuts"], ["seeds"]):
            self.assertEqual(2, self.run_it(*arguments).returncode)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
