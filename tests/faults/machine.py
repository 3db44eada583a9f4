"""A private machine for one worker, and runs of the tool on it.

The worker enters a mount namespace of its own and changes its root to a tmpfs there: /etc, /sys, /tmp, /fake,
/work and /out hold only what a scenario puts there, beside the real /usr and /proc. Nothing of it is seen from
outside, and it ends with the worker. After enter() every path is one of the private machine:

    machine.enter(empty_folder, build)
    machine.reset(machine.SCENARIOS["sysfs"])
    run = machine.run_tool(strace=["-e", "inject=openat:error=EMFILE:when=3"])
    found = machine.look()
"""

import contextlib
import ctypes
import dataclasses
import functools
import gzip
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import time
import zlib

TOOL = "/tool/nelvoagentid"
PRELOAD = "/faults/libfault_preload.so"
CLOCK = "/faults/libclock_preload.so"
PROGRAMS = "/faults"
AGENT_FILE = "/etc/nelvoagentid"
SYSFS = "/sys/class/dmi/id/product_uuid"
LOG = "/work/nelvoagentid.log"
FALLBACK_FOLDER = "/tmp/NelvoBackup"
CALLS = "/out/calls"
INJECTED = "/out/injected"  # where strace and the preloaded library mark the failures that they brought about

SOURCES = ("agent_file", "dmidecode", "sysfs")  # as they are asked
AGENT_ID = "{a0a1a2a3-a4a5-46a7-88a9-aaabacadaeaf}"
DMIDECODE_ID = "{d0d1d2d3-d4d5-46d7-88d9-dadbdcdddedf}"
SYSFS_ID = "{f0f1f2f3-f4f5-46f7-88f9-fafbfcfdfeff}"

TIME_LIMIT = 10.0
SIZE_LIMIT = 15728639

_MS_RDONLY, _MS_NOSUID, _MS_REMOUNT, _MS_BIND, _MS_REC, _MS_PRIVATE = 1, 2, 32, 4096, 16384, 1 << 18
_CLONE_NEWNS = 0x00020000
_PR_SET_CHILD_SUBREAPER = 36
_FILLED_BY_SCENARIO = ("/etc", "/fake", "/out", "/sys", "/tmp", "/work")
_DEVICES = ("/dev/null", "/dev/zero", "/dev/full", "/dev/urandom")

_libc = ctypes.CDLL(None, use_errno=True)


@dataclasses.dataclass(frozen=True)
class Scenario:
    """What stands on the machine before a run."""

    name: str
    sources: dict = dataclasses.field(hash=False)  # the id that each source answers with, of those that have one
    big_log: bool = False  # a log over the size limit, with the newest and the oldest archive beside it


SCENARIOS = {scenario.name: scenario for scenario in (
    Scenario("agent-file", {"agent_file": AGENT_ID, "dmidecode": DMIDECODE_ID, "sysfs": SYSFS_ID}),
    Scenario("dmidecode", {"dmidecode": DMIDECODE_ID, "sysfs": SYSFS_ID}),
    Scenario("sysfs", {"sysfs": SYSFS_ID}),
    Scenario("generated", {}),
    Scenario("big-log", {"agent_file": AGENT_ID}, big_log=True),
)}


@dataclasses.dataclass
class Run:
    """What the caller of one run got to see. A hung run was killed at the time limit."""

    status: int  # as subprocess has it: negative for a signal
    out: str
    err: str
    seconds: float
    hung: bool
    core: bool
    missed: bool = False  # the run never came to its fault


@dataclasses.dataclass
class Found:
    """The state of the machine between runs."""

    agent_file: bytes | None
    logs: dict  # path: bytes, of every file that ends in .log
    archives: dict  # path: unpacked bytes (as many as there are), of every .gz
    broken: list  # the archives that are not whole


def _check(result, what):
    if result != 0:
        error = ctypes.get_errno()
        raise OSError(error, os.strerror(error), what)


def _mount(source, target, kind, flags, data=None):
    encoded = [text.encode() if text is not None else None for text in (source, target, kind)]
    _check(_libc.mount(*encoded, flags, data.encode() if data else None), target)


def mount_tmpfs(target, options):
    """An empty tmpfs at a path of the private machine, as for a full disk: mount_tmpfs("/work", "size=64k")."""
    _mount("tmpfs", target, "tmpfs", _MS_NOSUID, options)


def unmount(target):
    _check(_libc.umount2(target.encode(), 0), target)


def _bind(source, target, writable=False):
    _mount(source, target, None, _MS_BIND | _MS_REC)
    if not writable:
        _mount(None, target, None, _MS_BIND | _MS_REMOUNT | _MS_RDONLY)


def _copy_files(source, target):
    """The files of a folder, as they are now: it may be built in again while the campaign runs."""
    for entry in os.scandir(source):
        if entry.is_file():
            shutil.copy(entry.path, target)


