import os
import subprocess
import sys
import unittest

import units
from tree import MadeTree

TREE = {"packaging/a.service": "good\n", "packaging/b.service": "good\n", "packaging/c.8": "bad\n"}

# Stands in for the verifier: takes the options that it has to get, and units that are good.
VERIFIER = """\
#!/bin/sh
[ "$1 $2 $3" = "verify --man=no --recursive-errors=no" ] || { echo "what?" >&2; exit 2; }
read -r word < "$4"
[ "$word" = good ] && exit 0
[ "$word" = bad ] && echo "Unknown key" >&2
exit 1
"""


class Units(unittest.TestCase):
    def faults(self, changes):
        with MadeTree({**TREE, **changes, "bin/verifier": VERIFIER}) as root:
            verifier = os.path.join(root, "bin/verifier")
            os.chmod(verifier, 0o755)
            return units.check(root, verifier)

    def test_a_tree_in_order_has_no_faults(self):
        self.assertEqual([], self.faults({}))

    def test_what_the_verifier_says_is_a_fault(self):
        self.assertEqual(["packaging/b.service: Unknown key"], self.faults({"packaging/b.service": "bad\n"}))

    def test_a_refusal_without_a_word_is_a_fault(self):
        self.assertEqual(["packaging/a.service: refused without a word"],
                         self.faults({"packaging/a.service": "other\n"}))

    def test_it_is_told_when_there_is_no_verifier(self):
        with MadeTree(TREE) as root:
            result = subprocess.run([sys.executable, "-B", units.__file__, root], env={"PATH": "/nowhere"},
                                    capture_output=True, text=True)
        self.assertEqual((0, "units: there is no systemd-analyze here, so nobody has looked at "
                             "packaging/a.service, packaging/b.service\n"), (result.returncode, result.stdout))


if __name__ == "__main__":
    unittest.main()
