"""Looks at what bench/ratios.py makes of made results:  ratios_test.py ROOT"""

import contextlib
import io
import json
import os
import sys
import unittest

from tree import MadeTree

sys.path.append(os.path.join(sys.argv[1], "bench"))
import ratios


def entries(index, name, *times):
    return [{"run_name": f"{name}/repeats:{len(times)}", "family_index": index, "run_type": "iteration",
             "cpu_time": time, "time_unit": "ns"} for time in times]


MEAN = {**entries(0, "two|ours|", 1000.0)[0], "run_type": "aggregate"}
MET = entries(0, "two|ours|", 10.0, 90.0, 9.0) + entries(1, "two|cat /etc/x|0.5", 20.0, 30.0, 1.0) + [MEAN]
SHOWN = entries(3, "one|other|", 2e6) + entries(2, "one|ours|", 3e6)
MISSED = entries(4, "three|ours|", 10.1) + entries(5, "three|other|0.5", 20.0)


class Ratios(unittest.TestCase):
    def run_on(self, *arguments, results):
        """Status, table, and what was written down."""
        with MadeTree({"made.json": json.dumps({"benchmarks": results})}) as root:
            written = os.path.join(root, "results.json")
            with contextlib.redirect_stdout(io.StringIO()) as out:
                status = ratios.main([*arguments, written, os.path.join(root, "made.json")])
            with open(written, encoding="utf-8") as file:
                return status, out.getvalue(), json.load(file)

    def test_a_ratio_is_that_of_the_medians(self):
        self.assertEqual(
            (0, "figure   ours  reference              ratio  goal\n"
                "two     10 ns      20 ns  cat /etc/x  0.500   0.5  met\n"
                "one      3 ms       2 ms  other       1.500\n"), self.run_on(results=SHOWN + MET)[:2])

    def test_each_row_is_written_down(self):
        self.assertEqual(
            [{"benchmark": "made", "figure": "two", "ours": 10.0, "reference": 20.0, "reference_name": "cat /etc/x",
              "ratio": 0.5, "goal": 0.5, "unit": "ns"},
             {"benchmark": "made", "figure": "one", "ours": 3e6, "reference": 2e6, "reference_name": "other",
              "ratio": 1.5, "goal": None, "unit": "ns"}], self.run_on(results=SHOWN + MET)[2])

    def test_a_missed_goal_fails_only_a_check(self):
        status, table, _ = self.run_on(results=MISSED)
        self.assertEqual(0, status)
        self.assertRegex(table, r" 0\.505 +0\.5 +MISSED\n")
        self.assertEqual(1, self.run_on("--check", results=MET + MISSED)[0])
        self.assertEqual(0, self.run_on("--check", results=MET + SHOWN)[0])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
