"""Comma-separated tables, as strict as those of vesk-run."""

from __future__ import annotations

import csv
import os
from typing import Union

PathLike = Union[str, "os.PathLike[str]"]


def read_table(file: PathLike) -> tuple[list[str], list[list[str]]]:
    """Reads header and rows; strips blanks around fields and skips empty lines. Raises ValueError, which names the
    line."""
    name = os.fspath(file)
    with open(file, newline="", encoding="utf-8-sig") as opened:
        reader = csv.reader(opened, strict=True, skipinitialspace=True)
        lines: list[list[str]] = []
        try:
            for fields in reader:
                fields = [field.strip() for field in fields]
                if fields in ([], [""]):
                    continue
                if lines and len(fields) != len(lines[0]):
                    raise ValueError(
                        f"{name}, line {reader.line_num}: expected {len(lines[0])} fields, found {len(fields)}.")
                lines.append(fields)
        except csv.Error as error:
            raise ValueError(f"{name}, line {reader.line_num}: {error}.") from None
    if not lines:
        raise ValueError(f"{name} is empty; expected a line with the names of columns.")
    header = lines[0]
    for at, column in enumerate(header):
        if column in header[:at]:
            raise ValueError(f"{name}: the column {column} occurs more than once.")
    return header, lines[1:]
