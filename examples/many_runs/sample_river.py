#!/usr/bin/env python3
"""Makes the sample river's data file for these recipes, including the points of its series.

    sample_river.py FOLDER [WATER YEAR]      prints the name of the data file
"""
import os
import pathlib
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
OUT = pathlib.Path.cwd() / "many_runs"  # where the recipes write
if (ROOT / "python").is_dir():  # else the package is installed
    OUT = ROOT / "build" / "many_runs"
    sys.path.insert(0, str(ROOT / "python"))
if "VESK_BIN" not in os.environ and (ROOT / "build/release/bin/vesk-run").exists():
    os.environ["VESK_BIN"] = str(ROOT / "build/release/bin")


def prepare(folder, water_year=2012):
    """Returns the data file; makes it if it is missing, with the tables for its queries beside it."""
    from vesk.programs import program

    file = pathlib.Path(folder).absolute() / ("roanoke.vki" if water_year == 2012 else f"roanoke_{water_year}.vki")
    if not file.exists():
        file.parent.mkdir(parents=True, exist_ok=True)
        build = HERE.parent / "roanoke" / "build.py"
        subprocess.run([sys.executable, "-B", build, program("vki"), file, "--water-year", str(water_year)], check=True)
    return file


if __name__ == "__main__":
    print(prepare(sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 2012))
