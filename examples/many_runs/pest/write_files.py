#!/usr/bin/env python3
"""Writes the files of PEST and PEST++ for a model of Vesk: template, instructions and control file.

    write_files.py MODEL.vki PARAMETERS.csv FOLDER

Parameters come from a table of parameters, observations from MODEL.measured.json. The measured tables must be CSV files.
"""
import argparse
import csv
import datetime
import json
import pathlib
import shlex
import shutil
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
import sample_river  # noqa: E402, F401  finds the package and the programs
import vesk  # noqa: E402
from vesk.programs import program  # noqa: E402

MARK = "~"
WIDTH = 23  # of a number in the template: all digits of double precision


class Observation:
    """A measured value, and the row (`line`) and series of the modelled one."""

    def __init__(self, name, value, series, line):
        self.name, self.value, self.series, self.line = name, value, series, line


def moment(text):
    return datetime.datetime.fromisoformat(text.replace(" ", "T"))


def observations(model, times):
    """The measured values at the model's times, for every series of the measured file."""
    line_of = {time: number for number, time in enumerate(times)}
    found = []
    measured = json.loads(model.with_suffix(".measured.json").read_text(encoding="utf-8"))["series"]
    for number, series in enumerate(measured):
        query = series["query"]
        first = moment(series["from"]) if "from" in series else times[0]
        with open(model.parent / query["file_name"], newline="", encoding="utf-8-sig") as file:
            for row in csv.DictReader(file):
                time, text = moment(row[query["date_time_field"]]), row[query["value_field"]]
                if time not in line_of or time < first or not text:
                    continue
                name = f"s{number + 1}_{time:%Y%m%d_%H%M}"
                found.append(Observation(name, float(text) * series.get("factor", 1), number, line_of[time]))
    if not found:
        raise ValueError(f"{model.with_suffix('.measured.json')} has no value at a time of the run.")
    return sorted(found, key=lambda it: (it.line, it.series))


def template(table):
    """runs.csv with a placeholder for each value. vesk-run ignores blanks around numbers."""
    places = ",".join(MARK + it.name.ljust(WIDTH - 2) + MARK for it in table)
    return f"ptf {MARK}\nid," + ",".join(it.name for it in table) + f"\nrun,{places}\n"


def instructions(found):
    """Instructions for reading the table of series: move down lines, then past one comma per column."""
    lines, at = [f"pif {MARK}"], -2  # two lines down, past the header, is row 0
    for number in sorted({it.line for it in found}):
        words = [f"l{number - at}"]
        here = {it.series: it for it in found if it.line == number}
        for column in range(max(here) + 1):
            words.append(f"{MARK},{MARK}")
            if column in here:
                words.append(f"!{here[column].name}!")
        lines.append(" ".join(words))
        at = number
    return "\n".join(lines) + "\n"


def control(table, found, command, output):
    """A control file for parameter estimation, with the table's limits; for the rest see the PEST manual."""
    def number(value, other):
        return f"{other if value is None else value:.10g}"

    lines = ["pcf", "* control data", "restart estimation", f"{len(table)} {len(found)} {len(table)} 0 1",
             "1 1 double point 1 0 0", "10.0 -3.0 0.3 0.03 10", "10.0 10.0 0.001", "0.1",
             "20 0.005 4 4 0.005 4", "1 1 1", "* parameter groups"]
    lines += [f"{it.name} relative {it.step:.10g} 0.0 switch 2.0 parabolic" for it in table]
    lines.append("* parameter data")
    lines += [f"{it.name} {it.transform} relative {it.start:.10g} {number(it.minimum, -1e10)} {number(it.maximum, 1e10)} "
              f"{it.name} 1.0 0.0 1" for it in table]
    lines += ["* observation groups", "measured", "* observation data"]
    lines += [f"{it.name} {it.value:.10g} 1.0 measured" for it in found]
    lines += ["* model command line", command, "* model input/output", "runs.csv.tpl runs.csv",
              f"series.csv.ins {output}"]
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("model", type=pathlib.Path)
    parser.add_argument("parameters", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    arguments = parser.parse_args()
    model = arguments.model.absolute()
    table = vesk.parameters(arguments.parameters)
    for it in table:
        if len(it.name) > 12 or not it.name.replace("_", "").isalnum() or not it.name.isascii():
            sys.exit(f"{it.name}: PEST takes names of up to 12 letters, digits and underscores; change the table.")
    measured = json.loads(model.with_suffix(".measured.json").read_text(encoding="utf-8"))["series"]
    wanted = [f"{{{it['variable']}}}@{{{it['segment']}}}" for it in measured]
    run = vesk.run(model, results=wanted, queries=False)
    found = observations(model, run.times)

    folder = arguments.folder
    folder.mkdir(parents=True, exist_ok=True)
    shutil.copy(arguments.parameters, folder / "parameters.csv")
    command = shlex.join([program("vesk-run"), str(model), "-RUN", "--quiet", "--progress=none", "--no-queries", "--set-from",
                          "runs.csv", "--parameters", "parameters.csv", "--row", "0", "--output-dir", "out", "--results",
                          ",".join(run.series)])
    (folder / "runs.csv.tpl").write_text(template(table), encoding="utf-8")
    (folder / "series.csv.ins").write_text(instructions(found), encoding="utf-8")
    output = f"out/run/{model.stem}.results.csv"
    (folder / "vesk.pst").write_text(control(table, found, command, output), encoding="utf-8")
    print(f"{len(table)} parameters and {len(found)} observations in {folder}; run: cd {folder} && pestpp-glm vesk.pst")


if __name__ == "__main__":
    try:
        main()
    except OSError as error:
        sys.exit(f"{error.filename}: {error.strerror}.")
