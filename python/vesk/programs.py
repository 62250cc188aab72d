"""Finds and calls the programs of Vesk."""

from __future__ import annotations

import os
import shutil
import subprocess
from pathlib import Path
from typing import Sequence

from .errors import ProgramMissing


def program(name: str) -> str:
    """The path of a program: in the folder VESK_BIN if set, else on the search path."""
    folder = os.environ.get("VESK_BIN")
    found = shutil.which(name, path=folder) if folder else shutil.which(name)
    if found is None:
        where = f"in {folder}, the folder that VESK_BIN names" if folder else "on the search path"
        raise ProgramMissing(f"{name} is not {where}; install vesk-cli, or set VESK_BIN to the folder of the programs.")
    return str(Path(found).absolute())


def ask(name: str, arguments: Sequence[str], text: str | None = None) -> str:
    """Returns the program's output. Raises ValueError with its message if it fails."""
    done = subprocess.run([program(name), *arguments], input=text, capture_output=True, encoding="utf-8", check=False)
    if done.returncode != 0:
        raise ValueError(done.stderr.strip() or f"{name} ended with status {done.returncode}.")
    return done.stdout
