"""The segments of the river, cut from the reaches of river/reaches.csv."""
from dataclasses import dataclass

import physics
import tables

GAGE_KM = 110  # of the station near Oak City, the end of the model


@dataclass(frozen=True)
class Segment:
    name: str
    from_km: float
    to_km: float
    width: float  # m
    slope: float
    roughness: float  # Manning's n
    sediment_demand: float  # factor on the parameter in river/kinetics.csv

    @property
    def length(self):  # m
        return 1000 * (self.from_km - self.to_km)

    def laws(self):
        return physics.power_laws(self.width, self.slope, self.roughness)

    def section(self, flow):
        """Cross-section at a flow, m2."""
        depth, exponent, _, _ = self.laws()
        return self.width * depth * flow**exponent


def segments():
    """All segments in downstream order."""
    river = []
    for reach in tables.numbers("river/reaches.csv"):
        count = int(reach["segments"])
        length = (reach["from_km"] - reach["to_km"]) / count
        for i in range(count):
            top = reach["from_km"] - i * length
            river.append(
                Segment(
                    name=f"km {top - length / 2:.0f} {reach['name']}",
                    from_km=top,
                    to_km=top - length,
                    width=reach["width_m"],
                    slope=reach["slope"],
                    roughness=reach["manning_n"],
                    sediment_demand=reach["sediment_demand"],
                )
            )
    return river


def position(river, km):
    """Zero-based position of the segment that contains a river kilometre; a boundary belongs to the upstream segment."""
    return next(i for i, segment in enumerate(river) if segment.from_km > km >= segment.to_km)
