"""VESK_BIN names the folder of the programs."""
import os
import pathlib
import shutil
import subprocess
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SAMPLE = ROOT / "examples" / "roanoke"
OAK_CITY = "km 112 Big Swash to Oak City"  # the last segment, at position 25
sys.path.insert(0, str(ROOT / "python"))


@pytest.fixture(scope="session", name="river")
def built_river(tmp_path_factory):
    """The data file of the sample, with the tables of its queries beside it."""
    os.environ["XDG_CONFIG_HOME"] = str(tmp_path_factory.mktemp("settings"))  # not those of who runs the tests
    file = tmp_path_factory.mktemp("river") / "roanoke.vki"
    subprocess.run([sys.executable, "-B", SAMPLE / "build.py", pathlib.Path(os.environ["VESK_BIN"]) / "vki", file], check=True)
    return file


@pytest.fixture(name="copy")
def copied_river(river, tmp_path):
    """A data file that a test may change."""
    shutil.copytree(river.parent, tmp_path / "river")
    return tmp_path / "river" / river.name
