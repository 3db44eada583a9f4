import contextlib
import io
import json
import os
import unittest

import coverage
from tree import MadeTree

SOURCE = "bool IsMark(char symbol)\n{\n    return symbol == '.' ||\n        symbol == ',';\n}\n"
LIST = "# Readers.\n\nreader nelvo/core/a\n"


def entry(path, lines=(0, 0), branches=(0, 0), taken=()):
    """What clang tells of a file: sums, and branches as (line, column, line, column, true count, false count)."""
    return {"filename": path, "branches": [[*places, 0, 0, 4] for places in taken],
            "summary": {"lines": dict(zip(("covered", "count"), lines)),
                        "branches": dict(zip(("covered", "count"), branches))}}


def dot(true, false):
    return (3, 12, 3, 25, true, false)


def marks(true, false):
    return (3, 12, 4, 22, true, false)


class Coverage(unittest.TestCase):
    def run_check(self, *files, text=LIST, source=SOURCE):
        with MadeTree({coverage.LIST: text, "nelvo/core/a.cpp": source, "nelvo/core/b.cpp": source}) as root:
            root = os.path.realpath(root)
            files = [{**file, "filename": os.path.join(root, file["filename"])} for file in files]
            counts = os.path.join(root, "counts.json")
            with open(counts, "w", encoding="utf-8") as file:
                json.dump({"data": [{"files": files}]}, file)
            with contextlib.redirect_stdout(io.StringIO()) as out, \
                    contextlib.redirect_stderr(io.StringIO()) as err, self.assertRaises(SystemExit) as end:
                coverage.main(root, counts)
        self.table = out.getvalue()
        self.status = end.exception.code
        return err.getvalue().splitlines()

    def test_sums_are_told_for_each_folder_and_in_total(self):
        faults = self.run_check(entry("tool/t.cpp", (100, 100), (50, 50)),
                                entry("nelvo/core/a.cpp", (90, 100), (9, 10)),
                                entry("nelvo/core/b.cpp", (99, 100), (9, 10)), entry("tests/c.cpp", (0, 500), (0, 500)))
        self.assertEqual(
            ["                                           lines            branches",
             "nelvo/core                      94.50 %   of 200    90.00 %    of 20",
             "tool                           100.00 %   of 100   100.00 %    of 50",
             "total                           96.33 %   of 300    97.14 %    of 70",
             "coverage: all in order"], self.table.splitlines())
        self.assertEqual(([], 0), (faults, self.status))

    def test_a_goal_that_is_reached_exactly_is_met(self):
        self.assertEqual([], self.run_check(entry("nelvo/core/a.cpp", (95, 100), (90, 100))))

    def test_a_total_below_a_goal_is_a_fault(self):
        self.assertEqual(["lines: 94.90 % are reached, 95 % must be"],
                         self.run_check(entry("nelvo/core/a.cpp", (949, 1000), (90, 100))))
        self.assertEqual(["branches: 89.90 % are reached, 90 % must be"],
                         self.run_check(entry("nelvo/core/a.cpp", (95, 100), (899, 1000))))
        self.assertEqual(1, self.status)

    def test_a_branch_of_a_reader_that_is_never_taken_is_a_fault(self):
        self.assertEqual(["nelvo/core/a.cpp:3: never true: symbol == '.'",
                          "nelvo/core/a.cpp:3: never false: symbol == '.' || symbol == ','"],
                         self.run_check(entry("nelvo/core/a.cpp", taken=[marks(2, 0), dot(0, 7)])))
        self.assertEqual(1, self.status)

    def test_a_branch_that_one_instance_of_a_template_takes_is_taken(self):
        self.assertEqual([], self.run_check(entry("nelvo/core/a.cpp", taken=[dot(0, 1), dot(1, 0)])))

    def test_a_loop_over_a_range_is_told_whole(self):
        self.assertEqual(["nelvo/core/a.cpp:1: never false: for (char c : text)"],
                         self.run_check(entry("nelvo/core/a.cpp", taken=[(1, 15, 1, 16, 4, 0)]),
                                        source="  for (char c : text)\n"))

    def test_what_the_compiler_decides_has_no_branches(self):
        self.assertEqual([], self.run_check(entry("nelvo/core/a.cpp", taken=[(1, 15, 1, 20, 0, 0)]),
                                            source="if constexpr (kWide)\n"))

    def test_other_components_need_not_take_every_branch(self):
        self.assertEqual([], self.run_check(entry("nelvo/core/a.cpp"), entry("nelvo/core/b.cpp", taken=[dot(0, 7)])))

    def test_a_branch_with_a_reason_may_stay_untaken(self):
        reason = "never true nelvo/core/a.cpp: symbol == '.': there is no point.\n"
        self.assertEqual([], self.run_check(entry("nelvo/core/a.cpp", taken=[dot(0, 7)]), text=LIST + reason))
        self.assertEqual(["nelvo/core/a.cpp:3: never false: symbol == '.'"],
                         self.run_check(entry("nelvo/core/a.cpp", taken=[dot(0, 0)]), text=LIST + reason))

    def test_a_reason_for_another_number_of_branches_than_one_is_a_fault(self):
        reason = "never true nelvo/core/a.cpp: symbol == '.': there is no point.\n"
        second = (4, 12, 4, 25, 0, 7)
        source = SOURCE.replace("        symbol == ','", "           symbol == '.'")
        for count, taken in ((0, [dot(1, 7)]), (0, []), (2, [dot(0, 7), second])):
            self.assertEqual([f"tests/checks/coverage.txt: nelvo/core/a.cpp: symbol == '.': "
                              f"{count} branches are never true, not one"],
                             self.run_check(entry("nelvo/core/a.cpp", taken=taken), text=LIST + reason, source=source))

    def test_a_reader_without_a_source_is_a_fault(self):
        self.assertEqual(["tests/checks/coverage.txt: nelvo/core/a has no source"],
                         self.run_check(entry("nelvo/core/b.cpp")))

    def test_a_line_that_is_neither_reader_nor_branch_is_a_fault(self):
        for line in ("nelvo/core/a", "never true nelvo/core/a.cpp: symbol == '.'"):
            self.assertEqual([f"tests/checks/coverage.txt:4: neither a reader nor a branch with its reason: {line}"],
                             self.run_check(entry("nelvo/core/a.cpp"), text=LIST + line + "\n"))


if __name__ == "__main__":
    unittest.main()
