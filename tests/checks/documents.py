"""Holds what the documents say of the tool against its sources:  documents.py ROOT

Options: tool/command_line.cpp declares what the manual, the completion and the README's usage line have, and no
document or unit calls the tool with another one.

Diagnostics: a text is a string of the tool or of a log's receivers that has a blank in it. The manual's DIAGNOSTICS
have each that a caller can come to see, and of the components below, those of the functions that a run comes to.
What stands there and in none of these sources is said by somebody else, and an end-to-end test has seen it. The log
excerpts of the other documents are made of such texts.

Paths: FILES has each path of those sources, and no other. The README names the tool's own.

Examples: the README's code stands in a source of examples/ as it is, and the logs that it shows of examples are made of
lines of their transcripts.

Lists: the README tells of each command of script/, and docs/architecture.md of each preset. A link of a document leads
to a file of the tree.
"""

import json
import os
import re
import sys

import tree

MANUAL = "packaging/nelvoagentid.8"
COMPLETION = "packaging/nelvoagentid.bash-completion"
COMMAND_LINE = "tool/command_line.cpp"
README = "README.md"
ARCHITECTURE = "docs/architecture.md"
PRESETS = "CMakePresets.json"
CALLERS = (README, "docs/operators.md", MANUAL, "packaging/nelvoagentid-first-boot.service")
EXCERPTS = (README, "docs/operators.md")
SOURCES = ("tool", "nelvo/logging/receiver")
TESTS = ("tests/run", "tests/faults")
EXAMPLES = "examples"
TRANSCRIPTS = "tests/examples"

# What the other commands call, and nobody else.
INNER_COMMANDS = {"./script/configure", "./script/help"}

# How paths begin that only the tool would have a README name.
OWN_PATHS = ("/etc/nelvo", "/sys/", "/tmp/Nelvo")

# The functions below those folders that a run comes to, and whose texts it lets out.
REACHED = {
    "nelvo/core/guid.cpp": ("Guid::Parse(std::string_view", "Guid::ToString("),
    "nelvo/fs/file_aging.cpp": ("AgeFile(",),
    "nelvo/fs/file_utils.cpp": ("ThrowNoInfo(", "CreateDirectory("),
    "nelvo/logging/log_channel.cpp": ("ThreadLine(",),
    "nelvo/logging/progress_scope.cpp": ("progress_scope_t::close_failed(",),
    "nelvo/posix/posix_file.cpp": ("SeekOrThrow(", "posix_file_t::CreateOrOpen(", "posix_file_t::GetSize(",
                                   "posix_file_t::ReadBytes(", "posix_file_t::set_size("),
}

_PARAMETERS = "no run reads a list of log parameters"
_EARLY = "the log is rotated at the start, before anything is written to it"

# Texts of the sources that nobody comes to see, and why.
UNSEEN = {
    "Cannot close GZ archive [%1].": _EARLY,
    "Cannot create a log file.": "the next path is tried instead",
    "Command line options": "there is no help",
    "Error code: %1": _EARLY,
    "LOG: ": _PARAMETERS,
    "LOG: <error, logs disabled>": _PARAMETERS,
    "LOG: Parsing log parameters ...": _PARAMETERS,
    "Log paths list is empty.": "without a name the log is no file",
    "Unable to create log,": _PARAMETERS,
    "dmidecode 2> /dev/null | grep -i uuid": "a command",
    "flock() call has failed.": "a destructor drops it",
    "log file name": "there is no help",
}

_STRING = r'"((?:[^"\\\n]|\\.)*)"'
_GLUED = re.compile(_STRING + r"(?:\s*\+\s*[\w.]+\s*\+\s*" + _STRING + ")?")
_COMMENT = re.compile(r"^\s*//.*$|^\s*#.*$", re.MULTILINE)
_CONSTANT = re.compile(r"\b(k\w+)(?:\[\])? = (" + _STRING + ");")
_ESCAPES = {r"\n": "\n", r"\r": "\r", r"\t": "\t", r"\"": '"', r"\\": "\\"}
_PATH = re.compile(r"(?<![\w./])/[\w.-]+(?:/[\w.-]+)+/?")
_CALL = re.compile(r"\bnelvoagentid((?: +[^\s|&;<>`]+)+)")
_EXCERPT = re.compile(r"\] < *\d+> agentid\| *(?:(?:WARN|ERR |>>  )\|)?(.*)")
_EXAMPLE = re.compile(r"\] < *\d+> (?!agentid)(\w+ *\|.*)")
_CODE = re.compile(r"^```cpp\n(.*?)^```$", re.MULTILINE | re.DOTALL)
_LINK = re.compile(r"\]\(([^)\s#]+)[^)]*\)")
_VALUE = re.compile(r"%\d|<[^<>]*>")


