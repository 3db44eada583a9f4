"""Runs the commands of script/ in a made tree, where what they call only writes down that it was called.

commands_test.py ROOT
"""

import json
import os
import shutil
import subprocess
import sys
import unittest

from tree import MadeTree

ROOT = sys.argv[1]
ID = "{9fd5a6c4-2c1e-4f3a-8a70-9f0d3b6a5e21}\n"

TOOL = f"""\
echo "tool $*" >> "$CALLS"
[ "$1" != --log ] || printf '%s' "$LOGGED" >> "$2"
printf '%s' '{ID}'
exit "${{STATUS:-0}}"
"""
# Stands in for the build, which makes the tool.
CMAKE = """\
echo "cmake $*" >> "$CALLS"
echo "building"
mkdir -p build/release/tool
cp bin/tool build/release/tool/nelvoagentid
"""
APT = "apt-get -q -y -o DPkg::Lock::Timeout=300"
NOTES = """echo "${0##*/} $*" >> "$CALLS"\n"""
NOTING = "#!/bin/sh\n" + NOTES
BEGINNING = {"script/bootstrap": NOTING, "script/configure": NOTING}


class Commands(unittest.TestCase):
    """A made tree with one command, and its programs found first in bin/."""

    def make(self, command, files, programs):
        made = MadeTree({**files, **{f"bin/{name}": "#!/bin/sh\n" + text for name, text in programs.items()}})
        self.addCleanup(made.cleanup)
        self.root = made.name
        for folder in ("bin", "script"):
            os.makedirs(self.path(folder), exist_ok=True)
        for name in (command, "help"):
            shutil.copy(os.path.join(ROOT, "script", name), self.path("script"))
        for folder in ("bin", "script"):
            for name in os.listdir(self.path(folder)):
                os.chmod(self.path(folder, name), 0o755)
        return self.path("script", command)

    def path(self, *names):
        return os.path.join(self.root, *names)

    def become(self, **programs):
        """Puts other programs in the place of those that are found first."""
        for name, text in programs.items():
            with open(self.path("bin", name), "w", encoding="utf-8") as file:
                file.write("#!/bin/sh\n" + text)
            os.chmod(self.path("bin", name), 0o755)

    def only_in_bin(self, *names):
        """The search path on which the system's own programs are found by these names alone."""
        for name in names:
            os.symlink(shutil.which(name), self.path("bin", name))
        return self.path("bin")

    def run_command(self, command, *arguments, **environment):
        calls = self.path("calls")
        environment = {"PATH": self.path("bin") + ":/usr/bin:/bin", "CALLS": calls, **environment}
        result = subprocess.run([command, *arguments], capture_output=True, text=True, check=False, cwd="/",
                                env=environment)
        if not os.path.exists(calls):
            return result, []
        with open(calls, encoding="utf-8") as file:
            return result, file.read().replace(self.root, "ROOT").splitlines()


class Help(Commands):
    def test_is_the_head_of_each_command(self):
        names = [name for name in os.listdir(os.path.join(ROOT, "script")) if not name.endswith(".txt")]
        self.assertIn("test", names)
        for name in set(names) - {"help"}:
            for word in ("-h", "--help"):
                with self.subTest(name + " " + word):
                    result, calls = self.run_command(self.make(name, {}, {}), word)
                    self.assertEqual((0, [], ""), (result.returncode, calls, result.stderr))
                    self.assertIn(f"./script/{name}", result.stdout)
                    with open(self.path("script", name), encoding="utf-8") as file:
                        head, code = file.read().split("\nset -eu\n")
                    self.assertEqual(head.splitlines()[1:],
                                     ["# " + line if line else "#" for line in result.stdout.splitlines()])
                    self.assertTrue(code.startswith('"$(dirname "$0")/help" "$0" "$@" && exit\n'))

    def test_is_asked_for_by_one_word_alone(self):
        command = self.make("test", {}, {})
        for arguments in ([], ["--hel"], ["--help", "a"], ["a", "--help"]):
            result, _ = self.run_command(self.path("script", "help"), command, *arguments)
            self.assertEqual((1, ""), (result.returncode, result.stdout))


