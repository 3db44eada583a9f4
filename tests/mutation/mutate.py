"""Changes the product in small ways, one at a time, and tells which changes the tests notice:  mutate.py [FOLDER...]

See script/mutate.
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import json
import os
import pathlib
import signal
import sys
import threading
import time

import mutants
from build import CAUGHT, NOT_COMPILED, SURVIVED, Build, Unbuilt

GOAL = 95.0  # per cent that are caught
ROOT = pathlib.Path(__file__).resolve().parents[2]
EQUIVALENTS = "tests/mutation/equivalent.json"
RESULTS = "build/mutate/results.json"


@dataclasses.dataclass
class Result:
    """What became of a mutant."""

    mutant: mutants.Mutant
    verdict: str
    by: str = ""
    seconds: float = 0.0

    def stored(self):
        mutant = self.mutant
        return {"id": mutant.id, "place": mutant.place(), "kind": mutant.kind, "old": mutant.old, "new": mutant.new,
                "verdict": self.verdict, "by": self.by, "seconds": round(self.seconds, 1)}


def percent(part, whole):
    return 100.0 * part / whole if whole else 100.0


def shown(mutant):
    """The change as lines."""
    return [f"    - {line}" for line in mutant.old.splitlines()] + [f"    + {line}" for line in mutant.new.splitlines()]


def survivor_lines(mutant):
    return [f"{mutant.place()}: {mutant.kind}", *shown(mutant), f"    ./script/mutate --only {mutant.id}"]


def table(results, equivalent):
    """Rows for each folder and in total. equivalent: {folder: how many were passed over}."""
    yield f"{'':18}{'mutants':>8}{'caught':>8}{'share':>9}{'equivalent':>12}{'not compiled':>14}{'s each':>8}"
    rows = {folder: [result for result in results if result.mutant.path.startswith(folder + "/")]
            for folder in equivalent}
    for name, of_folder in {**rows, "total": results}.items():
        verdicts = collections.Counter(result.verdict for result in of_folder)
        caught, count = verdicts[CAUGHT], verdicts[CAUGHT] + verdicts[SURVIVED]
        passed_over = sum(equivalent.values()) if name == "total" else equivalent[name]
        seconds = sum(result.seconds for result in of_folder) / len(of_folder) if of_folder else 0.0
        yield (f"{name:18}{count:8}{caught:8}{percent(caught, count):8.1f}%{passed_over:12}"
               f"{verdicts[NOT_COMPILED]:14}{seconds:8.1f}")


def is_good(results):
    verdicts = collections.Counter(result.verdict for result in results)
    return percent(verdicts[CAUGHT], verdicts[CAUGHT] + verdicts[SURVIVED]) >= GOAL


class Campaign:
    """Hands mutants out to workers and keeps what became of them."""

    def __init__(self, tree, queues, tell):
        self._tree = tree
        self._queues = queues
        self._tell = tell
        self._lock = threading.Lock()
        self.known = {}  # verdicts of an earlier run, by id
        self.results = []
        self.ended = False

    def equivalent(self):
        return {folder: queue.equivalent for folder, queue in self._queues.items()}

    def next(self):
        """The next mutant, of the folder that is furthest behind, or None: should one that is being tried turn out to
        be of no use, who tries it takes another in its place."""
        with self._lock:
            for _, queue in sorted(self._queues.items(), key=lambda item: item[1].progress()):
                if not self.ended and (mutant := queue.next()):
                    return mutant
            return None

    def add(self, result):
        with self._lock:
            self.results.append(result)
            if result.verdict == NOT_COMPILED:
                self._queue_of(result.mutant).was_of_no_use()
            self._tell(result, self)

    def progress(self):
        counted = sum(result.verdict != NOT_COMPILED for result in self.results)
        return counted, sum(queue.wanted for queue in self._queues.values())

    def work(self, build):
        while mutant := self.next():
            if mutant.id in self.known:
                self.add(Result(mutant, *self.known[mutant.id]))
                continue
            begin = time.monotonic()
            verdict, by = build.try_mutant(mutant, self._tree.compiled_with(mutant.path))
            self.add(Result(mutant, verdict, by, time.monotonic() - begin))

    def _queue_of(self, mutant):
        return next(queue for folder, queue in self._queues.items() if mutant.path.startswith(folder + "/"))


def store(campaign, root):
    path = pathlib.Path(root) / RESULTS
    path.parent.mkdir(parents=True, exist_ok=True)
    stored = json.dumps([result.stored() for result in campaign.results], indent=1) + "\n"
    path.with_suffix(".new").write_text(stored, encoding="utf-8")
    path.with_suffix(".new").replace(path)


def load_known(root):
    """What needs no second trial: all that an earlier run has caught or could not compile."""
    path = pathlib.Path(root) / RESULTS
    if not path.is_file():
        return {}
    return {result["id"]: (result["verdict"], result["by"], result["seconds"])
            for result in json.loads(path.read_text(encoding="utf-8")) if result["verdict"] != SURVIVED}


def tell(root):
    """Says what became of each mutant as it is known, and keeps it."""
    def tell_result(result, campaign):
        counted, wanted = campaign.progress()
        by = f" by {result.by}" if result.by else ""
        print(f"[{counted}/{wanted}] {result.mutant.id} {result.mutant.place()} {result.mutant.kind}: "
              f"{result.verdict}{by} ({result.seconds:.1f} s)", flush=True)
        if result.verdict == SURVIVED:
            print("\n".join(shown(result.mutant)), flush=True)
        store(campaign, root)
    return tell_result


def queues_of(tree, folders, number, seed, equivalents):
    counts = {folder: len(tree.mutants(folder)) for folder in mutants.FOLDERS}
    wanted = mutants.shares(counts, number)
    return {folder: mutants.Queue(mutants.in_turn(tree.mutants(folder), f"{seed} {folder}"), equivalents,
                                  wanted[folder]) for folder in folders}


def builds_of(root, count, limit):
    """The workers' copies, built. The first is tested, and the others know from it how long that takes."""
    builds = [Build(root, root / f"build/mutate/{number}", limit) for number in range(count)]
    for build in builds:
        build.prepare()
    builds[0].test_unchanged()
    for build in builds[1:]:
        build.programs.seconds = builds[0].programs.seconds
    return builds


