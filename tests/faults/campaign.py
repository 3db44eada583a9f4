"""Runs the real tool under system faults and judges every run:  campaign.py [--quick] [STAGE[/PATTERN]...]

    campaign.py --list                   the stages
    campaign.py --replay ID              one case alone, with all that it showed
    campaign.py --quick                  a part of every stage's cases
    campaign.py 'syscalls/*/write/*'     the cases with such an id

Called by script/faults, which builds what this needs. Root only: every worker has a private machine of its own
(see machine.py), so that nothing of the machine itself is touched. A table goes to standard output, and all
results to build/faults/results.json. The status is 1 if any case failed.

A stage is a module with
    NAME                    the first part of its cases' ids
    plan(quick)             on a private machine: a Plan
    run(case, losses)       on a private machine: a verdict.Verdict
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import fnmatch
import json
import multiprocessing
import os
import pathlib
import sys
import tempfile
import time

import allocation_sweep
import kill_sweep
import machine
import rotation_faults
import surroundings
import syscall_sweep
import verdict

STAGES = {stage.NAME: stage for stage in (syscall_sweep, allocation_sweep, kill_sweep, rotation_faults, surroundings)}
WORKERS = 2
CHUNK = 8

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build/release"
RESULTS = ROOT / "build/faults/results.json"
LOSSES = pathlib.Path(__file__).with_name("expected_loss.json")

# Loses the message that is being written. Without an entry that allows this it has to be reported.
PLANTED = "syscalls/agent-file/write/log/1/ENOSPC/once"


def stage_name(case_id):
    return case_id.split("/")[0]


def replay_command(case_id):
    return f"./script/faults --replay '{case_id}'"


def plan_stage(name, quick):
    return STAGES[name].plan(quick)


def run_case(case, losses):
    """The verdict on a case. What goes wrong around it is a problem of that case, so that the others go on."""
    try:
        return STAGES[stage_name(case.id)].run(case, losses)
    except Exception as failure:
        return verdict.Verdict(problems=[f"the campaign itself failed: {failure!r}"])


def run_chunk(cases, losses):
    return [(case.id, run_case(case, losses)) for case in cases]


@dataclasses.dataclass
class Tally:
    """What came of a stage."""

    counts: dict
    skipped: list
    runs: int = 0
    crashes: int = 0
    hangs: int = 0
    lost: int = 0
    seconds: float = 0.0
    failures: list = dataclasses.field(default_factory=list)
    other_ids: dict = dataclasses.field(default_factory=dict)

    def add(self, case_id, found):
        self.runs += 1
        self.crashes += found.crashed
        self.hangs += found.hung
        self.lost += len(found.lost)
        if found.other_id:
            self.other_ids[case_id] = found.other_id
        if found.problems:
            self.failures.append({"id": case_id, "problems": found.problems, "replay": replay_command(case_id)})


def report_failure(case_id, problems):
    for problem in problems:
        print(f"FAILED {case_id}: {problem}")
    print(f"    {replay_command(case_id)}", flush=True)


def picked(cases, wanted):
    """Those that a STAGE/PATTERN names; all for a stage alone."""
    return [case for case in cases if "/" not in wanted or fnmatch.fnmatchcase(case.id, wanted)]


class Campaign:
    """The workers and what they found."""

    def __init__(self, pool, losses):
        self.pool = pool
        self.losses = losses
        self.used = collections.Counter()  # in how many cases what of an entry came true
        self.tallies = {}

    def run_stage(self, wanted, quick):
        begin = time.monotonic()
        name = stage_name(wanted)
        plan = self.pool.submit(plan_stage, name, quick).result()
        cases = picked(plan.cases, wanted)
        tally = self.tallies[wanted] = Tally(plan.counts, plan.skipped)
        print(f"== {wanted}: {len(cases)} cases", flush=True)
        chunks = [cases[i:i + CHUNK] for i in range(0, len(cases), CHUNK)]
        for done in self.pool.map(run_chunk, chunks, [self.losses] * len(chunks)):
            for case_id, found in done:
                self.used.update(found.used)
                tally.add(case_id, found)
                if found.problems:
                    report_failure(case_id, found.problems)
        tally.seconds = round(time.monotonic() - begin, 1)

    def find(self, case_id):
        plan = self.pool.submit(plan_stage, stage_name(case_id), False).result()
        return next((case for case in plan.cases if case.id == case_id), None)

    def replay(self, case_id):
        """Runs one case and shows it. True if nothing is wrong with it."""
        case = self.find(case_id)
        if case is None:
            print(f"There is no case {case_id}.", file=sys.stderr)
            return False
        found = self.pool.submit(run_case, case, self.losses).result()
        if found.run is not None:
            print(f"fault: {case.fault}\nstatus: {found.run.status} after {found.run.seconds:.2f} s")
            print(f"standard output:\n{found.run.out}standard error:\n{found.run.err}", end="")
        if found.used:
            print(f"allowed losses: {', '.join(sorted({entry for entry, _ in found.used}))}")
        if found.problems:
            report_failure(case_id, found.problems)
        return not found.problems

    def notes(self):
        """What cannot be seen on this system."""
        if self.pool.submit(machine.sees_cores).result():
            return []
        return ["core dumps are not looked for: /proc/sys/kernel/core_pattern has them elsewhere"]

    def planted_loss_is_reported(self):
        """A loss that no entry allows, as a check of the whole way from fault to report."""
        case = self.find(PLANTED)
        found = self.pool.submit(run_case, case, []).result()
        tally = Tally({}, [])
        tally.add(case.id, found)
        return (len(found.lost) == 1 and len(tally.failures) == 1
                and tally.failures[0]["replay"] == replay_command(PLANTED))


def show_table(tallies):
    print(f"{'stage':<14}{'runs':>7}{'crashes':>9}{'hangs':>7}{'lost':>6}{'failed':>8}{'seconds':>9}")
    for name, tally in tallies.items():
        print(f"{name:<14}{tally.runs:>7}{tally.crashes:>9}{tally.hangs:>7}{tally.lost:>6}"
              f"{len(tally.failures):>8}{tally.seconds:>9}")


def write_results(campaign, notes, errors):
    RESULTS.parent.mkdir(parents=True, exist_ok=True)
    stages = {name: dataclasses.asdict(tally) for name, tally in campaign.tallies.items()}
    RESULTS.write_text(json.dumps({"stages": stages, "losses_used": losses_used(campaign), "notes": notes,
                                   "errors": errors}, indent=1) + "\n", encoding="utf-8")


def losses_used(campaign):
    """Of each entry, how many cases needed which of its patterns and kinds."""
    return {entry["name"]: {part: campaign.used[entry["name"], part]
                            for part in entry["faults"] + entry.get("by chance", []) + entry["loses"]}
            for entry in campaign.losses}


def unused_parts(losses, used):
    """The patterns and the kinds of the entries that no case needed: they allow more than is lost."""
    return [f"never matched in expected_loss.json: {entry['name']}: {part}"
            for entry in losses for part in entry["faults"] + entry["loses"] if (entry["name"], part) not in used]


def run_campaign(campaign, names, quick):
    errors = []
    for name in names:
        campaign.run_stage(name, quick)
    errors += [f"there is no case {name}" for name, tally in campaign.tallies.items() if not tally.runs]
    if syscall_sweep.NAME in names and not campaign.planted_loss_is_reported():
        errors.append("a planted loss was not reported")
    if not quick and sorted(names) == sorted(STAGES):
        errors += unused_parts(campaign.losses, campaign.used)
    notes = campaign.notes()
    write_results(campaign, notes, errors)
    show_table(campaign.tallies)
    for note in notes:
        print(f"NOTE: {note}")
    for error in errors:
        print(f"FAILED: {error}")
    return not errors and not any(tally.failures for tally in campaign.tallies.values())


def parse_arguments():
    parser = argparse.ArgumentParser(prog="faults")
    parser.add_argument("stages", nargs="*", metavar="STAGE[/PATTERN]")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--replay", metavar="ID")
    arguments = parser.parse_args()
    for wanted in arguments.stages + ([arguments.replay] if arguments.replay else []):
        if stage_name(wanted) not in STAGES:
            parser.error(f"there is no stage {stage_name(wanted)}")
    return arguments


def main():
    arguments = parse_arguments()
    if arguments.list:
        print("\n".join(STAGES))
        return True
    losses = verdict.load_losses(LOSSES)
    with tempfile.TemporaryDirectory(prefix="nelvo-faults-") as empty_folder:
        context = multiprocessing.get_context("fork")
        with concurrent.futures.ProcessPoolExecutor(WORKERS, context, machine.enter,
                                                    (empty_folder, str(BUILD))) as pool:
            campaign = Campaign(pool, losses)
            if arguments.replay:
                return campaign.replay(arguments.replay)
            return run_campaign(campaign, arguments.stages or list(STAGES), arguments.quick)


if __name__ == "__main__":
    if os.geteuid() != 0:
        sys.exit("Only root can make private machines.")
    sys.exit(0 if main() else 1)