# ---- The sources ----

def plain(text):
    return re.sub(r"\\.", lambda match: _ESCAPES.get(match[0], match[0]), text)


def strings(code):
    """The strings of a source, with "<>" in the place of a value that is glued between two of them."""
    joined = re.sub(r'"\s*\n\s*"', "", _COMMENT.sub("", code))
    return [plain(first + "<>" + second if second else first) for first, second in _GLUED.findall(joined)]


def texts(code):
    """The strings that tell something: with a blank, and a letter."""
    return {text.strip("\n") for text in strings(code) if " " in text and re.search("[A-Za-z]", text)}


def body_of(code, function):
    """The definitions of the functions that are called so, with their constants in place; empty if there is none."""
    constants = {name: string for name, string, _ in _CONSTANT.findall(code)}
    definition = re.compile(r"^[^\s/#}][^\n;]*(?<!\w)" + re.escape(function)
                            + r"[^;{]*\{.*?^\}(?:\ncatch \(.*?\)\n\{.*?^\})*", re.MULTILINE | re.DOTALL)
    bodies = "\n".join(definition.findall(code))
    return re.sub(r"\bk\w+", lambda match: constants.get(match[0], match[0]), bodies)


def sources(root):
    """{path: code} of the sources whose every text counts."""
    return {path: tree.read(root, path) for path in tree.files(root, *SOURCES) if path.endswith(".cpp")}


def seen_texts(root, faults):
    """{text: path} of what can come to be seen."""
    found = {text: path for path, code in sources(root).items() for text in texts(code)}
    faults += (f"tests/checks/documents.py: nothing says {text!r}" for text in UNSEEN if text not in found)
    found = {text: path for text, path in found.items() if text not in UNSEEN}
    for path, functions in REACHED.items():
        code = tree.read(root, path)
        for function in functions:
            said = texts(body_of(code, function))
            found.update({text: path for text in said})
            if not said:
                faults.append(f"{path}: {function[:-1]} says nothing, or is not there")
    return found


def declared_options(root):
    """-l and --log of add_options()("log,l", ...)."""
    found = set()
    for declared in re.findall(r"add_options\(\)([^;]*);", tree.read(root, COMMAND_LINE)):
        for long, short in re.findall(r'\("([\w-]+),(\w)"', declared):
            found |= {"--" + long, "-" + short}
    return found


def source_paths(root, folder):
    """The paths in the strings of a folder, and the names of logs."""
    found = set()
    for path, code in sources(root).items():
        if path.startswith(folder):
            for string in strings(code):
                found |= {name.rstrip("/") for name in _PATH.findall(string)}
                found |= {string} if re.fullmatch(r"\w+\.log", string) else set()
    return found


# ---- The documents ----

def section(manual, name):
    """The lines of a section of the manual."""
    parts = re.split(r"^\.Sh (.*)$", manual, flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2])).get(name, "").splitlines()


def flags(lines):
    """The options that are marked as such: "Fl l" and "Fl -log"."""
    return {"-" + name for line in lines for name in re.findall(r"\bFl (-?[\w-]+)", line)}


def items(lines):
    """What the manual lists, without the marks of where a line may be broken."""
    return [line.removeprefix(".It ").replace("\\:", "") for line in lines if line.startswith(".It ")]


def pattern(text):
    """What a text may look like when its values stand in it."""
    return re.compile(".+".join(re.escape(part) for part in _VALUE.split(text.rstrip())))


def says(document, wanted, there, what):
    return ([f"{document}: {what} lacks {name}" for name in sorted(wanted - there)]
            + [f"{document}: {what} has {name}, which the sources lack" for name in sorted(there - wanted)])


