#!/usr/bin/env python3
"""Reads the rows of several whole runs and prints, for each kind of work, the row of the run with the median ratio.

Rows are never mixed between runs, so that both times match the ratio. The last column has the lowest and the highest
ratio of all runs.
"""
import re
import sys

HEADINGS = ["Work", "By", "ours", "peer", "ratio", "to reach", "reached", "runs", "ratios"]


def ratio(cells):
    return float(re.match(r"[-+.\deE]+", cells[4]).group())


def table(lines):
    rows = {}  # by work and measure, in the order of the first run
    for line in lines:
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        rows.setdefault((cells[0], cells[1]), []).append(cells)
    yield HEADINGS
    yield ["---"] * len(HEADINGS)
    for runs in rows.values():
        runs.sort(key=ratio)
        yield runs[(len(runs) - 1) // 2] + [str(len(runs)), f"{ratio(runs[0]):g} to {ratio(runs[-1]):g}"]


if __name__ == "__main__":
    for cells in table(sys.stdin):
        print("| " + " | ".join(cells) + " |")
