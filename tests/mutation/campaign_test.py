"""Shows how a campaign hands out mutants, keeps what became of them, and judges."""

import contextlib
import io
import json
import os
import pathlib
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../checks"))

import mutants
import mutate
from build import CAUGHT, NOT_COMPILED, SURVIVED
from mutants import Equivalents, Queue, Tree
from mutate import Campaign, Result
from tree import MadeTree

SOURCE = "bool F(int a)\n{\n    return a == 5;\n}\n"
FILES = {"nelvo/core/a.cpp": SOURCE, "nelvo/io/b.cpp": SOURCE + SOURCE.replace("F", "G"),
         "tool/c.cpp": "void F()\n{\n    if (f() &&\n        g())\n        h();\n}\n"}


class MadeBuild:
    """Has a verdict on each mutant by what it makes of a line."""

    def __init__(self, verdicts):
        self.verdicts = verdicts
        self.tried = []

    def try_mutant(self, mutant, compiled):
        self.tried.append(mutant)
        verdict = next((verdict for text, verdict in self.verdicts.items() if text in mutant.new), CAUGHT)
        return verdict, "A.B" if verdict == CAUGHT else ""


class OfATree(unittest.TestCase):
    def setUp(self):
        made = MadeTree(FILES)
        self.addCleanup(made.cleanup)
        self.root = made.name
        self.tree = Tree(self.root)

    def campaign(self, wanted, equivalents=(), known=None, **verdicts):
        self.build = MadeBuild({text.replace("_", " "): verdict for text, verdict in verdicts.items()})
        queues = {folder: Queue(self.tree.mutants(folder), Equivalents(list(equivalents)), count)
                  for folder, count in wanted.items()}
        campaign = Campaign(self.tree, queues, mutate.tell(self.root))
        campaign.known = known or {}
        with contextlib.redirect_stdout(io.StringIO()) as out:
            mutate.run_campaign(campaign, [self.build])
        self.out = out.getvalue().splitlines()
        return campaign

    def report(self, campaign):
        with contextlib.redirect_stdout(io.StringIO()) as out:
            good = mutate.report(campaign)
        return good, out.getvalue().splitlines()

    def test_the_folder_that_is_furthest_behind_is_next(self):
        self.campaign({"nelvo/core": 2, "nelvo/io": 4})
        self.assertEqual(["nelvo/core", "nelvo/io", "nelvo/io", "nelvo/core", "nelvo/io", "nelvo/io"],
                         [os.path.dirname(mutant.path) for mutant in self.build.tried])

    def test_another_is_taken_for_one_that_does_not_compile(self):
        campaign = self.campaign({"nelvo/core": 2}, **{"a_!=_5": NOT_COMPILED})
        self.assertEqual([NOT_COMPILED, CAUGHT, CAUGHT], [result.verdict for result in campaign.results])
        self.assertEqual((2, 2), campaign.progress())

    def test_each_verdict_is_told_and_kept(self):
        campaign = self.campaign({"nelvo/core": 3}, **{"a_==_4": SURVIVED})
        ids = [result.mutant.id for result in campaign.results]
        self.assertEqual([f"[1/3] {ids[0]} nelvo/core/a.cpp:3 comparison: caught by A.B (0.0 s)",
                          f"[2/3] {ids[1]} nelvo/core/a.cpp:3 constant: survived (0.0 s)",
                          "    -     return a == 5;", "    +     return a == 4;"], self.out[:4])
        stored = json.loads(pathlib.Path(self.root, mutate.RESULTS).read_text(encoding="utf-8"))
        self.assertEqual([(ids[0], CAUGHT), (ids[1], SURVIVED), (ids[2], CAUGHT)],
                         [(each["id"], each["verdict"]) for each in stored])

    def test_what_was_caught_before_needs_no_second_trial(self):
        self.assertEqual({}, mutate.load_known(self.root))
        self.campaign({"nelvo/core": 3}, **{"a_==_4": SURVIVED, "a_!=_5": NOT_COMPILED})
        again = self.campaign({"nelvo/core": 3}, known=mutate.load_known(self.root))
        self.assertEqual(["return a == 4;"], [mutant.new.strip() for mutant in self.build.tried])
        self.assertEqual([NOT_COMPILED, CAUGHT, CAUGHT], [result.verdict for result in again.results])

    def test_the_report_has_a_row_for_each_folder(self):
        entry = {"file": "nelvo/io/b.cpp", "line": "return a == 5;", "change": "return a != 5;", "reason": ""}
        _, lines = self.report(self.campaign({"nelvo/core": 2, "nelvo/io": 4}, [entry], **{"a_!=_5": NOT_COMPILED}))
        rows = [line.split() for line in lines[-5:-1]]
        self.assertEqual([["mutants", "caught", "share", "equivalent", "not", "compiled", "s", "each"],
                          ["nelvo/core", "2", "2", "100.0%", "0", "1", "0.0"],
                          ["nelvo/io", "4", "4", "100.0%", "2", "0", "0.0"],
                          ["total", "6", "6", "100.0%", "2", "1", "0.0"]], rows)

    def test_the_report_has_each_survivor_with_the_way_to_try_it_alone(self):
        campaign = self.campaign({"nelvo/core": 3, "tool": 1}, **{"if_(false)": SURVIVED})
        good, lines = self.report(campaign)
        mutant = next(each for each in self.tree.mutants("tool") if "(false)" in each.new)
        self.assertEqual(["", "tool/c.cpp:3: branch",
                          "    -     if (f() &&", "    -         g())", "    +     if (false)",
                          f"    ./script/mutate --only {mutant.id}", ""], lines[:7])
        self.assertEqual((False, "mutation: FAILED, less than 95 % are caught"), (good, lines[-1]))

    def test_a_list_shows_what_would_be_tried(self):
        queues = mutate.queues_of(self.tree, ["nelvo/core"], 400, 1, Equivalents([]))
        with contextlib.redirect_stdout(io.StringIO()) as out:
            mutate.show_list(queues)
        self.assertEqual(sorted(f"{mutant.id} nelvo/core/a.cpp:3: {mutant.kind}"
                                for mutant in self.tree.mutants("nelvo/core")),
                         sorted(line for line in out.getvalue().splitlines() if "nelvo" in line))

    def test_a_folder_alone_has_the_mutants_that_it_has_among_all(self):
        def chosen(folders):
            queue = mutate.queues_of(self.tree, folders, 1, 3, Equivalents([]))["nelvo/io"]
            return [queue.next() for _ in range(queue.wanted)]
        self.assertEqual(chosen(["nelvo/io"]), chosen(list(mutants.FOLDERS)))


