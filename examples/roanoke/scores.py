"""How well a series of estimates agrees with measurements of the same days."""
import math
from dataclasses import dataclass


@dataclass(frozen=True)
class Scores:
    count: int
    observed: float  # mean
    estimated: float  # mean
    bias: float  # estimated less observed
    rmse: float
    correlation: float  # nan where one of the two does not vary
    efficiency: float  # Nash and Sutcliffe: 1 is perfect, 0 is as good as the mean of the measurements


def score(observed, estimated):
    """Two {date: value}; only the days that both have count, and there must be one."""
    days = sorted(observed.keys() & estimated.keys())
    o, e = [observed[day] for day in days], [estimated[day] for day in days]
    n = len(days)
    mean_o, mean_e = sum(o) / n, sum(e) / n
    square_error = sum((b - a) ** 2 for a, b in zip(o, e))
    spread_o, spread_e = (sum((v - mean) ** 2 for v in values) for values, mean in ((o, mean_o), (e, mean_e)))
    together = sum((a - mean_o) * (b - mean_e) for a, b in zip(o, e))
    return Scores(
        count=n,
        observed=mean_o,
        estimated=mean_e,
        bias=mean_e - mean_o,
        rmse=math.sqrt(square_error / n),
        correlation=together / math.sqrt(spread_o * spread_e) if spread_o * spread_e > 0 else math.nan,
        efficiency=1 - square_error / spread_o if spread_o > 0 else math.nan,
    )