class Run(Commands):
    def setUp(self):
        self.command = self.make("run", BEGINNING, {"cmake": CMAKE, "tool": TOOL, "id": "echo 0\n"})

    def run_tool(self, *arguments, logged="", **environment):
        result, self.calls = self.run_command(self.command, *arguments, LOGGED=logged, **environment)
        return result

    def test_builds_and_prints_the_id_alone(self):
        result = self.run_tool()
        self.assertEqual(ID, result.stdout)
        self.assertEqual(["bootstrap ", "configure release",
                          "cmake --build --preset release --target nelvoagentid",
                          "tool --log ROOT/build/run/nelvoagentid.log"], self.calls)
        self.assertIn("building\n", result.stderr)
        self.assertIn("stores a new one in /etc/nelvoagentid", result.stderr)

    def test_shows_the_lines_that_this_run_added_to_the_log(self):
        self.assertTrue(self.run_tool(logged="first\n").stderr.endswith("\nfirst\n"))
        self.assertTrue(self.run_tool(logged="second\n").stderr.endswith(".\nsecond\n"))

    def test_shows_all_of_a_log_that_was_begun_anew(self):
        self.run_tool(logged="first, and longer\n")
        self.become(tool='printf "second\\n" > "$2"\n')
        self.assertTrue(self.run_tool().stderr.endswith(".\nsecond\n"))

    def test_passes_the_callers_log_on_and_adds_none(self):
        for arguments in (["-l", "x.log"], ["-lx.log"], ["--log", ""], ["--log=x.log"], ["--lo", "x.log"]):
            self.run_tool(*arguments)
            self.assertEqual("tool " + " ".join(arguments), self.calls[-1])

    def test_passes_other_arguments_on_behind_the_log(self):
        self.run_tool("--what", "a b")
        self.assertEqual("tool --log ROOT/build/run/nelvoagentid.log --what a b", self.calls[-1])

    def test_ends_with_the_tools_status(self):
        self.assertEqual(7, self.run_tool(STATUS="7").returncode)

    def test_ends_with_the_tools_status_when_the_log_cannot_be_shown(self):
        self.become(tail="exit 1\n")
        result = self.run_tool(logged="line\n")
        self.assertEqual((0, ID), (result.returncode, result.stdout))

    def test_prints_nothing_when_the_build_fails(self):
        self.become(cmake="exit 3\n")
        result = self.run_tool()
        self.assertEqual((3, "", ["bootstrap ", "configure release"]),
                         (result.returncode, result.stdout, self.calls))

    def test_says_so_when_there_is_no_way_to_become_root(self):
        self.become(id="echo 1000\n")
        result = self.run_tool(PATH=self.only_in_bin("cp", "dirname", "mkdir", "sh"))
        self.assertEqual((1, ""), (result.returncode, result.stdout))
        self.assertIn("there is no sudo to become root", result.stderr)

    def test_becomes_root_by_sudo(self):
        self.become(id="echo 1000\n", sudo=NOTES + 'exec "$@"\n')
        self.assertEqual(ID, self.run_tool("-l", "x.log").stdout)
        self.assertEqual("sudo ROOT/build/release/tool/nelvoagentid -l x.log", self.calls[-2])


class Bootstrap(Commands):
    def bootstrap(self, installed, *arguments, user=0, **programs):
        listed = "".join(f"echo 'installed {name}'\n" for name in installed)
        files = {"script/packages.txt": "# a remark\ng++\nninja-build\n", "other.txt": "libfmt-dev\n"}
        programs = {"dpkg-query": listed + "exit 1\n", "id": f"echo {user}\n", "apt-get": NOTES, "sleep": "",
                    **programs}
        command = self.make("bootstrap", files, programs)
        return self.run_command(command, *(self.path(name) for name in arguments))

    def test_is_silent_when_nothing_is_missing(self):
        result, calls = self.bootstrap(["g++", "ninja-build"])
        self.assertEqual((0, "", "", []), (result.returncode, result.stdout, result.stderr, calls))

    def test_installs_what_is_missing(self):
        result, calls = self.bootstrap(["g++"])
        self.assertEqual((0, "", "Installing ninja-build\n"),
                         (result.returncode, result.stdout, result.stderr))
        self.assertEqual([f"{APT} update", f"{APT} install --no-install-recommends ninja-build"], calls)

    def test_reads_another_list(self):
        _, calls = self.bootstrap(["g++"], "other.txt")
        self.assertRegex(calls[-1], " libfmt-dev$")

    def test_waits_for_somebody_elses_update(self):
        apt = NOTES + '[ "$(grep -c update "$CALLS")" -ge 3 ]\n'
        result, calls = self.bootstrap(["g++"], **{"apt-get": apt})
        self.assertEqual((0, 4), (result.returncode, len(calls)))

    def test_fails_when_an_installation_fails(self):
        result, calls = self.bootstrap(["g++"], **{"apt-get": NOTES + '! grep -q install "$CALLS"\n'})
        self.assertNotEqual(0, result.returncode)
        self.assertEqual(2, len(calls))

    def test_becomes_root_by_sudo(self):
        _, calls = self.bootstrap(["g++"], user=1000, sudo=NOTES + 'exec "$@"\n')
        self.assertEqual(f"sudo env DEBIAN_FRONTEND=noninteractive {APT} update", calls[0])


