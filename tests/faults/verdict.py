"""Judges a run of the tool: what its caller saw, the agent file, and the log.

A run's log is held against the lines that its way through the sources prescribes. What is missing must be allowed
by an entry of expected_loss.json:

    {"name": ..., "faults": [patterns of case ids], "loses": [kinds], "reason": ...}

Each pattern and each kind has to come true in a full campaign; patterns of cases in which a loss is up to chance
stand under "by chance". These are the kinds:
    message     one message of the run
    rest        the run's messages from some point on
    log         all of the run's messages, and standard output says that there is no log
    torn        the end of a line
    old text    lines that stood in a log before
    archive     an archive that was whole before
    archive end what was cut from a log before its archive was completed
    repeat      nothing, but lines stand in the log and in an archive
    id          the new id: it was printed, but the agent file has not all of it
"""

import dataclasses
import fnmatch
import json
import re
import signal

import machine

ID = r"\{[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}\}"
ID_SIZE = 38
_ID_TEXT = re.compile(ID)
_FRESH_ID = re.compile(r"\{[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}\}")
_LINE = re.compile(r"\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\] < *\d+> agentid\| (WARN\||ERR \||>>  \|)?((?:  )*)(.*)")
_NO_LOG = "Failed to initialize log ["
_NOT_STARTED = "\nFailed to initialized\n"
_NOT_PRINTED = "Failed to write agent id to standard output.\n"
_NOT_STORED = ("Failed to open file [/etc/nelvoagentid].\n", "Failed to create directory '",
               "Failed to get file system object info: '/etc'")
_NO_MEMORY = ("std::bad_alloc\n", "Cannot allocate memory\n")
_OLDEST_ARCHIVE = "/work/nelvoagentid.10.log.gz"

KINDS = {"message", "rest", "log", "torn", "old text", "archive", "archive end", "repeat", "id"}
_PLACES = {"agent_file": "in agent file", "dmidecode": "by dmidecode", "sysfs": "in sysfs"}
_FILES = {"agent_file": machine.AGENT_FILE, "sysfs": machine.SYSFS}
_SCOPE = "Looking for existed agentId"
_GENERATE = "Generate new nelvo agent id"
_WARNINGS = ("Failed to parse system UUID: Failed to execute 'dmidecode | grep -i uuid' command.",
             "Failed to parse system UUID: Incorrect format of UUID string.")


@dataclasses.dataclass(frozen=True)
class Case:
    """One run with one fault. The id is a path: stage, scenario, then what tells the fault apart."""

    id: str
    scenario: str
    fault: object = None  # what the stage needs to bring the fault about
    hits: frozenset = frozenset()  # the sources that may give no id because of the fault
    demands: frozenset = frozenset()  # the sources whose failure has to be told in the log
    store: bool = False  # writing the agent file may fail half-way
    output: bool = False  # standard output may fail
    memory: bool = False  # there may be no memory
    mute: bool = False  # nothing reaches standard error
    random: bool = True  # the kernel's randomness can be had; without it libuuid takes time and place
    signal: int = 0  # that may end the run


@dataclasses.dataclass
class Plan:
    """What a stage is going to run; the counts go to the results as they are."""

    cases: list
    skipped: list = dataclasses.field(default_factory=list)  # pairs of a fault's name and the reason
    counts: dict = dataclasses.field(default_factory=dict)


@dataclasses.dataclass
class Verdict:
    problems: list = dataclasses.field(default_factory=list)
    lost: list = dataclasses.field(default_factory=list)  # what no entry allows
    used: set = dataclasses.field(default_factory=set)  # pairs of an entry's name and what of it allowed a loss
    other_id: str = ""  # the source whose id came in the place of the scenario's, if one did
    crashed: bool = False
    hung: bool = False
    run: object = None  # the faulted run, for whoever replays it

    def add(self, other, prefix):
        self.problems += [prefix + problem for problem in other.problems]
        self.lost += other.lost
        self.used |= other.used
        self.crashed |= other.crashed
        self.hung |= other.hung


