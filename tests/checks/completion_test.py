"""Asks bash what the tool's completion offers:  completion_test.py ROOT"""

import os
import subprocess
import sys
import unittest

from tree import MadeTree

COMPLETION = os.path.abspath(os.path.join(sys.argv[1], "packaging/nelvoagentid.bash-completion"))

# The words of the line come as arguments; the last one is being typed.
OFFER = """
source "$1"
shift
COMP_WORDS=(nelvoagentid "$@")
COMP_CWORD=$#
_nelvoagentid
[ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\\n' "${COMPREPLY[@]}"
"""

FILES = {"x.log": "", "a b.log": "", "folder/y.log": ""}


class Completion(unittest.TestCase):
    def offered(self, *words):
        with MadeTree(FILES) as folder:
            result = subprocess.run(["bash", "-c", OFFER, "bash", COMPLETION, *words], cwd=folder, check=True,
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.assertEqual("", result.stderr)
        return sorted(result.stdout.splitlines())

    def test_offers_the_option(self):
        self.assertEqual(["--log", "-l"], self.offered(""))
        self.assertEqual(["--log", "-l"], self.offered("-"))
        self.assertEqual(["--log"], self.offered("--"))
        self.assertEqual([], self.offered("--x"))

    def test_offers_files_behind_the_option(self):
        for option in ("-l", "--log"):
            self.assertEqual(["a b.log", "folder", "x.log"], self.offered(option, ""))
            self.assertEqual(["a b.log"], self.offered(option, "a"))
            self.assertEqual(["folder/y.log"], self.offered(option, "folder/"))

    def test_offers_files_behind_the_equal_sign_of_the_long_form(self):
        self.assertEqual(["a b.log", "folder", "x.log"], self.offered("--log", "="))
        self.assertEqual(["x.log"], self.offered("--log", "=", "x"))

    def test_takes_the_equal_sign_of_the_short_form_for_a_part_of_the_name(self):
        self.assertEqual([], self.offered("-l", "="))
        self.assertEqual([], self.offered("-l", "=", "x"))

    def test_offers_files_within_the_word_of_the_short_form(self):
        self.assertEqual(["-lx.log"], self.offered("-lx"))

    def test_offers_nothing_behind_a_name(self):
        for words in (("-l", "x"), ("-lx",), ("--log", "x"), ("--log", "=", "x")):
            self.assertEqual([], self.offered(*words, ""))

    def test_serves_the_tool(self):
        result = subprocess.run(["bash", "-c", 'source "$1"; complete -p nelvoagentid', "bash", COMPLETION],
                                check=True, capture_output=True, text=True)
        self.assertEqual("complete -F _nelvoagentid nelvoagentid\n", result.stdout)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
