"""Shows that a command in a cell changes nothing outside, and ends with all that it started."""

import os
import subprocess
import sys
import tempfile
import unittest

CELL = os.path.join(os.path.dirname(os.path.abspath(__file__)), "cell.py")
# Root of a namespace of users is enough to see that much.
AS_ROOT = [] if os.geteuid() == 0 else ["unshare", "--user", "--map-root-user"]


def in_cell(script, folder="/"):
    return subprocess.run([*AS_ROOT, sys.executable, "-I", "-S", "-B", CELL, folder, "/bin/sh", "-c", script],
                          capture_output=True, text=True, check=False, timeout=60)


class Cell(unittest.TestCase):
    def test_passes_output_and_status_on(self):
        run = in_cell("pwd; echo told >&2; exit 7", "/usr")
        self.assertEqual((7, "/usr\n", "told\n"), (run.returncode, run.stdout, run.stderr))

    def test_tells_a_signal_as_a_shell_does(self):
        self.assertEqual(128 + 9, in_cell("kill -KILL $$").returncode)

    def test_what_there_is_cannot_be_written(self):
        with tempfile.TemporaryDirectory(dir="/var/tmp") as folder:
            run = in_cell(f"echo x >{folder}/file; mkdir {folder}/folder; rmdir {folder}")
            self.assertNotEqual(0, run.returncode)
            self.assertEqual([], os.listdir(folder))

    def test_has_folders_of_its_own_that_can_be_written(self):
        for folder in ("/tmp", "/dev/shm", "/etc"):
            name = f"{folder}/nelvo-cell-{os.getpid()}"
            self.assertEqual("x\n", in_cell(f"echo x >{name}; cat {name}").stdout)
            self.assertFalse(os.path.exists(name))

    def test_knows_the_users(self):
        self.assertEqual("root\n", in_cell("id -un").stdout)

    def test_ends_with_what_was_left_behind(self):
        mark = f"nelvo-cell-{os.getpid()}"
        in_cell(f"setsid sh -c 'sleep 50; : {mark}' >/dev/null 2>&1 &")
        found = subprocess.run(["pgrep", "--full", mark], capture_output=True, text=True, check=False)
        self.assertEqual("", found.stdout)

    def test_sees_no_process_from_outside(self):
        self.assertNotIn(str(os.getpid()), in_cell("ls /proc").stdout.split())

    def test_memory_and_files_are_limited(self):
        self.assertEqual("12582912\n16777216\n", in_cell("ulimit -v; echo $(($(ulimit -f) / 2))").stdout)

    def test_a_command_that_is_not_there_fails(self):
        run = subprocess.run([*AS_ROOT, sys.executable, "-I", "-S", "-B", CELL, "/", "/no/such"], capture_output=True,
                             text=True, check=False)
        self.assertEqual((127, "cell: [Errno 2] No such file or directory\n"), (run.returncode, run.stderr))


if __name__ == "__main__":
    unittest.main(argv=["cell_test"])
