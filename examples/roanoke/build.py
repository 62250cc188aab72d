#!/usr/bin/env python3
"""Builds the sample data file: the Roanoke River from Roanoke Rapids to near Oak City over one water year.

Reads the measured series in data/ and the tables in river/, and passes the result as JSON to `vki load`. The measured
series also get stored queries; the files they read, and the list of measured series to compare the results with, are
copied next to the data file.
"""
import argparse
import collections
import datetime
import json
import pathlib
import shutil
import subprocess
import sys

import network
import physics
import records
import series
import tables

AMMONIUM, NITRATE, CBOD, OXYGEN = 1, 2, 3, 4  # systems of the model
SUBSTANCES = {AMMONIUM: "ammonium", NITRATE: "nitrate", CBOD: "cbod"}
SEDIMENT_DEMAND, PHOTOSYNTHESIS = 2, 5  # parameters
TEMPERATURE, WIND, PHOTOSYNTHESIS_SHARE = 1, 2, 3  # time functions
OXYGEN_MODEL = 1
EXPLICIT_EULER = 1
IN_CSV_FILES = (21, 22, 23, 24, 25, 2, 5)  # output variables: the systems, saturation, flow, temperature
IN_NETCDF_ALONE = (26, 27, 1, 3, 4, 6)  # deficit, reaeration, volume, velocity, depth, residence time
LARGEST_STEP = 0.1  # days; the engine shortens it to a stable step
DISPERSION = 20.0  # m2/s, see README.md
SPIN_UP = datetime.timedelta(days=16)

# Sources of the series that each run reads: the file, relative to the data file; the table, if the file has several;
# the fields with time and value; and conditions on other fields.
Source = collections.namedtuple("Source", "file table moment value rows")
SOURCES = {
    "release": Source("data/release.dbf", "", "MOMENT", "FLOW_M3_S", {}),
    "temperature": Source("data/oak_city_daily.csv", "", "moment", "temperature_degC", {}),
    "oxygen of the release": Source(
        "data/boundary_oxygen.sqlite", "daily", "moment", "oxygen_g_m3", {"water": "release"}
    ),
    "oxygen of the swamps": Source(
        "data/boundary_oxygen.sqlite", "daily", "moment", "oxygen_g_m3", {"water": "swamp"}
    ),
}


