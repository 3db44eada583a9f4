"""Runs an example as its reader would, and compares what it says and leaves:  examples_test.py NAME PROGRAM

Each works in a folder of its own. The commands, their output on both streams and the files that they leave make a
transcript, which must be that of NAME.txt. What differs from run to run, and that alone, is replaced by a word in
capitals first. With UPDATE=1 in the environment the transcript is written there instead, to be looked at.
"""

import difflib
import gzip
import os
import re
import shlex
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, os.pardir, "data")

LOG_LINE = [(r"^\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\] <\d{6,}> ", "[TIME] <THREAD> "),
            (r"(?<=An exception was thrown from thread \[)\d+(?=\]\.$)", "THREAD")]


class Session:
    """A folder, and the transcript of what was done there."""

    def __init__(self, program, folder, patterns):
        self.program = os.path.abspath(program)
        self.folder = folder
        self.patterns = patterns
        self.lines = []

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)

    def call(self, *arguments, given=b""):
        return subprocess.run([self.program, *arguments], input=given, capture_output=True, cwd=self.folder,
                              env={**os.environ, "LC_ALL": "C"}, timeout=60, check=False)

    def run(self, *arguments, given=b"", title="", sort=False):
        """Runs the program and notes all of it. Output that comes in any order is sorted."""
        result = self.call(*arguments, given=given)
        output = self.plain(result.stdout)
        self.note("$ " + shlex.join([os.path.basename(self.program), *arguments]) + title)
        self.lines += sorted(output, key=lambda line: line.partition("> ")[2]) if sort else output
        self.lines += ["error: " + line for line in self.plain(result.stderr)]
        if result.returncode != 0:
            self.note(f"status: {result.returncode}")

    def plain(self, content):
        """The lines of a text, without what differs from run to run."""
        lines = content.decode().splitlines()
        for pattern, word in self.patterns:
            lines = [re.sub(pattern, word, line) for line in lines]
        return lines

    def note(self, line):
        self.lines.append(line)

    def show(self, name):
        """Notes a text file, or what is in an archive; zero bytes in front are counted."""
        with (gzip.open if name.endswith(".gz") else open)(self.path(name), "rb") as file:
            content = file.read()
        text = content.rstrip(b"\0")
        zeros = len(content) - len(text)
        self.note(f"== {name}" + (f", and {zeros} zero bytes" if zeros else ""))
        self.lines += self.plain(text)

    def list(self):
        self.note("== left behind: " + " ".join(sorted(os.listdir(self.folder))))


def exception_relay(session):
    session.run()


def file_metadata(session):
    session.write("a", b"")
    session.write("b", b"content")
    os.chmod(session.path("a"), 0o4710)
    os.utime(session.path("a"), (1, 1709251198))
    session.run("save", "a", "record")
    session.run("restore", "record", "b")
    stat = os.stat(session.path("b"))
    session.note(f"== b: mode {stat.st_mode & 0o7777:o}, {stat.st_size} bytes, accessed at {int(stat.st_atime)}, "
                 f"modified at {int(stat.st_mtime)}")
    session.note(f"== record: {os.stat(session.path('record')).st_size} bytes")

    with open(session.path("record"), "ab") as file:
        file.write(b"x")
    session.run("restore", "record", "b")
    session.write("record", b"\1\0\0")
    session.run("restore", "record", "b")
    session.run("save", "missing", "record")
    session.run("restore", "record")
    session.list()