class Goal(unittest.TestCase):
    def results(self, caught, survived, uncompiled=0):
        mutant = mutants.mutants_of("nelvo/core/a.cpp", SOURCE)[0]
        return [Result(mutant, verdict) for verdict, count in ((CAUGHT, caught), (SURVIVED, survived),
                                                               (NOT_COMPILED, uncompiled)) for _ in range(count)]

    def test_is_met_when_it_is_reached_exactly(self):
        self.assertTrue(mutate.is_good(self.results(95, 5)))

    def test_is_missed_below(self):
        self.assertFalse(mutate.is_good(self.results(949, 51)))

    def test_what_does_not_compile_does_not_count(self):
        self.assertTrue(mutate.is_good(self.results(19, 1, 100)))
        self.assertFalse(mutate.is_good(self.results(18, 2, 100)))


class Arguments(unittest.TestCase):
    def test_of_nothing_are_400_of_all_folders(self):
        arguments = mutate.parse_arguments([])
        self.assertEqual((400, 1, 60.0, list(mutants.FOLDERS)),
                         (arguments.number, arguments.seed, arguments.time_limit, arguments.folders))

    def test_a_folder_may_have_a_slash_behind_it(self):
        self.assertEqual(["nelvo/io"], mutate.parse_arguments(["nelvo/io/"]).folders)

    def test_what_is_no_folder_of_the_product_is_refused(self):
        for words in (["tests"], ["nelvo/core/util"], ["--jobs", "0"], ["--number", "0"], ["--what"]):
            with self.assertRaises(SystemExit) as end, contextlib.redirect_stderr(io.StringIO()):
                mutate.parse_arguments(words)
            self.assertEqual(2, end.exception.code)


if __name__ == "__main__":
    unittest.main(argv=["campaign_test"])
