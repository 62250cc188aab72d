#!/usr/bin/env python3
"""Tests of the sample river. The complete run is only tested if VESK_BIN is set to the folder of the programs."""
import csv
import datetime
import json
import os
import pathlib
import shutil
import sqlite3
import subprocess
import tempfile
import unittest

import build
import make_databases
import network
import physics
import records
import tables

SCHEMA = tables.HERE.parents[1] / "docs" / "run-record.schema.json"


class Formulas(unittest.TestCase):
    def test_oxygen_saturation_is_as_tabulated(self):
        for celsius, tabulated in ((0, 14.621), (10, 11.288), (20, 9.092), (30, 7.559)):
            self.assertAlmostEqual(physics.oxygen_saturation(celsius), tabulated, delta=0.001)

    def test_power_laws_follow_manning_and_carry_the_flow(self):
        depth, depth_exponent, velocity, velocity_exponent = physics.power_laws(85, 0.000064, 0.030)
        self.assertAlmostEqual(depth, 0.1537, places=4)  # (0.030 / (85 * 0.008)) ^ 0.6
        self.assertAlmostEqual(depth * 32**depth_exponent, 1.2299, places=3)  # 32 ^ 0.6 = 8
        self.assertAlmostEqual(85 * depth * 250**depth_exponent * velocity * 250**velocity_exponent, 250)

    def test_load_is_in_kg_per_day(self):
        self.assertAlmostEqual(physics.load(0.5, 20), 864)

    def test_monthly_values_hold_in_mid_month_and_pass_the_turn_of_the_year(self):
        share = tables.monthly("release_share")
        for days, value in ((0, 0.94), (16, 0.94 + 0.03 * 16 / 31), (17, 0.94 + 0.03 * 17 / 31), (31, 0.97)):
            date = datetime.date(2011, 12, 15) + datetime.timedelta(days)
            self.assertAlmostEqual(share(date), value, msg=date)


class Network(unittest.TestCase):
    def test_positions(self):
        river = network.segments()
        self.assertEqual(len(river), 26)
        for km, place in ((213.9, 0), (206, 1), (205.9, 2), (187, 6), (110, 25)):
            self.assertEqual(network.position(river, km), place, km)
        self.assertAlmostEqual(sum(segment.length for segment in river), 104000)
        self.assertEqual(len({segment.name for segment in river}), 26)

    def test_pairs_to_the_outside_make_a_contact(self):
        flows = [records.flow_function("", [], [(-1, 3, 1), (3, 5, 1), (5, -1, 1), (-1, -1, 1)])]
        exchanges = [records.exchange_function("", [], [(2, -1, 1, 1), (3, 4, 1, 1)])]
        data = {"flow_fields": records.flow_fields(flows), "exchange_fields": records.exchange_fields(exchanges)}
        self.assertEqual(records.outside_contacts(data), [2, 3, 5])