def fleet_ids(session):
    def look(title, *lines):
        session.run(given="".join(line + "\n" for line in lines).encode(), title=f" # {title}")

    look("a fleet in order", "# all of it", "a {8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f}", "",
         "b 4A0F0CD7-6A92-4D0E-8B0B-0242AC120002\t# an id in capitals",
         "a {8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f} # once more", " c  {ffffffff-ffff-ffff-ffff-fffffffffffe}\r")
    look("equal ids", "a {8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f}", "b {4a0f0cd7-6a92-4d0e-8b0b-0242ac120002}",
         "c 8C5A1F3E-77D0-4B52-9C3F-1A2B3C4D5E6F")
    look("several on one host", "a {8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f}",
         "a {4a0f0cd7-6a92-4d0e-8b0b-0242ac120002}")
    look("twins", "a {8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f}", "b {3e1f5a8c-d077-524b-9c3f-1a2b3c4d5e6f}",
         "c {3e1f5a8c-d077-524b-3f9c-1a2b3c4d5e6f}")
    look("zeros, ones and one byte", "a 00000000-0000-0000-0000-000000000000",
         "b {ffffffff-ffff-ffff-ffff-ffffffffffff}", "c {fefefefe-fefe-fefe-fefe-fefefefefefe}")
    look("placeholders as firmware has them, and as they are printed",
         "a {03000200-0400-0500-0006-000700080009}", "b {00020003-0004-0005-0006-000700080009}",
         "c {78563412-3412-7856-90ab-cddeefaabbcc}")
    look("no ids", "a {8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f", "b 8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f}",
         "c 8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6", "d 8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6g",
         "e 8c5a1f3e77d04b529c3f1a2b3c4d5e6f1234", "f 8c5a1f3-e77d0-4b52-9c3f-1a2b3c4d5e6f",
         "g {}", "h 8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e-f", "i 8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6-f")
    look("no pairs", "a", "b {8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f} c",
         "\x1b[2Jd {8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f}")
    look("nothing", "# nobody")
    session.write("one", b"a {8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f}\n")
    session.write("two", b"b {8c5a1f3e-77d0-4b52-9c3f-1a2b3c4d5e6f}\n")
    session.run("one", "two")
    session.run("one", "missing")
    session.run("--help")


def key_set(session):
    session.run("write", "keys", "Größe")
    session.note(f"== keys: mode {os.stat(session.path('keys')).st_mode & 0o7777:o}")
    session.run("list", "keys")
    with open(session.path("keys"), "rb") as file:
        first = file.read()
    os.chmod(session.path("keys"), 0o644)
    session.run("write", "keys", "a")
    with open(session.path("keys"), "rb") as file:
        second = file.read()
    session.note(f"== keys: mode {os.stat(session.path('keys')).st_mode & 0o7777:o}, "
                 f"{len(second)} bytes, {'other' if first[-68:-20] != second[-68:-20] else 'the same'} keys")
    session.write("keys", b"\2\0\0\0" + second[4:])
    session.run("list", "keys")
    session.run("list", "missing")
    session.run("list")
    session.list()


def log_demo(session):
    session.run("folder/logs")
    session.show("folder/logs/demo.log")
    session.show("folder/logs/demo.log.gz")
    session.run("folder/logs")
    session.note("== left behind: " + " ".join(sorted(os.listdir(session.path("folder/logs")))))
    session.run()
    session.list()


# Every record of tests/data that is one, by the form that it has.
RECORDS = {
    "acl": ["acl_data"],
    "aes-key": ["aes_key_iv_blob"],
    "attributes": ["file_attributes"],
    "date": ["date_time_local", "date_time_utc"],
    "exception": ["errno_exc", "exc_base", "file_locked_exc"],
    "file-info": ["file_info", "file_info_link"],
    "file-meta": ["file_meta"],
    "key": ["crypto_key"],
    "key-set": ["key_set"],
    "key-set-id": ["key_set_id"],
    "key-sets": ["key_set_collection"],
    "policy": ["processing_policy"],
    "repair-record": ["repair_record"],
    "runtime-exception": ["runtime_exc"],
    "security": ["posix_file_security"],
}


# Those of them that are cut off within each of their fields; they have all that the others have.
CUT = ("exc_base", "file_info", "key_set")


def fields(name):
    """The bytes of each field of a record in tests/data."""
    with open(os.path.join(DATA, name + ".hex"), encoding="utf-8") as file:
        lines = [line.partition("#")[0] for line in file]
    return [bytes.fromhex(line.partition(":")[2]) for line in lines if ":" in line]


def expect_offset(session, form, record, pattern):
    """The record is refused, with an offset that lies in it."""
    result = session.call(form, given=record)
    error = result.stderr.decode().strip()
    match = re.fullmatch(r"Offset (\d+): " + pattern, error)
    if result.returncode != 1 or not match or int(match[1]) > len(record):
        session.note(f"== {form}, {record.hex(' ')}: status {result.returncode}, {error}")


def expect_false_forms_refused(session, form, record_fields, everywhere):
    """A byte too many and one too few, at the end or at the end of each field, are refused."""
    record = b"".join(record_fields)
    expect_offset(session, form, record + b"x", r"the record ends here, and 1 more bytes follow\.")
    ends = {len(b"".join(record_fields[:count + 1])) for count in range(len(record_fields))}
    for end in sorted(ends) if everywhere else [len(record)]:
        expect_offset(session, form, record[:end - 1], r"\[[a-z0-9._]+\] has \d+ bytes, and \d+ are left\.")


