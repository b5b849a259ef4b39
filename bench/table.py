#!/usr/bin/env python3
"""One table in Markdown, of what the benchmarks and the instruction counter found.

    table.py [--instructions FILE MOST_OF_A_READING] [RESULTS.json ...]

The file of instructions holds lines "operation instructions"; results are Google Benchmark's.
"""
import json
import sys


def row(what, figure, of, reach=""):
    print(f"| {what} | {figure} | {of} | {reach} |")


def short(value):
    """Three significant digits, and no exponent."""
    digits = 0
    while digits < 6 and value < 10.0 ** (2 - digits):
        digits += 1
    return f"{value:.{digits}f}"


def timed(results):
    """Rows of one program: of repeated runs the median, else the run."""
    runs = results["benchmarks"]
    medians = [run for run in runs if run.get("aggregate_name") == "median"]
    labels = {run["run_name"]: run.get("label", "") for run in runs if run.get("label")}
    for run in medians or runs:
        name = run["run_name"].removesuffix("/manual_time")
        reach = f"≤ {run['reach']:g}" if run["reach"] else ""
        row(name, short(run["ratio"]), "of " + labels[run["run_name"]], reach)


def counted(path, most):
    with open(path, encoding="utf-8") as lines:
        count = {name: float(number) for name, number in map(str.split, lines)}
    loop = count["nothing"]
    literal = count["literal"] - loop
    reading = count["reading"] - loop
    entry = count["entry"]
    drift = count["drift"] - entry
    row("reading/maths", short(reading), "instructions")
    row("reading/maths", short(reading / literal), "of the prescribed calculation, instructions", f"≤ {most}")
    row("prescribed calculation", short(literal), "instructions")
    row("rebuild/full, an entry", short(entry), "instructions")
    row("rebuild/full, an entry", short(entry / literal), "of the prescribed calculation, instructions", "≤ 0.25")
    row("rebuild/drift, an entry", short(drift), "instructions")
    row("rebuild/drift, an entry", short(drift / literal), "of the prescribed calculation, instructions", "≤ 0.25")
    row("frame, a pixel", short(count["pixel"]), "instructions", "≤ 10")


def main():
    arguments = sys.argv[1:]
    row("what", "figure", "unit", "to reach")
    row("---", "---:", "---", "---:")
    instructions = None
    if arguments[:1] == ["--instructions"]:
        instructions = arguments[1:3]
        arguments = arguments[3:]
    for path in arguments:
        with open(path, encoding="utf-8") as file:
            timed(json.load(file))
    if instructions:
        counted(*instructions)


main()