def load_losses(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


# ---- The way of a run through the log ----

@dataclasses.dataclass(frozen=True)
class Step:
    """A message that a run writes, as a pattern of mark, indent and text."""

    mark: str
    indent: int
    text: str
    required: bool = True

    def matches(self, message):
        mark, indent, text = message
        return mark == self.mark and indent == self.indent and re.fullmatch(self.text, text, re.DOTALL) is not None


def _plain(text, indent=0, required=True):
    return Step("", indent, re.escape(text), required)


def _failure_of(source, case, has_id):
    """The messages about a source that gave no id."""
    hit, demanded = source in case.hits, source in case.demands
    if source == "dmidecode":
        texts = "|".join(re.escape(text) for text in _WARNINGS)
        if hit or not has_id:
            yield Step("WARN|", 0, texts, required=demanded or not hit)
    elif hit:
        text = re.escape(f"Failed to look uuid in file: {_FILES[source]} \n") + ".*"
        yield Step("ERR |", 0, text, required=demanded)
    yield _plain(f"Existed agentId was not found {_PLACES[source]}", 1)


def way(case, sources, answer, id_text):
    """The messages of a run that got its id from this source, "fresh" for one that it made."""
    yield _plain("/" * 74)
    yield _plain(f"name: {machine.TOOL}")
    yield _plain(_SCOPE)
    for source in machine.SOURCES:
        if source == answer:
            yield _plain(f"Existed agentId found {_PLACES[source]}")
            break
        yield from _failure_of(source, case, source in sources)
    else:
        yield _plain("Existed agentId was not found")
        yield _plain(_GENERATE)
    yield Step("", 0, re.escape("Agent id: ") + id_text)


def prescribed_answers(sources, hits):
    """The sources that may answer, in their order: each with an id, up to the first that is not hit."""
    for source in machine.SOURCES:
        if source in sources:
            yield source
            if source not in hits:
                return
    yield "fresh"


def _broken_off(case, steps, run):
    """The ways of a run that did not end well: steps up to where it can have ended."""
    steps, err = list(steps), run.err
    begin = next(i for i, step in enumerate(steps) if step.text == re.escape(_SCOPE))
    end = next(i for i, step in enumerate(steps) if i > begin and step.indent == 0 and not step.mark)
    least = 0
    if run.status == 1 and (err.endswith(_NOT_PRINTED) or case.mute):
        least = len(steps)
    elif any(text in err for text in _NOT_STORED):
        least = next((i + 1 for i, step in enumerate(steps) if step.text == re.escape(_GENERATE)), len(steps))
    for count in range(least, len(steps) + 1):
        inside = begin < count <= end and run.status == 1
        yield steps[:count] + ([_plain(_SCOPE + " Failed.")] if inside else [])


def missing(messages, steps):
    """The required steps without a message, or None if a message has no step."""
    lost = []
    steps = iter(steps)
    for message in messages:
        for step in steps:
            if step.matches(message):
                break
            if step.required:
                lost.append(step)
        else:
            return None
    return lost + [step for step in steps if step.required]


def read_messages(text):
    """The messages of a log's text, and the lines that are none."""
    messages, torn = [], []
    lines = text.split("\n")
    if lines.pop():
        torn.append(text.rsplit("\n", 1)[-1])
    for line in lines:
        match = _LINE.fullmatch(line)
        if match is None:
            torn.append(line)
        elif match[1] == ">>  |":
            if messages:
                mark, indent, start = messages[-1]
                messages[-1] = (mark, indent, start + "\n" + match[3])
            else:
                torn.append(line)
        else:
            messages.append((match[1] or "", len(match[2]) // 2, match[3]))
    return messages, torn


# ---- The judgement ----

class Judge:
    """One judgement: the state before, the run, the state after."""

    def __init__(self, losses, case, sources, before, run, after):
        self.losses = losses
        self.case = case
        self.sources = sources
        self.before = before
        self.run = run
        self.after = after
        self.verdict = Verdict()
        self.answer = None

    def say(self, text):
        self.verdict.problems.append(text)

    def lose(self, what, *kinds):
        """A loss that is of each of these kinds: an entry that allows one of them allows it."""
        for entry in self.losses:
            patterns = {pattern for pattern in entry["faults"] + entry.get("by chance", [])
                        if fnmatch.fnmatchcase(self.case.id, pattern)}
            allowed = set(kinds) & set(entry["loses"])
            if patterns and allowed:
                self.verdict.used |= {(entry["name"], part) for part in patterns | allowed}
                return
        self.verdict.lost.append(what)
        self.say(f"lost outside the list: {what}")

    def judge(self):
        self.judge_end()
        if not self.run.hung:
            self.judge_output()
            self.judge_agent_file()
            self.judge_log()
        return self.verdict

    def judge_end(self):
        run = self.run
        if run.hung:
            self.verdict.hung = True
            self.say(f"still ran after {machine.TIME_LIMIT:.0f} s")
        elif run.status not in (0, 1) and run.status != -self.case.signal:
            self.verdict.crashed = True
            name = signal.Signals(-run.status).name if run.status < 0 else f"status {run.status}"
            self.say(f"crashed: ended by {name}")
        if run.missed:
            self.say("never came to its fault")
        if run.core and not (self.case.signal and run.status == -self.case.signal):
            self.verdict.crashed = True
            self.say("left a core dump")

    def judge_output(self):
        lines = self.run.out.splitlines()
        printed = bool(lines) and _ID_TEXT.fullmatch(lines[-1]) is not None and self.run.out.endswith("\n")
        ids = _ID_TEXT.findall(self.run.out)
        if self.run.status == 0:
            if not printed or len(ids) != 1:
                self.say(f"status 0, but standard output is {self.run.out!r}")
            else:
                self.judge_id(lines[-1])
            if self.run.err:
                self.say(f"status 0, but standard error is {self.run.err!r}")
        elif self.run.status == 1:
            if ids:
                self.say(f"status 1, but standard output has an id: {self.run.out!r}")
            if not self.has_reason_to_fail():
                self.say(f"status 1, but standard error is {self.run.err!r}")
        notice = lines[:-1] if printed else lines
        if notice and not notice[0].startswith(_NO_LOG):
            self.say(f"standard output begins with {notice[0]!r}")

    def has_reason_to_fail(self):
        """Whether standard error tells of what the fault may have brought about, in the tool's own words."""
        err = self.run.err
        return (self.case.mute and not err
                or self.case.output and err == _NOT_PRINTED
                or self.case.memory and err.startswith(_NO_MEMORY)
                or self.may_answer("fresh") and any(text in err for text in _NOT_STORED))

    def judge_id(self, text):
        known = {value: source for source, value in self.sources.items()}
        self.answer = known.get(text, "fresh")
        if self.answer == "fresh" and self.case.random and not _FRESH_ID.fullmatch(text):
            self.say(f"{text} is no id of the tool's making")
        answers = list(prescribed_answers(self.sources, self.case.hits))
        if self.answer not in answers:
            self.say(f"the id is that of {self.answer}, prescribed is {' or '.join(answers)}")
        elif self.answer != answers[0]:
            self.verdict.other_id = self.answer

    def judge_agent_file(self):
        before, after = self.before.agent_file, self.after.agent_file
        if after is None and before is not None:
            self.say("the agent file is gone")
        elif self.answer == "fresh":
            self.judge_stored(self.run.out.splitlines()[-1].encode())
        elif after != before and (self.answer is not None or not self.may_answer("fresh")):
            self.say(f"an id was found, but the agent file changed to {after!r}")
        elif after != before and not self.is_new_id(after):
            self.say(f"the agent file is {after!r}")

    def judge_stored(self, printed):
        after = self.after.agent_file
        if self.case.store and after is not None and after != printed and printed.startswith(after):
            self.lose(f"the new id, of which the agent file has {after!r}", "id")
        elif after != printed:
            self.say(f"a new id was printed, but the agent file is {after!r}")

    def is_new_id(self, content):
        """Whether a run that printed no id may have stored this."""
        form = _FRESH_ID if self.case.random else _ID_TEXT
        return form.fullmatch(content.decode(errors="replace")) or (self.case.store and len(content) < ID_SIZE)

    def may_answer(self, source):
        return source in prescribed_answers(self.sources, self.case.hits)

    def judge_log(self):
        text = "".join(self.new_texts())
        messages, torn = read_messages(text)
        for line in torn:
            self.lose(f"a line without its whole head or end: {line[:60]!r}", "torn")
        no_log = self.run.out.startswith(_NO_LOG)
        if no_log and text:
            self.say("standard output says that there is no log, but there is one")
        self.judge_messages(messages, no_log)

    def judge_messages(self, messages, no_log):
        ways = [steps for steps in self.ways() if missing(messages, steps) is not None]
        if not ways:
            self.say(f"the log's messages are no run's: {[text for _, _, text in messages]}")
            return
        steps = min(ways, key=lambda steps: len(missing(messages, steps)))
        lost = missing(messages, steps)
        if not lost:
            return
        required = [step for step in steps if step.required]
        kinds = ["message"] if len(lost) == 1 else []
        if lost == required[-len(lost):]:
            kinds.append("rest")
        if no_log and not messages:
            kinds = ["log"]
        texts = ", ".join(step.text.replace("\\", "")[:50] for step in lost)
        self.lose(f"{len(lost)} message(s): {texts}", *kinds)

    def ways(self):
        """All ways that this run may have gone."""
        run = self.run
        if run.status == 0:
            if self.answer is not None:
                yield list(way(self.case, self.sources, self.answer, re.escape(run.out.splitlines()[-1])))
            return
        if run.status == 1 and run.err.endswith(_NOT_STARTED):
            yield []
            return
        for answer in prescribed_answers(self.sources, self.case.hits):
            id_text = re.escape(self.sources[answer]) if answer in self.sources else ID
            yield from _broken_off(self.case, way(self.case, self.sources, answer, id_text), run)

    def new_texts(self):
        """What the run added to the logs; says what of the old text is gone."""
        added = []
        archived = [content for path, content in self.after.archives.items() if path not in self.after.broken]
        for path, content in self.before.archives.items():
            if path in self.before.broken or content in archived or path == _OLDEST_ARCHIVE:
                continue
            self.lose(f"the archive {path}", "archive")
        for path in self.after.broken:
            content = self.after.archives[path]
            if not any(old.startswith(content) for old in [*self.before.archives.values(), *self.before.logs.values()]):
                self.say(f"{path} holds what no log did")
        for path, old in self.before.logs.items():
            new = self.after.logs.get(path, b"")
            if new.startswith(old):
                added.append(new[len(old):])
            elif old in archived and len(old) > machine.SIZE_LIMIT:
                added.append(new)
            else:
                self.lose(f"the old text of {path}", "old text")
                added.append(new)
        added += [new for path, new in self.after.logs.items() if path not in self.before.logs]
        texts = [text.decode(errors="replace") for text in added if text]
        if len(texts) > 1:
            self.say("the run's messages stand in more than one log")
        return texts


def judge(losses, case, before, run, after):
    """The verdict on the faulted run of a case."""
    return Judge(losses, case, machine.SCENARIOS[case.scenario].sources, before, run, after).judge()


def judge_repeat(case, before, run, after):
    """The verdict on a run without a fault, on what an earlier run has left: nothing at all may be lost."""
    sources = dict(machine.SCENARIOS[case.scenario].sources)
    sources.pop("agent_file", None)
    stored = (before.agent_file or b"").decode(errors="replace")
    # Either brace may be missing, as behind a write that stopped short of the last.
    for text in (stored, stored + "}"):
        if _ID_TEXT.fullmatch(text):
            sources["agent_file"] = text
    plain = Case(case.id, case.scenario)
    verdict = Judge([], plain, sources, before, run, after).judge()
    if run.status == 1:
        verdict.problems.append(f"failed without a fault: {run.err!r}")
    return verdict


def trial(case, losses, start):
    """Sets the case's scenario up, has start() bring about the faulted run, and judges it and two more runs
    without a fault. For a stage that needs no more than that."""
    machine.reset(machine.SCENARIOS[case.scenario])
    before = machine.look()
    run = start()
    after = machine.look()
    verdict = judge(losses, case, before, run, after)
    verdict.run = run
    repeat_twice(case, after, verdict)
    return verdict


def repeat_twice(case, found, verdict):
    """Two runs without a fault on the machine as it stands; found is its state. Adds what is wrong with them."""
    answers = []
    for number in (1, 2):
        repeat = machine.run_tool()
        after = machine.look()
        verdict.add(judge_repeat(case, found, repeat, after), f"repeat {number}: ")
        answers.append(repeat.out.splitlines()[-1:])
        found = after
    if answers[0] != answers[1]:
        verdict.problems.append(f"the repeats say {answers[0]} and {answers[1]}")
