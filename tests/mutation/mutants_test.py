"""Shows which mutants a tree has, which are chosen, and that the list of equivalent ones fits the tree:
mutants_test.py ROOT
"""

import collections
import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../checks"))

import mutants
import operators
from mutants import Equivalents, Queue, Tree
from tree import MadeTree

ROOT = sys.argv[1]
SOURCE = "bool F(int a)\n{\n    return a == 1;\n}\n"


def made(text, path="nelvo/core/a.cpp"):
    return mutants.mutants_of(path, text)


class OfAFile(unittest.TestCase):
    def test_each_has_its_lines_before_and_after(self):
        found = [(mutant.line, mutant.kind, mutant.old.strip(), mutant.new.strip()) for mutant in made(SOURCE)]
        self.assertEqual([(3, "comparison", "return a == 1;", "return a != 1;"),
                          (3, "constant", "return a == 1;", "return a == 0;"),
                          (3, "constant", "return a == 1;", "return a == 2;")], found)

    def test_a_change_over_lines_has_all_of_them(self):
        mutant = next(each for each in made("void F()\n{\n    if (a &&\n        b)\n        return;\n}\n"))
        self.assertEqual(("    if (a &&\n        b)", "    if (false)"), (mutant.old, mutant.new))

    def test_ids_do_not_depend_on_where_the_lines_stand(self):
        moved = made("// More.\n\n" + SOURCE.replace("    return", "  return"))
        self.assertEqual([mutant.id for mutant in made(SOURCE)], [mutant.id for mutant in moved])
        self.assertEqual(5, moved[0].line)

    def test_equal_lines_have_ids_of_their_own(self):
        found = made(SOURCE + SOURCE.replace("F", "G"))
        self.assertEqual(len(found), len({mutant.id for mutant in found}))
        other = made(SOURCE, "nelvo/core/b.cpp")
        self.assertFalse({mutant.id for mutant in found} & {mutant.id for mutant in other})

    def test_what_gives_the_same_text_is_one(self):
        found = [mutant.new.strip() for mutant in made("int F()\n{\n    return true ? 1 : 0;\n}\n")]
        self.assertEqual(len(found), len(set(found)))


class OfATree(unittest.TestCase):
    def test_headers_are_left_out_when_too_much_is_behind_them(self):
        sources = {f"tests/core/t{number}_test.cpp": '#include "nelvo/core/b.h"\n'
                   for number in range(mutants.MOST_DEPENDANTS)}
        files = {"nelvo/core/a.h": "inline " + SOURCE, "nelvo/core/b.h": '#include "nelvo/core/a.h"\n', **sources}
        with MadeTree(files) as root:
            tree = Tree(root)
            self.assertEqual(sorted(sources), tree.compiled_with("nelvo/core/a.h"))
            self.assertEqual(3, len(tree.mutants("nelvo/core")))
        with MadeTree({**files, "nelvo/core/a.cpp": '#include "nelvo/core/a.h"\n'}) as root:
            self.assertEqual([], Tree(root).mutants("nelvo/core"))

    def test_folders_do_not_mix(self):
        with MadeTree({"nelvo/io/a.cpp": SOURCE, "nelvo/io/b/c.cpp": SOURCE, "nelvo/iou/d.cpp": SOURCE}) as root:
            self.assertEqual(["nelvo/io/a.cpp", "nelvo/io/b/c.cpp"],
                             sorted({mutant.path for mutant in Tree(root).mutants("nelvo/io")}))

    def test_each_source_of_the_product_can_be_read(self):
        tree = Tree(ROOT)
        for folder in mutants.FOLDERS:
            kinds = collections.Counter(mutant.kind for mutant in tree.mutants(folder))
            self.assertGreaterEqual(kinds.total(), mutants.LEAST, folder)

    def test_each_folder_of_the_product_is_known(self):
        folders = {path if path.startswith("nelvo") else "tool" for path in
                   ("/".join(path.split("/")[:2]) for path in Tree(ROOT).sources) if not path.startswith("tests")}
        self.assertEqual(set(mutants.FOLDERS), folders)


