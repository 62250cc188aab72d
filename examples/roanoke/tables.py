"""Reads the sample's tables: comma-separated text with a header line; lines starting with `#` are comments."""
import csv
import datetime
import pathlib

HERE = pathlib.Path(__file__).resolve().parent


def rows(name):
    """All rows of a table as dictionaries of texts."""
    with open(HERE / name, newline="", encoding="utf-8") as file:
        return list(csv.DictReader(line for line in file if not line.startswith("#")))


def numbers(name):
    """All rows of a table, with numeric fields converted to numbers."""
    return [{key: _number(value) for key, value in row.items()} for row in rows(name)]


def daily(name, column):
    """A measured series as {date: value}; days without a value are left out."""
    return {
        datetime.datetime.fromisoformat(row["moment"]).date(): float(row[column])
        for row in rows(name)
        if row[column] != ""
    }


def monthly(column):
    """A column of river/inflows.csv as a function of the date: linear interpolation of mid-month values."""
    values = {int(row["month"]): float(row[column]) for row in rows("river/inflows.csv")}

    def at(date):
        left = datetime.date(date.year, date.month, 15)
        if date < left:
            left = _months_on(left, -1)
        right = _months_on(left, 1)
        share = (date - left).days / (right - left).days
        return values[left.month] + share * (values[right.month] - values[left.month])

    return at


def _months_on(date, months):
    month = date.year * 12 + date.month - 1 + months
    return datetime.date(month // 12, month % 12 + 1, date.day)


def _number(text):
    try:
        return float(text)
    except ValueError:
        return text
