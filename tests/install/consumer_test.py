"""Installs the library, and builds the program of consumer/ on what is there:

consumer_test.py SOURCE BUILD CMAKE COMPILER [TEST...]
"""

import json
import os
import re
import subprocess
import sys
import unittest

SOURCE, BUILD, CMAKE, COMPILER = sys.argv[1:5]

sys.path.insert(0, os.path.join(SOURCE, "tests", "checks"))
from tree import MadeTree  # noqa: E402

CONSUMER = os.path.join(SOURCE, "tests", "install", "consumer")
SHARED_BUILD = os.path.join(BUILD, "tests", "install", "shared")
PRINTED = "{00112233-4455-6677-8899-aabbccddeeff}\nnew\n"


def run(*command, **variables):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                            env={**os.environ, **variables}, check=False)
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(command)}:\n{result.stdout}")
    return result.stdout


def install(build, prefix, *components):
    for component in components:
        run(CMAKE, "--install", build, "--prefix", prefix, "--component", component)


class Consumer(unittest.TestCase):
    def setUp(self):
        made = MadeTree({})
        self.addCleanup(made.cleanup)
        self.root = made.name
        self.prefix = self.path("prefix")
        self.program = self.path("consumer", "consumer")

    def path(self, *names):
        return os.path.join(self.root, *names)

    def configure(self, *arguments):
        return run(CMAKE, "-G", "Ninja", "-S", CONSUMER, "-B", self.path("consumer"),
                   f"-DCMAKE_CXX_COMPILER={COMPILER}", f"-DCMAKE_PREFIX_PATH={self.prefix}",
                   "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", *arguments)

    def build_by_cmake(self):
        self.configure()
        run(CMAKE, "--build", self.path("consumer"))

    def pkg_config(self, *arguments, folder="lib/pkgconfig"):
        return run("pkg-config", *arguments, "nelvo", PKG_CONFIG_PATH=self.path(self.prefix, folder)).split()

    def build_by_pkg_config(self):
        os.makedirs(self.path("consumer"))
        run(COMPILER, "-std=c++17", os.path.join(CONSUMER, "main.cpp"), "-o", self.program,
            *self.pkg_config("--cflags", "--libs"))

    def expect_a_program(self, **variables):
        log = self.path("consumer.log")
        self.assertEqual(PRINTED, run(self.program, log, **variables))
        with open(log, encoding="utf-8") as file:
            self.assertIn("Built on the installed library\n", file.read())

    def libraries(self):
        needed = run("readelf", "--dynamic", "--wide", self.program)
        return set(re.findall(r"\(NEEDED\)\s+Shared library: \[lib(\w+)", needed))

    def replaced(self, *names):
        """The functions of the C library that an installed file defines itself."""
        symbols = run("readelf", "--dyn-syms", "--wide", self.path("prefix", *names))
        return set(re.findall(r"(?m) \d+ (fsync|pread|pwrite)$", symbols))

    def test_a_project_finds_the_archive(self):
        install(BUILD, self.prefix, "dev")
        self.build_by_cmake()
        self.expect_a_program()
        self.assertEqual(set(), self.libraries() & {"boost_filesystem", "boost_thread", "nelvocommon", "uuid", "z"})
        with open(self.path("consumer", "compile_commands.json"), encoding="utf-8") as file:
            command = json.load(file)[0]["command"]
        self.assertNotRegex(command, r" -(W|f|D_)", "flags of this project")
        self.configure("-DWANTED_VERSION=0.1")
        with self.assertRaisesRegex(AssertionError, 'requested version "0.2"'):
            self.configure("-DWANTED_VERSION=0.2")

    def test_a_project_finds_a_prefix_that_was_moved(self):
        install(BUILD, self.path("first"), "dev")
        os.rename(self.path("first"), self.prefix)
        self.build_by_cmake()
        self.expect_a_program()
        found = " ".join(self.pkg_config("--cflags", "--libs"))
        self.assertIn(self.prefix, found)
        self.assertNotIn(self.path("first"), found)

    def test_a_compiler_is_told_by_pkg_config(self):
        install(BUILD, self.prefix, "dev")
        self.build_by_pkg_config()
        self.expect_a_program()

    def test_a_project_finds_the_shared_library(self):
        run(CMAKE, "-G", "Ninja", "-S", SOURCE, "-B", SHARED_BUILD, f"-DCMAKE_CXX_COMPILER={COMPILER}",
            "-DBUILD_SHARED_LIBS=ON", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=")
        run(CMAKE, "--build", SHARED_BUILD, "--target", "nelvocommon", "nelvoagentid")
        install(SHARED_BUILD, self.prefix, "dev", "library", "tool")
        self.assertEqual(["cmake", "libnelvocommon.so", "libnelvocommon.so.0.1", "libnelvocommon.so.0.1.0",
                          "pkgconfig"], sorted(os.listdir(self.path("prefix", "lib"))))
        self.assertEqual(set(), self.replaced("lib", "libnelvocommon.so"))
        self.assertEqual({"fsync", "pread", "pwrite"}, self.replaced("sbin", "nelvoagentid"))

        self.build_by_cmake()
        self.expect_a_program()
        self.assertIn("nelvocommon", self.libraries())
        os.remove(self.program)
        os.rename(self.path("consumer"), self.path("by_cmake"))

        self.build_by_pkg_config()
        self.expect_a_program(LD_LIBRARY_PATH=self.path("prefix", "lib"))
        self.assertEqual(set(), self.libraries() & {"boost_filesystem", "uuid", "z"})

    def expect_folders(self, libraries, headers, *arguments):
        """pkg-config's idea of both folders, in a build whose file is put where it would be installed."""
        build = self.path("build")
        run(CMAKE, "-G", "Ninja", "-S", SOURCE, "-B", build, f"-DCMAKE_CXX_COMPILER={COMPILER}",
            f"-DCMAKE_INSTALL_PREFIX={self.path('configured')}", *arguments)
        folder = os.path.join(self.prefix, libraries, "pkgconfig")
        os.makedirs(folder)
        os.rename(os.path.join(build, "packaging", "nelvo.pc"), os.path.join(folder, "nelvo.pc"))
        told = [os.path.normpath(self.pkg_config(f"--variable={name}", folder=folder)[0])
                for name in ("libdir", "includedir")]
        self.assertEqual([os.path.join(self.prefix, libraries), os.path.join(self.prefix, headers)], told)

    def test_pkg_config_knows_the_folders(self):
        several = "lib/x86_64-linux-gnu"
        self.expect_folders(several, "include/own", f"-DCMAKE_INSTALL_LIBDIR={several}",
                            "-DCMAKE_INSTALL_INCLUDEDIR=include/own")
        libraries, headers = self.path("libraries"), self.path("headers")
        self.expect_folders(libraries, headers, f"-DCMAKE_INSTALL_LIBDIR={libraries}",
                            f"-DCMAKE_INSTALL_INCLUDEDIR={headers}")
        self.expect_folders(self.path("others"), self.path("configured", "include"),
                            f"-DCMAKE_INSTALL_LIBDIR={self.path('others')}", "-DCMAKE_INSTALL_INCLUDEDIR=include")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[5:]])