def record_dump(session):
    for form, names in RECORDS.items():
        for name in names:
            record_fields = fields(name)
            session.run(form, given=b"".join(record_fields), title=f" # {name}")
            expect_false_forms_refused(session, form, record_fields, name in CUT)

    session.run("--show-keys", "aes-key", given=b"".join(fields("aes_key_iv_blob")))
    session.run("--show-keys", "repair-record", given=b"".join(fields("repair_record")))
    session.write("record", b"".join(fields("crypto_key")))
    session.run("key", "record")
    session.run("--show-keys", "key", "record")

    session.run("key-set", given=b"\2\0\0\0", title=" # another version")
    session.run("key-set-id", given=b"\x0f\0\0\0" + bytes(15), title=" # too short an id")
    session.run("acl", given=b"acle", title=" # another magic")
    session.run("key", given=b"\1\0\0\0\xff\xff\xff\xff", title=" # a false length")
    session.run("key-sets", given=b"\xff\xff\xff\xff", title=" # a false count")
    session.run("exception", given=b"\xff\xff\xff\xff\0\0\0\0\xfe\xff\xff\xff", title=" # counts below 0")
    session.run("policy", given=b"\1\0\0\0\0\0\0\0", title=" # without an id")
    session.run("policy", given=b"\7\0\0\0\2\0\0\0" + b"\x10\0\0\0" + bytes(16), title=" # of an unknown type")
    session.run("date", given=b"\2\0\0\0" + b"\xff" * 7 + b"\x7f", title=" # beyond all years")
    session.run("acl", given=b"acld\1\0\0\0\5\0\0\0\x1b[2\"\\\0\0\0\0", title=" # hostile to terminals")
    session.run("security", "/dev/zero")
    session.run("security", "missing")
    session.run("unknown")
    session.run()
    with open("/dev/full", "wb") as full:
        result = subprocess.run([session.program, "key", "record"], stdout=full, stderr=subprocess.PIPE,
                                cwd=session.folder, timeout=60, check=False)
    session.note(f"== on a full disk: {result.returncode}, {result.stderr.decode().strip()}")


def shared_log(session):
    session.run("a.log", "3")
    for name in ("a.log", "a.1.log", "a.2.log"):
        session.show(name)
    session.run("a.log", "1")
    session.show("a.log")
    session.run("", "1")
    session.run("a.log")
    session.run("a.log", "many")
    session.list()


def thread_pool(session):
    session.run(sort=True)


EXAMPLES = {
    exception_relay: [],
    file_metadata: [],
    fleet_ids: [],
    key_set: [(r"^ID: [0-9a-f]{32} ", "ID: ID "), (r"^Made: \d{4}-\d\d-\d\d \d\d:\d\d:\d\d UTC$", "Made: TIME UTC")],
    log_demo: LOG_LINE,
    record_dump: [],
    shared_log: LOG_LINE,
    thread_pool: [*LOG_LINE, (r"(?<=\| Thread: )-?\d+(?=\. Role: )", "THREAD"),
                  (r" Thread id: \d+, parent id: \d+, ", " Thread id: THREAD, parent id: THREAD, "),
                  (r" Time: \d+ seconds ago\.$", " Time: AGE seconds ago.")],
}


def transcript(name, program):
    run, patterns = next((run, patterns) for run, patterns in EXAMPLES.items() if run.__name__ == name)
    os.umask(0o022)
    with tempfile.TemporaryDirectory(prefix="nelvo-example-",
                                     dir="/dev/shm" if os.path.isdir("/dev/shm") else None) as folder:
        session = Session(program, folder, patterns)
        run(session)
    return "".join(line + "\n" for line in session.lines)


def main(name, program):
    path = os.path.join(HERE, name + ".txt")
    found = transcript(name, program)
    if os.environ.get("UPDATE") == "1":
        with open(path, "w", encoding="utf-8") as file:
            file.write(found)
    with open(path, encoding="utf-8") as file:
        expected = file.read()
    sys.stdout.writelines(difflib.unified_diff(expected.splitlines(keepends=True), found.splitlines(keepends=True),
                                               name + ".txt", "this run"))
    return found != expected


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:3]))
