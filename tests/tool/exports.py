"""Shows that a program defines functions and exports them:  exports.py READELF PROGRAM NAME..."""

import subprocess
import sys


def exported_functions(readelf, program):
    table = subprocess.run([readelf, "--wide", "--dyn-syms", program],
                           check=True, capture_output=True, text=True).stdout
    for line in table.splitlines():
        # Number, value, size, type, binding, visibility, section, name.
        fields = line.split()
        if len(fields) == 8 and fields[3:6] == ["FUNC", "GLOBAL", "DEFAULT"] and fields[6] != "UND":
            yield fields[7].split("@")[0]


if __name__ == "__main__":
    tool, checked, *names = sys.argv[1:]
    missing = sorted(set(names) - set(exported_functions(tool, checked)))
    if missing:
        sys.exit(f"{checked}: does not export {', '.join(missing)}")
