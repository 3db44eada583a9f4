"""Runs programs under memcheck and shows what it says:  run.py BUILD [PATTERN]

Which they are, the tests of the build tell (ctest): each program of tests in FOLDERS, whole, and each replay of a
fuzz target with its seeds cut off at every length. Some cases are left out, with a reason.
"""

import concurrent.futures
import json
import os
import re
import subprocess
import sys
import time

FOLDERS = ("core/cnt", "io", "fs", "crypto")

# Cases of a program that are run. Of files, their records alone. Memcheck takes it for a mistake when somebody asks
# for more memory than there can be.
CASES = {
    "crypto_memory_test": "*-SecAllocator.MoreThanThereIsIsABadAlloc",
    "fs_test": "*AclData*:*FileAttributes*:*FileInfo*:*FileMeta*:*FileSecurity*:*PosixFileSecurity*",
}

# Programs that are left out.
LEFT_OUT = {
    "core_cnt_memory_test": "measures the memory of the process, which is memcheck's then",
    "crypto_limit_test": "limits the memory of the process, and memcheck's with it",
    "crypto_optimised_test": "starts another program that looks at all of its memory",
    "crypto_planted": "is meant to fail",
    "fs_access_test": "has no records",
    "fs_calls_test": "has no records",
    "io_pages_test": "measures the memory of the process, which is memcheck's then",
}

# Memory functions of a program's own stay its own: they make memory run out, and look at what is freed.
VALGRIND = ["valgrind", "--quiet", "--error-exitcode=99", "--leak-check=full", "--show-leak-kinds=definite,possible",
            "--errors-for-leak-kinds=definite,possible", "--soname-synonyms=somalloc=nouserintercepts",
            "--num-callers=30",
            "--suppressions=" + os.path.join(os.path.dirname(os.path.abspath(__file__)), "suppressions.txt")]


def commands(build, tests):
    """The programs of a list of tests of ctest's, by name: the command that runs each, and where it is run."""
    found = {}
    for test in tests:
        command = test.get("command", [])
        if not command:
            continue
        name, folder = os.path.basename(command[0]), os.path.relpath(os.path.dirname(command[0]), build)
        place = next((each["value"] for each in test["properties"] if each["name"] == "WORKING_DIRECTORY"), build)
        if test["name"].startswith("fuzz.") and name.endswith("_replay") and name != "planted_replay":
            found[name] = ["--cuts" if word == "--seeds" else word for word in command], place
        elif folder in (f"tests/{each}" for each in FOLDERS) and name not in LEFT_OUT:
            found[name] = [command[0], "--gtest_brief=1", "--gtest_filter=" + CASES.get(name, "*")], place
    return found


def tests_of(build):
    listed = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], capture_output=True, text=True,
                            check=True)
    return json.loads(listed.stdout)["tests"]


def run(name, command, folder):
    begin = time.monotonic()
    result = subprocess.run([*VALGRIND, *command], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            text=True, errors="replace", check=False)
    return name, result.returncode, result.stdout, time.monotonic() - begin


def main(build, pattern):
    build = os.path.abspath(build)
    found = {name: (command, place) for name, (command, place) in commands(build, tests_of(build)).items()
             if re.search(pattern, name)}
    failed = []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        runs = [pool.submit(run, name, command, place) for name, (command, place) in found.items()]
        for each in concurrent.futures.as_completed(runs):
            name, status, output, seconds = each.result()
            print(f"{name:40}{'passed' if status == 0 else 'FAILED':>8}{seconds:8.1f} s", flush=True)
            if status != 0:
                failed.append(name)
                print(output, file=sys.stderr, flush=True)
    if not found:
        print("there is nothing to run", file=sys.stderr)
    print(f"memcheck: {len(found) - len(failed)} of {len(found)} programs passed")
    return 1 if failed or not found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2] if len(sys.argv) > 2 else ""))
