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
    def table(self, *arguments, results):
        with MadeTree({"result.json": json.dumps({"benchmarks": results})}) as root:
            with contextlib.redirect_stdout(io.StringIO()) as out:
                status = ratios.main([*arguments, os.path.join(root, "result.json")])
            return status, out.getvalue()

    def test_a_ratio_is_that_of_the_medians(self):
        self.assertEqual(
            (0, "figure   ours  other              ratio  goal\n"
                "two     10 ns  20 ns  cat /etc/x  0.500   0.5  met\n"
                "one      3 ms   2 ms  other       1.500\n"), self.table(results=SHOWN + MET))

    def test_a_missed_goal_fails_only_a_check(self):
        status, table = self.table(results=MISSED)
        self.assertEqual(0, status)
        self.assertRegex(table, r" 0\.505 +0\.5 +MISSED\n")
        self.assertEqual(1, self.table("--check", results=MET + MISSED)[0])
        self.assertEqual(0, self.table("--check", results=MET + SHOWN)[0])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
