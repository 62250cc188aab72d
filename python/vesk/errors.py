"""Exceptions. Wrong arguments raise ValueError."""

from __future__ import annotations

from typing import TYPE_CHECKING, Optional

if TYPE_CHECKING:
    from .record import Record


class ProgramMissing(RuntimeError):
    """A program of Vesk was not found."""


class RunError(RuntimeError):
    """A run that failed. Its text is the cause as reported, for example by the engine.

    status: the exit status of vesk-run (64 to 75: see its man page; 1 to 63: the engine's return code); negative: the
        signal that ended it. None: the executor failed, so nothing was started.
    record: the record of the run, if it left one.
    """

    def __init__(self, text: str, status: Optional[int] = None, record: Optional[Record] = None) -> None:
        super().__init__(text)
        self.status = status
        self.record = record

    def __reduce__(self) -> tuple[type[RunError], tuple[str, Optional[int], Optional[Record]]]:
        return RunError, (str(self), self.status, self.record)  # so that it can be pickled between processes
