"""Formulas that convert measured and assumed values to model input."""
import math

CUBIC_FOOT = 0.3048**3  # m3
SECONDS_PER_DAY = 86400


def oxygen_saturation(celsius):
    """Saturation of fresh water at sea level, g/m3 (Benson and Krause, as in Standard Methods 4500-O)."""
    t = 1 / (celsius + 273.15)
    return math.exp(-139.34411 + t * (1.575701e5 + t * (-6.642308e7 + t * (1.243800e10 - t * 8.621949e11))))


def power_laws(width, slope, roughness):
    """Depth and velocity of a wide rectangular channel by Manning's formula, as powers of the flow in m3/s.

    Returns (depth multiplier, depth exponent, velocity multiplier, velocity exponent); m and m/s.
    """
    depth = (roughness / (width * math.sqrt(slope))) ** 0.6
    return depth, 0.6, 1 / (width * depth), 0.4


def load(flow, concentration):
    """kg/day from m3/s and g/m3."""
    return flow * concentration * SECONDS_PER_DAY / 1000
