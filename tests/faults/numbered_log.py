"""A log of numbered messages, written by log_writer: what it was to log, and what is found of it afterwards."""

import dataclasses
import pathlib
import random
import re
import struct
import subprocess

import machine
import verdict

LOG = "/work/w.log"
MESSAGES = "/out/messages"
STATE = "/out/state"
WRITER = machine.PROGRAMS + "/log_writer"

MESSAGES_PER_CHECK = 1000
AFTERWARDS = 50000  # the number of the first message of those that are logged after a fault
MORE_MESSAGES = 2500
LONG = 3000  # characters of some messages, more than one call writes

_NOISE = "".join(f"{random.Random(i).getrandbits(32):08x}" for i in range(8000))
_HEAD = rb"\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\] < *\d+> "
_LINE = re.compile(_HEAD + rb"(?:lines  \| (\d{6}) ([0-9a-f]*)|agentid\| ([^\n\[]*)|"
                   rb"       \| (ERR \|(?:Cannot close GZ archive \[/work/w.log.gz\]\.|Error code: -1)))\n")
_HEAD_OF_ZEROS = b"[00.00.0000 00:00:00] <000000000000000> lines  | "
_AGE = re.compile(r"\.(\d+)\.log\.gz$")


def message(number):
    begin = number * 131 % 60000
    return f"{number:06d} {_NOISE[begin:begin + (LONG if number % 97 == 50 else 60)]}"


def command(first, *counts_and_commands, microseconds=0):
    """Of a writer that logs from this message on: how many, a shell's command, how many more, and so on."""
    total = sum(int(count) for count in counts_and_commands[::2])
    lines = "".join(message(first + i) + "\n" for i in range(total))
    pathlib.Path(MESSAGES).write_text(lines, encoding="ascii")
    return [WRITER, LOG, MESSAGES, STATE, str(microseconds), *map(str, counts_and_commands)]


def write(first, *counts_and_commands, microseconds=0, before=(), variables=None):
    """Runs such a writer; the words before are those of a program that runs it.

    With a zone of its own it opens no file for each new second, by which the number of a call would differ."""
    pathlib.Path(STATE).write_bytes(bytes(16))
    return machine.run_program([*before, *command(first, *counts_and_commands, microseconds=microseconds)],
                               {"PATH": "/usr/bin:/bin", "TZ": "UTC0", **(variables or {})})


def state():
    """How many messages the last writer has logged, and how often it looked at the size during one at most."""
    return struct.unpack("=QQ", pathlib.Path(STATE).read_bytes())


@dataclasses.dataclass
class Part:
    """What stands in one file."""

    numbers: list  # of the messages that stand there whole
    others: list  # the texts of whole lines of other channels
    strange: list  # all bytes that are part of neither


def read(content):
    part, place = Part([], [], []), 0
    for match in _LINE.finditer(content):
        if match[1] and message(int(match[1])) != (match[1] + b" " + match[2]).decode():
            continue
        if match.start() != place:
            part.strange.append(content[place:match.start()])
        place = match.end()
        if match[1]:
            part.numbers.append(int(match[1]))
        else:
            part.others.append((match[3] or match[4]).decode())
    if place != len(content):
        part.strange.append(content[place:])
    return part


def begins_line(number, content):
    """Whether the bytes are a beginning of this message's line."""
    head, rest = content[:len(_HEAD_OF_ZEROS)], content[len(_HEAD_OF_ZEROS):]
    return (_HEAD_OF_ZEROS.startswith(re.sub(rb"\d", b"0", head))
            and f"{message(number)}\n".encode().startswith(rest))


def age(path):
    match = _AGE.search(path)
    return int(match[1]) if match else 0


def archive(number, log=LOG):
    return log.removesuffix(".log") + (f".{number}" if number else "") + ".log.gz"


def archives(found, log=LOG):
    """The paths of a log's archives, the oldest first."""
    return sorted((path for path in found.archives if path.startswith(log.removesuffix(".log") + ".")),
                  key=age, reverse=True)


def judge_with_gzip(judge, found):
    """The system's gzip must take the same archives for whole."""
    for path in found.archives:
        test = subprocess.run(["/usr/bin/gzip", "-t", path], stderr=subprocess.DEVNULL, check=False)
        if (test.returncode == 0) == (path in found.broken):
            judge.say(f"gzip ends with {test.returncode} on {path}")


def is_row(numbers):
    """Whether each number is the one after that before."""
    return all(right == left + 1 for left, right in zip(numbers, numbers[1:]))


def _text(found):
    """The sizes of the whole archives, and their text and the log's."""
    texts = [found.archives[path] for path in archives(found) if path not in found.broken]
    return [len(text) for text in texts], b"".join(texts) + found.logs.get(LOG, b"")


def judge_looks(judge):
    """One message looks at the log's size once."""
    _, most_looks = state()
    if most_looks > 1:
        judge.say(f"during one message the size was looked at {most_looks} times")


def judge_afterwards(judge, after):
    """The tool, and then the next writer, go on with what a fault has left."""
    repeat = machine.run_tool(options=["--log", LOG])
    found = machine.look()
    judge.verdict.add(verdict.judge_repeat(judge.case, after, repeat, found), "the tool afterwards: ")
    judge_more_messages(judge, found)


def judge_more_messages(judge, before):
    """The next writer finds a log that it can go on with, and rotate, and no archive is lost but the oldest."""
    more = write(AFTERWARDS, MORE_MESSAGES)
    if more.status != 0:
        judge.say(f"the writer afterwards ended with status {more.status}: {more.err}")
    after = machine.look()
    sizes, old = _text(before)
    _, new = _text(after)
    gone = next((count for count in range(len(sizes) + 1) if new.startswith(old[sum(sizes[:count]):])), None)
    if gone is None:
        judge.say("what was logged before is not there afterwards")
        return
    added = read(new[len(old) - sum(sizes[:gone]):])
    if added.numbers != list(range(AFTERWARDS, AFTERWARDS + MORE_MESSAGES)) or added.strange or added.others:
        judge.say("the messages afterwards are not there")
    if gone > MORE_MESSAGES // MESSAGES_PER_CHECK:
        judge.say(f"{gone} archives are gone")
