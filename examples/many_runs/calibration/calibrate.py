#!/usr/bin/env python3
"""Calibrates two constants of the sample river with scipy.optimize.least_squares.

    calibrate.py [FOLDER] [--twin]      default: build/many_runs/calibration; --twin: only the twin experiment

First with synthetic measurements, where the answer is known; then with those near Oak City, checked in a year not used.
"""
import argparse
import csv
import dataclasses
import pathlib
import sys

import numpy
from scipy.optimize import least_squares

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
import sample_river  # noqa: E402  also finds the package and the programs
import vesk  # noqa: E402

OXYGEN = "DO@25"  # near Oak City, g/m3
TRUTH = numpy.array([0.15, 0.8])  # of the twin experiment
STARTS = [numpy.array([0.12, 1.0]), numpy.array([0.25, 0.4])]
STEP = 1e-2  # of finite differences, relative


@dataclasses.dataclass
class Problem:
    """Residuals of a year, modelled minus measured, g/m3. Counts the runs."""

    river: pathlib.Path
    table: list
    folder: pathlib.Path
    measured: numpy.ndarray = None  # at the run's times; nan: none
    runs: int = 0
    last: tuple = None  # values, modelled

    def modelled(self, *points):
        """A series for each point, from parallel runs."""
        self.runs += len(points)
        cases = vesk.rows(self.river, self.table, points)
        runs = vesk.run_many(cases, output_dir=self.folder, results=OXYGEN, queries=False).in_order()
        for run in runs:
            if run.error:
                raise run.error
        return [numpy.array(run.series[OXYGEN]) for run in runs]

    def residuals(self, values):
        modelled, = self.modelled(values)
        self.last = values.copy(), modelled
        return (modelled - self.measured)[~numpy.isnan(self.measured)]

    def jacobian(self, values):
        """Finite differences in parallel. The base is the point just computed."""
        if self.last is None or not numpy.array_equal(self.last[0], values):
            self.residuals(values)
        steps = STEP * numpy.abs(values)
        moved = self.modelled(*(values + numpy.diag(steps)))
        columns = [(series - self.last[1]) / step for series, step in zip(moved, steps)]
        return numpy.array(columns).T[~numpy.isnan(self.measured)]

    def solve(self, start, **more):
        bounds = [it.minimum for it in self.table], [it.maximum for it in self.table]
        return least_squares(self.residuals, start, bounds=bounds, x_scale=start, **more)


def measured_at(river, times):
    """Daily means near Oak City on the days of `times`, from the first of October on; nan: none."""
    with open(river.parent / "data/oak_city_daily.csv", newline="", encoding="utf-8") as file:
        by_day = {row["moment"][:10]: row["oxygen_mg_l"] for row in csv.DictReader(file)}
    first = f"{times[0].year}-10-01"  # the run starts with 16 days of spin-up
    days = [f"{time:%Y-%m-%d}" for time in times]
    return numpy.array([float(by_day.get(day) or "nan") if day >= first else numpy.nan for day in days])


def shown(values):
    return ", ".join(f"{value:.6g}" for value in values)


def report(result, start, problem, runs_before):
    singular = numpy.linalg.svd(result.jac * result.x, compute_uv=False)
    print(f"  from ({shown(start)}) to ({shown(result.x)}) in {problem.runs - runs_before} runs; "
          f"singular values of the relative Jacobian {shown(singular)}")


def twin(problem):
    """Measurements computed by the model itself, so the answer is known."""
    print(f"Twin experiment, truth ({shown(TRUTH)})")
    problem.measured, = problem.modelled(TRUTH)
    found = []
    for start in STARTS:
        runs_before = problem.runs
        result = problem.solve(start, jac=problem.jacobian)
        report(result, start, problem, runs_before)
        found.append(result.x)
    runs_before = problem.runs
    wrong = problem.solve(STARTS[0], jac="2-point")  # its step is 1.5e-8
    print(f"  scipy's own step, 1.5e-8: \"{wrong.message.rstrip('.')}\" at ({shown(wrong.x)}), "
          f"after {problem.runs - runs_before} runs, which is wrong")
    return found, wrong


def scores(problem, values):
    modelled, = problem.modelled(values)
    found = vesk.stats.scores(list(problem.measured), list(modelled))
    return f"bias {found['bias']:+.3f}, RMSE {found['rmse']:.3f}, efficiency {found['nse']:.3f}"


def real(problems):
    """Calibrates for the first year, and shows the effect on the second."""
    names = [it.name for it in problems[2012].table]
    start = numpy.array([it.start for it in problems[2012].table])
    for year, problem in problems.items():
        run = vesk.run(problem.river, results=OXYGEN, queries=False)
        problem.measured = measured_at(problem.river, run.times)
    print(f"Measurements near Oak City, water year 2012: {', '.join(names)}")
    for other in (start, STARTS[1]):
        runs_before = problems[2012].runs
        result = problems[2012].solve(other, jac=problems[2012].jacobian)
        report(result, other, problems[2012], runs_before)
    for year, problem in problems.items():
        print(f"  {year} before: {scores(problem, start)}; after: {scores(problem, result.x)}"
              + ("" if year == 2012 else " (not used)"))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("folder", nargs="?", default=sample_river.OUT / "calibration", type=pathlib.Path)
    parser.add_argument("--twin", action="store_true", help="only the twin experiment")
    arguments = parser.parse_args()
    every = {it.name: it for it in vesk.parameters(sample_river.HERE / "parameters.csv")}
    table = [every["oxidation"], every["sediment"]]  # nitrification cannot be identified: README.md
    years = [2012] if arguments.twin else [2012, 2015]
    problems = {year: Problem(sample_river.prepare(arguments.folder, year), table, arguments.folder / "runs") for year in years}
    found, wrong = twin(problems[2012])
    good = all(numpy.allclose(it, TRUTH, rtol=5e-4) for it in found) and not numpy.allclose(wrong.x, TRUTH, rtol=5e-4)
    if not arguments.twin:
        real(problems)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
