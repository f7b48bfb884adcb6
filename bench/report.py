#!/usr/bin/env python3
"""Puts our figures beside the peers', from the JSON files of one run of the benchmarks.

report.py [--goals FILE] [--markdown FILE] [--page FILE] [--plot FILE] [--every-peer] JSON...
A benchmark is named "Area/Who"; the one named "Ours" is set against every other of its area. Prints one row per area
and goal, with the best of all peers beside the one that the goal names; with --every-peer one row per peer.
--markdown writes the table into a file of its own, --page renews it between the two marker lines of a page and touches
nothing else, and --plot draws how far each area is from its goal.
"""
import argparse
import collections
import json
import os
import platform
import re
import statistics
import sys

import plot

OURS = "Ours"
NO_AREA = re.compile(r"^(real_time|process_time|manual_time|threads:1|(min_time|min_warmup_time|repeats|iterations):.*)$")
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
Figure = collections.namedtuple("Figure", "value unit")  # unit: "ns", "B/s", "items/s" or "B"
Goal = collections.namedtuple("Goal", "relation limit kind")  # kind: "ratio", "added" (to the peer's ns) or "itself" (ns)
Row = collections.namedtuple("Row", "area ours peer theirs ratio goal verdict best distance")
BEGIN, END = "<!-- The table of speed begins -->", "<!-- The table of speed ends -->"


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


def goal_of(text):
    """"<= 0.7" is a ratio, "<= +10 ms" the peer's figure and that much more, "<= 1 ms" a figure of ours by itself."""
    relation, limit, *unit = text.split()
    scale = NANOSECONDS[unit[0]] if unit else 1
    return Goal(relation, float(limit) * scale, "ratio" if not unit else "added" if limit[0] == "+" else "itself")


def read_goals(path):
    goals = collections.OrderedDict()
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            if line.strip() and not line.startswith("#"):
                area, peer, goal = (cell.strip() for cell in line.split("|"))
                goals.setdefault(area, []).append((peer, goal_of(goal), goal))
    return goals


def distance_to(goal, ours, theirs):
    """What of the goal is reached: 1 is the goal itself, less is better."""
    if goal.kind == "itself":
        return ours.value / goal.limit
    if goal.kind == "added":
        return ours.value / (theirs.value + goal.limit)
    ratio = ours.value / theirs.value
    return ratio / goal.limit if goal.relation == "<=" else goal.limit / ratio


def ratio_of(ours, theirs):
    return "%.2f" % (ours.value / theirs.value if theirs.value else float("inf"))


def is_throughput(figure):
    return figure.unit in ("B/s", "items/s")


def best_peer(by_who, ours):
    peers = [(figure, who) for who, figure in by_who.items() if who != OURS and figure.unit == ours.unit]
    if not peers:
        return ""
    figure, who = (max if is_throughput(ours) else min)(peers)
    return "%s, %s" % (who, ratio_of(ours, figure))


def row_of(area, by_who, peer, goal=None, goal_text=""):
    ours, theirs = by_who[OURS], by_who.get(peer)
    distance = distance_to(goal, ours, theirs) if goal else None
    return Row(area, show(ours), "" if peer == "-" else peer, show(theirs) if theirs else "",
               ratio_of(ours, theirs) if theirs else "", goal_text,
               "" if goal is None else "reached" if distance <= 1 else "missed", best_peer(by_who, ours), distance)


def goals_met(area, by_who, goals, problems):
    """The goals of the area that the figures can be held against."""
    for peer, goal, text in goals.get(area, []):
        if peer != "-" and peer not in by_who:
            problems.append("%s: no figure of %s, for the goal of %s" % (area, peer, text))
        elif peer != "-" and by_who[peer].unit != by_who[OURS].unit:
            problems.append("%s: %s is not in the unit of ours" % (area, peer))
        else:
            yield peer, goal, text


def rows_of(figures, goals, problems, every_peer):
    for area, by_who in figures.items():
        if OURS not in by_who:
            problems.append("%s: nothing of ours" % area)
            continue
        met = list(goals_met(area, by_who, goals, problems))
        for peer, goal, text in met:
            yield row_of(area, by_who, peer, goal, text)
        others = [who for who in by_who if who != OURS and who not in [peer for peer, _, _ in met]]
        if every_peer:
            for who in others:
                if by_who[who].unit == by_who[OURS].unit:
                    yield row_of(area, by_who, who)
        if not met and not (every_peer and others):
            yield row_of(area, by_who, "-")


