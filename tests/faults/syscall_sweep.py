"""Fails each system call of the tool with each plausible error, once and from then on.

One traced run of a scenario names the calls; the calls of the programs that the tool starts are not touched.
strace brings the errors about in the place of the calls. What that would distort, the preloaded library does, or
it is left out with the reason.
"""

import errno

import calls
import machine
import verdict

NAME = "syscalls"

ERRORS = {
    "clone3": "EAGAIN ENOMEM ENOSPC ENOSYS EPERM",
    "flock": "EAGAIN EINTR EINVAL EIO ENOLCK EOPNOTSUPP",
    "ftruncate": "EACCES EFBIG EINTR EINVAL EIO EPERM EROFS ETXTBSY",
    "getrandom": "EAGAIN EINTR ENOSYS EPERM",
    "lseek": "EINVAL ENXIO EOVERFLOW ESPIPE",
    "mmap": "EAGAIN ENOMEM EPERM",
    "munmap": "ENOMEM",
    "newfstatat": "EACCES EIO ELOOP ENAMETOOLONG ENOENT ENOMEM ENOTDIR EOVERFLOW ESTALE",
    "openat": "EACCES EAGAIN EDQUOT EINTR EIO EISDIR ELOOP EMFILE ENAMETOOLONG ENFILE ENODEV ENOENT ENOMEM ENOSPC "
              "ENOTDIR ENXIO EOVERFLOW EPERM EROFS ETXTBSY",
    "pipe2": "EMFILE ENFILE ENOMEM",
    "read": "EAGAIN EINTR EIO EISDIR ENOMEM ESTALE",
    "rename": "EACCES EBUSY EDQUOT EIO EISDIR ELOOP EMLINK ENAMETOOLONG ENOENT ENOMEM ENOSPC EPERM EROFS EXDEV",
    "unlink": "EACCES EBUSY EIO ELOOP ENAMETOOLONG ENOENT ENOMEM ENOTDIR EPERM EROFS",
    "wait4": "ECHILD EINTR",
    "write": "EAGAIN EDQUOT EFBIG EINTR EIO ENOSPC EPERM EPIPE",
}
# Brought about by the preloaded library, after the call itself.
CLOSING = {name: "EDQUOT EINTR EIO ENOSPC" for name in ("close", "fclose", "pclose")}

LEFT_OUT = {
    "brk": "an injected error is a result that no kernel gives; the sweep of allocations has what follows from it",
    "close": "an injected error leaves the descriptor open; the preloaded library closes, and then reports",
    "exit_group": "does not return",
    "fcntl": "F_SETFD of an open descriptor cannot fail",
    "geteuid": "cannot fail",
    "getpid": "cannot fail",
    "getppid": "cannot fail",
    "gettid": "cannot fail",
    "getuid": "cannot fail",
    "prlimit64": "asking for one's own limits cannot fail",
    "rt_sigprocmask": "cannot fail with the C library's own arguments",
}
# What is retried for as long as it is interrupted: by the library's files, the C++ library's, and by pclose.
LOOPING_TARGETS = {"read": {"agent-file", "log", "sysfs"}, "wait4": {"process"}, "write": {"log", "stored-file"}}
LOOPS = {f"{name} of {target}, EINTR from then on": "is retried for as long as it is interrupted"
         for name, targets in LOOPING_TARGETS.items() for target in sorted(targets)}
SHORT_LEFT_OUT = {
    "read of the pipe": "a short count from the C library's own stream; its next call reads on",
    "write of standard output": "a short count from the C library's own stream; it writes on by itself",
}

TRIALS = 4  # at most, to fail the call that a case is about
LEAST_PAIRS = 60  # of a call and an error; with fewer, something is wrong with the traced runs

_HITS_A_SOURCE = {"clone3", "mmap", "newfstatat", "openat", "pipe2", "read"}
_HARMLESS_TARGETS = {"log", "stdout", "time-zone"}


def _hits(call):
    """The source that gives no id because this call failed, if it is one of a source's."""
    if call.phase not in machine.SOURCES or call.name not in _HITS_A_SOURCE or call.target in _HARMLESS_TARGETS:
        return None
    # The stream does without knowing what its pipe is.
    if call.name == "newfstatat" and call.target == "pipe":
        return None
    return call.phase


def _demands(call, error):
    """The source whose failure has to stand in the log: not one that looks absent, and no pipe without a child."""
    source = _hits(call)
    if call.name == "newfstatat" and error == "ENOENT":
        return set()
    if call.name in ("newfstatat", "openat") or (call.name == "read" and call.target == "pipe"):
        return {source} - {None}
    return set()


