"""Data files as nested dictionaries and lists, through vki."""

from __future__ import annotations

import json
import os
from typing import Any

from . import html
from .programs import ask
from .table import PathLike


class Model(dict):  # type: ignore[type-arg]
    """The content of a data file: model["segments"][3]["volume"]. Members are named as in `vki dump`; dates are ISO
    texts, volumes in m3, lengths in m; numbers that are not finite are the texts "nan", "inf" and "-inf"."""

    def _repr_html_(self) -> str:
        shown = [(name, f"{len(value)}" if isinstance(value, list) else value)
                 for name, value in self.items() if not isinstance(value, dict)]
        return html.table(shown, caption="Data set")


def read(file: PathLike) -> Model:
    """Reads a data file (.vki). Raises ValueError with the cause."""
    return Model(json.loads(ask("vki", ["dump", "--dates", "iso", os.fspath(file)])))


def write(model: dict[str, Any], file: PathLike) -> None:
    """Writes a data file; an existing one is replaced only when the new one is complete. Raises ValueError, which names
    the member in error."""
    ask("vki", ["load", "-", os.fspath(file)], json.dumps(model))
