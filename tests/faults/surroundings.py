"""Runs the tool where its caller leaves it little: closed and broken streams, limits, masks, odd clocks and names."""

import concurrent.futures
import datetime
import itertools
import os
import pathlib
import re
import stat
import subprocess

import machine
import verdict

NAME = "surroundings"

_SIGPIPE, _SIGXFSZ = 13, 25
_MIB = 1 << 20
_ALL = frozenset(machine.SOURCES)
_SHELL = ["/bin/sh", "-c"]
_PLAIN = {"PATH": "/fake:/usr/bin:/bin"}
_ID_LINE = re.compile(verdict.ID)

FILE_SIZES = (0, 1, 10, 37, 38, 39, 60, 150, 200, 300, 500, 800, 1000)
DESCRIPTORS = (4, 5, 6, 7, 8, 9, 16)
MEMORY = (0, 1, 2, 4, 8, 16, 32, 48, 64, 96, 128, 192, 256, 320, 384, 512, 1024)  # pages beyond the least
INSTANCES = 8
RACES = 20
READINGS = 100  # of the clock, at most
CLOCKS = {  # the first second, and the milliseconds between two readings
    "second-0": (0, 0),
    "2038": (2**31 - 1, 1000),
    "after-2038": (2**31 + 86400, 1),
    "after-2106": (2**32 - 1, 1000),
    "year-9999": (253402300799, 0),
    "tick-wraps": (400 * 2**32 // 1000, 50),
    "50-days-each": (1800000000, 50 * 86400 * 1000),
    "backwards": (1800000000, -86400 * 1000),
}
HOSTILE = {
    "line-feeds": "a\nb\n\nc",
    "line-feed": "\n",
    "head": "x\n[01.02.2026 03:04:05] <140000000000000> agentid| Agent id: {00000000-0000-4000-8000-000000000000}",
    "escapes": "a\x1b[31m\x1b]0;title\x07\r\b\x7f",
    "substitution": "%1",
    "substitutions": "%1 %2 %% %0 %n %s %",
    "long": "n" * 100000,
    "no-text": "",
    "blank": " ",
    "no-encoding": b"\xff\xfe\x80",
    "id": "{00000000-0000-4000-8000-000000000000}",
}
LOG_NAMES = {
    **HOSTILE,
    "longest": "n" * 255,
    "too-long": "n" * 256,
    "too-long-path": "/work/" + ("d" * 200 + "/") * 25 + "x.log",
    "folder": "/work",
    "folder-with-separator": "/work/",
    "root": "/",
    "dots": "..",
    "fifo": "/out/fifo",
    "full-device": "/dev/full",
    "null-device": "/dev/null",
    "link-to-itself": "/out/circle",
    "below-a-file": "/etc/nelvoagentid/x.log",
    "process": "/proc/self/status",
}
# The names without a log, of which standard output tells, those of devices that keep nothing, and those whose log
# is in the fallback folder.
REFUSED = {"long", "too-long", "folder-with-separator", "root", "dots", "fifo", "process"}
NOT_KEPT = {"full-device", "null-device"}
FALLEN_BACK = {"too-long-path": "x.log", "folder": "work", "link-to-itself": "circle", "below-a-file": "x.log"}


def in_shell(script, *words):
    """The tool as a script's own process, "$@" in it."""
    return [*_SHELL, script, "sh", *words, machine.TOOL]


def plain_case(name, scenario="agent-file", fault=None, **more):
    return verdict.Case(id=f"{NAME}/{name}", scenario=scenario, fault=fault, **more)


# ---- What a command line brings about ----

def stream_cases():
    for scenario in ("agent-file", "dmidecode", "generated"):
        for closed in itertools.product((False, True), repeat=3):
            name = "".join("-" if is_closed else str(i) for i, is_closed in enumerate(closed))
            closing = " ".join(f"{i}>&-" for i, is_closed in enumerate(closed) if is_closed)
            yield plain_case(f"streams/{scenario}/{name}", scenario,
                             ("command", in_shell(f'exec "$@" {closing}'), None), output=closed[1], mute=closed[2])
        yield plain_case(f"streams/{scenario}/full", scenario, ("command", [machine.TOOL], "full"), output=True)
        yield plain_case(f"streams/{scenario}/broken-pipe", scenario, ("command", [machine.TOOL], "broken pipe"),
                         signal=_SIGPIPE)
        yield plain_case(f"streams/{scenario}/broken-pipe-ignored", scenario,
                         ("command", in_shell('trap "" 13; exec "$@"'), "broken pipe"), output=True)


def limit_cases():
    for scenario in ("agent-file", "generated"):
        for size in FILE_SIZES:
            limit = f"--fsize={size}"
            yield plain_case(f"file-size/{scenario}/{size}/killed", scenario,
                             ("command", ["/usr/bin/prlimit", limit, machine.TOOL], "read pipe"), store=True,
                             signal=_SIGXFSZ)
            yield plain_case(f"file-size/{scenario}/{size}/ignored", scenario,
                             ("command", in_shell('trap "" 25; exec "$@"', "/usr/bin/prlimit", limit), "read pipe"),
                             store=True)
    for scenario in ("agent-file", "dmidecode", "sysfs", "generated"):
        for count in DESCRIPTORS:
            yield plain_case(f"descriptors/{scenario}/{count}", scenario,
                             ("command", ["/usr/bin/prlimit", f"--nofile={count}", machine.TOOL], None), hits=_ALL)
    least = least_memory()
    for scenario in ("agent-file", "dmidecode", "generated", "big-log"):
        for pages in MEMORY:
            limit = f"--as={least + pages * 4096}"
            yield plain_case(f"memory/{scenario}/{pages}", scenario,
                             ("command", ["/usr/bin/prlimit", limit, machine.TOOL], None), hits=_ALL, memory=True)


def least_memory():
    """The least address space, in whole pages, in which the tool comes as far as its options."""
    machine.reset(machine.SCENARIOS["agent-file"])
    too_little, enough = 0, 256 * _MIB
    while enough - too_little > 4096:
        middle = (too_little + enough) // 2 // 4096 * 4096
        run = machine.run_program(["/usr/bin/prlimit", f"--as={middle}", machine.TOOL, "--none"], _PLAIN)
        if run.status == 1 and run.err.startswith("unrecognised option"):
            enough = middle
        else:
            too_little = middle
    return enough


def run_command(case, losses):
    _, command, stream = case.fault

    def start():
        if stream is None:
            return machine.run_program(command, _PLAIN)
        if stream == "full":
            with open("/dev/full", "wb") as full:
                return machine.run_program(command, _PLAIN, full)
        reader, writer = os.pipe()
        with open(reader, "rb") as pipe:
            if stream == "broken pipe":
                pipe.close()
            with open(writer, "wb") as out:
                run = machine.run_program(command, _PLAIN, out)
            if stream == "read pipe":
                run.out = pipe.read().decode()
        return run

    return verdict.trial(case, losses, start)


# ---- A read-only /etc, and clocks ----

def etc_cases():
    for scenario in ("agent-file", "dmidecode", "generated"):
        yield plain_case(f"read-only-etc/{scenario}", scenario, ("etc",))


def run_with_read_only_etc(case, losses):
    machine.reset(machine.SCENARIOS[case.scenario])
    subprocess.run("mount --bind /etc /etc && mount -o remount,bind,ro /etc", shell=True, check=True, env=_PLAIN)
    try:
        before = machine.look()
        run = machine.run_tool()
        after = machine.look()
    finally:
        machine.unmount("/etc")
    found = verdict.judge(losses, case, before, run, after)
    found.run = run
    if run.status != (1 if case.scenario == "generated" else 0):
        found.problems.append(f"ended with status {run.status}")
    verdict.repeat_twice(case, after, found)
    return found


def clock_cases():
    for scenario in ("agent-file", "dmidecode", "generated"):
        for name in CLOCKS:
            yield plain_case(f"clock/{scenario}/{name}", scenario, ("clock", name))


def run_with_clock(case, losses):
    first, step = CLOCKS[case.fault[1]]
    variables = {**_PLAIN, "LD_PRELOAD": machine.CLOCK, "CLOCK": f"{first}:{step}"}
    machine.reset(machine.SCENARIOS[case.scenario])
    before = machine.look()
    run = machine.run_program([machine.TOOL], variables)
    after = machine.look()
    found = verdict.judge(losses, case, before, run, after)
    found.run = run
    if run.status != 0:
        found.problems.append(f"ended with status {run.status}")
    text = after.logs[machine.LOG][len(before.logs[machine.LOG]):].decode()
    times = re.findall(r"^\[(.*?)\]", text, re.MULTILINE)
    shown = [datetime.datetime.strptime(time, "%d.%m.%Y %H:%M:%S").replace(tzinfo=datetime.timezone.utc)
             for time in times]
    if not shown or any(abs(time.timestamp() - first) > abs(step) * READINGS / 1000 for time in shown):
        found.problems.append(f"the log's times are {times}")
    verdict.repeat_twice(case, after, found)
    return found


# ---- Masks ----

def mask_cases():
    for mask in (0, 0o22, 0o77, 0o777):
        yield plain_case(f"umask/{mask:03o}", "generated", ("umask", mask))


def run_with_mask(case, _):
    mask = case.fault[1]
    machine.reset(machine.SCENARIOS["generated"])
    found = verdict.Verdict()
    os.unlink(machine.LOG)
    for options in ((), ("--log", "/work/new/x.log"), ("--log", "/etc/nelvoagentid/y.log")):
        command = [*_SHELL, f'umask {mask:03o}; exec "$0" "$@"', machine.TOOL, *options]
        found.run = machine.run_program(command, _PLAIN)
        # The first run stores what all of them print.
        judge_answer(found, (machine.look().agent_file or b"none").decode() + "\n")
    modes = {machine.AGENT_FILE: 0o666, machine.LOG: 0o664, "/work/new": 0o755, "/work/new/x.log": 0o664,
             machine.FALLBACK_FOLDER: 0o755, machine.FALLBACK_FOLDER + "/y.log": 0o666}
    for path, mode in modes.items():
        actual = stat.S_IMODE(os.stat(path).st_mode)
        if actual != mode & ~mask:
            found.problems.append(f"{path} has the mode {actual:o}")
    return found


# ---- Many at once ----

def race_cases():
    for scenario in ("agent-file", "dmidecode", "generated"):
        for number in range(RACES):
            yield plain_case(f"at-once/{scenario}/{number}", scenario, ("race",))


def run_race(case, _):
    machine.reset(machine.SCENARIOS[case.scenario])
    before = machine.look()
    runs = [subprocess.Popen([machine.TOOL], env=_PLAIN, cwd="/work", stdin=subprocess.DEVNULL,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE) for _ in range(INSTANCES)]
    try:
        with concurrent.futures.ThreadPoolExecutor(INSTANCES) as pool:
            answers = list(pool.map(lambda run: run.communicate(timeout=machine.TIME_LIMIT), runs))
    finally:
        for run in runs:
            run.kill()
    found = verdict.Verdict()
    if any(run.returncode != 0 for run in runs) or any(err for _, err in answers):
        found.problems.append(f"ended with {[run.returncode for run in runs]}: {[err for _, err in answers]}")
    ids = {out.decode() for out, _ in answers}
    after = machine.look()
    if not all(_ID_LINE.fullmatch(text[:-1]) and text[-1] == "\n" for text in ids):
        found.problems.append(f"they print {ids}")
    if case.scenario == "generated":
        if (after.agent_file or b"").decode() + "\n" not in ids:
            found.problems.append(f"the agent file is {after.agent_file!r}, they print {ids}")
    elif ids != {machine.SCENARIOS[case.scenario].sources[case.scenario.replace("-", "_")] + "\n"}:
        found.problems.append(f"they print {ids}")
    judge_logs_of_race(found, case, before, after)
    verdict.repeat_twice(case, after, found)
    return found


def judge_logs_of_race(found, case, before, after):
    """Each run's messages stand together in one log, which it had for itself, and none is missing."""
    sources = machine.SCENARIOS[case.scenario].sources
    # Of two runs without a source, the later may find what the earlier has stored.
    answers = ("fresh", "agent_file") if not sources else itertools.islice(verdict.prescribed_answers(sources, ()), 1)
    ways = [list(verdict.way(case, sources, answer, verdict.ID)) for answer in answers]
    runs = 0
    for path, content in after.logs.items():
        old = before.logs.get(path, b"")
        messages, torn = verdict.read_messages(content[len(old):].decode())
        starts = [i for i, (_, _, text) in enumerate(messages) if text == "/" * 74]
        parts = [messages[begin:end] for begin, end in zip([0, *starts[1:]], [*starts[1:], len(messages)])]
        runs += len(starts)
        are_whole = all(any(verdict.missing(part, steps) == [] for steps in ways) for part in parts if part)
        if torn or not content.startswith(old) or not are_whole:
            found.problems.append(f"{path} holds {messages}, {torn}")
    if runs != INSTANCES:
        found.problems.append(f"the logs tell of {runs} runs")


# ---- Hostile names ----

def name_cases():
    for name, text in HOSTILE.items():
        yield plain_case(f"name/{name}", fault=("name", text))
    for name, text in LOG_NAMES.items():
        yield plain_case(f"log-name/{name}", fault=("log", text))


def run_with_name(case, _):
    """Each line of the name gets a head of its own, so none passes for another message's."""
    machine.reset(machine.SCENARIOS["agent-file"])
    before = machine.look()
    name = os.fsencode(case.fault[1])
    found = verdict.Verdict()
    found.run = machine.run_program([b"/usr/bin/bash", b"-c", b'exec -a "$0" ' + machine.TOOL.encode(), name], _PLAIN)
    judge_answer(found, machine.AGENT_ID + "\n")
    text = machine.look().logs[machine.LOG][len(before.logs[machine.LOG]):]
    heads = re.findall(rb"^\[[\d.: ]{19}\] <\d+> agentid\| ", text, re.MULTILINE)
    lines = text.split(b"\n")[:-1]
    if len(heads) != len(lines) or len(set(heads)) > 2:
        found.problems.append("lines stand in the log without a head")
    shown = [line[len(heads[0]):] for line in lines]
    if b"\n".join(shown[1:-3]) != b"name: " + name.removesuffix(b"\n"):
        found.problems.append(f"the log tells of {shown}")
    return found


def run_with_log_name(case, _):
    machine.reset(machine.SCENARIOS["agent-file"])
    os.mkfifo("/out/fifo")
    os.symlink("circle", "/out/circle")
    found = verdict.Verdict()
    found.run = machine.run_program([machine.TOOL, "--log", os.fsencode(case.fault[1])], _PLAIN)
    notice = r"Failed to initialize log \[.*\]\.\n(?:.*\n)+?" if found.run.out.startswith("Failed") else ""
    judge_answer(found, None)
    expected = f"(?:{notice}){re.escape(machine.AGENT_ID)}\n"
    if not case.fault[1]:
        expected = rf"/{{74}}\n(?:\[[^\n]*\n){{5}}{re.escape(machine.AGENT_ID)}\n/{{74}}\n"
    if not re.fullmatch(expected, found.run.out, re.DOTALL):
        found.problems.append(f"standard output is {found.run.out[:200]!r}")
    if pathlib.Path(machine.AGENT_FILE).read_text(encoding="ascii") != machine.AGENT_ID:
        found.problems.append("the agent file changed")
    judge_named_log(found, case)
    return found


def judge_named_log(found, case):
    kind, name = case.id.rsplit("/", 1)[1], os.fsencode(case.fault[1])
    if found.run.out.startswith("Failed") != (kind in REFUSED):
        found.problems.append("standard output tells the wrong thing of the log")
    if kind in REFUSED | NOT_KEPT or not name:
        return
    path = os.path.join(b"/work", name)
    if kind in FALLEN_BACK:
        path = pathlib.Path(machine.FALLBACK_FOLDER, FALLEN_BACK[kind])
    with open(path, encoding="utf-8") as log:
        messages, torn = verdict.read_messages(log.read())
    steps = verdict.way(case, machine.SCENARIOS[case.scenario].sources, "agent_file", re.escape(machine.AGENT_ID))
    if torn or verdict.missing(messages, list(steps)) != []:
        found.problems.append(f"the log holds {messages}, {torn}")


def judge_answer(found, out):
    run = found.run
    found.hung, found.crashed = run.hung, run.status not in (0, 1) or run.core
    if run.hung or run.status != 0 or run.err or (out is not None and run.out != out):
        found.problems.append(f"ended with status {run.status}, {run.out[:200]!r} and {run.err[:200]!r}")


_RUNS = {"command": run_command, "etc": run_with_read_only_etc, "clock": run_with_clock, "umask": run_with_mask,
         "race": run_race, "name": run_with_name, "log": run_with_log_name}


def plan(quick):
    cases, counts = [], {}
    for of_kind in (stream_cases, limit_cases, etc_cases, clock_cases, mask_cases, race_cases, name_cases):
        more = list(of_kind())
        counts[of_kind.__name__.replace("_cases", "").replace("_", " ")] = len(more)
        cases += more
    skipped = [("less memory", "where the tool does not come to its options, the loader ends it, or a static object"),
               ("a FIFO as the agent file", "opening it waits for a writer, for as long as there is none")]
    return verdict.Plan(cases[::9] if quick else cases, skipped, counts)


def run(case, losses):
    return _RUNS[case.fault[0]](case, losses)
