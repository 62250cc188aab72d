#!/usr/bin/env python3
"""Compares modelled dissolved oxygen, and three simple guesses, with the daily means measured near Oak City.

Prints a table by month and the scores of the whole water year, and writes both to a CSV file. vesk-results computes the
scores.
"""
import argparse
import csv
import datetime
import json
import math
import pathlib
import subprocess
import sys

import physics
import tables

MODEL = "model"
SATURATION = "saturation at the measured temperature"
SHARE = "the best fixed share of saturation"
WHOLE = "all"  # the name in vesk-results


def guesses(water_year):
    """Estimates without a model, {name: {date: g/m3}}. The second is fitted to the year's measurements and so hard to
    beat. vesk-results adds a third, the measured mean of each month."""
    temperature = tables.daily("data/oak_city_daily.csv", "temperature_degC")
    measured = tables.daily("data/oak_city_daily.csv", "oxygen_mg_l")
    first, last = datetime.date(water_year - 1, 10, 1), datetime.date(water_year, 9, 30)
    observed = {date: value for date, value in measured.items() if first <= date <= last and date in temperature}
    saturation = {date: physics.oxygen_saturation(temperature[date]) for date in observed}
    share = sum(observed[d] * saturation[d] for d in observed) / sum(saturation[d] ** 2 for d in observed)
    return {SATURATION: saturation, SHARE: {date: share * value for date, value in saturation.items()}}


def write_guesses(series, file_name):
    """Writes a column for each guess, with times at noon, the middle of the day."""
    with open(file_name, "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file)
        writer.writerow(["time", *series])
        for date in series[SATURATION]:
            writer.writerow([f"{date}T12:00:00", *(values[date] for values in series.values())])


def scores(program, results, estimates):
    """[(period, estimate, {score: value})], months in order of time, then the whole year."""
    words = [program, "agreement", results, "--estimates", estimates, "--format", "json"]
    done = subprocess.run(words, stdout=subprocess.PIPE, check=False)
    if done.returncode != 0:
        sys.exit(done.returncode)
    found = json.loads(done.stdout)["series"][0]["estimates"]
    by_period = {}
    for estimate in found:
        for row in estimate["scores"]:
            values = {name: math.nan if value is None else value for name, value in row.items()}
            by_period.setdefault(row["period"], []).append((estimate["name"], values))
    return [("year" if period == WHOLE else period, name, s) for period, all_of in by_period.items() for name, s in all_of]


def print_table(rows):
    print("Dissolved oxygen near Oak City, g/m3, daily means\n")
    print("month    days  measured  modelled   bias   RMSE   RMSE of saturation")
    by_name = {(period, name): scores for period, name, scores in rows}
    for period in dict.fromkeys(period for period, _, _ in rows):
        s, simple = by_name[period, MODEL], by_name[period, SATURATION]
        means = f"{s['mean_measured']:8.2f}  {s['mean_modelled']:8.2f}"
        print(f"{period:7}  {s['count']:4}  {means}  {s['bias']:+5.2f}  {s['rmse']:5.2f}  {simple['rmse']:19.2f}")
    print(f"\n{'whole year':40}   bias   RMSE      r  efficiency")
    for period, name, s in rows:
        if period == "year":
            print(f"{name:40}  {s['bias']:+5.2f}  {s['rmse']:5.2f}  {s['r']:5.3f}  {s['nse']:10.3f}")


def write_table(rows, file_name):
    with open(file_name, "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file)
        writer.writerow(["period", "estimate", "days", "measured", "estimated", "bias", "rmse", "r", "efficiency"])
        for period, name, s in rows:
            figures = (s[it] for it in ("mean_measured", "mean_modelled", "bias", "rmse", "r", "nse"))
            writer.writerow([period, name, s["count"], *(f"{figure:.4f}" for figure in figures)])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", help="vesk-results")
    parser.add_argument("results", help="the run's NetCDF file, with the list of measured series beside it")
    parser.add_argument("table", help="the CSV file to write")
    parser.add_argument("--water-year", type=int, default=2012)
    arguments = parser.parse_args()

    estimates = pathlib.Path(arguments.results).with_suffix("").as_posix() + "_guesses.csv"
    write_guesses(guesses(arguments.water_year), estimates)
    rows = scores(arguments.program, arguments.results, estimates)
    print_table(rows)
    write_table(rows, arguments.table)


if __name__ == "__main__":
    main()
