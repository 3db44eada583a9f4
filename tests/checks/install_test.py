"""Installs into a folder and looks at what is there:  install_test.py CMAKE BUILD SOURCE"""

import os
import subprocess
import sys
import unittest

import tree
from tree import MadeTree

CMAKE, BUILD, SOURCE = sys.argv[1:4]


class Install(unittest.TestCase):
    def install(self, component):
        made = MadeTree({})
        self.addCleanup(made.cleanup)
        subprocess.run([CMAKE, "--install", BUILD, "--prefix", made.name, "--component", component], check=True,
                       capture_output=True)
        return made.name

    def expect_same(self, prefix, installed, source):
        with open(os.path.join(prefix, installed), "rb") as copy, open(os.path.join(SOURCE, source), "rb") as given:
            self.assertEqual(given.read(), copy.read(), installed)

    def test_the_tool_is_a_program_of_the_administrators(self):
        prefix = self.install("tool")
        self.assertEqual(["sbin/nelvoagentid"], tree.files(prefix, "sbin"))
        self.assertTrue(os.access(os.path.join(prefix, "sbin/nelvoagentid"), os.X_OK))

    def test_what_tells_of_the_tool_is_with_it(self):
        prefix = self.install("tool")
        documents = {f"share/doc/nelvo/{path}": path
                     for path in ["README.md", "CHANGELOG.md", "SECURITY.md", *tree.files(SOURCE, "docs")]
                     if not path.startswith("docs/reference/")}
        told = {
            "share/bash-completion/completions/nelvoagentid": "packaging/nelvoagentid.bash-completion",
            "share/doc/nelvo/examples/fleet_ids": "examples/fleet_ids",
            "share/doc/nelvo/examples/nelvoagentid-first-boot.service": "packaging/nelvoagentid-first-boot.service",
            "share/man/man8/nelvoagentid.8": "packaging/nelvoagentid.8",
            **documents}
        self.assertEqual(sorted(["sbin/nelvoagentid", *told]), tree.files(prefix))
        for installed, source in told.items():
            self.expect_same(prefix, installed, source)
        self.assertTrue(os.access(os.path.join(prefix, "share/doc/nelvo/examples/fleet_ids"), os.X_OK))

    def test_headers_are_those_of_the_tree_each_of_which_can_be_included_alone(self):
        prefix = self.install("dev")
        headers = [path for path in tree.files(SOURCE, "nelvo") if path.endswith(".h")]
        self.assertEqual([f"include/{path}" for path in headers], tree.files(prefix, "include"))
        for path in headers:
            self.expect_same(prefix, f"include/{path}", path)

    def test_examples_are_there_to_be_copied(self):
        prefix = self.install("dev")
        examples = tree.files(SOURCE, "examples")
        self.assertEqual([f"share/doc/nelvo/{path}" for path in examples], tree.files(prefix, "share"))
        for path in examples:
            self.expect_same(prefix, f"share/doc/nelvo/{path}", path)
        self.assertTrue(os.access(os.path.join(prefix, "share/doc/nelvo/examples/fleet_ids"), os.X_OK))

    def test_the_library_has_its_packages_beside_it(self):
        found = [path for path in tree.files(self.install("dev"), "lib") if "nelvoTargets-" not in path]
        self.assertEqual(["lib/cmake/nelvo/Findlibuuid.cmake", "lib/cmake/nelvo/nelvoConfig.cmake",
                          "lib/cmake/nelvo/nelvoConfigVersion.cmake", "lib/cmake/nelvo/nelvoTargets.cmake",
                          "lib/libnelvocommon.a", "lib/pkgconfig/nelvo.pc"], found)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
