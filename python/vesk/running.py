"""One run."""

from __future__ import annotations

import contextlib
import csv
import datetime
import os
import subprocess
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path
from typing import TYPE_CHECKING, Any, Mapping, Optional, Sequence, Union

from . import html
from .cases import Case, case
from .errors import RunError
from .programs import program
from .record import Record, record_file
from .results import Results
from .table import PathLike

if TYPE_CHECKING:
    import pandas

TRY_AGAIN = 75  # the status for locked results, a full disk, a locked table
ATTEMPTS, WAIT = 3, 1.0  # for that status; seconds


@dataclass
class Run:
    """A run that has ended.

    case: what was run. record: its record; None: it left none. folder: of its results.
    error: why it failed; None: it succeeded.
    resumed: True if it was skipped, because the record of an earlier run matches.
    """

    case: Case
    folder: Path
    record: Optional[Record] = None
    error: Optional[RunError] = None
    resumed: bool = False
    _keeps: Any = field(default=None, repr=False)  # keeps a temporary folder alive

    @property
    def ok(self) -> bool:
        return self.error is None

    @property
    def row(self) -> Optional[int]:
        """Position in the table of cases, from 0."""
        return self.case.row

    @property
    def name(self) -> str:
        return self.case.name

    @property
    def results(self) -> Results:
        """All results, as arrays. Raises RunError for a run that failed, ValueError if it has no NetCDF file."""
        return Results(self._output(".nc"), load=self._keeps is not None)

    @property
    def series(self) -> dict[str, list[float]]:
        """The series of `results=`, by names such as "DO@24", in the units of the results; nan: no value."""
        lines = self._lines()
        return {name: [float(line[at] or "nan") for line in lines[1:]]
                for at, name in enumerate(lines[0]) if at > 0}

    @property
    def times(self) -> list[datetime.datetime]:
        """The times of `series`, without a time zone, as in the data set."""
        return [datetime.datetime.fromisoformat(line[0]) for line in self._lines()[1:]]

    def frame(self) -> pandas.DataFrame:
        """`series` as a data frame over `times`."""
        import pandas

        return pandas.DataFrame(self.series, index=pandas.DatetimeIndex(self.times, name="time"))

    def _lines(self) -> list[list[str]]:
        with open(self._output(".results.csv"), newline="", encoding="utf-8") as file:
            return list(csv.reader(file))

    def _output(self, ending: str) -> Path:
        if self.error:
            raise self.error
        found = self.record and self.record.output(ending)
        if not found:
            raise ValueError(f"The run has not written a file {Path(self.case.model).stem}{ending}; with results= it "
                             "writes a table of series, without it a NetCDF file.")
        return found

    def _repr_html_(self) -> str:
        state = "resumed" if self.resumed else "ended well" if self.ok else str(self.error)
        shown = [("model", self.case.model), ("folder", self.folder), ("state", state), *self.case.values.items()]
        if self.record:
            shown.append(("processor time", f"{self.record['processor_seconds']:.3f} s"))
        return html.table(shown, caption=f"Run {self.name}".strip())


Series = Union[str, Sequence[str], None]


def options_of(results: Series = None, queries: bool = True, beyond_limits: bool = False, engine: Optional[PathLike] = None,
               catalogue: Optional[PathLike] = None) -> list[str]:
    """The options of vesk-run that affect the results."""
    options: list[str] = []
    if results:
        options += ["--results", results if isinstance(results, str) else ",".join(results)]
    if not queries:
        options.append("--no-queries")
    if beyond_limits:
        options.append("--beyond-limits")
    if engine is not None:
        options += ["--engine", os.path.abspath(engine)]
    if catalogue is not None:
        options += ["--catalogue", os.path.abspath(catalogue)]
    return options


def run(model: PathLike, values: Optional[Mapping[str, Any]] = None, *, output_dir: Optional[PathLike] = None,
        results: Series = None, queries: bool = True, beyond_limits: bool = False, time_limit: Optional[float] = None,
        engine: Optional[PathLike] = None, catalogue: Optional[PathLike] = None) -> Run:
    """Runs a model and waits for its end.

    model: the data file (.vki).
    values: by path, as in `vesk-run --set`: {"constant.21": 0.2, "flow.0.0*=": 1.1}. Numbers, dates, or for a series
        the file with its points.
    output_dir: folder for all output of the run; None: a temporary folder that lasts as long as the Run.
    results: only these series, such as "DO@24,CBOD@24" or a list of them; see `Run.series`.
    queries: whether stored queries read their sources; otherwise the stored points are used.
    beyond_limits: whether values may be outside the catalogue's ranges.
    time_limit: in seconds; the run is then ended.

    Raises RunError, with the engine's message if the engine failed, and ValueError for values that are not finite
    numbers.
    """
    temporary = None if output_dir is not None else tempfile.TemporaryDirectory(prefix="vesk-")
    folder = Path(output_dir if output_dir is not None else temporary.name).absolute()  # type: ignore[union-attr]
    result = work(case(model, values or {}), folder, options_of(results, queries, beyond_limits, engine, catalogue), time_limit)
    result._keeps = temporary
    if result.error:
        raise result.error
    return result


def work(case: Case, folder: Path, options: Sequence[str], time_limit: Optional[float] = None) -> Run:
    """Runs a case. vesk-run ends when the calling thread does. Retries after a temporary failure."""
    words = [program("vesk-run"), case.model, "-RUN", "--quiet", "--progress=none", "--stop-with-parent",
             "--output-dir", str(folder), *options]
    if time_limit is not None:
        words.append(f"--time-limit={time_limit}")
    for path, operator, value in case.assignments():
        words += ["--set", path + operator + value]
    record = record_file(Case(case.model), folder)
    for attempt in range(ATTEMPTS):
        with contextlib.suppress(OSError):
            record.unlink()  # left by an earlier run
        is_old = record.exists()
        done = subprocess.run(words, stdin=subprocess.DEVNULL, capture_output=True, check=False)
        if done.returncode != TRY_AGAIN or attempt + 1 == ATTEMPTS:
            break
        time.sleep(WAIT)
    found: Optional[Record] = None
    if not is_old:
        with contextlib.suppress(OSError, ValueError):
            found = Record.read(record)
    error = None
    if done.returncode != 0:
        said = done.stderr.decode(errors="replace").strip()
        cause = (found.cause if found else "") or said or f"vesk-run ended with status {done.returncode}."
        error = RunError(cause, done.returncode, found)
    return Run(case, folder, found, error)