class Data(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.data = build.Sample(2012).data()

    def test_dates(self):
        self.assertEqual(records.point(datetime.date(1900, 1, 1), 1.5), [109573, 43200, 1.5])
        self.assertEqual((self.data["seed_date"], self.data["end_date"]), (40801, 41182))  # 2011-09-15, 2012-09-30

    def test_every_segment_passes_on_what_it_gets(self):
        for function in self.data["flow_fields"][0]["functions"]:
            left = [0.0] * 26
            for pair in function["pairs"]:
                if pair["from_segment"] >= 0:
                    left[pair["from_segment"]] -= pair["fraction"]
                if pair["to_segment"] >= 0:
                    left[pair["to_segment"]] += pair["fraction"]
            self.assertTrue(all(abs(rest) < 1e-12 for rest in left), function["description"])

    def test_boundaries_are_those_that_a_search_would_leave(self):
        for system in self.data["systems"]:
            self.assertEqual([row["segment"] for row in system["boundaries"]], [0, 1, 7, 11, 14, 23, 25])

    def test_series_are_in_order_and_reach_over_the_run(self):
        daily = [self.data["time_functions"][0], self.data["flow_fields"][0]["functions"][0]]
        for series in [*daily, self.data["systems"][3]["boundaries"][0]]:
            days = [point[0] for point in series["points"]]
            self.assertEqual(days, sorted(set(days)))
            self.assertLess(days[0], 150372)  # 2011-09-15
            self.assertGreater(days[-1], 150753)  # 2012-09-30


class Databases(unittest.TestCase):
    def test_they_are_those_of_the_texts(self):
        def content(folder):
            database = sqlite3.connect(folder / "boundary_oxygen.sqlite")
            rows = database.execute("SELECT * FROM daily").fetchall()
            database.close()
            return (folder / "release.dbf").read_bytes(), rows

        with tempfile.TemporaryDirectory() as folder:
            make_databases.main(pathlib.Path(folder))
            self.assertEqual(content(pathlib.Path(folder)), content(tables.HERE / "data"))


@unittest.skipUnless("VESK_BIN" in os.environ, "VESK_BIN is not set")
class WholeRun(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.outcome = subprocess.run([tables.HERE / "run", cls.folder.name], capture_output=True, text=True, check=False)

    def table(self, name):
        with open(pathlib.Path(self.folder.name) / name, newline="", encoding="utf-8") as file:
            return list(csv.DictReader(file))

    def test_input_comes_out_again(self):
        self.assertEqual(self.outcome.returncode, 0, self.outcome.stderr)
        last = "km 112 Big Swash to Oak City"
        for name, day, value in (
            ("temperature", "2012-07-15T12:00:00", 29.5),
            ("flow", "2012-07-15T12:00:00", 2250 * 0.028316847 + 1330 * 0.005),  # release and runoff in m3/s
        ):
            at = {row["time"][:19]: float(row[last]) for row in self.table(f"roanoke_{name}.csv")}
            self.assertEqual(len(at), 382)
            self.assertAlmostEqual(at[day], value, delta=0.01, msg=name)

    def test_the_model_is_better_than_guesses_without_one(self):
        whole = [row for row in self.table("roanoke_agreement.csv") if row["period"] == "year"]
        rmse = {row["estimate"]: float(row["rmse"]) for row in whole}
        self.assertEqual(len(rmse), 4)
        self.assertEqual(min(rmse, key=rmse.get), "model", rmse)

    def program(self, *arguments, folder=None):
        run = pathlib.Path(os.environ["VESK_BIN"]) / "vesk-run"
        line = [run, "--progress=none", *arguments]
        outcome = subprocess.run(line, cwd=folder or self.folder.name, capture_output=True, text=True, check=False)
        self.assertEqual(outcome.returncode, 0, outcome.stderr)

    def test_queries_give_what_the_points_hold(self):
        read = [line for line in self.outcome.stdout.splitlines() if line.endswith(", 382 rows, 382 points")]
        self.assertEqual(len(read), 8, self.outcome.stdout)
        with tempfile.TemporaryDirectory() as elsewhere:  # without the tables
            shutil.copy(pathlib.Path(self.folder.name) / "roanoke.vki", elsewhere)
            self.program("roanoke.vki", "-RUN", "--no-queries", folder=elsewhere)
            results = sorted(pathlib.Path(elsewhere).glob("*.csv"))
            self.assertEqual(len(results), len(build.IN_CSV_FILES))
            for result in results:
                self.assertEqual(result.read_bytes(), (pathlib.Path(self.folder.name) / result.name).read_bytes())

    def test_the_text_form_carries_the_river(self):
        self.program("roanoke.vki", "--export", "a.inp")
        self.program("-IMPORT", "a.inp", "-RUN", "--export", "b.inp")
        folder = pathlib.Path(self.folder.name)
        self.assertEqual((folder / "a.inp").read_bytes(), (folder / "b.inp").read_bytes())
        direct, imported = self.table("roanoke_oxygen.csv"), self.table("a_oxygen.csv")
        self.assertEqual(len(direct), len(imported))
        for one, other in zip(direct, imported):
            self.assertEqual(one.pop("time"), other.pop("time"))
            for segment, value in one.items():
                self.assertAlmostEqual(float(value), float(other[segment]), delta=1e-5)  # values travel as single precision

    def test_the_record_is_valid_and_rows_give_what_single_runs_give(self):
        folder = pathlib.Path(self.folder.name)
        (folder / "rows.csv").write_text("id,\"constant.{CBOD oxidation rate at 20 DEG C, 1/day}*=\",flow.0.0*=\nlow,0.9,1\nhigh,1.1,1.2\n")
        rows = ["roanoke.vki", "-RUN", "--set-from", "rows.csv"]
        self.program(*rows, "--rows", "0-1", "--output-dir", "many")
        self.program(*rows, "--row", "1", "--output-dir", "one")
        one, many = (folder / of / "high" / "roanoke_oxygen.csv" for of in ("one", "many"))
        self.assertEqual(one.read_bytes(), many.read_bytes())
        self.assertNotEqual(one.read_bytes(), (folder / "roanoke_oxygen.csv").read_bytes())
        records = [folder / of / "roanoke.run.json" for of in (".", "many/low", "many/high", "one/high")]
        for record in records:
            subprocess.run(["/usr/bin/python3", "-m", "jsonschema", "-i", record, SCHEMA], check=True)
        first, _, high, alone = (json.loads(record.read_text(encoding="utf-8")) for record in records)
        self.assertEqual({len(first["queries"]), len(high["queries"])}, {8})
        for part in ("data_set", "values", "queries", "engine", "data_file"):
            self.assertEqual(high[part], alone[part], part)
        written = {path.name for path in one.parent.iterdir()} - {"roanoke.run.json", "LOGINFO.TXT"}
        self.assertEqual({pathlib.Path(it["file"]).name for it in high["outputs"]}, written)
        changed = [name for name, list_ in first["data_set"]["lists"].items() if list_ != high["data_set"]["lists"][name]]
        self.assertEqual(changed, ["constant_groups.constants", "flow_fields.functions"])


if __name__ == "__main__":
    unittest.main()