class Test(Commands):
    def setUp(self):
        self.command = self.make("test", BEGINNING,
                                 {"cmake": NOTES, "ctest": NOTES + 'exit "${STATUS:-0}"\n', "nproc": "echo 2\n"})

    def calls_of(self, *arguments):
        return self.run_command(self.command, *arguments)[1]

    def test_builds_and_runs_all_tests_of_the_release(self):
        result, calls = self.run_command(self.command)
        ctest = "ctest --test-dir build/release --output-on-failure --no-tests=error --parallel 2"
        self.assertEqual(["bootstrap ", "configure release", "cmake --build --preset release", ctest], calls)
        stages = "".join(f"== release: {stage} took [0-9]+ s\n" for stage in ("bootstrap", "configure", "build"))
        self.assertRegex(result.stdout, f"^{stages}== release: tests\n$")

    def test_takes_a_preset_and_a_pattern(self):
        for arguments in (["--preset", "asan", "Guid.*"], ["--preset=asan", "Guid.*"], ["Guid.*", "--preset", "asan"]):
            calls = self.calls_of(*arguments)[-4:]
            self.assertEqual(["configure asan", "cmake --build --preset asan"], calls[1:3])
            self.assertRegex(calls[3], r"^ctest --test-dir build/asan .* --tests-regex Guid\.\*$")

    def test_refuses_what_it_does_not_know(self):
        for arguments in (["--what"], ["one", "two"], ["--preset"], ["--preset", "static"], ["--preset=as"]):
            result, calls = self.run_command(self.command, *arguments)
            self.assertEqual((2, []), (result.returncode, calls))

    def test_ends_with_the_runners_status(self):
        self.assertEqual(8, self.run_command(self.command, STATUS="8")[0].returncode)

    def test_runs_nothing_when_the_build_fails(self):
        self.become(cmake=NOTES + "exit 3\n")
        result, calls = self.run_command(self.command)
        self.assertEqual((3, "cmake --build --preset release"), (result.returncode, calls[-1]))


class Configure(Commands):
    def setUp(self):
        self.command = self.make("configure", {"CMakePresets.json": "{}"},
                                 {"cmake": NOTES + "mkdir -p build/asan && touch build/asan/CMakeCache.txt\n"})
        os.utime(self.path("CMakePresets.json"), (0, 0))

    def count(self):
        return len(self.run_command(self.command, "asan")[1])

    def test_runs_cmake_once(self):
        self.assertEqual(1, self.count())
        self.assertEqual(1, self.count())

    def test_says_that_the_preset_is_missing(self):
        result, calls = self.run_command(self.command)
        self.assertEqual((2, []), (result.returncode, calls))
        self.assertIn("the name of a preset is missing", result.stderr)

    def test_runs_cmake_again_for_newer_presets(self):
        self.count()
        os.utime(self.path("build", "asan", "configured"), (1, 1))
        os.utime(self.path("CMakePresets.json"), (2, 2))
        self.assertEqual(2, self.count())

    def test_runs_cmake_again_without_its_cache(self):
        self.count()
        os.remove(self.path("build", "asan", "CMakeCache.txt"))
        self.assertEqual(2, self.count())


