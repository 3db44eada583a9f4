import unittest

import words
from tree import MadeTree


class Words(unittest.TestCase):
    def faults(self, contents):
        with MadeTree(contents) as root:
            return words.check(root)

    def test_a_tree_in_order_has_no_faults(self):
        self.assertEqual([], self.faults({"a.cpp": "// Specific parts: 2.5 of 3 issues.\n",
                                          "b.bin": "\udcff\n"}))

    def test_each_word_is_a_fault(self):
        for word in ("TO" + "DO", "FIX" + "ME", "GTEST_" + "SKIP", "DISABLED" + "_", "Part" + " 2.1",
                     "speci" + "fication", "Speci" + "fication", "house" + " plan", "House" + ".md",
                     "sp" + "ec.md", "issue" + " 3", "Issue" + " #3"):
            self.assertEqual([f"nelvo/a.h:2: {word}"], self.faults({"nelvo/a.h": f"\n// see {word}\n"}))

    def test_a_word_in_a_path_is_a_fault(self):
        self.assertEqual(["docs/house" + ".md: its name"], self.faults({"docs/house" + ".md": ""}))

    def test_what_is_built_is_not_read(self):
        self.assertEqual([], self.faults({"build/a.h": "FIX" + "ME", ".git/b": "FIX" + "ME"}))


if __name__ == "__main__":
    unittest.main()