def _case(scenario, call, error, mode, later, possible):
    """later: the calls of this name from this one on; possible: the sources that one may hit in any run."""
    failing = [call] if mode == "once" else later
    hits = {_hits(each) for each in failing} - {None}
    if hits and mode == "on":
        first = min(machine.SOURCES.index(source) for source in hits)
        hits |= {source for source in possible if machine.SOURCES.index(source) > first}
    return verdict.Case(
        id=f"{NAME}/{scenario.name}/{call.name}/{call.target}/{call.number}/{error}/{mode}",
        scenario=scenario.name,
        fault=("strace", ["-y", "-e", f"trace={call.name}", "-e",
                          f"inject={call.name}:error={error}:when={call.number}{'+' if mode == 'on' else ''}"]),
        hits=frozenset(hits),
        demands=frozenset(_demands(call, error) & hits),
        store=call.name == "write" and any(each.target == "stored-file" for each in failing),
        output=call.name == "write" and any(each.target == "stdout" for each in failing),
        memory=call.name == "mmap",
        mute=call.name == "write" and mode == "on",
        random=call.name != "getrandom")


def _loops(scenario, later):
    """Whether one of these calls is retried; a source that is asked after the pipe is among them."""
    targets = {call.target for call in later}
    if "pipe" in targets and "sysfs" in scenario.sources:
        targets.add("sysfs")
    return not targets.isdisjoint(LOOPING_TARGETS.get(later[0].name, ()))


def _strace_cases(scenario, own, possible):
    for call in own:
        if call.name in LEFT_OUT:
            continue
        later = [each for each in own if each.name == call.name and each.number >= call.number]
        for error in ERRORS[call.name].split():
            for mode in ("once", "on"):
                if not (mode == "on" and error == "EINTR" and _loops(scenario, later)):
                    yield _case(scenario, call, error, mode, later, possible.get(call.name, set()))


def _preload_case(scenario, call, error, mode, **more):
    number = error if error == "short" else getattr(errno, error)
    return verdict.Case(id=f"{NAME}/{scenario.name}/{call.name}/{call.target}/{call.number}/{error}/{mode}",
                        scenario=scenario.name,
                        fault=("preload", f"{call.name}:{number}:{call.number}:{mode}"), **more)


def _preload_cases(scenario, seen):
    for call in seen:
        errors = CLOSING.get(call.name, "short" if call.name in ("read", "write") else "")
        for error in errors.split():
            for mode in ("once", "on"):
                yield _preload_case(scenario, call, error, mode)


def _possible_hits(traces):
    possible = {}
    for own in traces:
        for call in own:
            if _hits(call):
                possible.setdefault(call.name, set()).add(_hits(call))
    # The runs that are traced find an agent file that can be read, or none at all.
    for name in ("openat", "read"):
        possible[name] |= {"agent_file", "sysfs"}
    return possible


def plan(quick):
    traces = {scenario: calls.traced(scenario) for scenario in machine.SCENARIOS.values()}
    possible = _possible_hits(own for own, _ in traces.values())
    cases, skipped = [], set()
    for scenario, (own, written) in traces.items():
        cases += _strace_cases(scenario, own, possible)
        cases += _preload_cases(scenario, calls.preloaded(scenario, written))
        skipped |= {(name, LEFT_OUT[name]) for name in {call.name for call in own} & set(LEFT_OUT)}
    skipped |= set(LOOPS.items()) | set(SHORT_LEFT_OUT.items())
    pairs = {tuple(case.id.split("/")[i] for i in (2, 5)) for case in cases}
    if len(pairs) < LEAST_PAIRS:
        raise RuntimeError(f"the traced runs show calls for {len(pairs)} pairs alone")
    counts = {"pairs of a call and an error": len(pairs), "scenarios": len(traces),
              "occurrences": len({tuple(case.id.split("/")[1:5]) for case in cases})}
    return verdict.Plan(cases[::9] if quick else cases, sorted(skipped), counts)


def _hit_another(case):
    """Whether another call had the number of the case's: a new second of the clock has the time zone looked up once
    more before it."""
    name, target = case.id.split("/")[2:4]
    shown = calls.shown_target(name, machine.first_injected())
    return shown != {"stored-file": "agent-file", "archive-end": "archive"}.get(target, target)


def run(case, losses):
    way, fault = case.fault
    for _ in range(TRIALS):
        found = verdict.trial(case, losses, lambda: machine.run_tool(**{way: fault}))
        if way != "strace" or found.run.missed or not _hit_another(case):
            return found
    found.problems.append("failed another call than its own each time")
    return found
