"""Runs fuzz targets that are built:  run.py [--programs | --keep | --minimise] [TARGET...] [SECONDS]

Called by script/fuzz, which tells the usage, in the root of the tree. --programs runs none and names them.
SECONDS are those of the processor: machines are loaded, and a target that waits has tried nothing.
"""

import argparse
import glob
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import time

WORK = "build/fuzz"
# Of time that passes: on a loaded machine an input waits, and is no finding before it counts as hung.
LIMITS = ["-timeout=25", "-report_slow_units=25", "-rss_limit_mb=1024"]
AT_ONCE = max(1, int(os.environ.get("FUZZ_JOBS", os.cpu_count())))
_STATS = {"executions": "number_of_executed_units", "new_entries": "new_units_added"}


def targets():
    """The names of all targets."""
    return sorted(os.path.basename(path).removesuffix("_fuzz.cpp") for path in glob.glob("fuzz/*_fuzz.cpp"))


def program(name):
    return f"{WORK}/fuzz/{name}_fuzz"


def inputs(name):
    """The folders that a run begins with besides its own corpus: the seeds, and what is kept."""
    return list(filter(os.path.isdir, (f"{WORK}/fuzz/seeds/{name}", f"fuzz/corpus/{name}")))


def cpu_seconds(pid):
    """The processor time that a child has used."""
    with open(f"/proc/{pid}/stat", encoding="utf-8") as file:
        fields = file.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


class Run:
    """One target that is running. It is asked to end when it has had its time."""

    def __init__(self, name, seconds):
        self.name = name
        self.seconds = seconds
        self.asked = False
        own = f"{WORK}/corpus/{name}"
        for folder in (own, f"{WORK}/findings", f"{WORK}/logs"):
            os.makedirs(folder, exist_ok=True)
        self.before = set(glob.glob(f"{WORK}/findings/{name}-*"))
        self.log = f"{WORK}/logs/{name}"
        with open(self.log, "wb") as log:
            self.process = subprocess.Popen(
                [program(name), *LIMITS, "-print_final_stats=1",
                 f"-artifact_prefix={WORK}/findings/{name}-", own, *inputs(name)],
                stdout=log, stderr=subprocess.STDOUT)

    def end(self):
        """Its result once it has ended, or None."""
        pid, status, usage = os.wait4(self.process.pid, os.WNOHANG)
        if pid == 0:
            if not self.asked and cpu_seconds(self.process.pid) >= self.seconds:
                self.process.send_signal(signal.SIGUSR1)
                self.asked = True
            return None
        self.process.returncode = os.waitstatus_to_exitcode(status)
        return self.result(usage.ru_utime + usage.ru_stime)

    def result(self, seconds):
        with open(self.log, encoding="utf-8", errors="replace") as log:
            text = log.read()
        found = {}
        for key, word in _STATS.items():
            match = re.search(rf"^stat::{word}:\s+(\d+)", text, re.MULTILINE)
            found[key] = int(match[1]) if match else 0
        finds = sorted(set(glob.glob(f"{WORK}/findings/{self.name}-*")) - self.before)
        return {"target": self.name, "executions": found["executions"], "cpu_seconds": round(seconds, 1),
                "executions_per_second": round(found["executions"] / max(seconds, 0.1)),
                "new_entries": found["new_entries"], "status": self.process.returncode, "finds": finds}


def run_all(names, seconds):
    """The results of the targets, in their order. So many of them run at once as there are processors."""
    waiting, running, results = list(names), [], []
    try:
        while waiting or running:
            while waiting and len(running) < AT_ONCE:
                running.append(Run(waiting.pop(0), seconds))
            time.sleep(0.05)
            for run in list(running):
                result = run.end()
                if result is not None:
                    running.remove(run)
                    results.append(result)
    finally:
        for run in running:
            run.process.kill()
    return sorted(results, key=lambda result: names.index(result["target"]))


def is_bad(result):
    """A target that ends by itself has found something, or could not begin."""
    return result["status"] != 0 or bool(result["finds"])


def table(results):
    rows = [("target", "executions", "CPU s", "per s", "new", "finds")]
    for result in results:
        rows.append((result["target"], str(result["executions"]), f"{result['cpu_seconds']:.1f}",
                     str(result["executions_per_second"]), str(result["new_entries"]),
                     str(len(result["finds"])) if result["finds"] or not is_bad(result) else "failed"))
    return "".join(f"{row[0]:20}" + "".join(f"{cell:>12}" for cell in row[1:]) + "\n" for row in rows)


def tell(results):
    """The finds, and where the run of each stands."""
    for result in filter(is_bad, results):
        print(f"{result['target']}: status {result['status']}, see {WORK}/logs/{result['target']}",
              file=sys.stderr)
        for find in result["finds"]:
            print(f"  {find}", file=sys.stderr)


def keep(results):
    """Puts the inputs that were found where each build tries them for ever."""
    for result in results:
        for find in result["finds"]:
            folder = f"fuzz/corpus/{result['target']}"
            os.makedirs(folder, exist_ok=True)
            shutil.copy(find, os.path.join(folder, os.path.basename(find).removeprefix(result["target"] + "-")))


def minimise(name):
    """Adds what reaches code that the seeds do not reach, as little of it as does."""
    kept = f"fuzz/corpus/{name}"
    merged = f"{WORK}/merged/{name}"
    shutil.rmtree(merged, ignore_errors=True)
    shutil.copytree(f"{WORK}/fuzz/seeds/{name}", merged)
    if os.path.isdir(kept):
        shutil.copytree(kept, merged, dirs_exist_ok=True)
    before = set(os.listdir(merged))
    subprocess.run([program(name), *LIMITS, "-use_counters=0", "-merge=1", merged, f"{WORK}/corpus/{name}"],
                   check=True, stderr=subprocess.DEVNULL)
    os.makedirs(kept, exist_ok=True)
    for found in set(os.listdir(merged)) - before:
        shutil.copy(os.path.join(merged, found), kept)


def arguments(words):
    parser = argparse.ArgumentParser(prog="./script/fuzz")
    parser.add_argument("--programs", action="store_true")
    parser.add_argument("--keep", action="store_true")
    parser.add_argument("--minimise", action="store_true")
    parser.add_argument("words", nargs="*", metavar="TARGET... SECONDS")
    given = parser.parse_args(words)
    given.seconds = int(given.words.pop()) if given.words and given.words[-1].isdigit() else 60
    given.names = given.words or targets()
    for name in set(given.names) - set(targets()):
        parser.error(f"no target {name}")
    return given


def main(words):
    given = arguments(words)
    if given.programs:
        print(" ".join(f"{name}_fuzz" for name in given.names))
        return 0
    if given.minimise:
        for name in given.names:
            minimise(name)
        return 0
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1)) # and so by run_all, which leaves no target running
    results = run_all(given.names, given.seconds)
    with open(f"{WORK}/results.json", "w", encoding="utf-8") as file:
        json.dump(results, file, indent=2)
        file.write("\n")
    print(table(results), end="")
    tell(results)
    if given.keep:
        keep(results)
    return 1 if any(map(is_bad, results)) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