def _furnish(root, build):
    """Puts into a root what stands on the machine in all scenarios."""
    for folder in _FILLED_BY_SCENARIO + ("/dev", "/faults", "/proc", "/tool", "/usr"):
        os.mkdir(root + folder)
    _bind("/usr", root + "/usr")
    _bind("/proc", root + "/proc", writable=True)
    _copy_files(f"{build}/tool", root + "/tool")
    _copy_files(f"{build}/tests/faults", root + "/faults")
    for folder in ("/bin", "/sbin", "/lib", "/lib64"):
        if os.path.islink(folder):
            os.symlink(os.readlink(folder), root + folder)
        elif os.path.isdir(folder):
            os.mkdir(root + folder)
            _bind(folder, root + folder)
    for device in _DEVICES:
        pathlib.Path(root + device).touch()
        _bind(device, root + device, writable=True)
    # The interpreter's own files, in case something is imported late.
    if not sys.base_prefix.startswith("/usr"):
        os.makedirs(root + sys.base_prefix)
        _bind(sys.base_prefix, root + sys.base_prefix)


def enter(empty_folder, build):
    """Moves this process to a private machine, for good. The folder is a mount point, shared with nobody else's
    view; build is the folder of the release build. Copies of its tool and programs stand in /tool and /faults."""
    _check(_libc.unshare(_CLONE_NEWNS), "unshare")
    _mount("none", "/", None, _MS_REC | _MS_PRIVATE)
    root = str(empty_folder)
    _mount("tmpfs", root, "tmpfs", _MS_NOSUID, "mode=755")
    _furnish(root, build)
    # Children that outlive a run come to this process, which then waits for them.
    _libc.prctl(_PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
    _, most = resource.getrlimit(resource.RLIMIT_CORE)
    resource.setrlimit(resource.RLIMIT_CORE, (most, most))
    os.chroot(root)
    os.chdir("/")


def _plain_digits(text):
    return text.strip("{}").replace("-", "")


def firmware_text(text):
    """An id as sysfs has to show it for the tool to print this one: the first three groups turned round."""
    raw = bytes.fromhex(_plain_digits(text))
    digits = (raw[3::-1] + raw[5:3:-1] + raw[7:5:-1] + raw[8:]).hex()
    return "-".join((digits[:8], digits[8:12], digits[12:16], digits[16:20], digits[20:]))


def _sealed(entry, place):
    return entry[:place] + bytes([-sum(entry) % 256]) + entry[place + 1:]


def _firmware_table(id_bytes):
    """Entry point and structures of a version 3.0 table with one system structure and the end."""
    system = bytes([1, 27, 0, 0, 1, 2, 0, 0]) + id_bytes + bytes([6, 0, 0]) + b"Maker\0Machine\0\0"
    structures = system + bytes([127, 4, 1, 0, 0, 0])
    entry = (b"_SM3_" + bytes([0, 24, 3, 0, 0, 1, 0]) + len(structures).to_bytes(4, "little")
             + (0x000F0000).to_bytes(8, "little"))
    return _sealed(entry, 5), structures


def _head(line):
    return f"[01.02.2026 03:04:05] <140000000000000> agentid| {line}\n"


# Lines of earlier runs. The big log has a part that does not pack, so that its archive is written in several
# pieces, and few, long lines, so that packing it is quick.
OLD_LINES = _head("an earlier run") + _head("and its end")
_NOISE = "".join(_head(zlib.crc32(str(i).encode()).to_bytes(4, "little").hex() * 2) for i in range(4000))
BIG_LOG = (OLD_LINES + _NOISE + "".join(_head(f"{i} " + "x" * 1000000) for i in range(16))).encode()
OLD_ARCHIVES = {LOG + ".gz": _head("the newest archive"),
                "/work/nelvoagentid.10.log.gz": _head("the oldest archive")}
_PACKED_ARCHIVES = {path: gzip.compress(text.encode()) for path, text in OLD_ARCHIVES.items()}


def _write(path, content):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content.encode() if isinstance(content, str) else content)


def _clear():
    for folder in _FILLED_BY_SCENARIO:
        for entry in os.scandir(folder):
            if entry.is_dir(follow_symlinks=False):
                shutil.rmtree(entry.path)
            else:
                os.unlink(entry.path)


def reset(scenario):
    """Clears the machine and sets the scenario up."""
    _clear()
    os.chmod("/tmp", 0o1777)
    if "agent_file" in scenario.sources:
        _write(AGENT_FILE, scenario.sources["agent_file"])
    if "sysfs" in scenario.sources:
        _write(SYSFS, firmware_text(scenario.sources["sysfs"]) + "\n")
    if "dmidecode" in scenario.sources:
        # The tool prints the bytes in the order of the table.
        entry, structures = _firmware_table(bytes.fromhex(_plain_digits(scenario.sources["dmidecode"])))
        _write("/sys/firmware/dmi/tables/smbios_entry_point", entry)
        _write("/sys/firmware/dmi/tables/DMI", structures)
        os.symlink("/usr/sbin/dmidecode", "/fake/dmidecode")
    _write(LOG, BIG_LOG if scenario.big_log else OLD_LINES)
    if scenario.big_log:
        for path, packed in _PACKED_ARCHIVES.items():
            _write(path, packed)