class Sample:
    """The data set for one water year; each method makes one part of it."""

    def __init__(self, water_year):
        self.water_year = water_year
        self.start = datetime.date(water_year - 1, 10, 1) - SPIN_UP
        self.end = datetime.date(water_year, 9, 30)
        self.segments = network.segments()
        self.last = len(self.segments) - 1
        self.temperature = self.cut(series.temperature())
        self.release = self.cut(series.release())
        self.release_oxygen = self.cut(series.oxygen("release"))
        self.swamp_oxygen = self.cut(series.oxygen("swamp"))
        self.mean_flow = sum(self.release.values()) / len(self.release)
        self.tributaries = self.joined_by_segment(tables.numbers("river/tributaries.csv"))
        self.waters = {row["water"]: row for row in tables.numbers("river/concentrations.csv")}
        self.kinetics = tables.numbers("river/kinetics.csv")

    def cut(self, values):
        """A daily series, cut to the run plus a day on each side."""
        day = datetime.timedelta(days=1)
        return {date: value for date, value in values.items() if self.start - day <= date <= self.end + day}

    def days(self):
        return [self.start + datetime.timedelta(days=i) for i in range((self.end - self.start).days + 1)]

    def joined_by_segment(self, rows):
        """{segment: rows of a table with a column km}."""
        found = {}
        for row in rows:
            found.setdefault(network.position(self.segments, row["km"]), []).append(row)
        return found

    def query(self, name):
        return records.query(name, SOURCES[name])

    # Transport.

    def release_flow(self):
        chain = [records.OUTSIDE, *range(len(self.segments)), records.OUTSIDE]
        pairs = [(a, b, 1.0) for a, b in zip(chain, chain[1:])]
        function = records.flow_function("Release at Roanoke Rapids", records.series(self.release), pairs)
        return {**function, "query": self.query("release")}

    def tributary_flow(self):
        """Runoff of the whole area; each segment passes on the shares of all upstream tributaries."""
        areas = {i: sum(row["area_km2"] for row in rows) for i, rows in self.tributaries.items()}
        total = sum(areas.values())
        runoff = tables.monthly("runoff")
        points = [records.point(date, total * runoff(date) / 1000) for date in self.days() if date.day in (1, 15)]
        pairs, joined = [], 0.0
        for i in range(min(areas), len(self.segments)):
            if i in areas:
                pairs.append((records.OUTSIDE, i, areas[i] / total))
                joined += areas[i]
            below = i + 1 if i < self.last else records.OUTSIDE
            pairs.append((i, below, joined / total))
        return records.flow_function("Tributaries", points, pairs)

    def dispersion(self):
        pairs = []
        for i, (upper, lower) in enumerate(zip(self.segments, self.segments[1:])):
            area = (upper.section(self.mean_flow) + lower.section(self.mean_flow)) / 2
            pairs.append((i, i + 1, round(area, 1), (upper.length + lower.length) / 2))
        points = [records.point(self.start, DISPERSION), records.point(self.end, DISPERSION)]
        return records.exchange_function("Longitudinal dispersion", points, pairs)

    # Segments.

    def segment(self, segment):
        depth, depth_exponent, velocity, velocity_exponent = segment.laws()
        per_segment = {SEDIMENT_DEMAND: segment.sediment_demand, PHOTOSYNTHESIS: 1.0}
        first = {isc: self.waters["release"][name] for isc, name in SUBSTANCES.items()}
        first[OXYGEN] = self.release_oxygen[self.start]
        return {
            "parameters": [
                {"isc": isc, "value": round(value * per_segment[isc], 4)}
                for isc, value in self.parameter_values().items()
            ],
            "systems": [{"isc": isc, "initial_concentration": value} for isc, value in sorted(first.items())],
            "volume": round(segment.length * segment.section(self.mean_flow)),
            "vmult": round(velocity, 6),
            "vexp": velocity_exponent,
            "dmult": round(depth, 6),
            "dexp": depth_exponent,
            "segment_type": 1,
            "name": segment.name,
            "length": round(segment.length, 1),
            "width": segment.width,
            "slope": segment.slope,
            "bottom_roughness": segment.roughness,
        }

    # Kinetics.

    def parameter_values(self):
        return {int(row["isc"]): row["value"] for row in self.kinetics if row["kind"] == "parameter"}

    def constant_group(self):
        """The catalogue sorts constants into its own groups when the file is opened."""
        rows = [row for row in self.kinetics if row["kind"] == "constant"]
        constants = [
            {"isc": int(row["isc"]), "description": row["name"], "used": True, "value": row["value"]} for row in rows
        ]
        return {"group_id": 1, "description": "Kinetics", "constants": constants}

    def time_functions(self):
        growth = tables.monthly("photosynthesis")
        course = {date: round(growth(date), 3) for date in self.days() if date.day in (1, 15)}
        return [
            {
                "used": True,
                "isc": TEMPERATURE,
                "points": records.series(self.temperature),
                "query": self.query("temperature"),
            },
            {"used": False, "isc": WIND},
            {"used": True, "isc": PHOTOSYNTHESIS_SHARE, "points": records.series(course)},
        ]

    # Systems.

    def boundary(self, system, segment):
        """Tributaries where they join, the release at the top; the last segment only has outflow, so its values do not
        matter."""
        joins = segment in self.tributaries
        if segment == self.last:
            return {"points": self.constant(0.0), "segment": segment}
        if system != OXYGEN:
            water = self.waters["tributaries" if joins else "release"]
            return {"points": self.constant(water[SUBSTANCES[system]]), "segment": segment}
        return {
            "points": records.series(self.swamp_oxygen if joins else self.release_oxygen),
            "query": self.query("oxygen of the swamps" if joins else "oxygen of the release"),
            "segment": segment,
        }

    def constant(self, value):
        return records.series({self.start: value, self.end: value})

    def loads(self, system):
        """Plants that discharge into the same segment share a load: a segment has at most one per system."""
        if system == OXYGEN:
            return []
        found = []
        for segment, plants in sorted(self.joined_by_segment(tables.numbers("river/loads.csv")).items()):
            value = round(sum(physics.load(row["flow_m3_s"], row[SUBSTANCES[system]]) for row in plants), 2)
            found.append({"points": self.constant(value), "segment": segment})
        return found

    def system(self, isc, contacts):
        return {
            "isc": isc,
            "jmass": isc == OXYGEN,
            "loads": self.loads(isc),
            "boundaries": [self.boundary(isc, segment) for segment in contacts],
        }

    def data(self):
        transport = {
            "exchange_fields": records.exchange_fields([self.dispersion()]),
            "flow_fields": records.flow_fields([self.release_flow(), self.tributary_flow()]),
        }
        contacts = records.outside_contacts(transport)
        noon = 0.5
        start, end = ((date - records.DATE_ZERO).days for date in (self.start, self.end))
        return {
            "print_intervals": {"points": [records.point(self.start, 1.0)]},
            "time_steps": {"points": self.constant(LARGEST_STEP)},  # the last point ends the period of the queries
            "segments": [self.segment(segment) for segment in self.segments],
            "time_functions": self.time_functions(),
            "constant_groups": [self.constant_group()],
            "systems": [self.system(isc, contacts) for isc in (*SUBSTANCES, OXYGEN)],
            "parameters": [{"isc": isc, "used": True} for isc in self.parameter_values()],
            **transport,
            "comments": "Measured: discharge, temperature (U.S. Geological Survey). All else is assumed; see the "
            "sample's README.",
            "description": f"Roanoke River, Roanoke Rapids to Oak City, water year {self.water_year}",
            "seed_date": start,
            "end_date": end,
            "seed_time": noon,
            "end_time": noon,
            "skip_date": start,
            "skip_time": noon,
            "model_type": OXYGEN_MODEL,
            "solution_type": EXPLICIT_EULER,
            "max_dt": LARGEST_STEP,
            "output_controls": [
                {"isc": isc, "enabled": True, "csv_enabled": isc in IN_CSV_FILES}
                for isc in (*IN_CSV_FILES, *IN_NETCDF_ALONE)
            ],
        }


