import os
import unittest

import scripts
from tree import MadeTree

GOOD = {
    ".ci/run": "#!/bin/sh\nset -eu\n./script/test\n",
    "script/packages.txt": "# What is needed.\ng++\nninja-build\nzlib1g-dev\n",
}


class Scripts(unittest.TestCase):
    def faults(self, changes, mode=0o755):
        with MadeTree({**GOOD, **changes}) as root:
            os.chmod(os.path.join(root, ".ci/run"), mode)
            return scripts.check(root)

    def test_a_tree_in_order_has_no_faults(self):
        self.assertEqual([], self.faults({}))

    def test_a_script_that_cannot_be_executed_is_a_fault(self):
        self.assertEqual([".ci/run: is not executable"], self.faults({}, mode=0o644))

    def test_a_script_for_another_shell_is_a_fault(self):
        self.assertEqual([".ci/run: does not begin with #!/bin/sh"],
                         self.faults({".ci/run": "#!/bin/bash\nset -eu\n"}))

    def test_a_script_that_goes_on_after_failures_is_a_fault(self):
        self.assertEqual([".ci/run: has no set -eu"], self.faults({".ci/run": "#!/bin/sh\n./script/test\n"}))

    def test_a_script_that_does_not_parse_is_a_fault(self):
        faults = self.faults({".ci/run": "#!/bin/sh\nset -eu\nif true; then\n"})
        self.assertEqual(1, len(faults))
        self.assertRegex(faults[0], r"^\.ci/run: does not parse: .*run: 4: .*end of file")

    def test_an_example_that_is_a_script_is_held_to_the_same(self):
        self.assertEqual(["examples/look: is not executable"],
                         self.faults({"examples/README.md": "", "examples/look": "#!/bin/sh\nset -eu\n"}))

    def test_packages_out_of_order_are_a_fault(self):
        for names in ("ninja-build\ng++\n", "g++\ng++\n"):
            self.assertEqual(["script/packages.txt: is not sorted, or names a package twice"],
                             self.faults({"script/packages.txt": names}))

    def test_a_line_that_is_not_one_package_is_a_fault(self):
        self.assertEqual(["script/packages.txt: not one package: 'cmake g++'",
                          "script/packages.txt: not one package: 'ninja-build # builds'"],
                         self.faults({"script/packages.txt": "cmake g++\nninja-build # builds\n"}))

    def test_an_empty_list_is_a_fault(self):
        self.assertEqual(["script/packages.txt: names no package"],
                         self.faults({"script/packages.txt": "# What is needed.\n"}))


if __name__ == "__main__":
    unittest.main()
