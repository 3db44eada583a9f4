"""Shows which programs of tests a mutant is shown."""

import json
import os
import subprocess
import sys
import unittest
import unittest.mock

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../checks"))

import programs
from programs import Programs, Step
from tree import MadeTree

BUILD = """\
build tests/core/core_test: CXX_EXECUTABLE_LINKER__core_test_Debug a.o | libx.a || libx.a tests/support/objects
build tests/run/run_test: CXX_EXECUTABLE_LINKER__run_test_Debug b.o | libx.a || libx.a tool/nelvoagentid
build tool/nelvoagentid: CXX_EXECUTABLE_LINKER__nelvoagentid_Debug c.o
build libx.a: CXX_STATIC_LIBRARY_LINKER__x_Debug d.o
"""
TESTS = {
    "tests/core/guid_test.cpp": "TEST(Guid, Parses)\n{\n}\nTEST_F(GuidText, IsLong)\n{\n}\n",
    "tests/core/guid_failure_test.cpp": "TYPED_TEST(GuidFailure, IsTold)\n{\n}\n",
    "tests/core/date_test.cpp": "TEST(Date, IsEmpty)\n{\n}\n",
    "tests/run/main_test.cpp": "TEST(Main, Runs)\n{\n}\n",
    "tests/io/pool_test.cpp": "TEST_P(Pool, Opens)\n{\n}\n",
}
OBJECTS = {"tests/core/guid_test.cpp": "core_test", "tests/core/guid_failure_test.cpp": "core_failure_test",
           "tests/core/date_test.cpp": "core_test", "tests/run/main_test.cpp": "run_test",
           "tests/io/pool_test.cpp": "io_test", "tests/run/machine.cpp": "run_test", "nelvo/core/guid.cpp": "nelvo"}


class OfABuild(unittest.TestCase):
    """A made build whose programs were made of these sources."""

    HOLDS = {"tests/core/core_test": {"guid_test.cpp", "date_test.cpp", "guid.cpp", "date.cpp"},
             "tests/core/core_failure_test": {"guid_failure_test.cpp", "guid.cpp"},
             "tests/run/run_test": {"main_test.cpp", "machine.cpp", "guid.cpp"},
             "tests/io/io_test": {"pool_test.cpp", "pool.cpp"}}

    def setUp(self):
        made = MadeTree({**TESTS, "build/debug/build.ninja": BUILD})
        self.addCleanup(made.cleanup)
        objects = {path: f"{os.path.dirname(path)}/CMakeFiles/{name}.dir/{os.path.basename(path)}.o"
                   for path, name in OBJECTS.items()}
        commands = [{"file": f"{made.name}/{path}", "command": f"g++ -o {objects[path]} -c {path}"}
                    for path in OBJECTS]
        with open(made.name + "/build/debug/compile_commands.json", "w", encoding="utf-8") as file:
            json.dump(commands, file)
        self.programs = Programs(made.name, made.name + "/build/debug")
        self.programs._holds = self.HOLDS

    def test_programs_are_those_with_sources_of_tests(self):
        self.assertEqual({"tests/core/core_failure_test": ["tests/core/guid_failure_test.cpp"],
                          "tests/core/core_test": ["tests/core/date_test.cpp", "tests/core/guid_test.cpp"],
                          "tests/io/io_test": ["tests/io/pool_test.cpp"],
                          "tests/run/run_test": ["tests/run/main_test.cpp"]}, self.programs.sources)

    def test_the_suites_about_it_come_first_then_its_folder_then_all_that_has_it(self):
        self.assertEqual([Step("tests/core/core_failure_test", ("GuidFailure",)),
                          Step("tests/core/core_test", ("Guid", "GuidText")),
                          Step("tests/core/core_failure_test"), Step("tests/core/core_test"),
                          Step("tests/run/run_test")],
                         self.programs.steps("nelvo/core/guid.cpp", ["nelvo/core/guid.cpp"]))

    def test_a_header_is_in_all_that_is_compiled_with_it(self):
        steps = self.programs.steps("nelvo/posix/a.h", ["nelvo/io/pool.cpp", "tests/run/machine.cpp"])
        self.assertEqual([Step("tests/io/io_test"), Step("tests/run/run_test")], steps)

    def test_a_suite_that_has_to_be_alone_is(self):
        with unittest.mock.patch.dict(programs.ALONE, {"Guid": "", "Main": ""}):
            self.assertEqual([Step("tests/core/core_failure_test", ("GuidFailure",)),
                              Step("tests/core/core_test", ("GuidText",)), Step("tests/core/core_test", ("Guid",)),
                              Step("tests/core/core_failure_test"), Step("tests/core/core_test", (), ("Guid",)),
                              Step("tests/core/core_test", ("Guid",)), Step("tests/run/run_test", (), ("Main",)),
                              Step("tests/run/run_test", ("Main",))],
                             self.programs.steps("nelvo/core/guid.cpp", ["nelvo/core/guid.cpp"]))

    def test_of_those_that_have_it_the_quickest_comes_first(self):
        self.programs.seconds = {"tests/core/core_test": 2, "tests/core/core_failure_test": 3, "tests/run/run_test": 1}
        steps = self.programs.steps("tool/guid.cpp", ["tool/guid.cpp"])
        self.assertEqual(["tests/run/run_test", "tests/core/core_test", "tests/core/core_failure_test"],
                         [step.program for step in steps])

    def test_what_a_program_starts_counts_as_its_own(self):
        self.assertEqual({"tests/core/core_test": [], "tests/run/run_test": ["tool/nelvoagentid"],
                          "tool/nelvoagentid": []}, programs.started_by(BUILD))


class Small(unittest.TestCase):
    def test_folders_of_tests_mirror_those_of_the_product(self):
        self.assertEqual(["tests/core/util", "tests/tool"],
                         [programs.test_folder(path) for path in ("nelvo/core/util/hex.cpp", "tool/main.cpp")])

    def test_a_mirror_stands_in_the_same_folder_and_has_the_name_in_front(self):
        for test, is_mirror in (("tests/io/pool_test.cpp", True), ("tests/io/pool_calls_test.cpp", True),
                                ("tests/io/pools_test.cpp", False), ("tests/fs/pool_test.cpp", False)):
            self.assertEqual(is_mirror, programs.mirrors("nelvo/io/pool.h", test), test)

    def test_a_filter_takes_suites_with_types_and_values_too(self):
        self.assertEqual("A.*:*/A.*:A/*:B.*:*/B.*:B/*", Step("p", ("A", "B")).filter())
        self.assertEqual("*", Step("p").filter())
        self.assertEqual("*-A.*:B.*", Step("p", (), ("A", "B")).filter())

    def test_sources_of_a_program_are_found_in_it(self):
        with MadeTree({"some_name.cpp": "int main() {}\n"}) as root:
            subprocess.run(["g++", "-o", "p", "some_name.cpp"], cwd=root, check=True)
            known = Programs.__new__(Programs)
            known.sources, known._started, known._build, known._holds = {"p": []}, {}, root, {}
            known.look()
            self.assertIn("some_name.cpp", known._holds["p"])


if __name__ == "__main__":
    unittest.main(argv=["programs_test"])
