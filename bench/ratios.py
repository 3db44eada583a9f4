"""Shows what our work costs next to that of others, and writes it down:  ratios.py [--check] FILE RESULT...

A result is the JSON output of one benchmark program, NAME.json for NAME_bench. Its entries are named
"figure|ours|" and "figure|other|goal"; each ratio is that of the medians over all repetitions. FILE gets a list with
an object for each row of the table:

    {"benchmark": NAME, "figure": ..., "ours": 120.0, "reference": 240.0, "reference_name": other, "ratio": 0.5,
     "goal": 0.7, "unit": "ns"}

where the goal is null if there is none. With --check, status 1 if a goal is missed.
"""

import json
import os
import statistics
import sys

LARGER = {"ns": "us", "us": "ms", "ms": "s"}
HEAD = ("figure", "ours", "reference", "", "ratio", "goal", "")


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


def rows(path):
    """One object for each comparison."""
    benchmark = os.path.basename(path).removesuffix(".json")
    for figure, values in read(path).items():
        ours, unit, _ = values["ours"]
        for who, (other, _, goal) in values.items():
            if who != "ours":
                yield {"benchmark": benchmark, "figure": figure, "ours": ours, "reference": other,
                       "reference_name": who, "ratio": ours / other, "goal": goal, "unit": unit}


def amount(value, unit):
    """As people read it: 1.2 ms, 340 KiB."""
    while unit in LARGER and value >= 1000:
        value, unit = value / 1000, LARGER[unit]
    return (f"{value:.3g} {unit}" if value < 100 else f"{value:.0f} {unit}").rstrip()


def missed(row):
    return row["goal"] is not None and row["ratio"] > row["goal"]


def cells(row):
    """What the table shows of a row, under HEAD."""
    goal, unit = row["goal"], row["unit"]
    return (row["figure"], amount(row["ours"], unit), amount(row["reference"], unit), row["reference_name"],
            f"{row['ratio']:.3f}", "" if goal is None else f"{goal:g}",
            "" if goal is None else "MISSED" if missed(row) else "met")


def table(lines):
    widths = [max(map(len, column)) for column in zip(*lines)]
    numbers = {1, 2, 4, 5}
    return "\n".join("  ".join(text.rjust(width) if i in numbers else text.ljust(width)
                               for i, (text, width) in enumerate(zip(line, widths))).rstrip()
                     for line in lines)


def main(arguments):
    must_meet = arguments[:1] == ["--check"]
    out, *paths = arguments[must_meet:]
    found = [row for path in paths for row in rows(path)]
    with open(out, "w", encoding="utf-8") as file:
        json.dump(found, file, indent=1)
    print(table([HEAD] + [cells(row) for row in found]))
    return 1 if must_meet and any(map(missed, found)) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