def run_tool(strace=None, preload=None, options=(), stdout=None, environment=None, limit=TIME_LIMIT):
    """Runs the tool in /work and waits for it and for all that it started.

    strace: options for a strace that follows the tool alone, not its children. preload: the fault for the
    preloaded library, in its own words. stdout: an open file in the place of the kept output; it is kept open.

    With either, a new second begins at each reading of the clock: what the log does once a second is then done
    by each line, and a call has the same number in every run.
    """
    variables = {"PATH": "/fake:/usr/bin:/bin", **(environment or {})}
    if strace is not None or preload is not None:
        variables |= {"LD_PRELOAD": CLOCK, "CLOCK": "1790000000:1000"}
    if preload is not None:
        variables |= {"LD_PRELOAD": f"{PRELOAD}:{CLOCK}", "FAULT": preload}
    command = [TOOL, *options]
    fails = preload not in (None, "count") or any("error=" in option for option in strace or ())
    if strace is not None:
        for_the_tool = [item for name, value in variables.items() for item in ("-E", f"{name}={value}")]
        output = [] if "-o" in strace else ["-o", INJECTED]
        command = ["/usr/bin/strace", "-qq", *for_the_tool, *output, *strace, *command]
        variables = {}
    run = run_program(command, variables, stdout, limit)
    run.missed = fails and not was_injected()
    return run


def was_injected():
    """Whether a fault of strace or of the preloaded library was brought about since the machine was reset."""
    return os.path.isfile(INJECTED) and "INJECTED" in _read(INJECTED)


def run_program(command, variables, stdout=None, limit=TIME_LIMIT):
    """Runs a command as run_tool does."""
    for name in ("/out/stdout", "/out/stderr"):
        _write(name, b"")
    begin = time.monotonic()
    with open("/out/stdout", "ab") as out, open("/out/stderr", "ab") as err:
        process = subprocess.Popen(command, env=variables, cwd="/work", stdin=subprocess.DEVNULL,
                                   stdout=stdout if stdout is not None else out, stderr=err,
                                   start_new_session=True, umask=0o22)
        try:
            process.wait(limit)
        except subprocess.TimeoutExpired:
            pass
    status = process.poll()
    hung = status is None or not _wait_for_orphans(begin + limit)
    if hung:
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        if status is None:
            status = process.wait()
        _wait_for_orphans(time.monotonic() + 2)
    return Run(status, _read("/out/stdout"), _read("/out/stderr"), time.monotonic() - begin, hung, _take_core())


def _wait_for_orphans(end):
    """False if some still run at the end."""
    while True:
        try:
            pid, _ = os.waitpid(-1, os.WNOHANG)
        except ChildProcessError:
            return True
        if pid == 0:
            if time.monotonic() > end:
                return False
            time.sleep(0.0005)


def first_injected():
    """The call that strace failed first, as it shows it."""
    return next((line for line in _read(INJECTED).splitlines() if "INJECTED" in line), "")


def sees_cores():
    """Whether a core dump would be found here: the system may be set to put them elsewhere."""
    reset(SCENARIOS["generated"])
    return run_program(["/bin/sh", "-c", "kill -SEGV $$"], {}).core


def _take_core():
    cores = [name for name in os.listdir("/work") if name.startswith("core")]
    for name in cores:
        os.unlink("/work/" + name)
    return bool(cores)


def _read(path):
    with open(path, encoding="utf-8", errors="surrogateescape") as file:
        return file.read()


@functools.lru_cache(maxsize=8)
def _unpack(packed):
    """The bytes that can be unpacked, and whether that is all."""
    unpacker = zlib.decompressobj(31)
    try:
        content = unpacker.decompress(packed)
    except zlib.error:
        return b"", False
    return content, unpacker.eof


def look():
    """The agent file, and all logs and archives wherever they stand."""
    agent_file = None
    if os.path.isfile(AGENT_FILE):
        agent_file = pathlib.Path(AGENT_FILE).read_bytes()
    found = Found(agent_file, {}, {}, [])
    for folder in ("/work", FALLBACK_FOLDER):
        for name in sorted(os.listdir(folder)) if os.path.isdir(folder) else ():
            path = f"{folder}/{name}"
            if name.endswith(".log"):
                found.logs[path] = pathlib.Path(path).read_bytes()
            elif ".gz" in name:
                found.archives[path], whole = _unpack(pathlib.Path(path).read_bytes())
                if not whole:
                    found.broken.append(path)
    return found
