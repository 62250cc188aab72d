"""Samples of parameters, drawn with scipy.stats.qmc."""

from __future__ import annotations

import csv
import hashlib
import io
import math
import os
from dataclasses import dataclass, field
from pathlib import Path
from typing import Optional, Sequence

from . import html
from .cases import Parameter, Table, parameters
from .table import PathLike, read_table

METHODS = ("LatinHypercube", "Sobol", "Halton")


@dataclass(frozen=True)
class Sample:
    """One row per case, one column per parameter, in the parameters' units."""

    names: list[str]
    values: list[list[float]]
    sha256: str = field(init=False, default="")

    def __post_init__(self) -> None:
        object.__setattr__(self, "sha256", hashlib.sha256(self.text().encode()).hexdigest())

    def text(self) -> str:
        """The CSV table, with all digits; `sha256` is the hash of its UTF-8 bytes."""
        out = io.StringIO()
        writer = csv.writer(out, lineterminator="\n")
        writer.writerow(["row", *self.names])
        writer.writerows([position, *map(repr, row)] for position, row in enumerate(self.values))
        return out.getvalue()

    def save(self, file: PathLike) -> None:
        """Writes the table. Raises ValueError if the file contains a different one, since results may depend on it."""
        path = Path(file)
        if path.exists():
            if path.read_text(encoding="utf-8") != self.text():
                raise ValueError(f"{path} holds another sample; choose another name or delete it with its results.")
            return
        part = path.with_name(f".{path.name}-{os.getpid()}")
        part.write_text(self.text(), encoding="utf-8")
        part.replace(path)

    @classmethod
    def read(cls, file: PathLike) -> Sample:
        """Reads a table written by `save`."""
        header, lines = read_table(file)
        if header[:1] != ["row"]:
            raise ValueError(f"{os.fspath(file)}: expected the column row first, found {header[0]}.")
        try:
            return cls(header[1:], [[float(text) for text in line[1:]] for line in lines])
        except ValueError as error:
            raise ValueError(f"{os.fspath(file)}: {error}") from None

    def __len__(self) -> int:
        return len(self.values)

    def _repr_html_(self) -> str:
        shown = [[at, *row] for at, row in list(enumerate(self.values))[:10]]
        return html.table(shown, ["row", *self.names], f"{len(self)} rows, SHA-256 {self.sha256[:16]}")


def sample(table: Table, count: int, *, seed: int, method: str = "LatinHypercube", file: Optional[PathLike] = None) -> Sample:
    """Draws a sample that fills the ranges of the parameters, or of their logarithms, evenly.

    table: parameters or their file; each parameter needs a minimum and a maximum.
    count: number of rows; a power of 2 for Sobol.
    seed: gives the same sample again, but only with the same version of scipy; to keep the sample, set `file`.
    file: where to save the sample; a file with a different one is not replaced.
    """
    known: Sequence[Parameter]
    known = parameters(table) if isinstance(table, (str, os.PathLike)) else list(table or [])
    if not known or count < 1:
        raise ValueError("A sample needs parameters and at least one row.")
    if method not in METHODS:
        raise ValueError(f"The method is one of {', '.join(METHODS)}, not \"{method}\".")
    for it in known:
        if it.minimum is None or it.maximum is None:
            raise ValueError(f"{it.name} has no range; set its minimum and maximum.")
    try:
        from scipy.stats import qmc
    except ImportError:
        raise ImportError("Samples require scipy: apt install python3-scipy, or pip install scipy.") from None
    unit = getattr(qmc, method)(len(known), seed=seed).random(count)
    result = Sample([it.name for it in known], [[_scaled(it, float(u)) for it, u in zip(known, row)] for row in unit])
    if file is not None:
        result.save(file)
    return result


def _scaled(it: Parameter, share: float) -> float:
    least, most = float(it.minimum or 0), float(it.maximum or 0)
    if it.transform == "log":
        return math.exp(math.log(least) + share * (math.log(most) - math.log(least)))
    return least + share * (most - least)
