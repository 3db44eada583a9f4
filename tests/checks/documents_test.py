import unittest

import documents
from tree import MadeTree

MANUAL = """\
.Sh NAME
.Nm nelvoagentid
.Sh SYNOPSIS
.Nm
.Op Fl l Ar name | Fl -log Ar name
.Sh DESCRIPTION
.Bl -tag -width Ds
.It Fl l Ar name , Fl -log Ar name
The log.
.El
.Sh FILES
.Bl -tag -width Ds
.It Pa /etc/id
The agent file.
.It Pa id.log , id.log.gz
The log.
.It Pa /tmp/Backup/
Another.
.It Pa /dev/null
Nothing.
.El
.Sh DIAGNOSTICS
.Bl -diag
.It Failed to open file [/etc/id].
It could not be opened.
.It Failed to make folder '<folder>'
It could not be made.
.It Failed to look: <path>
It could not be read.
.It Failed to lock file [<path>].
It is locked.
.It unrecognised option '<word>'
There is no such option.
.El
"""

AGENT_ID = r"""
#include "tool/agent_id.h"

// Says "nothing of this".
const char kFile[] = "/etc/id";
const char kCommand[] = "ask 2> /dev/null";

void Open()
{
    throw exc::runtime_exc_t("Failed to open "
                             "file [%1].", kFile);
}

void Look() { agent_log.error_exc(e, "\nFailed to look: %1 ", kFile); }
"""

COMMAND_LINE = """
    description.add_options()("log,l", options::value<std::string>(), "log file name");
    return found ? name : "id.log";
"""

UTILS = """
void Reached(const std::string& path)
try
{
    throw posix::errno_exc_t("Failed to make folder '" + path + "'", error);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, kContext, e);
}

void NotReached()
{
    throw exc::runtime_exc_t("Failed otherwise.");
}
"""

README = """\
# nelvoagentid

Looks into `/etc/id`, and not into /home/me/etc/id.

    $ nelvoagentid
    [21.11.2026 12:51:07] <140216541591424> agentid| ERR |Failed to look: /etc/id
    nelvoagentid [--log NAME | -l NAME]

```cpp
    Copy(from);
    Copy(to);
```

    [21.11.2026 12:51:07] <140216541591424> copy   | WARN|Copied

| `./script/run [ARGUMENTS]` | run it; [more](docs/operators.md) |
"""

ARCHITECTURE = """\
Built as [the log](../tool/command_line.cpp#top) is.

| Preset | For |
|---|---|
| `release` | what is shipped |

| `other` | another table |
"""

PRESETS = '{"configurePresets": [{"name": "base", "hidden": true}, {"name": "release"}]}'

UNSEEN = {"ask 2> /dev/null": "a command", "log file name": "there is no help"}
REACHED = {"nelvo/fs/utils.cpp": ("Reached(",)}

GOOD = {
    "CMakePresets.json": PRESETS,
    "README.md": README,
    "docs/architecture.md": ARCHITECTURE,
    "examples/copy.cpp": "void Both()\n{\n    Copy(from);\n    Copy(to);\n}\n",
    "tests/examples/copy.txt": "$ copy\n[TIME] <THREAD> copy   | WARN|Copied\n",
    "docs/operators.md": "Run `nelvoagentid --log=x`.\n",
    "nelvo/fs/utils.cpp": UTILS,
    "nelvo/logging/receiver/files.cpp": 'const char kFolder[] = "/tmp/Backup/";\nThrow("Failed to lock file [%1].");\n',
    "packaging/nelvoagentid-first-boot.service": "ExecStart=/usr/sbin/nelvoagentid --log x\n",
    "packaging/nelvoagentid.8": MANUAL,
    "packaging/nelvoagentid.bash-completion": 'compgen -W "-l --log" -- "$word"\n',
    "script/configure": "",
    "script/packages.txt": "",
    "script/run": "",
    "tests/run/command_line_test.cpp": """ExpectRefused({"-x"}, "unrecognised option '-x'");\n""",
    "tool/agent_id.cpp": AGENT_ID,
    "tool/command_line.cpp": COMMAND_LINE,
}


