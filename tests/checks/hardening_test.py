"""Builds small programs and looks at them:  hardening_test.py COMPILER READELF"""

import json
import os
import subprocess
import sys
import unittest

import hardening
from tree import MadeTree

SOURCE = """\
#include <cstdio>
#include <cstring>

int main(int count, char* values[])
{
    char buffer[64];
    std::strncpy(buffer, values[0], static_cast<unsigned>(count));
    return std::puts(buffer);
}
"""
FLAGS = ["-O2", "-fPIE", "-pie", "-fstack-protector-strong", "-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=2",
         "-Wl,-z,relro,-z,now,-z,noexecstack"]
SHARED_C_LIBRARY = ["-static-libstdc++", "-static-libgcc"]
SOURCE_FLAGS = "-fstack-protector-strong -D_FORTIFY_SOURCE=2"

COMPILER, READELF = sys.argv[1:3]


class Hardening(unittest.TestCase):
    def faults(self, *flags, source_flags=SOURCE_FLAGS, source="tool/main.cpp", exports=(), static=False):
        commands = [{"file": f"/root/{source}", "command": f"c++ {source_flags} -c {source}"}]
        with MadeTree({"main.cpp": SOURCE, "commands.json": json.dumps(commands)}) as root:
            program = os.path.join(root, "main")
            linking = [] if "-static-pie" in flags else SHARED_C_LIBRARY
            subprocess.run([COMPILER, os.path.join(root, "main.cpp"), "-o", program, *FLAGS, *linking, *flags],
                           check=True)
            faults = hardening.check(READELF, program, os.path.join(root, "commands.json"), "/root", *exports,
                                     static=static)
            return [fault.removeprefix(program + ": ") for fault in faults]

    def test_a_program_in_order_has_no_faults(self):
        self.assertEqual([], self.faults())

    def test_a_program_at_a_fixed_address_is_a_fault(self):
        self.assertEqual(["is not position independent"], self.faults("-no-pie"))

    def test_lazy_binding_is_a_fault(self):
        self.assertEqual(["binds lazily, so that not all relocations become read-only"],
                         self.faults("-Wl,-z,lazy"))

    def test_relocations_that_stay_writable_are_a_fault(self):
        self.assertEqual(["has no read-only relocations"], self.faults("-Wl,-z,norelro"))

    def test_an_executable_stack_is_a_fault(self):
        self.assertEqual(["has an executable stack"], self.faults("-Wl,-z,execstack"))

    def test_a_missing_stack_protector_is_a_fault(self):
        self.assertEqual(["has no stack protector"], self.faults("-fno-stack-protector"))

    def test_no_fortified_call_is_a_fault(self):
        self.assertEqual(["has no fortified call"], self.faults("-U_FORTIFY_SOURCE"))

    def test_a_search_path_for_libraries_is_a_fault(self):
        for tags in ("-Wl,--enable-new-dtags", "-Wl,--disable-new-dtags"):
            self.assertEqual(["has a search path for libraries"], self.faults("-Wl,-rpath,/opt", tags))

    def test_another_shared_library_is_a_fault(self):
        self.assertEqual(["needs libm.so.6"], self.faults("-Wl,--no-as-needed", "-lm"))

    def test_an_export_that_is_not_promised_is_a_fault(self):
        self.assertEqual(["exports main"], self.faults("-Wl,--export-dynamic-symbol=main"))
        self.assertEqual([], self.faults("-Wl,--export-dynamic-symbol=main", exports=["main"]))

    def test_a_promised_export_that_is_missing_is_a_fault(self):
        self.assertEqual(["does not export main"], self.faults(exports=["main"]))

    def test_a_program_without_a_shared_c_library_is_a_fault(self):
        self.assertIn("does not need the C library", self.faults("-static-pie"))

    def test_a_static_program_in_order_has_no_faults(self):
        self.assertEqual([], self.faults("-static-pie", static=True))

    def test_a_static_program_that_is_not_is_a_fault(self):
        self.assertEqual(["has an interpreter", "needs libc.so.6"], self.faults(static=True))

    def test_a_static_program_at_a_fixed_address_is_a_fault(self):
        self.assertIn("is not position independent", self.faults("-static", "-no-pie", static=True))

    def test_a_static_program_that_exports_is_a_fault(self):
        self.assertEqual(["exports main"],
                         self.faults("-static-pie", "-Wl,--export-dynamic-symbol=main", static=True))

    def test_a_static_program_without_protection_is_a_fault(self):
        self.assertEqual(["has no read-only relocations", "has an executable stack"],
                         self.faults("-static-pie", "-Wl,-z,norelro,-z,execstack", static=True))

    def test_a_source_that_is_compiled_without_protection_is_a_fault(self):
        faults = ["/root/tool/main.cpp: compiled without -fstack-protector-strong",
                  "/root/tool/main.cpp: compiled without -D_FORTIFY_SOURCE=2"]
        self.assertEqual(faults, self.faults(source_flags="-O2"))
        self.assertEqual(faults, self.faults(source_flags=SOURCE_FLAGS
                                             + " -fno-stack-protector -U_FORTIFY_SOURCE"))

    def test_what_is_not_shipped_may_be_compiled_otherwise(self):
        self.assertEqual([], self.faults(source_flags="-O2", source="tests/main.cpp"))

    def test_the_source_that_defines_functions_of_the_c_library_is_not_fortified(self):
        self.assertEqual([], self.faults(source_flags="-fstack-protector-strong",
                                         source="tool/libc_overrides.cpp"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
