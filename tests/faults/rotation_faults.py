"""Fails each step of a rotation while a program logs, and takes room, descriptors and the right to write away.

The program logs through the library, which looks at the size on its thousandth message and, after a rotation that
failed, on each following one. What is found of its messages is held against what it was to log.
"""

import collections
import errno
import gzip
import pathlib
import re

import calls
import machine
import numbered_log
import syscall_sweep
import verdict

NAME = "rotations"

MESSAGES = numbered_log.MESSAGES_PER_CHECK + 15  # that many more than there are archives
ARCHIVES = 11
FAILING = ("ftruncate", "lseek", "newfstatat", "openat", "read", "rename", "unlink", "write")
LEFT_OUT = {(name, error): "says that there is nothing where something stands"
            for name in ("newfstatat", "rename", "unlink") for error in ("ENOENT", "ENOTDIR")}
CLOSING_FAILURE = [f"ERR |Cannot close GZ archive [{numbered_log.archive(0)}].", "ERR |Error code: -1"]

_CALL = re.compile(r"(\w+)\((.*)")
_TOLD_ONCE = re.compile(rf"{NAME}/(completing/(write/.*/once|close/.*)|full-disk/archives/(10|11))")
_STRACE = ["/usr/bin/strace", "-qq"]


def set_up():
    machine.reset(machine.SCENARIOS["agent-file"])
    write_archives()


def write_archives():
    for number in range(ARCHIVES):
        pathlib.Path(numbered_log.archive(number)).write_bytes(gzip.compress(archive_text(number)))


def archive_text(number):
    return f"archive {number}\n".encode()


# ---- The plan ----

def rotation_calls():
    """Of a faultless run: step, name, file, how many of these there were before, and strace's number."""
    set_up()
    run = numbered_log.write(0, MESSAGES, before=[*_STRACE, "-y", "-s", "200", "-o", "/out/trace"])
    if run.status != 0:
        raise RuntimeError(f"the faultless run failed: {run}")
    numbers, seen, step, found = collections.Counter(), collections.Counter(), "", []
    for line in pathlib.Path("/out/trace").read_text(encoding="utf-8", errors="replace").splitlines():
        match = _CALL.match(line)
        if match is None:
            continue
        name, path = match[1], calls.argument_path(*match.groups())
        numbers[name] += 1
        step = next_step(step, name, path, line)
        if step and name in FAILING and (name, path) != ("write", numbered_log.LOG):
            file = "log" if path == numbered_log.LOG else f"archive-{numbered_log.age(path)}"
            seen[name, file] += 1
            found.append((step, name, file, seen[name, file], numbers[name]))
    return found


def next_step(step, name, path, line):
    if name == "write" and path == numbered_log.LOG:
        last = numbered_log.message(numbered_log.MESSAGES_PER_CHECK - 1)
        return "look" if f"lines  | {last[:6]} " in line else ""
    if step == "look" and path != numbered_log.LOG:
        return "ageing"
    if (step, name) == ("ageing", "openat"):
        return "opening"
    if (step, name) == ("opening", "lseek"):
        return "copying"
    if (step, name) == ("copying", "ftruncate"):
        return "cutting"
    if (step, name) == ("cutting", "write"):
        return "completing"
    return step


def failing_calls():
    for step, name, file, count, number in rotation_calls():
        for error in syscall_sweep.ERRORS[name].split():
            for mode in ("once", "on"):
                if (name, error) in LEFT_OUT or (error, mode) == ("EINTR", "on") and name in ("read", "write"):
                    continue
                inject = f"inject={name}:error={error}:when={number}{'+' if mode == 'on' else ''}"
                yield verdict.Case(id=f"{NAME}/{step}/{name}/{file}/{count}/{error}/{mode}", scenario="agent-file",
                                   fault=("strace", ["-e", f"trace={name}", "-e", inject]))


def closing_failures():
    """Of the archive's close, brought about by the preloaded library after the call itself."""
    set_up()
    numbered_log.write(0, MESSAGES, variables={"LD_PRELOAD": machine.PRELOAD, "FAULT": "count"})
    closed = [line for line in pathlib.Path(machine.CALLS).read_text(encoding="utf-8").splitlines()
              if line.startswith("close ")]
    number = closed.index("close " + numbered_log.archive(0)) + 1
    for error in syscall_sweep.CLOSING["close"].split():
        for mode in ("once", "on"):
            yield verdict.Case(id=f"{NAME}/completing/close/archive-0/1/{error}/{mode}", scenario="agent-file",
                               fault=("preload", f"close:{getattr(errno, error)}:{number}:{mode}"))


FILL = ("head -c {0} /dev/zero > {1}/reserve; cat /dev/zero > {1}/filler 2> /dev/null; rm {1}/reserve")
SURROUNDINGS = {
    # name: what is done before the rotation, and what afterwards
    "read-only": ("mount -o remount,ro /work", "mount -o remount,rw /work"),
    "descriptors": ("prlimit --pid $PPID --nofile=5:1024", "prlimit --pid $PPID --nofile=1024:1024"),
}
# Pages of 4096 bytes; the archive takes 13.
ARCHIVE_ROOM = (0, 1, 3, 7, 10, 11, 12, 13)
SHARED_ROOM = (0, 1, 2, 3, 6, 9, 12, 15, 20)
EARLY = numbered_log.MESSAGES_PER_CHECK - 5
MEANWHILE = 20


