"""Installs into a folder and looks at what is there:  install_test.py CMAKE BUILD"""

import os
import subprocess
import sys
import unittest

import tree
from tree import MadeTree

CMAKE, BUILD = sys.argv[1:3]


class Install(unittest.TestCase):
    def test_the_tool_is_a_program_of_the_administrators(self):
        with MadeTree({}) as prefix:
            subprocess.run([CMAKE, "--install", BUILD, "--prefix", prefix], check=True, capture_output=True)
            self.assertEqual(["sbin/nelvoagentid"], tree.files(prefix))
            self.assertTrue(os.access(os.path.join(prefix, "sbin/nelvoagentid"), os.X_OK))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
