"""Holds a built program against what is promised of the tool:

hardening.py READELF PROGRAM COMMANDS ROOT [EXPORT...]
hardening.py --static READELF PROGRAM COMMANDS ROOT

Position independent, all relocations read-only, stack not executable, stack protector and fortified calls
inside, no search path for libraries. The program needs the C library and no other, and exports exactly the names;
a static one has no interpreter, needs no library and exports nothing. The libraries that are linked in bring
protected calls of their own, so the compile commands (compile_commands.json) are read too: each source of the
project is compiled with both.
"""

import json
import os
import re
import subprocess
import sys

import tree

_NEEDED = re.compile(r"\(NEEDED\)\s+Shared library: \[(.+)\]")
_STACK = re.compile(r"^\s*GNU_STACK\s.*\s([RWE ]{3})\s+0x[0-9a-f]+$", re.MULTILINE)
_C_LIBRARY = re.compile(r"libc\.so\.6|ld-linux-.*\.so\.\d+")
_SYMBOL = re.compile(r"^\s*\d+: [0-9a-f]+\s+\S+ \S+\s+(?:GLOBAL|WEAK|UNIQUE)\s+\S+\s+(\S+) (\S+)", re.MULTILINE)

# Defines functions of the C library, which fortified headers would define themselves.
_UNFORTIFIED = "libc_overrides.cpp"


def readelf(tool, *arguments):
    return subprocess.run([tool, "--wide", *arguments], check=True, capture_output=True, text=True).stdout


def linking_faults(segments, dynamic, symbols, exports, static):
    """What the program takes from other files at its start, and what it gives them."""
    needed = _NEEDED.findall(dynamic)
    if static and "INTERP" in segments:
        yield "has an interpreter"
    if not static and "libc.so.6" not in needed:
        yield "does not need the C library"
    yield from (f"needs {name}" for name in needed if static or not _C_LIBRARY.fullmatch(name))

    exported = {name.split("@")[0] for section, name in _SYMBOL.findall(symbols) if section != "UND"}
    yield from (f"exports {name}" for name in sorted(exported - set(exports)))
    yield from (f"does not export {name}" for name in sorted(set(exports) - exported))


def program_faults(tool, program, exports, static):
    header = readelf(tool, "--file-header", program)
    segments = readelf(tool, "--segments", program)
    dynamic = readelf(tool, "--dynamic", program)
    dynamic_symbols = readelf(tool, "--dyn-syms", program)
    symbols = readelf(tool, "--symbols", program) if static else dynamic_symbols
    stack = _STACK.search(segments)

    faults = []
    if not re.search(r"Type:\s+DYN", header) or not re.search(r"\(FLAGS_1\).*\bPIE\b", dynamic):
        faults.append("is not position independent")
    if "GNU_RELRO" not in segments:
        faults.append("has no read-only relocations")
    if not re.search(r"\bBIND_NOW\b", dynamic):
        faults.append("binds lazily, so that not all relocations become read-only")
    if not stack or "E" in stack[1]:
        faults.append("has an executable stack")
    if "(TEXTREL)" in dynamic:
        faults.append("has relocations in its code")
    if "__stack_chk_fail" not in symbols:
        faults.append("has no stack protector")
    if not re.search(r" __\w+_chk(@|$)", symbols.replace("__stack_chk", ""), re.MULTILINE):
        faults.append("has no fortified call")
    if re.search(r"\((RPATH|RUNPATH)\)", dynamic):
        faults.append("has a search path for libraries")
    faults += linking_faults(segments, dynamic, dynamic_symbols, exports, static)
    return [f"{program}: {fault}" for fault in faults]


def last_of(arguments, *flags):
    """The flag that counts: the last of those that overrule each other."""
    given = [argument for argument in arguments if argument.startswith(flags)]
    return given[-1] if given else None


def command_faults(commands, root):
    product = tuple(os.path.join(root, folder, "") for folder in ("nelvo", "tool"))
    with open(commands, encoding="utf-8") as file:
        entries = [entry for entry in json.load(file) if entry["file"].startswith(product)]
    for entry in entries:
        arguments = entry["command"].split()
        if last_of(arguments, "-fstack-protector", "-fno-stack-protector") != "-fstack-protector-strong":
            yield f"{entry['file']}: compiled without -fstack-protector-strong"
        fortify = last_of(arguments, "-D_FORTIFY_SOURCE", "-U_FORTIFY_SOURCE")
        if fortify != "-D_FORTIFY_SOURCE=2" and os.path.basename(entry["file"]) != _UNFORTIFIED:
            yield f"{entry['file']}: compiled without -D_FORTIFY_SOURCE=2"


def check(tool, program, commands, root, *exports, static=False):
    return program_faults(tool, program, exports, static) + list(command_faults(commands, root))


def main(arguments):
    static = arguments[:1] == ["--static"]
    tree.finish("hardening", check(*arguments[static:], static=static))


if __name__ == "__main__":
    main(sys.argv[1:])
