"""What one faultless run of the tool does: its system calls, and the calls that the preloaded library sees.

Each call has a target, what it is about, and a phase: "start", the source that is asked, "end" after an answer,
or "generate" when there was none. The log's own lines tell where one phase ends and the next begins.
"""

import dataclasses
import pathlib
import re

import machine

_PHASE_AFTER = (("Looking for existed agentId", "agent_file"),
                ("Existed agentId was not found in agent file", "dmidecode"),
                ("Existed agentId was not found by dmidecode", "sysfs"),
                ("Existed agentId was not found in sysfs", "generate"),
                ("Existed agentId found ", "end"))
_TARGETS = ((re.compile(r"nelvoagentid(\.\d+)?\.log$"), "log"),
            (re.compile(r"\.gz$"), "archive"),
            (re.compile(re.escape(machine.AGENT_FILE) + "$"), "agent-file"),
            (re.compile(re.escape(machine.SYSFS) + "$"), "sysfs"),
            (re.compile(r"^pipe:"), "pipe"),
            (re.compile(r"^/out/stdout$"), "stdout"),
            (re.compile(r"^/etc/localtime$"), "time-zone"),
            (re.compile(r"^/etc$"), "etc"))
_DESCRIPTOR = re.compile(r"\d+<([^>]*)>")
_PATH = re.compile(r'"([^"]*)"')
_BY_PATH = {"newfstatat", "openat", "readlink", "rename", "unlink", "unlinkat", "mkdir", "statfs", "access"}


@dataclasses.dataclass(frozen=True)
class Call:
    name: str
    number: int  # among the calls of this name, from 1; a system call counts from the process's begin
    target: str
    phase: str


def target_of(path):
    for pattern, target in _TARGETS:
        if pattern.search(path):
            return target
    return "process" if not path else path.replace("/", "_")


def argument_path(name, arguments):
    if name in _BY_PATH:
        match = _PATH.search(arguments)
        if match and match[1]:
            return match[1]
    match = _DESCRIPTOR.match(arguments)
    return match[1] if match else ""


def shown_target(name, line):
    """What a call is about that strace shows."""
    return target_of(argument_path(name, line[len(name) + 1:]))


def _in_context(target, phase, earlier):
    """The agent file is read and stored; an archive ends when the log has been cut."""
    if target == "agent-file" and phase == "generate":
        return "stored-file"
    if target == "archive" and any(call.name == "ftruncate" for call in earlier):
        return "archive-end"
    return target


def _phase_after(phase, text):
    for begin, following in _PHASE_AFTER:
        if re.search(r"agentid\|\s+" + re.escape(begin), text):
            return following
    return phase


def traced(scenario, set_up=machine.reset):
    """The tool's own system calls from its first geteuid on, and its writes to the log, in order."""
    set_up(scenario)
    run = machine.run_tool(strace=["-y", "-s", "400", "-o", "/out/trace"])
    if run.status != 0:
        raise RuntimeError(f"the faultless run of {scenario.name} failed: {run}")
    numbers, calls, written, phase = {}, [], [], "start"
    for line in pathlib.Path("/out/trace").read_text(encoding="utf-8", errors="replace").splitlines():
        match = re.match(r"(\w+)\(", line)
        if match is None:
            continue
        name = match[1]
        numbers[name] = numbers.get(name, 0) + 1
        if not calls and name != "geteuid":
            continue
        target = shown_target(name, line)
        calls.append(Call(name, numbers[name], _in_context(target, phase, calls), phase))
        if name == "write" and target == "log":
            written.append(line)
            phase = _phase_after(phase, line)
    return calls, written


def preloaded(scenario, written):
    """The calls that the preloaded library sees; written is what traced() has for this scenario."""
    machine.reset(scenario)
    run = machine.run_tool(preload="count")
    if run.status != 0:
        raise RuntimeError(f"the counted run of {scenario.name} failed: {run}")
    numbers, calls, phase = {}, [], "start"
    written = iter(written)
    for line in pathlib.Path(machine.CALLS).read_text(encoding="utf-8").splitlines():
        name, _, path = line.partition(" ")
        numbers[name] = numbers.get(name, 0) + 1
        target = target_of(path)
        calls.append(Call(name, numbers[name], _in_context(target, phase, calls), phase))
        if name == "write" and target == "log":
            phase = _phase_after(phase, next(written))
    return calls
