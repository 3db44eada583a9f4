"""Builds made headers as HeaderChecks.cmake has them built:  headers_test.py CMAKE COMPILER"""

import os
import subprocess
import sys
import unittest

from tree import MadeTree

PROJECT = """\
cmake_minimum_required(VERSION 3.25)
project(made LANGUAGES CXX)
include(%s/HeaderChecks.cmake)
nelvo_check_headers(made_header_checks ${PROJECT_SOURCE_DIR} nelvo)
""" % os.path.dirname(os.path.abspath(__file__))

GOOD = "#pragma once\n\n#include <string>\n\nstruct good_t\n{\n    std::string m_text;\n};\n"

CMAKE, COMPILER = sys.argv[1:3]


class Headers(unittest.TestCase):
    def built(self, header):
        with MadeTree({"CMakeLists.txt": PROJECT, "nelvo/core/good.h": GOOD, "nelvo/made.h": header}) as root:
            build = os.path.join(root, "build")
            subprocess.run([CMAKE, "-G", "Ninja", "-S", root, "-B", build,
                            f"-DCMAKE_CXX_COMPILER={COMPILER}"], check=True, capture_output=True)
            result = subprocess.run([CMAKE, "--build", build], capture_output=True, text=True, check=False)
            return result.returncode == 0

    def test_headers_in_order_are_built(self):
        self.assertTrue(self.built(
            '#pragma once\n#include "nelvo/core/good.h"\nstruct made_t : good_t {};\n'))

    def test_a_header_that_does_not_include_what_it_needs_is_a_fault(self):
        self.assertFalse(self.built("#pragma once\nstruct made_t : good_t {};\n"))

    def test_a_header_without_a_guard_is_a_fault(self):
        self.assertFalse(self.built("struct made_t {};\n"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