class Fuzz(Commands):
    def setUp(self):
        with open(os.path.join(ROOT, "fuzz", "run.py"), encoding="utf-8") as file:
            run = file.read()
        self.command = self.make(
            "fuzz", {**BEGINNING, "fuzz/run.py": run, "fuzz/a_fuzz.cpp": "",
                     "fuzz/b_c_fuzz.cpp": "", "fuzz/fuzz_target.cpp": "", "fuzz/corpus/a/kept": "",
                     "build/fuzz/fuzz/seeds/a/one": "",
                     "build/fuzz/fuzz/seeds/b_c/one": ""}, {"cmake": NOTES})
        self.become_targets(a="", b_c="")

    def become_targets(self, **targets):
        for name, text in targets.items():
            program = self.path("build", "fuzz", "fuzz", name + "_fuzz")
            with open(program, "w", encoding="utf-8") as file:
                file.write("#!/bin/sh\n" + NOTES + text)
            os.chmod(program, 0o755)

    def fuzz(self, *arguments):
        return self.run_command(self.command, *arguments, FUZZ_JOBS="1")

    def find(self, name):
        return f"touch build/fuzz/findings/{name}\nexit 77\n"

    def run_of(self, name, *kept):
        return " ".join([f"{name}_fuzz -timeout=25 -report_slow_units=25 -rss_limit_mb=1024 -print_final_stats=1",
                         f"-artifact_prefix=build/fuzz/findings/{name}- build/fuzz/corpus/{name}",
                         f"build/fuzz/fuzz/seeds/{name}", *kept])

    def test_builds_and_runs_every_target(self):
        result, calls = self.fuzz()
        self.assertEqual(["bootstrap ", "bootstrap script/packages-fuzz.txt", "configure fuzz",
                          "cmake --build --preset fuzz --target a_fuzz b_c_fuzz",
                          self.run_of("a", "fuzz/corpus/a"), self.run_of("b_c")], calls)
        self.assertEqual(0, result.returncode)
        self.assertEqual(["a", "b_c"], sorted(os.listdir(self.path("build", "fuzz", "corpus"))))

    def test_tells_what_was_done(self):
        self.become_targets(a="echo 'stat::number_of_executed_units: 12'\necho 'stat::new_units_added: 3'\n")
        rows = [line.split() for line in self.fuzz("a")[0].stdout.splitlines()]
        self.assertEqual(["a", "12", "3", "0"], [rows[-1][i] for i in (0, 1, 4, 5)])
        with open(self.path("build", "fuzz", "results.json"), encoding="utf-8") as file:
            results = json.load(file)
        self.assertEqual([("a", 12, 3, 0, [])],
                         [(result["target"], result["executions"], result["new_entries"], result["status"],
                           result["finds"]) for result in results])

    def test_takes_names_and_seconds(self):
        calls = self.fuzz("b_c", "5")[1]
        self.assertEqual(["cmake --build --preset fuzz --target b_c_fuzz", self.run_of("b_c")], calls[-2:])

    def test_asks_a_target_to_end_when_it_has_had_its_time(self):
        self.become_targets(a='trap \'echo ended >> "$CALLS"; exit 0\' USR1\nwhile :; do :; done\n')
        result, calls = self.fuzz("a", "1")
        self.assertEqual((0, "ended"), (result.returncode, calls[-1]))
        self.assertGreaterEqual(float(result.stdout.split()[-4]), 1.0)

    def test_refuses_what_is_no_target(self):
        for arguments in (["d"], ["a", "b"], ["--what"]):
            result, calls = self.fuzz(*arguments)
            others = [call for call in calls if "bootstrap" not in call]
            self.assertEqual((2, []), (result.returncode, others))

    def test_goes_on_behind_a_finding_and_fails(self):
        self.become_targets(a=self.find("a-crash-1"))
        result, calls = self.fuzz()
        self.assertEqual((1, self.run_of("b_c")), (result.returncode, calls[-1]))
        self.assertEqual("a: status 77, see build/fuzz/logs/a\n  build/fuzz/findings/a-crash-1\n",
                         result.stderr)
        self.assertEqual(["kept"], os.listdir(self.path("fuzz", "corpus", "a")))

    def test_fails_when_a_target_ends_badly_without_a_finding(self):
        self.become_targets(b_c="exit 3\n")
        result = self.fuzz()[0]
        self.assertEqual((1, "failed"), (result.returncode, result.stdout.split()[-1]))

    def test_an_old_finding_is_no_new_one(self):
        self.become_targets(a=self.find("a-crash-1"))
        self.fuzz("a")
        self.become_targets(a="")
        self.assertEqual(0, self.fuzz("a")[0].returncode)

    def test_keeps_findings_if_told_so(self):
        self.become_targets(b_c=self.find("b_c-crash-1"))
        self.assertEqual(1, self.fuzz("--keep")[0].returncode)
        self.assertEqual(["crash-1"], os.listdir(self.path("fuzz", "corpus", "b_c")))

    def test_minimises_into_what_is_kept(self):
        self.become_targets(a='for folder; do case $folder in */merged/*) touch "$folder/new"; esac; done\n')
        self.fuzz("a")
        result, calls = self.fuzz("--minimise", "a")
        self.assertEqual((0, "a_fuzz -timeout=25 -report_slow_units=25 -rss_limit_mb=1024 -use_counters=0 -merge=1 "
                             "build/fuzz/merged/a build/fuzz/corpus/a"), (result.returncode, calls[-1]))
        self.assertEqual(["kept", "new"], sorted(os.listdir(self.path("fuzz", "corpus", "a"))))


