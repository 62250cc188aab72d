"""Records of runs, NAME.run.json, and whether they match a case."""

from __future__ import annotations

import functools
import hashlib
import json
import os
from pathlib import Path
from typing import Any, Iterator, Optional, Sequence

from . import html
from .cases import Case
from .table import PathLike

# Options of a call that do not affect the results.
_OF_A_CALL = ("--set", "--set-from", "--parameters", "--row", "--rows", "--output-dir", "--record", "--time-limit", "--progress")
_FLAGS_OF_A_CALL = ("--quiet", "--stop-with-parent", "--yes")


class Record:
    """The record of a run, as described in docs/run-record.schema.json. Times are in seconds, memory in bytes."""

    def __init__(self, content: dict[str, Any], file: str = "") -> None:
        if not isinstance(content, dict) or content.get("format") != "vesk run record":
            raise ValueError(f"{file}: not a run record.")
        if content.get("version") != 1:
            raise ValueError(f"{file}: unsupported record version; this package reads version 1.")
        self.content = content
        self.file = file

    @classmethod
    def read(cls, file: PathLike) -> Record:
        """Raises OSError, and ValueError for a file that is not a run record."""
        try:
            content = json.loads(Path(file).read_text(encoding="utf-8"))
        except ValueError:
            raise ValueError(f"{os.fspath(file)}: not a run record.") from None
        return cls(content, os.fspath(file))

    def __repr__(self) -> str:
        return f"Record({self.file!r}, {self.content.get('class')}, status {self.content.get('status')})"

    def __getitem__(self, name: str) -> Any:
        return self.content[name]

    def get(self, name: str, default: Any = None) -> Any:
        return self.content.get(name, default)

    @property
    def ok(self) -> bool:
        """Whether the run succeeded, possibly with warnings."""
        return self.content["class"] in ("good", "warnings")

    @property
    def cause(self) -> str:
        """Why it failed, in one sentence; empty: it did not."""
        cause = self.content["cause"]
        return str(cause["text"]) if cause else ""

    def output(self, ending: str) -> Optional[Path]:
        """The output file with this ending, such as ".nc"; None: the run wrote none."""
        return next((Path(it["file"]) for it in self.content["outputs"] if it["file"].endswith(ending)), None)

    def agrees_with(self, case: Case, options: Sequence[str] = ()) -> bool:
        """Whether the run succeeded, its outputs still exist, and a run of the case with these options would have the
        same input: data file, values, sources of queries, engine, options."""
        content = self.content
        return (
            self.ok
            and _is_unchanged(content.get("data_file"), os.path.abspath(case.model))
            and _is_unchanged(content.get("engine"))
            and all(_is_unchanged(query["source"]) for query in content["queries"])
            and all(_size_of(it["file"]) == it["bytes"] for it in content["outputs"])
            and _options_of(content["arguments"], case.model) == list(options)
            and len(content["values"]) == len(case.values)
            and all(_is_same(*pair) for pair in zip(content["values"], case.assignments()))
        )

    def _repr_html_(self) -> str:
        names = ("status", "class", "wall_seconds", "processor_seconds", "started", "host")
        shown = [(name, self.content[name]) for name in names] + [("cause", self.cause)]
        return html.table(shown, caption=self.file)


def _is_same(recorded: dict[str, str], wanted: tuple[str, str, str]) -> bool:
    path, assignment, value = wanted
    # A path with names is recorded with numbers; the check of the data file then suffices.
    same_path = "{" in path or recorded["path"] == path
    return same_path and (recorded["assignment"], recorded["value"]) == (assignment, value)


def _options_of(arguments: Sequence[str], model: str) -> list[str]:
    kept: list[str] = []
    rest = iter(arguments[1:])
    for argument in rest:
        name = argument.split("=")[0]
        if name in _OF_A_CALL:
            if "=" not in argument:
                next(rest, None)
        elif argument not in _FLAGS_OF_A_CALL and argument.upper() != "-RUN" and Path(argument).name != Path(model).name:
            kept.append(argument)
    return kept


def _size_of(file: str) -> int:
    try:
        return os.stat(file).st_size
    except OSError:
        return -1


def _is_unchanged(recorded: Optional[dict[str, Any]], file: Optional[str] = None) -> bool:
    if recorded is None:
        return False
    try:
        state = os.stat(file or recorded["file"])
    except OSError:
        return False
    return state.st_size == recorded["bytes"] and _sha256(
        file or recorded["file"], state.st_size, state.st_mtime_ns) == recorded.get("sha256")


@functools.lru_cache(maxsize=4096)
def _sha256(file: str, _size: int, _changed: int) -> str:
    digest = hashlib.sha256()
    with open(file, "rb") as opened:
        for block in iter(lambda: opened.read(1 << 20), b""):
            digest.update(block)
    return digest.hexdigest()


def record_file(case: Case, output_dir: PathLike) -> Path:
    """The path of a case's record."""
    return Path(output_dir) / case.name / (Path(case.model).stem + ".run.json")


def find_record(case: Case, output_dir: PathLike, options: Sequence[str] = ()) -> Optional[Record]:
    """The record of a case, if it matches; a damaged record or one of another version does not."""
    try:
        record = Record.read(record_file(case, output_dir))
        return record if record.agrees_with(case, options) else None
    except (OSError, ValueError, KeyError, TypeError):
        return None


def pending(cases: Sequence[Case], output_dir: PathLike, options: Sequence[str] = ()) -> list[Case]:
    """The cases that still have to be run: no record, failed, or run with different input."""
    return [case for case in cases if find_record(case, output_dir, options) is None]


def records(folder: PathLike) -> Iterator[Record]:
    """All records in a folder and its subfolders. Raises ValueError if one cannot be read."""
    for file in sorted(Path(folder).rglob("*.run.json")):
        yield Record.read(file)
