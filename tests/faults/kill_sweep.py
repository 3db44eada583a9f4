"""Kills the tool at each system call of a rotation, and a program that logs and rotates at random moments, and
between the writes of a message that takes several.

What is left is read line by line. SIGKILL comes in the place of a call, so that all before it has been done.
"""

import gzip
import pathlib
import random

import calls
import machine
import numbered_log
import verdict

NAME = "kills"

KILLS = 200
MESSAGES = 16000
LONGEST = 120000  # microseconds; such a run takes about as long

LONG_MESSAGE = 50  # see numbered_log.message(); those before it take one write each
WRITES = 3

_SIGKILL = 9


def big_log_with_all_archives(scenario):
    machine.reset(scenario)
    for number in range(1, 10):
        pathlib.Path(numbered_log.archive(number, machine.LOG)).write_bytes(
            gzip.compress(f"archive {number}\n".encode()))


def steps(rotation):
    """Pairs of what is going on and a call: a log is cut when it is copied, and then its archive is completed."""
    opened = next(i for i, call in enumerate(rotation) if (call.name, call.target) == ("openat", "archive"))
    cut = next(i for i, call in enumerate(rotation) if call.name == "ftruncate")
    end = max(i for i, call in enumerate(rotation) if (call.name, call.target) == ("write", "archive-end"))
    for i, call in enumerate(rotation):
        yield "before" if i <= opened else "copying" if i <= cut else "completing" if i <= end else "after", call


def plan(quick):
    scenario = machine.SCENARIOS["big-log"]
    own, _ = calls.traced(scenario, big_log_with_all_archives)
    rotation = [call for call in own if call.phase == "start"]
    cases = [verdict.Case(id=f"{NAME}/tool/{step}/{call.name}/{call.target}/{call.number}", scenario=scenario.name,
                          fault=call, signal=_SIGKILL) for step, call in steps(rotation)]
    cases += [verdict.Case(id=f"{NAME}/writer/{seed}", scenario="agent-file", fault=seed, signal=_SIGKILL)
              for seed in range(KILLS)]
    cases += [verdict.Case(id=f"{NAME}/message/{write}", scenario="agent-file", fault=("write", write),
                           signal=_SIGKILL) for write in range(WRITES + 1)]
    counts = {"system calls of a start with a rotation": len(rotation), "random kills": KILLS}
    return verdict.Plan(cases[::9] if quick else cases, [], counts)


def run(case, losses):
    if isinstance(case.fault, calls.Call):
        return kill_tool(case, losses)
    machine.reset(machine.SCENARIOS[case.scenario])
    return judge_writer(case, losses, kill_at_random(case) if isinstance(case.fault, int) else kill_at_write(case))


def judge_killed(judge):
    if judge.run.status != -_SIGKILL:
        judge.say(f"was not killed, but ended with status {judge.run.status}")


# ---- The tool ----

def kill_tool(case, losses):
    call = case.fault
    big_log_with_all_archives(machine.SCENARIOS[case.scenario])
    before = machine.look()
    killed = machine.run_tool(strace=["-e", f"trace={call.name}", "-e",
                                      f"inject={call.name}:signal=SIGKILL:when={call.number}"])
    after = machine.look()
    found = verdict.judge(losses, case, before, killed, after)
    found.run = killed
    judge = verdict.Judge(losses, case, {}, before, killed, after)
    judge_killed(judge)
    numbered_log.judge_with_gzip(judge, after)
    judge_broken_archive(judge, machine.LOG, before.logs[machine.LOG])
    found.add(judge.verdict, "")
    verdict.repeat_twice(case, after, found)
    return found


def judge_broken_archive(judge, log, old):
    """An archive may be half-written only if it is the newest, and holds the beginning of the log alone."""
    newest = numbered_log.archive(0, log)
    for path in judge.after.broken:
        if path != newest:
            judge.say(f"{path} is broken")
        if not old.startswith(judge.after.archives[path]):
            judge.say(f"{path} holds what the log did not")
        if judge.after.logs[log] == old:
            judge.lose(f"{path} repeats the log", "repeat")
        else:
            judge.lose(f"the end of {path}", "archive end")


# ---- The program that logs and rotates ----

def kill_at_random(case):
    return numbered_log.write(0, MESSAGES, microseconds=random.Random(case.fault).randrange(100, LONGEST))


def kill_at_write(case):
    inject = f"inject=write:signal=SIGKILL:when={LONG_MESSAGE + 1 + case.fault[1]}"
    return numbered_log.write(0, LONG_MESSAGE + 2, before=["/usr/bin/strace", "-qq", "-o", "/dev/null",
                                                           "-e", "trace=write", "-e", inject])


def judge_writer(case, losses, killed):
    after = machine.look()
    judge = verdict.Judge(losses, case, {}, None, killed, after)
    judge.verdict.run = killed
    judge.judge_end()
    judge_killed(judge)
    numbered_log.judge_with_gzip(judge, after)
    numbered_log.judge_looks(judge)
    logged, _ = numbered_log.state()
    judge_messages(judge, after, logged)
    numbered_log.judge_afterwards(judge, after)
    return judge.verdict


def judge_messages(judge, found, logged):
    """Each message must stand once, in order, in the archives and the log, up to the last that was logged."""
    paths = numbered_log.archives(found)
    parts = {path: numbered_log.read(found.archives[path]) for path in paths}
    whole = [path for path in paths if path not in found.broken]
    numbers = [number for path in whole for number in parts[path].numbers]
    if not numbered_log.is_row(numbers) or any(parts[path].strange or parts[path].others for path in whole):
        judge.say("the archives do not hold one message after the other")
    if numbers and numbers[0] != 0 and len(whole) < 10:
        judge.say(f"the messages up to {numbers[0]} are gone with {len(whole)} archives")

    next_number = numbers[-1] + 1 if numbers else 0
    log = numbered_log.read(found.logs.get(numbered_log.LOG, b""))
    is_cut = False
    for path in found.broken:
        is_cut = judge_broken_messages(judge, path, parts[path], log, next_number)
    judge_log(judge, log, next_number, None if is_cut else logged)


def judge_broken_messages(judge, path, part, log, next_number):
    """Whether what the archive lacks was cut from the log already."""
    if path != numbered_log.archive(0):
        judge.say(f"{path} is broken")
    if part.numbers != list(range(next_number, next_number + len(part.numbers))):
        judge.say(f"{path} does not go on with message {next_number}")
    if part.strange and not (len(part.strange) == 1
                             and numbered_log.begins_line(next_number + len(part.numbers), part.strange[0])):
        judge.say(f"{path} holds {part.strange[0][:60]!r}")
    if log.numbers or log.strange:
        judge.lose(f"{path} repeats the log", "repeat")
        return False
    judge.lose(f"the end of {path}", "archive end")
    return True


def judge_log(judge, log, next_number, logged):
    end = next_number + len(log.numbers)
    if log.numbers != list(range(next_number, end)) or log.others:
        judge.say(f"the log does not go on with message {next_number}")
    if logged is not None and not logged <= end <= logged + 1:
        judge.say(f"{logged} messages were logged, but {end} stand there")
    if len(log.strange) > 1 or log.strange and not numbered_log.begins_line(end, log.strange[0]):
        judge.say(f"the log holds {log.strange[0][:60]!r}")
    elif log.strange:
        judge.lose(f"the end of message {end}", "torn")