class Faults(Commands):
    def setUp(self):
        self.command = self.make("faults", BEGINNING,
                                 {"cmake": NOTES + "echo building\n", "python3": NOTES + "echo table; exit 3\n",
                                  "id": "echo 0\n"})

    CAMPAIGN = "python3 -B tests/faults/campaign.py"
    BUILD = ["bootstrap ", "configure release",
             "cmake --build --preset release --target nelvoagentid nelvo_fault_programs"]

    def test_builds_and_ends_as_the_campaign_does(self):
        result, calls = self.run_command(self.command, "--replay", "a/b c")
        self.assertEqual([*self.BUILD, self.CAMPAIGN + " --replay a/b c"], calls)
        self.assertEqual((3, "table\n", "building\n"), (result.returncode, result.stdout, result.stderr))

    def test_runs_nothing_when_the_build_fails(self):
        self.become(cmake=NOTES + "exit 1\n")
        result, calls = self.run_command(self.command)
        self.assertEqual((1, self.BUILD), (result.returncode, calls))

    def test_becomes_root_by_sudo(self):
        self.become(id="echo 1000\n", sudo='echo "sudo $*" >> "$CALLS"\n')
        self.assertEqual([*self.BUILD, f"sudo {self.CAMPAIGN} --quick"], self.run_command(self.command, "--quick")[1])


class Mutate(Commands):
    BOOTSTRAPS = ["bootstrap ", "bootstrap script/packages-mutate.txt"]
    TRIAL = "python3 -B tests/mutation/mutate.py"

    def setUp(self):
        self.command = self.make("mutate", {"script/bootstrap": NOTING},
                                 {"python3": NOTES + "echo table; exit 3\n", "id": "echo 0\n"})

    def test_ends_as_the_trial_of_the_mutants_does(self):
        result, calls = self.run_command(self.command, "--seed", "2", "nelvo/io")
        self.assertEqual([*self.BOOTSTRAPS, self.TRIAL + " --seed 2 nelvo/io"], calls)
        self.assertEqual((3, "table\n"), (result.returncode, result.stdout))

    def test_becomes_root_by_sudo(self):
        self.become(id="echo 1000\n", sudo='echo "sudo $*" >> "$CALLS"\n')
        self.assertEqual([*self.BOOTSTRAPS, f"sudo {self.TRIAL} --list"], self.run_command(self.command, "--list")[1])