class Choice(unittest.TestCase):
    def setUp(self):
        self.mutants = made("bool F(int a)\n{\n    f();\n    return a == 1 && a != 2 ? g(\"a\") : 3;\n}\n" * 3)

    def test_a_seed_chooses_the_same_again(self):
        self.assertEqual(mutants.in_turn(self.mutants, "1"), mutants.in_turn(self.mutants, "1"))
        self.assertNotEqual(mutants.in_turn(self.mutants, "1"), mutants.in_turn(self.mutants, "2"))

    def test_has_all_of_them_one_of_each_kind_at_a_time(self):
        ordered = mutants.in_turn(self.mutants, "1")
        self.assertEqual(sorted(mutant.id for mutant in self.mutants), sorted(mutant.id for mutant in ordered))
        self.assertEqual(list(operators.KINDS) * 2, [mutant.kind for mutant in ordered][:10])

    def test_shares_are_in_proportion(self):
        self.assertEqual({"a": 100, "b": 300}, mutants.shares({"a": 1000, "b": 3000}, 400))

    def test_a_small_folder_has_some_all_the_same(self):
        shares = mutants.shares({"a": 20, "b": 5000, "c": 3}, 100)
        self.assertEqual((mutants.LEAST, 100, 3), (shares["a"], shares["b"], shares["c"]))

    def test_shares_are_no_less_than_the_number(self):
        self.assertGreaterEqual(sum(mutants.shares({"a": 333, "b": 333, "c": 334}, 400).values()), 400)


class Known(unittest.TestCase):
    def entry(self, **other):
        return {"file": "nelvo/core/a.cpp", "line": "return a == 1;", "change": "return  a == 2;", "reason": "why",
                **other}

    def test_an_equivalent_mutant_is_known_by_its_lines(self):
        known = Equivalents([self.entry()])
        self.assertEqual([False, False, True], [mutant in known for mutant in made(SOURCE)])
        self.assertEqual([False, False, True], [mutant in known for mutant in made("\n" + SOURCE)])

    def test_another_file_line_or_change_is_not_known(self):
        for other in ({"file": "nelvo/core/b.cpp"}, {"line": "return b == 1;"}, {"change": "return a == 3;"}):
            known = Equivalents([self.entry(**other)])
            self.assertFalse(any(mutant in known for mutant in made(SOURCE)))
            self.assertEqual(1, len(known.unknown(made(SOURCE))))

    def test_none_is_named_twice(self):
        with self.assertRaises(ValueError):
            Equivalents([self.entry(), self.entry(reason="another")])

    def test_the_list_fits_the_tree(self):
        tree = Tree(ROOT)
        known = Equivalents.load(os.path.join(ROOT, "tests/mutation/equivalent.json"))
        self.assertEqual([], known.unknown(mutant for folder in mutants.FOLDERS for mutant in tree.mutants(folder)))
        self.assertEqual([], [key for key, reason in known.reasons.items() if len(reason) < 20])


class InTurn(unittest.TestCase):
    def queue(self, wanted, *entries):
        return Queue(made(SOURCE), Equivalents(list(entries)), wanted)

    def test_hands_out_as_many_as_are_wanted(self):
        queue = self.queue(2)
        self.assertEqual(["a != 1", "a == 0"], [queue.next().new[11:17] for _ in range(2)])
        self.assertEqual((None, 1.0), (queue.next(), queue.progress()))

    def test_another_takes_the_place_of_one_that_is_of_no_use(self):
        queue = self.queue(1)
        queue.next()
        self.assertIsNone(queue.next())
        queue.was_of_no_use()
        self.assertEqual("a == 0", queue.next().new[11:17])

    def test_passes_over_equivalent_ones(self):
        queue = self.queue(1, {"file": "nelvo/core/a.cpp", "line": "return a == 1;", "change": "return a != 1;",
                               "reason": ""})
        self.assertEqual("a == 0", queue.next().new[11:17])
        self.assertEqual(1, queue.equivalent)

    def test_wants_no_more_than_there_are(self):
        queue = self.queue(9)
        while queue.next():
            pass
        self.assertEqual((3, 1.0), (queue.wanted, queue.progress()))
        queue.was_of_no_use()
        self.assertIsNone(queue.next())
        self.assertEqual(2, queue.wanted)


if __name__ == "__main__":
    unittest.main(argv=["mutants_test"])
