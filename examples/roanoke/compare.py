#!/usr/bin/env python3
"""Holds modelled dissolved oxygen against the daily means measured near Oak City, and against three simple guesses.

Prints a table by month and the scores of the whole water year, and writes both to a CSV file.
"""
import argparse
import csv
import datetime
import sys

import network
import physics
import tables
from scores import score

MODEL = "model"
SATURATION = "saturation at the measured temperature"
SHARE = "the best fixed share of saturation"
MONTHS = "the mean of each month as measured"


def modelled(file_name):
    """{date: g/m3} in the segment at the station. Results are printed at noon, in the middle of the measured day."""
    river = network.segments()
    column = river[network.position(river, network.GAGE_KM)].name
    with open(file_name, newline="", encoding="utf-8") as file:
        rows = csv.DictReader(file)
        if column not in (rows.fieldnames or ()):
            sys.exit(f"{file_name}: has no column \"{column}\"; is it a result of this sample?")
        return {datetime.datetime.fromisoformat(row["time"]).date(): float(row[column]) for row in rows}


def whole_water_year(values):
    """Without the days of the spin-up, which belong to the year before."""
    first = datetime.date(max(values).year - 1, 10, 1)
    return {date: value for date, value in values.items() if date >= first}


def guesses(observed, temperature):
    """What one can say without a model. The last two know the year's measurements: they are hard to beat."""
    saturation = {date: physics.oxygen_saturation(temperature[date]) for date in observed}
    share = sum(observed[d] * saturation[d] for d in observed) / sum(saturation[d] ** 2 for d in observed)
    months = {}
    for date, value in observed.items():
        months.setdefault(date.month, []).append(value)
    return {
        SATURATION: saturation,
        SHARE: {date: share * value for date, value in saturation.items()},
        MONTHS: {date: sum(months[date.month]) / len(months[date.month]) for date in observed},
    }


def of_month(values, month):
    return {date: value for date, value in values.items() if date.strftime("%Y-%m") == month}


def results(observed, estimates):
    """[(period, estimate, Scores)], months in order of time, then the whole year."""
    months = sorted({date.strftime("%Y-%m") for date in observed})
    rows = [
        (month, name, score(of_month(observed, month), values))
        for month in months
        for name, values in estimates.items()
    ]
    return rows + [("year", name, score(observed, values)) for name, values in estimates.items()]


def print_table(rows):
    print("Dissolved oxygen near Oak City, g/m3, daily means\n")
    print("month    days  measured  modelled   bias   RMSE   RMSE of saturation")
    by_name = {(period, name): scores for period, name, scores in rows}
    for period in dict.fromkeys(period for period, _, _ in rows):
        s, simple = by_name[period, MODEL], by_name[period, SATURATION]
        figures = f"{s.count:4}  {s.observed:8.2f}  {s.estimated:8.2f}  {s.bias:+5.2f}  {s.rmse:5.2f}"
        print(f"{period:7}  {figures}  {simple.rmse:19.2f}")
    print(f"\n{'whole year':40}   bias   RMSE      r  efficiency")
    for period, name, s in rows:
        if period == "year":
            print(f"{name:40}  {s.bias:+5.2f}  {s.rmse:5.2f}  {s.correlation:5.3f}  {s.efficiency:10.3f}")


def write_table(rows, file_name):
    with open(file_name, "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file)
        writer.writerow(["period", "estimate", "days", "measured", "estimated", "bias", "rmse", "r", "efficiency"])
        for period, name, s in rows:
            figures = (s.observed, s.estimated, s.bias, s.rmse, s.correlation, s.efficiency)
            writer.writerow([period, name, s.count, *(f"{figure:.4f}" for figure in figures)])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("oxygen", help="the run's CSV file of dissolved oxygen")
    parser.add_argument("table", help="the CSV file to write")
    arguments = parser.parse_args()

    model = whole_water_year(modelled(arguments.oxygen))
    temperature = tables.daily("data/oak_city_daily.csv", "temperature_degC")
    measured = tables.daily("data/oak_city_daily.csv", "oxygen_mg_l")
    observed = {date: value for date, value in measured.items() if date in model and date in temperature}
    if not observed:
        sys.exit(f"{arguments.oxygen}: no day of it has a measurement.")
    rows = results(observed, {MODEL: model, **guesses(observed, temperature)})
    print_table(rows)
    write_table(rows, arguments.table)


if __name__ == "__main__":
    main()