class Proof(Commands):
    """A command that builds something, and runs a script of the tests over it."""

    def expect(self, command, builds, script, *arguments, given=()):
        path = self.make(command, BEGINNING, {"cmake": NOTES, "python3": NOTES + 'exit "${STATUS:-0}"\n'})
        result, calls = self.run_command(path, *given)
        self.assertEqual(["bootstrap ", *builds, f"python3 {script} " + " ".join(arguments)], calls)
        self.assertEqual(0, result.returncode)
        self.assertEqual(7, self.run_command(path, STATUS="7")[0].returncode)
        os.remove(self.path("calls"))
        self.become(cmake="exit 3\n")
        result, calls = self.run_command(path)
        self.assertEqual((3, ["bootstrap ", builds[0]]), (result.returncode, calls))

    def test_wiping(self):
        self.expect("wiping", ["configure wiping", "cmake --build --preset wiping --target wiping"],
                    "tests/wiping/report.py", "build/wiping")

    def test_valgrind(self):
        builds = ["configure release", "cmake --build --preset release --target tests/core/cnt/all tests/io/all "
                                     "tests/fs/all tests/crypto/all fuzz/all"]
        self.expect("valgrind", builds, "tests/memcheck/run.py", "build/release", "")
        self.expect("valgrind", builds, "tests/memcheck/run.py", "build/release", "io_.*", given=["io_.*"])


class Coverage(Commands):
    LLVM_COV = NOTES + '[ "$1" != export ] || echo "{}"\n'

    def setUp(self):
        built = {"programs.txt": "/build/a_test\n/build/b_test\n", "counts/old.profraw": ""}
        self.command = self.make(
            "coverage", {**BEGINNING, **{"build/coverage/" + path: text for path, text in built.items()}},
            {"cmake": NOTES, "ctest": NOTES + 'ls build/coverage/counts >> "$CALLS"\nexit "${STATUS:-0}"\n',
             "nproc": "echo 2\n", "setfacl": "", "llvm-profdata-14": NOTES, "llvm-cov-14": self.LLVM_COV,
             "python3": NOTES + 'cat "$3" >> "$CALLS"\nexit 7\n'})

    def test_builds_runs_every_test_and_ends_with_what_the_counts_say(self):
        result, calls = self.run_command(self.command)
        build = "build/coverage"
        counted = (f"-instr-profile={build}/counts.profdata {build}/tool/nelvoagentid "
                   "-object /build/a_test -object /build/b_test nelvo tool")
        self.assertEqual(
            ["bootstrap ", "bootstrap script/packages-coverage.txt", "configure coverage",
             "cmake --build --preset coverage",
             f"ctest --test-dir {build} --output-on-failure --no-tests=error --parallel 2",
             f"llvm-profdata-14 merge -o {build}/counts.profdata {build}/counts",
             f"llvm-cov-14 export -skip-functions {counted}",
             f"llvm-cov-14 show -format=html -show-branches=count -output-dir={build}/html {counted}",
             f"python3 tests/checks/coverage.py . {build}/counts.json", "{}"], calls)
        self.assertEqual(7, result.returncode)

    def test_counts_nothing_when_a_test_fails(self):
        result, calls = self.run_command(self.command, STATUS="8")
        self.assertEqual((8, "ctest"), (result.returncode, calls[-1].split()[0]))


