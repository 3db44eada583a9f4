"""Writes seeds from made lists, and looks at which lists the targets have."""

import glob
import os
import tempfile
import unittest

import seeds

FUZZ = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(FUZZ)


def names(pattern):
    """The names of the files of the tree that match, without what follows the first dot."""
    return {os.path.basename(path).split(".")[0] for path in glob.glob(os.path.join(ROOT, pattern))}


class Seeds(unittest.TestCase):
    def setUp(self):
        made = tempfile.TemporaryDirectory(prefix="nelvo-seeds-")
        self.addCleanup(made.cleanup)
        self.folder = os.path.join(made.name, "seeds")
        self.root = made.name

    def written(self, cut=False, **lists):
        paths = []
        for name, text in lists.items():
            stem, kind = name.rsplit("_", 1)
            paths.append(os.path.join(self.root, f"{stem}.{kind}"))
            with open(paths[-1], "w", encoding="utf-8") as file:
                file.write(text)
        seeds.write(self.folder, paths, cut)
        found = {}
        for name in os.listdir(self.folder):
            with open(os.path.join(self.folder, name), "rb") as file:
                found[name] = file.read()
        return found

    def test_a_text_has_a_seed_a_line(self):
        self.assertEqual({"a.txt-01": b"one two ", "a.txt-02": b"#three"},
                         self.written(a_txt="# a remark\none two \n\n\\x23three\n"))

    def test_a_text_may_tell_any_byte(self):
        self.assertEqual({"a.txt-01": b"\n\t\\x41\x00\xff"}, self.written(a_txt="\\n\\t\\\\x41\\x00\\xff\n"))

    def test_a_record_is_one_seed(self):
        self.assertEqual({"a.hex-01": b"\x01\x00\xff"},
                         self.written(a_hex="# a record\nkind: 01 00 # a remark\n\nsize: ff\n"))

    def test_a_record_may_be_cut_off_at_every_length(self):
        self.assertEqual({"a.hex-01": b"\x01\xff", "a.hex-02": b"\x01", "a.hex-03": b"", "b.txt-01": b"one"},
                         self.written(cut=True, a_hex="x: 01 ff\n", b_txt="one\n"))

    def test_lists_stand_side_by_side(self):
        self.assertEqual({"a.txt-01": b"one", "b.hex-01": b"\x01"}, self.written(a_txt="one\n", b_hex="x: 01\n"))

    def test_what_was_there_is_gone(self):
        self.written(a_txt="one\ntwo\n")
        self.assertEqual({"a.txt-01": b"three"}, self.written(a_txt="three\n"))

    def test_what_it_does_not_know_is_a_failure(self):
        for lists in ({"a_txt": "\\q\n"}, {"a_hex": "x: 0g\n"}, {"a_hex": "01 02\n"}):
            with self.assertRaises((KeyError, ValueError, IndexError)):
                self.written(**lists)


class Lists(unittest.TestCase):
    def setUp(self):
        self.targets = {name.removesuffix("_fuzz") for name in names("fuzz/*_fuzz.cpp")}
        with open(os.path.join(FUZZ, "CMakeLists.txt"), encoding="utf-8") as file:
            self.text = file.read()

    def test_each_target_is_built(self):
        self.assertEqual([], [name for name in self.targets if f"\nnelvo_add_fuzz({name}" not in self.text])

    def test_each_golden_record_is_a_seed(self):
        records = names("tests/data/*.hex")
        self.assertEqual([], [name for name in records if f" tests/data/{name}.hex" not in self.text])
        self.assertGreater(len(records), 15)

    def test_each_list_and_each_kept_input_belongs_to_a_target(self):
        self.assertEqual(set(), (names("fuzz/seeds/*") | names("fuzz/corpus/*")) - self.targets)


if __name__ == "__main__":
    unittest.main()
