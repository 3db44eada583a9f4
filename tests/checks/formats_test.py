import unittest

import formats
from tree import MadeTree

DATE = "A date (`date.hex`):"
FLAG = "A flag (`flag.hex`):"
HEAD = "\n\n| Offset | Bytes | Value |\n|---|---|---|\n"
FIRST = "| 0 | `01 00 00 00` | UTC |\n"
SECOND = "| 4 | `80 51 01 00` | 86400 |\n"
SIZES = "| Offset | Size | Value |\n|---|---|---|\n| 0 | 4 | a flag |\n\n"
PAGE = "# Stored forms\n\n" + SIZES + DATE + HEAD + FIRST + SECOND + "\nWords.\n\n" + FLAG + HEAD + FIRST

GOOD = {
    "docs/formats.md": PAGE,
    "tests/data/date.hex": "# a date: 2 January 1970\nis_utc:  01 00 00 00 # yes: UTC\nseconds: 80 51 01 00\n",
    "tests/data/flag.hex": "flag: 01 00 00 00\n",
}


class Formats(unittest.TestCase):
    def faults(self, changes):
        with MadeTree({**GOOD, **changes}) as root:
            return formats.check(root)

    def faults_of_page(self, old, new):
        self.assertIn(old, PAGE)
        return self.faults({"docs/formats.md": PAGE.replace(old, new)})

    def test_a_tree_in_order_has_no_faults(self):
        self.assertEqual([], self.faults({}))

    def test_a_record_that_the_page_lacks_is_a_fault(self):
        self.assertEqual(["docs/formats.md: lacks key"], self.faults({"tests/data/key.hex": "key: 11\n"}))

    def test_a_record_that_the_tests_lack_is_a_fault(self):
        self.assertEqual(["docs/formats.md: lacks date", "docs/formats.md: key is no record of tests/data"],
                         self.faults_of_page("date.hex", "key.hex"))

    def test_other_bytes_are_a_fault(self):
        expected = ["docs/formats.md: date is 01 00 00 00 81 51 01 00, and tests/data has 01 00 00 00 80 51 01 00"]
        self.assertEqual(expected, self.faults_of_page("`80 51", "`81 51"))
        self.assertEqual(["docs/formats.md: flag is 01 00 00 00, and tests/data has 01 00 00"],
                         self.faults({"tests/data/flag.hex": "flag: 01 00 00\n"}))

    def test_bytes_that_are_left_out_are_a_fault(self):
        self.assertEqual(["docs/formats.md: date is 01 00 00 00, and tests/data has 01 00 00 00 80 51 01 00"],
                         self.faults_of_page(SECOND, ""))

    def test_a_false_offset_is_a_fault(self):
        self.assertEqual(["docs/formats.md: date: offset 5 is in truth 4"], self.faults_of_page("| 4 | `", "| 5 | `"))

    def test_a_row_that_cannot_be_read_is_a_fault(self):
        row = "| 4 | `80 51 1 00` | 86400 |"
        self.assertIn("docs/formats.md: date: not a row of offset, bytes and value: " + row,
                      self.faults_of_page(SECOND, row + "\n"))

    def test_a_record_that_stands_there_twice_is_a_fault(self):
        self.assertEqual(["docs/formats.md: flag stands there twice"],
                         self.faults({"docs/formats.md": PAGE + "\n" + FLAG + HEAD + FIRST}))

    def test_a_table_without_a_name_is_a_fault(self):
        self.assertEqual(["docs/formats.md: a table without a name: " + FIRST.strip()],
                         self.faults({"docs/formats.md": PAGE + "\nA flag:" + HEAD + FIRST}))

    def test_a_name_without_a_table_is_a_fault(self):
        self.assertEqual(["docs/formats.md: no table under the name of flag"],
                         self.faults({"docs/formats.md": PAGE + "\n" + FLAG + "\n"}))


if __name__ == "__main__":
    unittest.main()
