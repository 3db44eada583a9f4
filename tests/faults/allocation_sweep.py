"""Fails each allocation of the tool, once and from then on."""

import calls
import machine
import verdict

NAME = "allocations"


def _hits(phase, mode):
    if phase not in machine.SOURCES:
        return frozenset() if mode == "once" or phase != "start" else frozenset(machine.SOURCES)
    first = machine.SOURCES.index(phase)
    return frozenset(machine.SOURCES[first:] if mode == "on" else (phase,))


def _cases(scenario, seen):
    """What is asked for between reading the log and the next call is for packing what was read."""
    packs = False
    for call in seen:
        if call.name != "alloc":
            packs = (call.name, call.target) == ("read", "log")
            continue
        step = "packing" if packs else call.phase
        for mode in ("once", "on"):
            yield verdict.Case(id=f"{NAME}/{scenario.name}/{step}/{call.number}/{mode}",
                               scenario=scenario.name, fault=f"alloc:0:{call.number}:{mode}",
                               hits=_hits(call.phase, mode), memory=True)


def plan(quick):
    cases, counts = [], {}
    for scenario in machine.SCENARIOS.values():
        _, written = calls.traced(scenario)
        of_scenario = list(_cases(scenario, calls.preloaded(scenario, written)))
        counts[f"allocations of {scenario.name}"] = len(of_scenario) // 2
        cases += of_scenario
    return verdict.Plan(cases[::9] if quick else cases, [], counts)


def run(case, losses):
    return verdict.trial(case, losses, lambda: machine.run_tool(preload=case.fault))