class Lint(Commands):
    def setUp(self):
        sources = {"nelvo/a.h": "", "nelvo/a.cpp": "", "tool/b.cpp": "", "tests/c.cpp": "", "bench/d.cpp": "",
                   "fuzz/e.cpp": "", "examples/f.cpp": ""}
        others = {"packaging/f.8": "", "packaging/g.bash-completion": "", ".ci/run": NOTING, "script/list.txt": ""}
        self.command = self.make("lint", {"script/bootstrap": NOTING, **sources, **others},
                                 {"clang-format": NOTES, "clang-tidy": NOTES, "cppcheck": NOTES, "cmake": "",
                                  "codespell": NOTES, "mandoc": NOTES, "nproc": "echo 1\n", "shellcheck": NOTES})

    def lint(self, *arguments):
        result, calls = self.run_command(self.command, *arguments)
        self.status = result.returncode
        words = [call.split() for call in calls]
        self.others = {name: [call[1:] for call in words if call[0] == name]
                       for name in ("codespell", "mandoc", "shellcheck")}
        return [{word for call in words if call[0] == name for word in call if word.endswith((".h", ".cpp"))}
                for name in ("clang-format", "cppcheck", "clang-tidy")]

    def test_looks_at_every_file(self):
        sources = {"nelvo/a.cpp", "tool/b.cpp", "tests/c.cpp", "bench/d.cpp", "fuzz/e.cpp", "examples/f.cpp"}
        self.assertEqual([sources | {"nelvo/a.h"}, sources | {"nelvo/a.h"}, sources], self.lint())
        self.assertEqual((0, ["-T lint -W warning packaging/f.8".split()]), (self.status, self.others["mandoc"]))
        self.assertEqual([[".ci/run"], ["packaging/g.bash-completion"], ["script/bootstrap"], ["script/help"],
                          ["script/lint"]],
                         sorted(self.others["shellcheck"]))
        self.assertEqual(["."], [call[-1] for call in self.others["codespell"]])

    def test_looks_at_the_files_that_it_is_given(self):
        given = {"nelvo/a.h", "tool/b.cpp"}
        self.assertEqual([given, given, {"tool/b.cpp"}], self.lint(*sorted(given)))
        self.assertEqual(([], []), (self.others["mandoc"], self.others["shellcheck"]))
        self.assertEqual([sorted(given)], [call[-2:] for call in self.others["codespell"]])

    def test_takes_each_file_for_what_it_is(self):
        given = [".ci/run", "packaging/f.8", "packaging/g.bash-completion", "script/list.txt"]
        self.assertEqual([set(), set(), set()], self.lint(*given))
        self.assertEqual((0, ["-T lint -W warning packaging/f.8".split()]), (self.status, self.others["mandoc"]))
        self.assertEqual([[".ci/run"], ["packaging/g.bash-completion"]], self.others["shellcheck"])
        self.assertEqual([given], [call[-4:] for call in self.others["codespell"]])

    def test_says_that_a_file_is_not_there(self):
        result, calls = self.run_command(self.command, "tool/b.cpp", "b.cpp")
        self.assertEqual((2, [], f"There is no file b.cpp in {self.root}.\n"), (result.returncode, calls, result.stderr))

    def test_fails_when_a_linter_does(self):
        for name in ("clang-format", "cppcheck", "clang-tidy", "codespell", "mandoc", "shellcheck"):
            self.become(**{name: "exit 1\n"})
            self.lint()
            self.assertNotEqual(0, self.status)
            self.become(**{name: NOTES})


class Package(Commands):
    CPACK = NOTES + """mkdir -p build/packages/_CPack_Packages
echo "${PACKED:-$SOURCE_DATE_EPOCH}" > build/packages/nelvoagentid_1_amd64.deb
"""
    BUILD = ["bootstrap ", "bootstrap script/packages-package.txt", "cmake --preset package",
             "cmake --build --preset package",
             "cpack --config build/package/CPackConfig.cmake -B build/packages"]

    def setUp(self):
        self.command = self.make(
            "package", {"script/bootstrap": NOTING, "build/packages/old.deb": "", "tests/install/bare_system": NOTING},
            {"cmake": NOTES, "id": "echo 0\n", "cpack": self.CPACK, "git": "echo 7\n", "dpkg-deb": NOTES,
             "lintian": NOTES + 'exit "${STATUS:-0}"\n', "python3": NOTES + "exit 7\n"})

    def test_leaves_the_packages_alone_in_their_folder(self):
        result, calls = self.run_command(self.command)
        self.assertEqual((0, self.BUILD), (result.returncode, calls))
        self.assertEqual(["nelvoagentid_1_amd64.deb"], os.listdir(self.path("build", "packages")))

    def test_dates_them_with_the_last_commit_unless_it_is_told_otherwise(self):
        for date, variables in (("7\n", {}), ("8\n", {"SOURCE_DATE_EPOCH": "8"})):
            self.run_command(self.command, **variables)
            with open(self.path("build", "packages", "nelvoagentid_1_amd64.deb"), encoding="utf-8") as file:
                self.assertEqual(date, file.read())

    def test_says_that_there_is_no_date(self):
        self.become(git="exit 128\n")
        result, calls = self.run_command(self.command)
        self.assertEqual((1, self.BUILD[:2]), (result.returncode, calls))
        self.assertIn("SOURCE_DATE_EPOCH has to tell the date", result.stderr)

    def test_checks_them(self):
        result, calls = self.run_command(self.command, "--check")
        root = "build/package-check/root"
        self.assertEqual(
            [*self.BUILD, *self.BUILD,
             "lintian --allow-root --fail-on error,warning build/packages/nelvoagentid_1_amd64.deb",
             f"dpkg-deb --extract build/packages/nelvoagentid_1_amd64.deb {root}",
             f"python3 -B tests/checks/hardening.py readelf {root}/usr/sbin/nelvoagentid "
             "build/package/compile_commands.json ROOT fsync pread pwrite"], calls)
        self.assertEqual(7, result.returncode)

    def test_packs_with_the_usual_modes_whatever_the_caller_has(self):
        self.become(cpack=self.CPACK.replace("$SOURCE_DATE_EPOCH", "$(umask)"))
        self.assertEqual(7, self.run_command(self.command, "--check")[0].returncode)

    def test_fails_when_lintian_does(self):
        result, calls = self.run_command(self.command, "--check", STATUS="2")
        self.assertEqual((2, "lintian"), (result.returncode, calls[-1].split()[0]))

    def test_fails_when_another_folder_gives_other_bytes(self):
        self.become(cpack=self.CPACK.replace("$SOURCE_DATE_EPOCH", "$PWD"))
        result, calls = self.run_command(self.command, "--check")
        self.assertEqual((1, [*self.BUILD, *self.BUILD]), (result.returncode, calls))

    def test_tries_them_as_root(self):
        os.chmod(self.path("tests", "install", "bare_system"), 0o755)
        self.assertEqual([*self.BUILD, "bare_system build/packages"], self.run_command(self.command, "--try")[1])
        os.remove(self.path("calls"))
        self.become(id="echo 1000\n", sudo=NOTES)
        self.assertEqual([*self.BUILD, "sudo tests/install/bare_system build/packages"],
                         self.run_command(self.command, "--try")[1])

    def test_refuses_what_it_does_not_know(self):
        for arguments in (["--what"], ["--check", "--try"], [""]):
            result, calls = self.run_command(self.command, *arguments)
            self.assertEqual((2, []), (result.returncode, calls))


