"""Runs, reads and changes water-quality models of Vesk.

The programs vesk-run, vki and vesk-results do the work, each in a separate process, so this package needs only Python.
Results as arrays require xarray, samples require scipy.

    import vesk

    run = vesk.run("river.vki", {"constant.21": 0.2})      # raises vesk.RunError with the engine's message
    run.results.by_name("Dissolved oxygen").sel(segment="km 60 Oak City")

    table = vesk.parameters("parameters.csv")
    sample = vesk.sample(table, 200, seed=1, file="sample.csv")
    for run in vesk.run_many(vesk.rows("river.vki", table, sample), output_dir="out"):
        print(run.row, run.ok)
"""

from . import stats
from .cases import Case, Parameter, parameters, rows
from .errors import ProgramMissing, RunError
from .many import Runs, run_many
from .model import Model, read, write
from .record import Record, pending, records
from .results import Results
from .running import Run, run
from .sampling import Sample, sample

__version__ = "0.1.0"

__all__ = [
    "Case", "Model", "Parameter", "ProgramMissing", "Record", "Results", "Run", "RunError", "Runs", "Sample",
    "parameters", "pending", "read", "records", "rows", "run", "run_many", "sample", "stats", "write",
]
