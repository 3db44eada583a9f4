import unittest

import oddities
from tree import MadeTree

TABLE = """\
# Oddities

| What | Where | Test |
|---|---|---|
| The tail is doubled. | `tool/id.cpp` | `Source.DoublesItsTail` |
"""

GOOD = {
    "docs/oddities.md": TABLE,
    "tests/tool/id_test.cpp": "TEST_F(Source,\n       DoublesItsTail)\n{\n}\n",
    "tool/id.cpp": "\n// The tail is\n// doubled.\n// Kept: Source.DoublesItsTail\nvoid Read();\n",
}


class Oddities(unittest.TestCase):
    def faults(self, changes):
        with MadeTree({**GOOD, **changes}) as root:
            return oddities.check(root)

    def test_a_tree_in_order_has_no_faults(self):
        self.assertEqual([], self.faults({}))

    def test_a_marker_that_names_no_test_is_a_fault(self):
        self.assertEqual(["tool/id.cpp: there is no test Source.DoublesItsTail"],
                         self.faults({"tests/tool/id_test.cpp": "// TEST(Source, DoublesItsTail)\n"}))

    def test_a_marker_without_a_row_is_a_fault(self):
        self.assertEqual(["docs/oddities.md: no row for Source.DoublesItsTail in nelvo/id.h"],
                         self.faults({"nelvo/id.h": "    // Kept: Source.DoublesItsTail\n"}))

    def test_a_row_without_a_marker_is_a_fault(self):
        self.assertEqual(["docs/oddities.md: no marker names Source.DoublesItsTail in tool/id.cpp"],
                         self.faults({"tool/id.cpp": ""}))

    def test_two_rows_for_one_marker_are_a_fault(self):
        self.assertEqual(["docs/oddities.md: two rows for Source.DoublesItsTail in tool/id.cpp"],
                         self.faults({"docs/oddities.md": TABLE + TABLE.splitlines()[-1] + "\n"}))

    def test_a_row_that_cannot_be_read_is_a_fault(self):
        row = "| The tail is doubled. | tool/id.cpp | Source.DoublesItsTail |"
        self.assertEqual(["docs/oddities.md: not a row of what, where and test: " + row],
                         self.faults({"docs/oddities.md": TABLE + row + "\n"}))

    def test_a_marker_that_cannot_be_read_is_a_fault(self):
        for marker in ("// Kept: Source", "// Kept: Source.A, Source.B", "Read(); // Kept: Source.A",
                       "// Kept:Source.A"):
            self.assertEqual(["tool/other.cpp: not of the form '// Kept: Suite.Case': " + marker],
                             self.faults({"tool/other.cpp": marker + "\n"}))

    def test_the_rows_that_are_missing_are_made_from_the_comments(self):
        with MadeTree({**GOOD, "docs/oddities.md": ""}) as root:
            self.assertEqual(TABLE.splitlines()[-1:], oddities.missing_rows(root))


if __name__ == "__main__":
    unittest.main()