def run_campaign(campaign, builds):
    with concurrent.futures.ThreadPoolExecutor(len(builds)) as pool:
        runs = [pool.submit(campaign.work, build) for build in builds]
        try:
            for each in concurrent.futures.as_completed(runs):
                each.result()
        except KeyboardInterrupt:
            print("Ends with what is being tried.", file=sys.stderr)
        finally:
            campaign.ended = True


def report(campaign):
    survivors = [result.mutant for result in campaign.results if result.verdict == SURVIVED]
    for mutant in sorted(survivors, key=lambda mutant: (mutant.path, mutant.line)):
        print("\n" + "\n".join(survivor_lines(mutant)))
    print("\n" + "\n".join(table(campaign.results, campaign.equivalent())))
    good = is_good(campaign.results)
    print("mutation: " + ("enough is caught" if good else f"FAILED, less than {GOAL:g} % are caught"))
    return good


def replay(root, tree, wanted, limit):
    """Tries single mutants. True if all are caught."""
    all_mutants = {mutant.id: mutant for folder in mutants.FOLDERS for mutant in tree.mutants(folder)}
    if missing := [each for each in wanted if each not in all_mutants]:
        raise Unbuilt(f"there is no mutant {' '.join(missing)}")
    build = Build(root, root / "build/mutate/0", limit)
    build.prepare(lambda path: not path.exists())
    good = True
    for mutant in map(all_mutants.get, wanted):
        verdict, by = build.try_mutant(mutant, tree.compiled_with(mutant.path))
        print("\n".join((f"{mutant.place()}: {mutant.kind}", *shown(mutant), f"    {verdict} {by}".rstrip())),
              flush=True)
        good &= verdict == CAUGHT
    return good


def show_list(queues):
    for queue in queues.values():
        while mutant := queue.next():
            print("\n".join((f"{mutant.id} {mutant.place()}: {mutant.kind}", *shown(mutant))))


def parse_arguments(words):
    parser = argparse.ArgumentParser(prog="mutate", usage="./script/mutate [OPTION...] [FOLDER...]", epilog=f"""
        Folders: {', '.join(mutants.FOLDERS)}. Headers are changed when no more than {mutants.MOST_DEPENDANTS} sources
        are compiled with them.""")
    parser.add_argument("folders", nargs="*", metavar="FOLDER", help="try the mutants of these alone")
    parser.add_argument("-n", "--number", type=int, default=400, help="how many over all folders (400)")
    parser.add_argument("--seed", type=int, default=1, help="another number chooses others (1)")
    parser.add_argument("-j", "--jobs", type=int, default=os.cpu_count(), help="how many at once, each in a copy")
    parser.add_argument("--time-limit", type=float, default=60.0, metavar="SECONDS",
                        help="a program of tests that takes longer has noticed the mutant (60)")
    parser.add_argument("--only", nargs="+", metavar="ID", help="try these mutants")
    parser.add_argument("--again", action="store_true", help="keep what the last run caught, and try the rest")
    parser.add_argument("--list", action="store_true", help="show the mutants that would be tried")
    arguments = parser.parse_args(words)
    folders = [folder.rstrip("/") for folder in arguments.folders]
    if unknown := set(folders) - set(mutants.FOLDERS):
        parser.error(f"no folder of the product: {' '.join(sorted(unknown))}")
    arguments.folders = folders or list(mutants.FOLDERS)
    if arguments.jobs < 1 or arguments.number < 1:
        parser.error("there must be something to do")
    return arguments


def main(words):
    arguments = parse_arguments(words)
    tree = mutants.Tree(ROOT)
    if arguments.only:
        return replay(ROOT, tree, arguments.only, arguments.time_limit)
    equivalents = mutants.Equivalents.load(ROOT / EQUIVALENTS)
    queues = queues_of(tree, arguments.folders, arguments.number, arguments.seed, equivalents)
    if arguments.list:
        show_list(queues)
        return True
    campaign = Campaign(tree, queues, tell(ROOT))
    if arguments.again:
        campaign.known = load_known(ROOT)
    run_campaign(campaign, builds_of(ROOT, arguments.jobs, arguments.time_limit))
    return report(campaign)


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        sys.exit(0 if main(sys.argv[1:]) else 1)
    except Unbuilt as failure:
        sys.exit(str(failure))
    except KeyboardInterrupt:
        sys.exit(128 + signal.SIGINT)