def option_faults(root, manual):
    options = declared_options(root)
    if not options:
        yield f"{COMMAND_LINE}: declares no option"
    yield from says(MANUAL, options, flags(section(manual, "SYNOPSIS")), "SYNOPSIS")
    listed = [".It " + item for item in items(section(manual, "DESCRIPTION"))]
    yield from says(MANUAL, options, flags(listed), "DESCRIPTION")
    words = re.findall(r'compgen -W "([^"]*)"', tree.read(root, COMPLETION))
    yield from says(COMPLETION, options, set(" ".join(words).split()), "compgen -W")
    usage = re.findall(r"^ *nelvoagentid (\[.*\])$", tree.read(root, README), re.MULTILINE)
    yield from says(README, options, set(re.findall(r"--?[\w-]+", " ".join(usage))), "usage")
    for document in CALLERS:
        for words in _CALL.findall(tree.read(root, document)):
            called = {word.split("=")[0] for word in words.split() if re.match("--?[A-Za-z]", word)}
            yield from (f"{document}: calls nelvoagentid with {word}" for word in sorted(called - options))


def diagnostic_faults(root, manual):
    faults = []
    seen = seen_texts(root, faults)
    listed = items(section(manual, "DIAGNOSTICS"))
    faults += (f"{path}: {MANUAL} does not tell of {text!r}" for text, path in sorted(seen.items())
               if not any(pattern(text).fullmatch(item) for item in listed))
    tests = "\n".join(tree.read(root, path) for path in tree.files(root, *TESTS))
    faults += (f"{MANUAL}: nobody says {item!r}" for item in listed
               if not any(pattern(text).fullmatch(item) for text in seen)
               and not re.search(pattern(item).pattern.replace(".+", '[^"\\n]+'), tests))
    faults += (f"{MANUAL}: {item!r} stands there twice" for item in sorted(set(listed)) if listed.count(item) > 1)
    for document in EXCERPTS:
        faults += (f"{document}: no line of a log: {line!r}"
                   for line in map(str.strip, _EXCERPT.findall(tree.read(root, document)))
                   if not any(pattern(item).fullmatch(line) for item in listed))
    return faults


def path_faults(root, manual):
    wanted = set().union(*(source_paths(root, folder) for folder in SOURCES))
    there = {name.rstrip("/") for item in items(section(manual, "FILES"))
             for name in re.findall(r"\S+", item.removeprefix("Pa")) if name.startswith("/") or name.endswith(".log")}
    yield from says(MANUAL, wanted, there, "FILES")
    named = {name.rstrip("/.") for name in _PATH.findall(tree.read(root, README))}
    yield from (f"{README}: lacks {name}" for name in sorted(source_paths(root, "tool") - {"/dev/null"})
                if name.startswith("/") and name not in named)
    yield from (f"{README}: has {name}, which the sources lack" for name in sorted(named - wanted)
                if name.startswith(OWN_PATHS))


def example_faults(root):
    readme = tree.read(root, README)
    examples = "\n".join(tree.read(root, path) for path in tree.files(root, EXAMPLES) if path.endswith(".cpp"))
    for code in _CODE.findall(readme):
        if code not in examples:
            yield f"{README}: no example has {code.splitlines()[0]!r} and what follows it"
    transcripts = [line for path in tree.files(root, TRANSCRIPTS) if path.endswith(".txt")
                   for line in tree.read(root, path).splitlines()]
    for line in _EXAMPLE.findall(readme):
        if not any(told.endswith("> " + line) for told in transcripts):
            yield f"{README}: no example logs {line!r}"


def list_faults(root):
    commands = {"./" + path for path in tree.files(root, "script") if not path.endswith(".txt")} - INNER_COMMANDS
    told = re.findall(r"^\| `(\./script/\w+)", tree.read(root, README), re.MULTILINE)
    yield from says(README, commands, set(told), "Commands")
    presets = {preset["name"] for preset in json.loads(tree.read(root, PRESETS))["configurePresets"]
               if not preset.get("hidden")}
    _, _, table = tree.read(root, ARCHITECTURE).partition("\n| Preset |")
    told = re.findall(r"^\| `([\w-]+)` \|", table.partition("\n\n")[0], re.MULTILINE)
    yield from says(ARCHITECTURE, presets, set(told), "the list of presets")


def link_faults(root):
    for document in tree.files(root):
        if document.endswith(".md"):
            for target in _LINK.findall(tree.read(root, document)):
                if not os.path.exists(os.path.join(root, os.path.dirname(document), target)):
                    yield f"{document}: a link leads to {target}, which is not there"


def check(root):
    manual = tree.read(root, MANUAL)
    return [*option_faults(root, manual), *diagnostic_faults(root, manual), *path_faults(root, manual),
            *example_faults(root), *list_faults(root), *link_faults(root)]


if __name__ == "__main__":
    tree.finish("documents", check(sys.argv[1]))
