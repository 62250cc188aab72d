"""Parameters, and cases made from tables of their values."""

from __future__ import annotations

import csv
import datetime
import math
import os
import re
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any, Iterable, Mapping, Optional, Sequence, Union

from .programs import ask
from .table import PathLike, read_table

OPERATORS = ("*=", "+=", "=")
FOLDER = re.compile(r"[A-Za-z0-9._-]+\Z")
COLUMNS = ["name", "path", "minimum", "maximum", "start", "transform", "step"]


@dataclass(frozen=True)
class Parameter:
    """A value of a model that may vary. Numbers are in the model's units.

    name: for display and for the columns of tables.
    path: as in `vesk-run --set`, such as "constant.21"; followed by an operator unless it is "=".
    minimum, maximum: None: no limit.
    start: the initial value.
    transform: "none" or "log"; with "log", the logarithm is sampled and estimated.
    step: for finite differences, relative to the value.
    """

    name: str
    path: str
    minimum: Optional[float] = None
    maximum: Optional[float] = None
    start: float = 0.0
    transform: str = "none"
    step: float = 0.01

    def __post_init__(self) -> None:
        if self.transform not in ("none", "log"):
            raise ValueError(f"{self.name}: the transform is none or log, not \"{self.transform}\".")
        if self.minimum is not None and self.maximum is not None and not self.minimum < self.maximum:
            raise ValueError(f"{self.name}: the minimum {self.minimum} is not below the maximum {self.maximum}.")
        if self.transform == "log" and not (self.minimum or self.start) > 0:
            raise ValueError(f"{self.name}: a logarithm requires a minimum and a start above 0.")


def parameters(source: PathLike) -> list[Parameter]:
    """The parameters of a table, as written by `vesk-run --list-paths --csv`, or all those of a data file (.vki)."""
    if os.fspath(source).endswith(".vki"):
        text = ask("vesk-run", [os.fspath(source), "--list-paths", "--csv"])
        lines = list(csv.reader(text.splitlines()))
        return [_parameter(os.fspath(source), row) for row in lines[1:]]
    header, rows_ = read_table(source)
    if header != COLUMNS:
        raise ValueError(f"{os.fspath(source)}: expected the columns {','.join(COLUMNS)}, found {','.join(header)}.")
    result = [_parameter(os.fspath(source), row) for row in rows_]
    names = [it.name for it in result]
    for name in names:
        if names.count(name) > 1:
            raise ValueError(f"{os.fspath(source)}: the name {name} occurs more than once.")
    return result


def _parameter(source: str, row: Sequence[str]) -> Parameter:
    name, path, minimum, maximum, start, transform, step = row
    try:
        least, most = (float(text) if text else None for text in (minimum, maximum))
        return Parameter(name, path, least, most, float(start), transform or "none", float(step or 0.01))
    except ValueError as error:
        raise ValueError(f"{source}, {name}: {error}") from None


def assignment(key: str) -> tuple[str, str]:
    """Splits the name of a column or a dictionary key into path and operator."""
    for operator in OPERATORS:
        if key.endswith(operator):
            return key[: -len(operator)], operator
    return key, "="


def value_text(key: str, value: Any) -> str:
    """A value in the form for vesk-run. Raises ValueError unless it is a finite number, a date or a text."""
    if isinstance(value, (datetime.date, datetime.datetime)):
        return value.isoformat()
    if isinstance(value, (str, os.PathLike)):
        return os.fspath(value)
    try:
        number = float(value)
    except (TypeError, ValueError):
        number = math.nan
    if isinstance(value, bool) or not math.isfinite(number):
        raise ValueError(f"{key}: expected a finite number, found {value!r}.")
    return repr(number)


@dataclass(frozen=True)
class Case:
    """One run: a data file and the values to set.

    values: by path, followed by an operator unless it is "=".
    name: of the folder for its results; letters, digits, points, hyphens and underscores.
    row: position in its table, from 0.
    """

    model: str
    values: Mapping[str, str] = field(default_factory=dict)
    name: str = ""
    row: Optional[int] = None

    def __post_init__(self) -> None:
        seen: set[str] = set()
        for key in self.values:
            path, _ = assignment(key)
            if path in seen:
                raise ValueError(f"{path} is set twice.")
            seen.add(path)
        if self.name and (not FOLDER.match(self.name) or set(self.name) == {"."}):
            raise ValueError(f"\"{self.name}\" cannot name a folder: it may have letters, digits, points, hyphens and "
                             "underscores.")

    def assignments(self) -> list[tuple[str, str, str]]:
        """Path, operator and value of each assignment."""
        return [(*assignment(key), value) for key, value in self.values.items()]


def case(model: PathLike, values: Mapping[str, Any], name: str = "", row: Optional[int] = None) -> Case:
    """Makes a case; converts its values to texts."""
    return Case(os.fspath(Path(model).absolute()), {key: value_text(key, v) for key, v in values.items()}, name, row)


Table = Union[PathLike, Sequence[Parameter], None]


def rows(model: PathLike, table: Table, sample: Any) -> list[Case]:
    """A case for each row of a sample.

    model: the data file.
    table: parameters or their file, if the columns are names of parameters; None: the columns are paths.
    sample: the result of `vesk.sample`, a CSV file, a pandas data frame, a sequence of mappings, or an array with a
        row for each case and a column for each parameter. A column "row" or "id" names the case's folder; without it
        the position, from 0, does.
    """
    known = parameters(table) if isinstance(table, (str, os.PathLike)) else list(table or [])
    header, lines = _columns_and_rows(sample, known)
    paths = {it.name: it.path for it in known}
    naming = next((column for column in ("row", "id") if column in header), None)
    result: list[Case] = []
    names: set[str] = set()
    for position, line in enumerate(lines):
        values = dict(zip(header, line))
        name = str(values.pop(naming)) if naming else str(position)
        if name in names:
            raise ValueError(f"Two rows have the name {name}.")
        names.add(name)
        try:
            result.append(case(model, {paths.get(key, key): value for key, value in values.items()}, name, position))
        except ValueError as error:
            raise ValueError(f"Row {position}: {error}") from None
    return result


def _columns_and_rows(sample: Any, known: Sequence[Parameter]) -> tuple[list[str], Iterable[Sequence[Any]]]:
    if isinstance(sample, (str, os.PathLike)):
        return read_table(sample)
    if hasattr(sample, "names") and hasattr(sample, "values"):  # vesk.Sample
        return list(sample.names), sample.values
    if hasattr(sample, "columns") and hasattr(sample, "itertuples"):  # pandas
        return [str(name) for name in sample.columns], sample.itertuples(index=False)
    lines = list(sample)
    if lines and isinstance(lines[0], Mapping):
        header = list(lines[0])
        for position, line in enumerate(lines):
            if set(line) != set(header):
                raise ValueError(f"Row {position} has other columns than row 0.")
        return header, [[line[key] for key in header] for line in lines]
    header = [it.name for it in known]
    for position, line in enumerate(lines):
        if len(line) != len(header):
            raise ValueError(f"Row {position}: expected a value for each of {len(header)} parameters, found {len(line)}.")
    return header, lines