def show(figure):
    scales = {"ns": ((1e9, "s"), (1e6, "ms"), (1e3, "µs"), (1, "ns")),
              "B/s": ((1e9, "GB/s"), (1e6, "MB/s"), (1e3, "kB/s"), (1, "B/s")),
              "B": ((2**20, "MiB"), (2**10, "KiB"), (1, "B")),
              "items/s": ((1e6, "M/s"), (1e3, "k/s"), (1, "/s"))}[figure.unit]
    scale, name = next((pair for pair in scales if abs(figure.value) >= pair[0]), scales[-1])
    return "%.3g %s" % (figure.value / scale, name) if figure.value < 1000 * scale else "%.0f %s" % (
        figure.value / scale, name)


HEAD = Row("Area", "Ours", "Goal's peer", "Theirs", "Ratio", "Goal", "", "Best peer, ratio", None)
COLUMNS = len(HEAD) - 1  # the distance isn't shown


def text_table(rows):
    widths = [max(len(row[column]) for row in rows + [HEAD]) for column in range(COLUMNS)]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() for row in [HEAD] + rows)


def markdown_table(rows):
    lines = ["| " + " | ".join(HEAD[:COLUMNS]) + " |", "|---|--:|---|--:|--:|---|---|---|"]
    before = None
    for row in rows:
        shown = row._replace(area="", ours="", best="") if row.area == before else row
        lines.append("| " + " | ".join(shown[:COLUMNS]) + " |")
        before = row.area
    return "\n".join(lines) + "\n"


def tally(rows):
    goals = [row for row in rows if row.verdict]
    return "%d of %d goals are reached." % (sum(row.verdict == "reached" for row in goals), len(goals))


def write(path, text):
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


def renew_page(path, text):
    with open(path, encoding="utf-8") as file:
        page = file.read()
    if page.count(BEGIN) != 1 or page.count(END) != 1 or page.index(BEGIN) > page.index(END):
        sys.exit("%s: the lines \"%s\" and \"%s\" have to be there, once each." % (path, BEGIN, END))
    before, behind = page[:page.index(BEGIN)], page[page.index(END):]
    write(path, before + BEGIN + "\n" + text + behind)


def about_run(paths):
    """Date and machine, as the first of the files tells them."""
    with open(paths[0], encoding="utf-8") as file:
        context = json.load(file)["context"]
    model = next((line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo", encoding="utf-8")
                  if line.startswith("model name")), platform.machine()) if os.path.exists("/proc/cpuinfo") else ""
    load = ", ".join("%.1f" % value for value in context.get("load_avg", []))
    return "Measured on %s: %d processors (%s), %s %s, load average %s when it began." % (
        context["date"][:10], context["num_cpus"], model, platform.system(), platform.release(), load or "unknown")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for option in ("--goals", "--markdown", "--page", "--plot"):
        parser.add_argument(option, metavar="FILE")
    parser.add_argument("--every-peer", action="store_true")
    parser.add_argument("json", nargs="+")
    arguments = parser.parse_args()
    figures, problems = read_figures(arguments.json)
    goals = read_goals(arguments.goals) if arguments.goals else {}
    rows = list(rows_of(figures, goals, problems, arguments.every_peer))
    if not rows:
        return 1
    missing = [area for area in goals if area not in figures]
    print(text_table(rows) + "\n\n" + tally(rows))
    if problems:
        print("\nLeft out:\n  " + "\n  ".join(problems))
    if missing:
        print("\nGoals of areas that weren't measured:\n  " + "\n  ".join(missing))
    if arguments.markdown:
        write(arguments.markdown, markdown_table(rows))
    if arguments.page:
        renew_page(arguments.page, "\n%s\n%s\n\n%s\n" % (about_run(arguments.json), tally(rows), markdown_table(rows)))
    if arguments.plot:
        write(arguments.plot, plot.draw([(row.area, row.peer, row.distance) for row in rows if row.verdict]))
    return 0


if __name__ == "__main__":
    sys.exit(main())
