"""Makes pictures and a table of what the benchmarks measured:  plot.py RESULTS MACHINE PAGE

RESULTS and MACHINE are what ratios.py and machine.py wrote. The pictures are SVG files in the folder of the page's
own name beside it (docs/performance/ for docs/performance.md), and the part of the page between its two marks is
written anew. Nothing is told by colour alone.
"""

import json
import os
import sys

import matplotlib
import matplotlib.pyplot as plt
from matplotlib import ticker

import ratios

BEGIN = "<!-- measured: written by script/plot -->\n"
END = "<!-- end of measured -->\n"

LIMIT = "limit"  # the reference of a goal that is no ratio
HALF = "half the input"

ROW_HEIGHT = 0.19  # inches
WIDTH = 10
LEAST_RATIO = 0.02  # smaller ones stand at the edge of a logarithmic picture

matplotlib.rcParams |= {
    "font.family": "DejaVu Sans",
    "font.size": 8,
    "svg.fonttype": "none",
    "svg.hashsalt": "nelvo",  # the same figures make the same file
}


def title_of(machine):
    return (f"{machine['date']}, {machine['processor']} ({machine['processors']} processors), {machine['system']}, "
            f"revision {machine['revision']}")


def save(picture, path):
    picture.savefig(path, format="svg", metadata={"Date": None}, bbox_inches="tight")
    plt.close(picture)


def draw_goals(rows, path, machine, logarithmic):
    """A row each: the ratio as a dot, filled if the goal is met, and the goal as an upright line."""
    picture, axes = plt.subplots(figsize=(WIDTH, ROW_HEIGHT * (len(rows) + 5)), layout="constrained")
    least = LEAST_RATIO if logarithmic else 0
    for place, row in enumerate(rows):
        ratio, goal = max(row["ratio"], least), max(row["goal"], least)
        axes.plot([ratio, goal], [place, place], color="0.75", linewidth=1, zorder=1)
        axes.plot([goal] * 2, [place - 0.35, place + 0.35], color="black", linewidth=2, zorder=2)
        axes.plot(ratio, place, "o" if ratio > least else "<", markersize=5, zorder=3, markeredgecolor="black",
                  markerfacecolor="white" if ratios.missed(row) else "black", clip_on=False)
        axes.text(1.01, place, f"{row['ratio']:.3g}  ({row['goal']:g})",
                  transform=axes.get_yaxis_transform(), va="center", fontsize=7)
    axes.set_yticks(range(len(rows)), [f"{row['figure']}  /  {row['reference_name']}" for row in rows])
    axes.set_ylim(len(rows) - 0.4, -0.6)
    if logarithmic:
        axes.set_xscale("log")
        axes.set_xticks([0.02, 0.05, 0.1, 0.2, 0.5, 1, 2])
        axes.xaxis.set_minor_locator(ticker.NullLocator())
    axes.set_xlim(left=least)
    axes.xaxis.set_major_formatter(ticker.FuncFormatter(lambda ratio, _: f"{ratio:g}x"))
    axes.axvline(1, color="black", linewidth=0.5, linestyle=":")
    axes.grid(axis="y", color="0.92", linewidth=0.5)
    axes.set_axisbelow(True)
    axes.set_title("●  ours as a multiple of the other (○ : goal missed)      ❘  goal", fontsize=8)
    picture.supxlabel(title_of(machine), fontsize=7)
    save(picture, path)


def sides(rows):
    """{figure: {who: (value, unit)}} of the figures in which we stand next to two others or more."""
    figures = {}
    for row in rows:
        if row["reference_name"] not in (LIMIT, HALF):
            values = figures.setdefault(row["figure"], {"ours": (row["ours"], row["unit"])})
            values[row["reference_name"]] = (row["reference"], row["unit"])
    return {figure: values for figure, values in figures.items() if len(values) > 2}


def draw_panel(axes, figure, values):
    names = sorted(values, key=lambda name: values[name][0])
    numbers = [values[name][0] for name in names]
    bars = axes.barh(range(len(names)), numbers, height=0.7, edgecolor="black", linewidth=0.8,
                     color=["black" if name == "ours" else "white" for name in names])
    axes.bar_label(bars, [ratios.amount(*values[name]) for name in names], padding=3, fontsize=7)
    axes.set_yticks(range(len(names)), names)
    axes.invert_yaxis()
    is_wide = max(numbers) > 30 * max(min(numbers), 1e-9)
    if is_wide:
        axes.set_xscale("log")
        axes.set_xlim(min(numbers) / 3, max(numbers) * 10)
    else:
        axes.set_xlim(0, max(numbers) * 1.35)
    axes.xaxis.set_major_locator(ticker.NullLocator())
    axes.xaxis.set_minor_locator(ticker.NullLocator())
    axes.spines[["top", "right", "bottom"]].set_visible(False)
    axes.set_title(figure + (" (log scale)" if is_wide else ""), fontsize=8, loc="left")


def draw_sides(rows, path, machine):
    """A panel for each figure: a bar each, the shortest first, ours filled."""
    figures = sides(rows)
    lines = (len(figures) + 1) // 2
    heights = [max(len(values) for values in list(figures.values())[2 * line:2 * line + 2]) + 1.5
               for line in range(lines)]
    picture, grid = plt.subplots(lines, 2, figsize=(WIDTH, ROW_HEIGHT * sum(heights) * 1.1),
                                 gridspec_kw={"height_ratios": heights}, squeeze=False, layout="constrained")
    for axes, figure in zip(grid.flat, figures):
        draw_panel(axes, figure, figures[figure])
    for axes in grid.flat[len(figures):]:
        axes.axis("off")
    picture.supxlabel(title_of(machine), fontsize=7)
    save(picture, path)


def measured_part(rows, machine, pictures):
    """What stands between the marks of the page."""
    versions = ", ".join(f"{name} {version}" for name, version in machine["versions"].items())
    lines = [f"Measured on {title_of(machine)}, kernel {machine['kernel']}, {machine['compiler']}; {versions}.", ""]
    for title, picture in pictures:
        lines += [f"![{title}]({picture})", ""]
    lines += ["| Figure | Ours | Reference | | Ratio | Goal | |", "|---|--:|--:|---|--:|--:|---|"]
    lines += ["| " + " | ".join(ratios.cells(row)) + " |" for row in rows]
    return "\n".join(lines) + "\n"


def rewrite(path, part):
    with open(path, encoding="utf-8") as file:
        head, rest = file.read().split(BEGIN)
    with open(path, "w", encoding="utf-8") as file:
        file.write(head + BEGIN + part + END + rest.split(END)[1])


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def main(results, machine_path, page):
    rows, machine = load(results), load(machine_path)
    folder = page.removesuffix(".md")
    os.makedirs(folder, exist_ok=True)
    with_goal = [row for row in rows if row["goal"] is not None]
    growth = [row for row in with_goal if row["reference_name"] == HALF]
    draw_sides(rows, f"{folder}/sides.svg", machine)
    draw_goals([row for row in with_goal if row not in growth], f"{folder}/goals.svg", machine, logarithmic=True)
    draw_goals(growth, f"{folder}/growth.svg", machine, logarithmic=False)
    name = os.path.basename(folder)
    rewrite(page, measured_part(rows, machine, [
        ("Ours next to others", f"{name}/sides.svg"),
        ("Every goal, and what was measured", f"{name}/goals.svg"),
        ("What doubling the input costs", f"{name}/growth.svg")]))


if __name__ == "__main__":
    main(*sys.argv[1:])
