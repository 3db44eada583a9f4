"""Runs the commands of script/ in a made tree, where what they call only writes down that it was called.

commands_test.py ROOT
"""

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


class Commands(unittest.TestCase):
    """A made tree with one command, and its programs found first in bin/."""

    def make(self, command, files, programs):
        made = MadeTree({**files, **{f"bin/{name}": "#!/bin/sh\n" + text for name, text in programs.items()}})
        self.addCleanup(made.cleanup)
        self.root = made.name
        os.makedirs(self.path("script"), exist_ok=True)
        shutil.copy(os.path.join(ROOT, "script", command), self.path("script"))
        for folder in ("bin", "script"):
            for name in os.listdir(self.path(folder)):
                os.chmod(self.path(folder, name), 0o755)
        return self.path("script", command)

    def path(self, *names):
        return os.path.join(self.root, *names)

    def run_command(self, command, *arguments, **environment):
        calls = self.path("calls")
        environment = {"PATH": self.path("bin") + ":/usr/bin:/bin", "CALLS": calls, **environment}
        result = subprocess.run([command, *arguments], capture_output=True, text=True, check=False, cwd="/",
                                env=environment)
        if not os.path.exists(calls):
            return result, []
        with open(calls, encoding="utf-8") as file:
            return result, file.read().replace(self.root, "ROOT").splitlines()


class Run(Commands):
    def setUp(self):
        self.command = self.make(
            "run", {"script/bootstrap": "#!/bin/sh\n" + NOTES, "script/configure": "#!/bin/sh\n" + NOTES},
            {"cmake": CMAKE, "tool": TOOL, "id": "echo 0\n"})

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
        with open(self.path("bin", "tool"), "w", encoding="utf-8") as file:
            file.write('#!/bin/sh\nprintf "second\\n" > "$2"\n')
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

    def test_becomes_root_by_sudo(self):
        for name, text in (("id", "echo 1000\n"), ("sudo", NOTES + 'exec "$@"\n')):
            with open(self.path("bin", name), "w", encoding="utf-8") as file:
                file.write("#!/bin/sh\n" + text)
            os.chmod(self.path("bin", name), 0o755)
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


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
