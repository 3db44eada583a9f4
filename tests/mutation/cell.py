"""Runs a command where it can change nothing:  cell.py FOLDER COMMAND...

All that is mounted is read-only there, apart from a /tmp, /dev/shm and /etc of its own that end with it. Its
processes do, too, those that it left behind and those that do not want to. Memory and sizes of files are limited.
The status is that of the command, 128 and more for a signal. For root.
"""

import ctypes
import os
import resource
import signal
import sys

MEMORY = 12 << 30  # of a process; tests promise themselves 4 GiB that they never touch
FILE_SIZE = 16 << 30  # tests make such files, all of them holes
_OF_ETC = ("alternatives", "group", "hosts", "ld.so.cache", "ld.so.conf", "localtime", "mtab", "nsswitch.conf",
           "os-release", "passwd", "timezone")
_TMPFS = (("/tmp", "mode=1777,size=1g"), ("/dev/shm", "mode=1777,size=2g"), ("/etc", "mode=755,size=16m"))

_CLONE_NEWNS, _CLONE_NEWIPC, _CLONE_NEWPID = 0x00020000, 0x08000000, 0x20000000
_MS_REC, _MS_PRIVATE = 16384, 1 << 18
_MOUNT_ATTR_RDONLY, _AT_FDCWD, _AT_RECURSIVE, _MOUNT_SETATTR = 1, -100, 0x8000, 442
_PR_SET_PDEATHSIG = 1

_libc = ctypes.CDLL(None, use_errno=True)


class _MountAttributes(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint64) for name in ("set", "clear", "propagation", "userns")]


def _check(result, what):
    if result != 0:
        error = ctypes.get_errno()
        raise OSError(error, os.strerror(error), what)


def _mount(source, target, kind, flags, data=""):
    encoded = [text.encode() if text else None for text in (source, target, kind)]
    _check(_libc.mount(*encoded, flags, data.encode()), target)


def _read_etc():
    """What programs want of /etc: {name: text, or the target of a link as str}, and folders of such."""
    def read(path):
        if os.path.islink(path):
            return os.readlink(path)
        if os.path.isdir(path):
            return {name: read(os.path.join(path, name)) for name in os.listdir(path)}
        with open(path, "rb") as file:
            return file.read()
    return {name: read("/etc/" + name) for name in _OF_ETC if os.path.lexists("/etc/" + name)}


def _write(path, content):
    if isinstance(content, str):
        os.symlink(content, path)
    elif isinstance(content, dict):
        os.mkdir(path)
        for name, inner in content.items():
            _write(os.path.join(path, name), inner)
    else:
        with open(path, "wb") as file:
            file.write(content)


def _close_the_door():
    etc = _read_etc()
    _mount("none", "/", "", _MS_REC | _MS_PRIVATE)
    read_only = _MountAttributes(set=_MOUNT_ATTR_RDONLY)
    _check(_libc.syscall(_MOUNT_SETATTR, _AT_FDCWD, b"/", _AT_RECURSIVE, ctypes.byref(read_only),
                         ctypes.sizeof(read_only)), "mount_setattr")
    _mount("proc", "/proc", "proc", 0)
    for target, options in _TMPFS:
        _mount("tmpfs", target, "tmpfs", 0, options)
    for name, content in etc.items():
        _write("/etc/" + name, content)


def _become(folder, command):
    os.setsid()
    for limit, value in ((resource.RLIMIT_AS, MEMORY), (resource.RLIMIT_FSIZE, FILE_SIZE),
                         (resource.RLIMIT_CORE, 0)):
        resource.setrlimit(limit, (value, value))
    for number in (signal.SIGPIPE, signal.SIGXFSZ):  # which Python ignores
        signal.signal(number, signal.SIG_DFL)
    os.chdir(folder)
    os.execv(command[0], command)


def _status(waited):
    return 128 + os.WTERMSIG(waited) if os.WIFSIGNALED(waited) else os.WEXITSTATUS(waited)


def _fork(child):
    """The process that does this, and never returns from it."""
    pid = os.fork()
    if pid == 0:
        try:
            child()
        except OSError as failure:
            print(f"cell: {failure}", file=sys.stderr, flush=True)
        finally:
            os._exit(127)
    return pid


def _first_process(folder, command):
    """The first process of the cell: all others end with it."""
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL, 0, 0, 0)
    _close_the_door()
    started = _fork(lambda: _become(folder, command))
    while True:
        pid, waited = os.wait()
        if pid == started:
            os._exit(_status(waited))


def main(folder, *command):
    _check(_libc.unshare(_CLONE_NEWNS | _CLONE_NEWIPC | _CLONE_NEWPID), "unshare")
    _, waited = os.waitpid(_fork(lambda: _first_process(folder, command)), 0)
    sys.exit(_status(waited))


if __name__ == "__main__":
    main(*sys.argv[1:])
