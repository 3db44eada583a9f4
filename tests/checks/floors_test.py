import unittest

import floors
from tree import MadeTree

FLOORS = """\
1 nelvo/core/exc/
2 nelvo/core/exc/exc_wide
2 nelvo/core/util/
0 nelvo/core/util/format
8 tool/
"""

GOOD = {
    "tests/checks/floors.txt": FLOORS,
    "nelvo/core/exc/CMakeLists.txt": "",
    "nelvo/core/exc/exc.cpp": '#include "nelvo/core/exc/exc.h"\n\n#include <string>\n',
    "nelvo/core/exc/exc.h": '#include "nelvo/core/util/format.h"\n',
    "nelvo/core/exc/exc_wide.cpp": '#include "nelvo/core/exc/exc.h"\n#include "nelvo/core/util/wide.h"\n',
    "nelvo/core/util/format.h": "#include <string>\n",
    "nelvo/core/util/wide.cpp": '#include "nelvo/core/exc/exc.h"\n#include "nelvo/core/util/wide.h"\n',
    "nelvo/core/util/wide.h": "",
    "tool/main.cpp": '#include "nelvo/core/util/wide.h"\n',
}


class Floors(unittest.TestCase):
    def faults(self, changes):
        with MadeTree({**GOOD, **changes}) as root:
            return floors.check(root)

    def test_a_tree_in_order_has_no_faults(self):
        self.assertEqual([], self.faults({}))

    def test_an_include_of_a_higher_floor_is_a_fault(self):
        self.assertEqual(
            ["nelvo/core/util/format.h (floor 0) includes nelvo/core/util/parse.h (floor 2)"],
            self.faults({"nelvo/core/util/format.h": ' #\tinclude "nelvo/core/util/parse.h"\n',
                         "nelvo/core/util/parse.h": ""}))

    def test_an_upstairs_source_folded_back_into_its_pair_is_a_fault(self):
        self.assertEqual(
            ["nelvo/core/exc/exc.cpp (floor 1) includes nelvo/core/util/wide.h (floor 2)",
             "cycle: nelvo/core/exc/exc -> nelvo/core/util/wide -> nelvo/core/exc/exc"],
            self.faults({"nelvo/core/exc/exc.cpp": GOOD["nelvo/core/exc/exc_wide.cpp"]}))

    def test_a_cycle_on_one_floor_is_a_fault(self):
        self.assertEqual(
            ["cycle: nelvo/core/util/wide -> nelvo/core/util/hex -> nelvo/core/util/wide"],
            self.faults({"nelvo/core/util/hex.h": '#include "nelvo/core/util/wide.h"\n',
                         "nelvo/core/util/wide.cpp": '#include "nelvo/core/util/hex.h"\n'}))

    def test_a_folder_without_a_line_is_a_fault(self):
        self.assertEqual(["tests/checks/floors.txt: no line for the folder nelvo/io/"],
                         self.faults({"nelvo/io/io_dev.h": ""}))

    def test_a_line_for_nothing_is_a_fault(self):
        self.assertEqual(["tests/checks/floors.txt: nelvo/io/ does not exist",
                          "tests/checks/floors.txt: nelvo/core/util/xml does not exist"],
                         self.faults({"tests/checks/floors.txt":
                                      FLOORS + "4 nelvo/io/\n0 nelvo/core/util/xml\n"}))

    def test_a_guest_of_its_folders_own_floor_is_a_fault(self):
        self.assertEqual(["tests/checks/floors.txt: "
                          "nelvo/core/util/wide is no guest, 2 is its folder's floor"],
                         self.faults({"tests/checks/floors.txt": FLOORS + "2 nelvo/core/util/wide\n"}))

    def test_any_other_line_is_a_fault(self):
        self.assertEqual(["tests/checks/floors.txt:6: not a floor and a path: '# a remark'",
                          "tests/checks/floors.txt:7: tool/ has a line already"],
                         self.faults({"tests/checks/floors.txt": FLOORS + "# a remark\n7 tool/\n"}))

    def test_an_include_that_is_not_written_from_the_root_is_a_fault(self):
        self.assertEqual(
            ['tool/main.cpp: "wide.h" is no path from the root of this tree',
             "tool/main.cpp: <nelvo/core/util/wide.h> is a file of this tree, which is included in quotes"],
            self.faults({"tool/main.cpp": '#include "wide.h"\n#include <nelvo/core/util/wide.h>\n'}))

    def test_an_include_of_a_test_is_a_fault(self):
        self.assertEqual(["tool/main.cpp: includes tests/seam.h, which stands on no floor"],
                         self.faults({"tests/seam.h": "", "tool/main.cpp": '#include "tests/seam.h"\n'}))

    def test_a_file_of_another_kind_is_a_fault(self):
        self.assertEqual(["nelvo/core/util/wide.hpp: neither a header (.h) nor a source (.cpp)"],
                         self.faults({"nelvo/core/util/wide.hpp": ""}))

    def test_an_example_includes_headers_of_the_library_alone(self):
        self.assertEqual(
            ['examples/a.cpp: "a.h" is no path from the root of this tree',
             "examples/a.cpp: includes nelvo/core/exc/exc.cpp, which is no header of the library",
             "examples/a.cpp: includes tool/a.h, which is no header of the library"],
            sorted(self.faults({"tool/a.h": "", "examples/a.cpp":
                                '#include <string>\n#include "nelvo/core/util/wide.h"\n#include "a.h"\n'
                                '#include "nelvo/core/exc/exc.cpp"\n#include "tool/a.h"\n'})))


if __name__ == "__main__":
    unittest.main()