class Documents(unittest.TestCase):
    def setUp(self):
        kept = documents.UNSEEN, documents.REACHED
        documents.UNSEEN, documents.REACHED = UNSEEN, REACHED

        def restore():
            documents.UNSEEN, documents.REACHED = kept
        self.addCleanup(restore)

    def faults(self, *changes):
        """What is found when (path, old, new) has been replaced in the good tree."""
        contents = dict(GOOD)
        for path, old, new in changes:
            self.assertIn(old, contents[path])
            contents[path] = contents[path].replace(old, new)
        with MadeTree(contents) as root:
            return documents.check(root)

    def test_a_tree_in_order_has_no_faults(self):
        self.assertEqual([], self.faults())

    # ---- Options ----

    def test_an_option_that_the_documents_lack_is_a_fault(self):
        self.assertEqual(["packaging/nelvoagentid.8: SYNOPSIS lacks --quiet",
                          "packaging/nelvoagentid.8: SYNOPSIS lacks -q",
                          "packaging/nelvoagentid.8: DESCRIPTION lacks --quiet",
                          "packaging/nelvoagentid.8: DESCRIPTION lacks -q",
                          "packaging/nelvoagentid.bash-completion: compgen -W lacks --quiet",
                          "packaging/nelvoagentid.bash-completion: compgen -W lacks -q",
                          "README.md: usage lacks --quiet",
                          "README.md: usage lacks -q"],
                         self.faults(("tool/command_line.cpp", '"log,l"', '"quiet,q", "")("log,l"')))

    def test_an_option_that_only_the_documents_have_is_a_fault(self):
        self.assertEqual(["packaging/nelvoagentid.8: SYNOPSIS has -v, which the sources lack"],
                         self.faults(("packaging/nelvoagentid.8", ".Op Fl l", ".Op Fl v\n.Op Fl l")))
        self.assertEqual(["packaging/nelvoagentid.8: DESCRIPTION has -v, which the sources lack"],
                         self.faults(("packaging/nelvoagentid.8", ".It Fl l", ".It Fl v\n.It Fl l")))
        self.assertEqual(["packaging/nelvoagentid.bash-completion: compgen -W has --help, which the sources lack"],
                         self.faults(("packaging/nelvoagentid.bash-completion", "--log", "--log --help")))
        self.assertEqual(["README.md: usage has --help, which the sources lack"],
                         self.faults(("README.md", "-l NAME]", "-l NAME] [--help]")))

    def test_a_call_with_another_option_is_a_fault(self):
        for path, call in (("docs/operators.md", "--log=x"), ("packaging/nelvoagentid-first-boot.service", "--log x"),
                           ("README.md", "[--log NAME | -l NAME]")):
            self.assertIn(f"{path}: calls nelvoagentid with --logs",
                          self.faults((path, call, call + "\nnelvoagentid --logs")))

    def test_sources_without_an_option_are_a_fault(self):
        self.assertIn("tool/command_line.cpp: declares no option",
                      self.faults(("tool/command_line.cpp", "log,l", "log")))

    # ---- Diagnostics ----

    def test_a_text_that_the_manual_lacks_is_a_fault(self):
        manual = "packaging/nelvoagentid.8 does not tell of"
        self.assertEqual([f"tool/agent_id.cpp: {manual} 'Failed to open file [%1].'"],
                         self.faults(("packaging/nelvoagentid.8", ".It Failed to open file [/etc/id].\n", "")))
        self.assertEqual([f"""nelvo/fs/utils.cpp: {manual} "Failed to make folder '<>'\""""],
                         self.faults(("packaging/nelvoagentid.8", ".It Failed to make folder '<folder>'\n", "")))
        self.assertEqual([f"nelvo/logging/receiver/files.cpp: {manual} 'Failed to lock file [%1].'"],
                         self.faults(("packaging/nelvoagentid.8", ".It Failed to lock file [<path>].\n", "")))

    def test_a_new_text_of_the_sources_is_a_fault(self):
        manual = "packaging/nelvoagentid.8 does not tell of"
        self.assertEqual([f"tool/agent_id.cpp: {manual} 'Cannot do it.'"],
                         self.faults(("tool/agent_id.cpp", "void Look", 'Throw("Cannot do it.");\nvoid Look')))
        self.assertEqual([f"nelvo/fs/utils.cpp: {manual} 'Cannot do it.'"],
                         self.faults(("nelvo/fs/utils.cpp", "kContext", '"Cannot do it."')))
        self.assertEqual([f"nelvo/fs/utils.cpp: {manual} 'Cannot do it.'"],
                         self.faults(("nelvo/fs/utils.cpp", "\nvoid Reached",
                                      '\nconst char kContext[] = "Cannot do it.";\nvoid Reached')))

    def test_a_text_that_nobody_says_is_a_fault(self):
        self.assertEqual(["packaging/nelvoagentid.8: nobody says 'Failed otherwise.'"],
                         self.faults(("packaging/nelvoagentid.8", ".It Failed to look",
                                      ".It Failed otherwise.\n.It Failed to look")))
        self.assertEqual(["""packaging/nelvoagentid.8: nobody says "unrecognised option '<word>'\""""],
                         self.faults(("tests/run/command_line_test.cpp", "unrecognised", "unknown")))

    def test_a_text_that_stands_there_twice_is_a_fault(self):
        text = "Failed to lock file [<path>]."
        self.assertEqual([f"packaging/nelvoagentid.8: {text!r} stands there twice"],
                         self.faults(("packaging/nelvoagentid.8", f".It {text}\n", f".It {text}\n.It {text}\n")))

    def test_a_text_that_is_not_seen_any_more_is_a_fault(self):
        self.assertEqual(["tests/checks/documents.py: nothing says 'log file name'"],
                         self.faults(("tool/command_line.cpp", '"log file name"', '""')))

    def test_a_function_that_is_gone_is_a_fault(self):
        self.assertIn("nelvo/fs/utils.cpp: Reached says nothing, or is not there",
                      self.faults(("nelvo/fs/utils.cpp", "void Reached", "void Renamed")))

    def test_a_line_that_no_log_has_is_a_fault(self):
        self.assertEqual(["README.md: no line of a log: 'Failed to find: /etc/id'"],
                         self.faults(("README.md", "Failed to look", "Failed to find")))

    def test_a_mark_of_where_to_break_a_line_is_no_text(self):
        self.assertEqual([], self.faults(("packaging/nelvoagentid.8", ".It Failed to look: <path>",
                                          ".It Failed\\: to look: <path>")))

    # ---- Paths ----

    def test_a_path_that_the_manual_lacks_is_a_fault(self):
        for path in ("/etc/id", "id.log", "/tmp/Backup", "/dev/null"):
            self.assertEqual([f"packaging/nelvoagentid.8: FILES lacks {path}"],
                             self.faults(("packaging/nelvoagentid.8", f".It Pa {path}", ".It Pa other")))

    def test_a_path_that_only_the_manual_has_is_a_fault(self):
        self.assertEqual(["packaging/nelvoagentid.8: FILES has /etc/other, which the sources lack"],
                         self.faults(("packaging/nelvoagentid.8", ".It Pa /etc/id", ".It Pa /etc/id , /etc/other")))

    def test_paths_of_the_readme_are_held_against_the_sources(self):
        self.assertEqual(["README.md: lacks /etc/id", "README.md: has /sys/id, which the sources lack"],
                         self.faults(("README.md", " `/etc/id`", " `/sys/id`"),
                                     ("README.md", "look: /etc/id", "look: x")))
        self.assertEqual([], self.faults(("README.md", " `/etc/id`", " `/etc/id`, /etc/hosts, /home/x")))

    # ---- Examples ----

    def test_code_that_no_example_has_is_a_fault(self):
        self.assertEqual(["README.md: no example has '    Copy(from);' and what follows it"],
                         self.faults(("examples/copy.cpp", "Copy(to)", "Copy(back)")))

    def test_a_line_that_no_example_logs_is_a_fault(self):
        for old, new in (("WARN|Copied", "WARN|Copying"), ("copy   |", "cp     |")):
            self.assertEqual(["README.md: no example logs 'copy   | WARN|Copied'"],
                             self.faults(("tests/examples/copy.txt", old, new)))

    # ---- Lists and links ----

    def test_commands_that_differ_from_those_of_the_readme_are_a_fault(self):
        self.assertEqual(["README.md: Commands lacks ./script/run",
                          "README.md: Commands has ./script/start, which the sources lack"],
                         self.faults(("README.md", "script/run", "script/start")))

    def test_presets_that_differ_from_those_that_are_told_are_a_fault(self):
        self.assertEqual(["docs/architecture.md: the list of presets lacks debug"],
                         self.faults(("CMakePresets.json", '{"name": "release"}', '{"name": "release"}, {"name": "debug"}')))
        self.assertEqual(["docs/architecture.md: the list of presets lacks release",
                          "docs/architecture.md: the list of presets has shipped, which the sources lack"],
                         self.faults(("docs/architecture.md", "`release`", "`shipped`")))

    def test_a_link_that_leads_nowhere_is_a_fault(self):
        self.assertEqual(["docs/architecture.md: a link leads to tool/command_line.cpp, which is not there"],
                         self.faults(("docs/architecture.md", "../tool", "tool")))


if __name__ == "__main__":
    unittest.main()
