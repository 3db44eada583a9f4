"""Prints what our work costs next to that of others:  ratios.py [--check] RESULT...

A result is the JSON output of one benchmark program. Its entries are named "figure|ours|" and
"figure|other|goal"; each ratio is that of the medians over all repetitions. With --check, status 1 if a goal
is missed.
"""

import json
import statistics
import sys

HEAD = ("figure", "ours", "other", "", "ratio", "goal", "")


def read(path):
    """{figure: {who: (median, unit, goal)}} in the order in which they were added."""
    with open(path, encoding="utf-8") as file:
        entries = json.load(file)["benchmarks"]
    values = {}
    for entry in sorted(entries, key=lambda entry: entry.get("family_index", 0)):
        if entry["run_type"] == "iteration":
            values.setdefault(entry["run_name"], []).append((entry["cpu_time"], entry["time_unit"]))
    figures = {}
    for name, measured in values.items():
        # The benchmark library puts "/repeats:9" and the like behind the name.
        figure, who, rest = name.split("|")
        goal = rest.split("/")[0]
        median = statistics.median(value for value, _ in measured)
        figures.setdefault(figure, {})[who] = (median, measured[0][1], float(goal) if goal else None)
    return figures


def amount(value, unit):
    if unit == "ns" and value >= 1e5:
        value, unit = value / 1e6, "ms"
    return f"{value:.3g} {unit}" if value < 100 else f"{value:.0f} {unit}"


def rows(figures):
    """One row for each comparison, and whether its goal is missed."""
    for figure, values in figures.items():
        ours, unit, _ = values["ours"]
        for who, (other, _, goal) in values.items():
            if who == "ours":
                continue
            ratio = ours / other
            missed = goal is not None and ratio > goal
            verdict = "" if goal is None else "MISSED" if missed else "met"
            yield (figure, amount(ours, unit), amount(other, unit), who, f"{ratio:.3f}",
                   "" if goal is None else f"{goal:g}", verdict), missed


def table(lines):
    widths = [max(map(len, column)) for column in zip(*lines)]
    numbers = {1, 2, 4, 5}
    return "\n".join("  ".join(text.rjust(width) if i in numbers else text.ljust(width)
                               for i, (text, width) in enumerate(zip(line, widths))).rstrip()
                     for line in lines)


def main(arguments):
    must_meet = arguments[:1] == ["--check"]
    found = [row for path in arguments[must_meet:] for row in rows(read(path))]
    print(table([HEAD] + [line for line, _ in found]))
    return 1 if must_meet and any(missed for _, missed in found) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