def put_measured_beside(output, water_year):
    """The series to compare the results with: daily means near Oak City, without the spin-up before the water year."""
    river = network.segments()
    compared = {
        "name": "Dissolved oxygen near Oak City",
        "variable": "DO",
        "segment": river[network.position(river, network.GAGE_KM)].name,
        "units": "mg/l",
        "factor": 1,  # mg/l equals g/m3
        "kind": "daily mean",
        "from": f"{water_year - 1}-10-01",
        "query": {
            "file_name": "data/oak_city_daily.csv",
            "date_time_field": "moment",
            "value_field": "oxygen_mg_l",
        },
    }
    with open(output.with_suffix(".measured.json"), "w", encoding="utf-8") as file:
        json.dump({"version": 1, "series": [compared]}, file, indent=2)
        file.write("\n")


def put_tables_beside(output):
    """Copies the tables: the queries name them relative to the data file's folder."""
    for name in {source.file for source in SOURCES.values()}:
        table, copy = tables.HERE / name, output.resolve().parent / name
        if copy != table:
            copy.parent.mkdir(exist_ok=True)
            shutil.copyfile(table, copy)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("vki", help="the data file tool")
    parser.add_argument("output", help="the data file to write")
    parser.add_argument("--water-year", type=int, default=2012, choices=range(2012, 2016), metavar="2012..2015")
    parser.add_argument("--json", help="also write the JSON to this file")
    arguments = parser.parse_args()

    text = json.dumps(Sample(arguments.water_year).data(), indent=1)
    if arguments.json:
        with open(arguments.json, "w", encoding="utf-8") as file:
            file.write(text + "\n")
    output = pathlib.Path(arguments.output)
    put_tables_beside(output)
    put_measured_beside(output, arguments.water_year)
    loaded = subprocess.run([arguments.vki, "load", "-", arguments.output], input=text.encode(), check=False)
    return loaded.returncode


if __name__ == "__main__":
    sys.exit(main())