class Docs(Commands):
    def setUp(self):
        self.command = self.make("docs", {"script/bootstrap": NOTING, "build/docs/old.html": ""},
                                 {"doxygen": NOTES + 'ls build/docs >> "$CALLS"\nexit "${STATUS:-0}"\n'})

    def test_begins_with_an_empty_folder(self):
        result, calls = self.run_command(self.command)
        self.assertEqual((0, ["bootstrap script/packages-docs.txt", "doxygen docs/reference/Doxyfile"]),
                         (result.returncode, calls))

    def test_fails_when_doxygen_does(self):
        self.assertEqual(1, self.run_command(self.command, STATUS="1")[0].returncode)


class WholeProof(Commands):
    STAGES = {"lint": "lint ", "docs": "docs ", "wiping": "wiping ", "fuzz": "fuzz 10", "release": "test ",
              "package": "package --check", "faults": "faults ", "asan": "test --preset asan",
              "valgrind": "valgrind ", "tsan": "test --preset tsan"}

    def setUp(self):
        with open(os.path.join(ROOT, ".ci", "run"), encoding="utf-8") as file:
            proof = file.read()
        stage = NOTING + '[ "${0##*/} $*" != "$BAD" ] || exit 7\n'
        names = {call.split()[0] for call in self.STAGES.values()}
        self.make("lint", {".ci/run": proof, **{f"script/{name}": stage for name in names}}, {"date": "echo 7\n"})
        with open(self.path("script", "lint"), "w", encoding="utf-8") as file:
            file.write(stage)
        self.command = self.path(".ci", "run")
        os.chmod(self.command, 0o755)

    def test_tells_of_itself(self):
        result, calls = self.run_command(self.command, "--help")
        self.assertEqual((0, []), (result.returncode, calls))
        self.assertTrue(result.stdout.startswith("The whole proof, "))

    def test_runs_every_stage_and_tells_its_time_and_that_of_all(self):
        result, calls = self.run_command(self.command)
        self.assertEqual((0, list(self.STAGES.values())), (result.returncode, calls))
        self.assertEqual("".join(f"== {name} took 0 s\n" for name in [*self.STAGES, "all of it"]), result.stdout)

    def test_ends_with_the_first_stage_that_fails(self):
        stages = list(self.STAGES.values())
        for number, call in enumerate(stages):
            with self.subTest(call):
                result, calls = self.run_command(self.command, BAD=call)
                self.assertEqual((7, stages[:number + 1]), (result.returncode, calls))
                os.remove(self.path("calls"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