def plan(quick):
    cases = [*failing_calls(), *closing_failures()]
    failing = len(cases)
    for name in SURROUNDINGS:
        cases.append(verdict.Case(id=f"{NAME}/{name}", scenario="agent-file", fault=("surroundings", name)))
    for disk, rooms in (("archives", ARCHIVE_ROOM), ("log", SHARED_ROOM)):
        cases += [verdict.Case(id=f"{NAME}/full-disk/{disk}/{room}", scenario="agent-file", fault=(disk, room))
                  for room in rooms]
    counts = {"errors of calls of a rotation": failing, "means taken away and given back": len(cases) - failing}
    skipped = sorted((f"{name} {error}", reason) for (name, error), reason in LEFT_OUT.items())
    skipped += [("read and write of the log EINTR for ever", "is retried for as long as it is interrupted"),
                ("mmap, munmap", "the stages syscalls and allocations fail those of a rotation at the start")]
    return verdict.Plan(cases[::9] if quick else cases, skipped, counts)


# ---- A run ----

def run(case, losses):
    way, what = case.fault
    if way == "strace":
        set_up()
        return judged(case, losses, MESSAGES,
                      lambda: failed(numbered_log.write(0, MESSAGES, before=[*_STRACE, "-o", machine.INJECTED, *what])))
    if way == "preload":
        set_up()
        return judged(case, losses, MESSAGES,
                      lambda: failed(numbered_log.write(0, MESSAGES,
                                                        variables={"LD_PRELOAD": machine.PRELOAD, "FAULT": what})))
    machine.reset(machine.SCENARIOS["agent-file"])
    machine.mount_tmpfs("/work", "size=4m,mode=755")
    try:
        if way != "log":
            # The log itself stands on another disk.
            pathlib.Path(numbered_log.LOG).symlink_to("/out/w.log")
        write_archives()
        take, give = SURROUNDINGS.get(what) or (FILL.format(4096 * what, "/work"), "rm /work/filler")
        counts = (EARLY, take, MEANWHILE, give, 2 * numbered_log.MESSAGES_PER_CHECK)
        return judged(case, losses, sum(counts[::2]), lambda: numbered_log.write(0, *counts))
    finally:
        machine.unmount("/work")


def failed(run):
    run.missed = not machine.was_injected()
    return run


def judged(case, losses, count, start):
    written = start()
    after = machine.look()
    judge = verdict.Judge(losses, case, {}, None, written, after)
    judge.verdict.run = written
    judge.judge_end()
    judge_writer(judge, written, count)
    judge_archives(judge, after)
    judge_messages(judge, after, count)
    numbered_log.judge_afterwards(judge, after)
    return judge.verdict


def judge_writer(judge, written, count):
    if written.status != 0 or written.out or written.err:
        judge.say(f"the writer ended with status {written.status}: {written.out}{written.err}")
    logged, _ = numbered_log.state()
    if logged != count:
        judge.say(f"the writer came to message {logged} of {count}")
    numbered_log.judge_looks(judge)


def judge_archives(judge, found):
    """A rotation drops the oldest archive. What is beyond that is a loss, and only ever of the oldest ones."""
    kept = [number for number in range(ARCHIVES) if archive_text(number) in found.archives.values()]
    if kept != list(range(len(kept))):
        judge.say(f"of the archives, {kept} are there")
    lost = ARCHIVES - len(kept) - rotations(found)
    if lost > 0:
        judge.lose(f"{lost} archives too many", "archive")
    if lost > 1 and judge.case.id.endswith("/once"):
        judge.say(f"{lost} archives too many for one fault")


def rotations(found):
    """How many there were, as told by the archives that are whole; one at least is due."""
    own = [content for path, content in found.archives.items()
           if path not in found.broken and numbered_log.read(content).numbers]
    return max(len(own), 1)


def judge_messages(judge, found, count):
    """Each message must stand once. What is missing, torn or there twice is a loss."""
    times, others = collections.Counter(), []
    for path in numbered_log.archives(found) + [numbered_log.LOG]:
        content = found.archives.get(path) or found.logs.get(path, b"")
        if content in map(archive_text, range(ARCHIVES)):
            continue
        part = numbered_log.read(content)
        times.update(part.numbers)
        others += part.others
        if part.strange and path not in found.broken:
            judge.lose(f"{path} holds {part.strange[0][:60]!r}", "torn")
    if set(times) - set(range(count)):
        judge.say("there are messages that nobody wrote")
    judge_missing(judge, [number for number in range(count) if not times[number]])
    if max(times.values(), default=0) > 1:
        judge.lose("messages stand there more than once", "repeat")
    judge_told(judge, others)


def judge_missing(judge, missing):
    old = [number for number in missing if number < numbered_log.MESSAGES_PER_CHECK]
    if len(old) == numbered_log.MESSAGES_PER_CHECK:
        judge.lose("the archive of all messages", "archive")
    elif len(old) > 2 and numbered_log.is_row(old):
        judge.lose(f"messages {old[0]} to {old[-1]}", "archive end")
    elif old:
        judge.lose(f"messages {old}", "old text")
        if len(old) > 2 and judge.case.id.endswith("/once"):
            judge.say(f"{len(old)} messages for one fault")
    new = missing[len(old):]
    if new:
        judge.lose(f"messages {new}", "message")


def judge_told(judge, others):
    """An archive that cannot be completed is told of, in two messages each time; nothing else is."""
    pairs = [others[i:i + 2] for i in range(0, len(others), 2)]
    if any(pair != CLOSING_FAILURE for pair in pairs):
        judge.say(f"the log tells of {others}")
    if _TOLD_ONCE.fullmatch(judge.case.id) and len(pairs) != 1:
        judge.say(f"the archive's failure is told of {len(pairs)} times")
