"""Agreement of results with measurements, as vesk-results computes it."""

from __future__ import annotations

import json
import math
import os
from dataclasses import dataclass
from typing import Optional, Sequence

from . import html
from .programs import ask
from .running import Run
from .table import PathLike

Scores = dict[str, Optional[float]]
ORDER = ("count", "mean_measured", "mean_modelled", "bias", "percent_bias", "mae", "rmse", "rsr", "r", "r2", "nse", "kge",
         "kge_alpha", "kge_beta")


@dataclass(frozen=True)
class Agreement:
    """Scores of one measured series. Means, bias, mae and rmse are in `units`; bias is modelled minus measured.

    scores: by period ("2011-10", or "all"), then by name; None: not defined.
    """

    name: str
    variable: str
    segment: str
    units: str
    scores: dict[str, Scores]

    def _repr_html_(self) -> str:
        names = ("count", "bias", "rmse", "r", "nse", "kge")
        shown = [[period, *(_shown(scores[name]) for name in names)] for period, scores in self.scores.items()]
        return html.table(shown, ["period", *names], f"{self.name}, {self.units}")


def _shown(value: Optional[float]) -> str:
    return "" if value is None else f"{value:.4g}"


def agreement(results: Run | PathLike, *, measured: Optional[PathLike] = None) -> list[Agreement]:
    """Agreement of results with each series of a measured file, by month and overall, computed by vesk-results.

    results: a run, or a NetCDF file. measured: NAME.measured.json; None: the one beside the run's data file or beside
    the results.
    """
    if isinstance(results, Run):
        measured = measured or os.path.splitext(results.case.model)[0] + ".measured.json"
        file = str(results._output(".nc"))
    else:
        file = os.fspath(results)
    more = ["--measured", os.fspath(measured)] if measured else []
    found = json.loads(ask("vesk-results", ["agreement", file, "--format", "json", *more]))
    result = []
    for series in found["series"]:
        model = next(it for it in series["estimates"] if it["name"] == "model")
        by_period = {row["period"]: {name: row[name] for name in ORDER} for row in model["scores"]}
        result.append(Agreement(series["name"], series["variable"], series["segment"], series["units"], by_period))
    return result


def scores(measured: Sequence[float], modelled: Sequence[float]) -> Scores:
    """The same scores for pairs in memory; skips pairs with a missing value (nan). Raises ValueError for sequences of
    different lengths."""
    if len(measured) != len(modelled):
        raise ValueError(f"There are {len(measured)} measured and {len(modelled)} modelled values.")
    pairs = [(float(o), float(m)) for o, m in zip(measured, modelled) if not (math.isnan(o) or math.isnan(m))]
    result: Scores = dict.fromkeys(ORDER)
    result["count"] = len(pairs)
    if not pairs:
        return result
    n = len(pairs)
    sum_o, sum_m = sum(o for o, _ in pairs), sum(m for _, m in pairs)
    mean_o, mean_m = sum_o / n, sum_m / n
    squares = sum((m - o) ** 2 for o, m in pairs)
    spread_o, spread_m = _spread([o for o, _ in pairs], mean_o), _spread([m for _, m in pairs], mean_m)
    both = sum((o - mean_o) * (m - mean_m) for o, m in pairs)
    share = _ratio(sum_m - sum_o, sum_o)
    r = _ratio(both, math.sqrt(spread_o) * math.sqrt(spread_m))
    if r is not None:
        r = min(1.0, max(-1.0, r))
    lost = _ratio(squares, spread_o)
    alpha, beta = _ratio(math.sqrt(spread_m), math.sqrt(spread_o)), _ratio(mean_m, mean_o)
    result.update(
        mean_measured=mean_o, mean_modelled=mean_m, bias=mean_m - mean_o,
        percent_bias=None if share is None else 100 * share,
        mae=sum(abs(m - o) for o, m in pairs) / n, rmse=math.sqrt(squares / n),
        rsr=_ratio(math.sqrt(squares), math.sqrt(spread_o)), r=r, r2=None if r is None else r * r,
        nse=None if lost is None else 1 - lost, kge_alpha=alpha, kge_beta=beta)
    if r is not None and alpha is not None and beta is not None:
        result["kge"] = 1 - math.sqrt((r - 1) ** 2 + (alpha - 1) ** 2 + (beta - 1) ** 2)
    return result


def _spread(values: Sequence[float], mean: float) -> float:
    return sum((v - mean) ** 2 for v in values) if min(values) < max(values) else 0.0  # exactly 0 for equal values


def _ratio(dividend: float, divisor: float) -> Optional[float]:
    return dividend / divisor if divisor != 0 and math.isfinite(dividend / divisor) else None
