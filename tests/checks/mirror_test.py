import unittest

import mirror
from tree import MadeTree

GOOD = {
    "nelvo/core/guid.cpp": "",
    "nelvo/core/guid.h": "",
    "nelvo/core/exc/exc_wide.cpp": "",
    "tests/CMakeLists.txt": "",
    "tests/core/CMakeLists.txt": "nelvo_add_tests(core_test\n    guid_test.cpp)\n",
    "tests/core/guid_test.cpp": "",
    "tests/run/CMakeLists.txt": "nelvo_add_tests(run_test sources_test.cpp)\n",
    "tests/run/sources_test.cpp": "",
    "tests/tool/CMakeLists.txt": "nelvo_add_tests(tool_test\n    agent_id_test.cpp)\n",
    "tests/tool/agent_id_test.cpp": "",
    "tool/agent_id.cpp": "",
    "tool/main.cpp": "",
}


class Mirror(unittest.TestCase):
    def faults(self, changes):
        with MadeTree({**GOOD, **changes}) as root:
            return mirror.check(root)

    def test_a_tree_in_order_has_no_faults(self):
        self.assertEqual([], self.faults({}))

    def test_a_component_without_a_test_is_a_fault(self):
        self.assertEqual(["tests/fs/impersonation_test.cpp: missing"],
                         self.faults({"nelvo/fs/impersonation.h": ""}))

    def test_a_test_without_a_component_is_a_fault(self):
        self.assertEqual(["tests/core/guids_test.cpp: mirrors no source"],
                         self.faults({"tests/core/CMakeLists.txt": "guid_test.cpp guids_test.cpp",
                                      "tests/core/guids_test.cpp": ""}))

    def test_a_program_of_its_own_may_stand_beside_a_test(self):
        self.assertEqual([], self.faults({
            "tests/core/CMakeLists.txt": "guid_test.cpp guid_no_random_test.cpp",
            "tests/core/guid_no_random_test.cpp": ""}))

    def test_a_test_that_is_not_compiled_is_a_fault(self):
        self.assertEqual(["tests/core/guid_test.cpp: its folder's CMakeLists.txt does not name it"],
                         self.faults({"tests/core/CMakeLists.txt": "nelvo_add_tests(t old_guid_test.cpp)"}))


if __name__ == "__main__":
    unittest.main()
