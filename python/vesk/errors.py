"""What can go wrong besides a wrong argument, which is a ValueError."""

from __future__ import annotations

from typing import TYPE_CHECKING, Optional

if TYPE_CHECKING:
    from .record import Record


class ProgramMissing(RuntimeError):
    """A program of Vesk was not found."""


class RunError(RuntimeError):
    """A run that failed. Its text is the cause in the words of who found it, such as the engine.

    status: the exit status of vesk-run (64 to 75: see its man page; 1 to 63: the engine's return code); negative: the
        signal that ended it. None: nothing was started, since the executor failed.
    record: the record of the run, if it left one.
    """

    def __init__(self, text: str, status: Optional[int] = None, record: Optional[Record] = None) -> None:
        super().__init__(text)
        self.status = status
        self.record = record

    def __reduce__(self) -> tuple[type[RunError], tuple[str, Optional[int], Optional[Record]]]:
        return RunError, (str(self), self.status, self.record)  # errors travel between processes
