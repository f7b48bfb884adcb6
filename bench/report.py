#!/usr/bin/env python3
"""Puts our figures beside the peers', from the JSON files of one run of the benchmarks.

report.py [--markdown FILE] [--goals FILE] JSON...
A benchmark is named "Area/Who"; the one named "Ours" is set against every other of its area.
"""
import argparse
import collections
import json
import re
import statistics
import sys

OURS = "Ours"
NO_AREA = re.compile(r"^(real_time|process_time|manual_time|threads:1|(min_time|min_warmup_time|repeats|iterations):.*)$")
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
Figure = collections.namedtuple("Figure", "value unit")  # unit: "ns", "B/s", "items/s" or "B"
Row = collections.namedtuple("Row", "area ours peer theirs ratio goal verdict")


def split_name(run_name):
    """Area with its arguments, and who; None for a benchmark outside the convention."""
    parts = run_name.split("/")
    if len(parts) < 2:
        return None
    arguments = [part for part in parts[2:] if not NO_AREA.match(part)]
    return ", ".join([parts[0]] + arguments), parts[1]


def figure_of(run):
    for key, unit in (("bytes_per_second", "B/s"), ("items_per_second", "items/s"), ("bytes", "B")):
        if key in run:
            return Figure(run[key], unit)
    wall = any(part in run["run_name"] for part in ("/real_time", "/manual_time", "/threads:"))
    return Figure(run["real_time" if wall else "cpu_time"] * NANOSECONDS[run["time_unit"]], "ns")


def read_figures(paths):
    """Medians by area and who, in the order of the files; areas keep the order of their first run."""
    samples, problems = collections.OrderedDict(), []
    for path in paths:
        with open(path, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        runs.sort(key=lambda run: run["family_index"])  # as they were declared, though they ran interleaved
        for run in runs:
            key = split_name(run["run_name"])
            if key is None or run.get("error_occurred"):
                problems.append("%s: %s" % (run["run_name"], run.get("error_message", "not named Area/Who")))
            elif run["run_type"] == "iteration":
                samples.setdefault(key[0], collections.OrderedDict()).setdefault(key[1], []).append(figure_of(run))
    medians = lambda runs: Figure(statistics.median(run.value for run in runs), runs[0].unit)
    return {area: {who: medians(runs) for who, runs in by_who.items()} for area, by_who in samples.items()}, problems


def read_goals(path):
    goals = {}
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            if line.strip() and not line.startswith("#"):
                area, peer, goal = (cell.strip() for cell in line.split("|"))
                relation, limit = goal.split()
                goals[area, peer] = (relation, float(limit))
    return goals


def verdict(ratio, goal):
    if goal is None:
        return "", ""
    relation, limit = goal
    reached = ratio <= limit if relation == "<=" else ratio >= limit
    return "%s %g" % (relation, limit), "reached" if reached else "missed"


def rows_of(figures, goals, problems):
    for area, by_who in figures.items():
        ours = by_who.get(OURS)
        peers = [who for who in by_who if who != OURS]
        if ours is None:
            problems.append("%s: nothing of ours" % area)
        for who in peers if ours else []:
            if by_who[who].unit != ours.unit:
                problems.append("%s: %s is not in the unit of ours" % (area, who))
                continue
            ratio = ours.value / by_who[who].value if by_who[who].value else float("inf")
            yield Row(area, show(ours), who, show(by_who[who]), "%.2f" % ratio, *verdict(ratio, goals.get((area, who))))
        if ours and not peers:
            yield Row(area, show(ours), "", "", "", "", "")


def show(figure):
    scales = {"ns": ((1e9, "s"), (1e6, "ms"), (1e3, "µs"), (1, "ns")),
              "B/s": ((1e9, "GB/s"), (1e6, "MB/s"), (1e3, "kB/s"), (1, "B/s")),
              "B": ((2**20, "MiB"), (2**10, "KiB"), (1, "B")),
              "items/s": ((1e6, "M/s"), (1e3, "k/s"), (1, "/s"))}[figure.unit]
    scale, name = next((pair for pair in scales if abs(figure.value) >= pair[0]), scales[-1])
    return "%.3g %s" % (figure.value / scale, name) if figure.value < 1000 * scale else "%.0f %s" % (
        figure.value / scale, name)


HEAD = Row("Area", "Ours", "Peer", "Theirs", "Ratio", "Goal", "")


def text_table(rows):
    widths = [max(len(row[column]) for row in rows + [HEAD]) for column in range(len(HEAD))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() for row in [HEAD] + rows)


def markdown_table(rows):
    lines = ["| " + " | ".join(HEAD) + " |", "|---|--:|---|--:|--:|---|---|"]
    before = None
    for row in rows:
        shown = row._replace(area="", ours="") if row.area == before else row
        lines.append("| " + " | ".join(shown) + " |")
        before = row.area
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--markdown", metavar="FILE")
    parser.add_argument("--goals", metavar="FILE")
    parser.add_argument("json", nargs="+")
    arguments = parser.parse_args()
    figures, problems = read_figures(arguments.json)
    rows = list(rows_of(figures, read_goals(arguments.goals) if arguments.goals else {}, problems))
    print(text_table(rows))
    if problems:
        print("\nLeft out:\n  " + "\n  ".join(problems))
    if arguments.markdown:
        with open(arguments.markdown, "w", encoding="utf-8") as file:
            file.write(markdown_table(rows))
    return 0 if rows else 1


if __name__ == "__main__":
    sys.exit(main())
