"""What to run: parameters, and cases made of tables of their values."""

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
    """A value of a model that may vary. Numbers are in the unit that the model has them in.

    name: for people and for the columns of tables.
    path: as of `vesk-run --set`, such as "constant.21"; with an operator at the end if it is not "=".
    minimum, maximum: None: no limit.
    start: the value to begin with.
    transform: "none" or "log"; a logarithm is sampled and estimated evenly.
    step: of finite differences, relative to the value.
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
    """The parameters of a table, as `vesk-run --list-paths --csv` writes it, or all those of a data file (.vki)."""
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
    """A column's or a dictionary's key as path and operator."""
    for operator in OPERATORS:
        if key.endswith(operator):
            return key[: -len(operator)], operator
    return key, "="


def value_text(key: str, value: Any) -> str:
    """A value as vesk-run reads it. Raises ValueError unless it is a finite number, a date or a text."""
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
    """One run to do: a data file and values set for it.

    values: by path, with an operator at the end of the path if it is not "=".
    name: of the folder for its results; letters, digits, points, hyphens and underscores.
    row: position in the table that it comes from, from 0.
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
        """Path, operator and value of each."""
        return [(*assignment(key), value) for key, value in self.values.items()]


def case(model: PathLike, values: Mapping[str, Any], name: str = "", row: Optional[int] = None) -> Case:
    """A case, its values as texts."""
    return Case(os.fspath(Path(model).absolute()), {key: value_text(key, v) for key, v in values.items()}, name, row)


Table = Union[PathLike, Sequence[Parameter], None]


def rows(model: PathLike, table: Table, sample: Any) -> list[Case]:
    """A case for each row of a sample.

    model: the data file.
    table: parameters or the file of their table, for columns that are names of parameters; None: columns are paths.
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
