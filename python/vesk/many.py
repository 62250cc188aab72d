"""Many runs."""

from __future__ import annotations

import os
import queue
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any, Iterable, Iterator, Optional

from . import html
from .cases import Case
from .errors import RunError
from .record import find_record
from .running import Run, Series, options_of, work
from .table import PathLike

IN_FLIGHT = 1000  # cases passed to an external executor at a time; many, since its workers may be remote


def run_many(cases: Iterable[Case], executor: Any = None, *, output_dir: PathLike = "runs", results: Series = None,
             queries: bool = True, beyond_limits: bool = False, time_limit: Optional[float] = None,
             engine: Optional[PathLike] = None, catalogue: Optional[PathLike] = None, resume: bool = False) -> Runs:
    """Starts the first cases and returns at once. Iterating over the result starts the others, and yields each Run when
    it ends.

    cases: for example from `vesk.rows`.
    executor: None: runs as many at a time as there are processors; or a Dask client; or any object with `submit`, such
        as those of concurrent.futures or mpi4py. Its workers need this package, the programs and access to the same
        folders.
    output_dir: each case writes to the subfolder with the case's name.
    resume: skips cases whose record in that folder matches what would be run.

    The other arguments are those of `vesk.run`. A case that fails yields a Run with `error` set; the others continue.
    When a worker ends, its run ends. Raises ValueError if two cases would write to the same folder.
    """
    options = options_of(results, queries, beyond_limits, engine, catalogue)
    return Runs(list(cases), executor, Path(output_dir).absolute(), options, time_limit, resume)


class Runs:
    """Runs in the order in which they end. Can be iterated repeatedly, also after an interruption."""

    def __init__(self, cases: list[Case], executor: Any, folder: Path, options: list[str], time_limit: Optional[float],
                 resume: bool) -> None:
        names = [case.name for case in cases]
        if len(set(names)) < len(names) or (len(names) > 1 and "" in names):
            raise ValueError("Two cases have the same name, or one has none; each writes to the folder of its name.")
        self._ended: list[Run] = []
        self._arrived: queue.SimpleQueue[tuple[Case, Any]] = queue.SimpleQueue()
        self._count = len(cases)
        self._folder, self._options, self._time_limit = folder, options, time_limit
        to_run: list[Case] = []
        for case in cases:
            found = find_record(case, folder, options) if resume else None
            if found:
                self._ended.append(Run(case, folder / case.name, found, resumed=True))
            else:
                to_run.append(case)
        self._waiting = iter(to_run)
        self._own = None
        in_flight = IN_FLIGHT
        if executor is None:
            processors = len(os.sched_getaffinity(0))
            executor = self._own = ThreadPoolExecutor(processors, "vesk")
            in_flight = 4 * processors  # few, since the interpreter waits for all of them when it exits
        elif hasattr(executor, "get_executor"):  # a Dask client
            executor = executor.get_executor(pure=False, retries=2)
        if not hasattr(executor, "submit"):
            raise ValueError(f"An executor has a function submit; {executor!r} has none.")
        self._executor = executor
        for _ in range(in_flight):
            self._submit_next()

    def _submit_next(self) -> None:
        case = next(self._waiting, None)
        if case is None:
            return
        try:
            future = self._executor.submit(work, case, self._folder / case.name, self._options, self._time_limit)
        except Exception as error:  # a pool whose workers have died refuses cases
            self._arrived.put((case, error))
            return
        future.add_done_callback(lambda done: self._arrived.put((case, done)))

    def __iter__(self) -> Iterator[Run]:
        at = 0
        while at < self._count:
            if at == len(self._ended):
                self._take_next()
            yield self._ended[at]
            at += 1
        self.close()

    def _take_next(self) -> None:
        case, arrived = self._arrived.get()
        self._submit_next()
        self._ended.append(self._run_of(case, arrived))

    def _run_of(self, case: Case, arrived: Any) -> Run:
        error: Optional[BaseException]
        try:
            error = arrived if isinstance(arrived, BaseException) else arrived.exception()
        except BaseException as failure:  # a cancelled future raises it
            error = failure
        if error is None:
            ended: Run = arrived.result()
            return ended
        words = str(error) or type(error).__name__
        return Run(case, self._folder / case.name, error=RunError(f"The executor failed: {words}"))

    def __len__(self) -> int:
        return self._count

    @property
    def ended(self) -> list[Run]:
        """The runs yielded so far."""
        return list(self._ended)

    @property
    def failed(self) -> list[Run]:
        """Waits for all runs; returns those that failed."""
        return [run for run in self if not run.ok]

    def in_order(self) -> list[Run]:
        """Waits for all runs; returns them in the order of the rows."""
        return sorted(self, key=lambda run: -1 if run.row is None else run.row)

    def close(self) -> None:
        """Starts no more runs and waits for the running ones. Not needed after a complete iteration."""
        self._waiting = iter(())
        if self._own:
            self._own.shutdown(wait=True, cancel_futures=True)

    def __enter__(self) -> Runs:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def _repr_html_(self) -> str:
        failed = [run for run in self._ended if not run.ok]
        caption = f"{len(self._ended)} of {self._count} runs have ended, {len(failed)} of them failed"
        return html.table([(run.name, run.error) for run in failed[:20]], ("failed", "cause"), caption)
