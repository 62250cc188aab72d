"""One run: its values, results and failures; data files; scores."""
import concurrent.futures
import csv
import datetime
import fcntl
import json
import math
import os
import pathlib
import signal
import subprocess
import sys
import time

import pytest
from conftest import OAK_CITY, ROOT

import vesk


def test_a_run_has_the_values_and_its_results_by_name(river, tmp_path):
    pytest.importorskip("xarray")
    plain = vesk.run(river, output_dir=tmp_path / "plain")
    run = vesk.run(str(river), {"constant.21": 0.2, "flow.0.0*=": 1.1, "end": datetime.date(2012, 3, 1)},
                   output_dir=tmp_path / "out", queries=False)
    assert [it["path"] for it in run.record["values"]] == ["constant.21", "flow.0.0", "end"]
    assert run.record["values"][0]["result"] == 0.2
    assert "--no-queries" in run.record["arguments"] and run.record["queries"] == []
    oxygen = run.results.by_name("Dissolved oxygen").sel(segment=OAK_CITY)
    assert str(oxygen.time.values[-1]).startswith("2012-03-01T00:00:00")
    assert oxygen.attrs["units"] == "g/m3" and int(oxygen.position) == 25
    assert plain.results["DO"].shape == (382, 26)
    assert float(oxygen[-2]) != float(plain.results["DO"].sel(segment=OAK_CITY, time="2012-02-29T12:00:00"))
    with pytest.raises(ValueError, match='There is no variable "Oxygen"; the nearest is "Oxygen deficit"'):
        run.results.by_name("Oxygen")


def test_chosen_series_have_double_precision(river):
    pytest.importorskip("xarray")
    everything = vesk.run(river).results["DO"].values
    run = vesk.run(river, results=["DO@25", "{Ultimate CBOD}@{km 212 Weldon rapids}"])
    assert list(run.series) == ["DO@25", "CBOD@0"] and len(run.times) == 382
    assert list(run.frame().columns) == ["DO@25", "CBOD@0"]
    singles = [abs(a / b - 1) for a, b in zip(run.series["DO@25"], everything[:, 25])]
    assert 0 < max(singles) < 2**-23
    with pytest.raises(ValueError, match="has not written a file roanoke.nc; with results="):
        run.results


@pytest.mark.parametrize("values, status, words", [
    ({"constant.21": 2000}, 64, "outside the catalogue's range, from 0 to 10"),
    ({"constnt.21": 2}, 64, "Unknown path constnt.21; the nearest is constant.21."),
    ({"segment.0.volume": 0}, 3, "volume"),  # the engine's own
])
def test_a_failure_has_the_words_of_who_found_it(river, tmp_path, values, status, words):
    with pytest.raises(vesk.RunError, match=words) as failure:
        vesk.run(river, values, output_dir=tmp_path)
    assert failure.value.status == status and failure.value.record.cause == str(failure.value)


def test_what_cannot_be_run_is_refused_in_one_sentence(river, tmp_path, monkeypatch):
    for value in (math.nan, math.inf, None, True, [1]):
        with pytest.raises(ValueError, match=r"^constant.21: expected a finite number, found "):
            vesk.run(river, {"constant.21": value})
    with pytest.raises(ValueError, match="^constant.21 is set twice.$"):
        vesk.run(river, {"constant.21": 1, "constant.21*=": 1})
    (tmp_path / "file").write_text("")
    with pytest.raises(vesk.RunError, match="Cannot create folder .*: Not a directory") as failure:
        vesk.run(river, output_dir=tmp_path / "file")
    assert failure.value.status == 73
    with pytest.raises(vesk.RunError, match="time limit of 0.2 s"):
        vesk.run(river, {"max_dt": 1e-5}, time_limit=0.2)
    monkeypatch.setenv("VESK_BIN", str(tmp_path))
    with pytest.raises(vesk.ProgramMissing, match="vesk-run is not in .*, the folder that VESK_BIN names"):
        vesk.run(river)


def test_locked_results_are_tried_again(river, tmp_path):
    record = tmp_path / "roanoke.run.json"
    with open(tmp_path / ".roanoke.run", "w", encoding="utf-8") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        with concurrent.futures.ThreadPoolExecutor(1) as other:
            run = other.submit(vesk.run, river, output_dir=tmp_path, results="DO@25")
            while not record.exists():  # of the first attempt
                time.sleep(0.02)
            assert vesk.Record.read(record)["status"] == 75
            fcntl.flock(lock, fcntl.LOCK_UN)
            assert run.result().ok
    with open(tmp_path / ".roanoke.run", "w", encoding="utf-8") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        with pytest.raises(vesk.RunError) as failure:
            vesk.run(river, output_dir=tmp_path, results="DO@25")
        assert failure.value.status == 75 and failure.value.record["class"] == "temporary"


def test_a_run_ends_with_its_worker(river, tmp_path):
    code = f"import vesk; vesk.run({str(river)!r}, {{'max_dt': 1e-5}}, output_dir={str(tmp_path)!r})"
    with subprocess.Popen([sys.executable, "-c", code], env={**os.environ, "PYTHONPATH": str(ROOT / "python")}) as worker:
        processes = []
        while len(processes) < 2:  # vesk-run and the child that works
            processes = [it for it in pathlib.Path("/proc").glob("[0-9]*")
                         if str(tmp_path).encode() in _command_line(it) and it.name != str(worker.pid)]
            time.sleep(0.02)
        worker.send_signal(signal.SIGKILL)
    until = time.monotonic() + 10
    while any(_command_line(it) for it in processes):
        assert time.monotonic() < until, "vesk-run has outlived the program that started it"
        time.sleep(0.02)


def _command_line(process):
    try:
        return (process / "cmdline").read_bytes()  # empty: a zombie
    except OSError:
        return b""


def test_a_data_file_is_read_changed_and_written(river, tmp_path):
    model = vesk.read(river)
    old = model["segments"][3]["volume"]
    model["segments"][3]["volume"] *= 0.9
    vesk.write(model, tmp_path / "new.vki")
    assert vesk.read(tmp_path / "new.vki")["segments"][3]["volume"] == old * 0.9
    assert "26" in model._repr_html_()
    model["segments"][3]["volume"] = "much"
    with pytest.raises(ValueError, match=r"segments\[3\].volume"):
        vesk.write(model, tmp_path / "new.vki")
    assert vesk.read(tmp_path / "new.vki")["segments"][3]["volume"] == old * 0.9


def test_scores_are_those_of_vesk_results(river, tmp_path):
    pytest.importorskip("xarray")
    run = vesk.run(river, output_dir=tmp_path)
    whole = vesk.stats.agreement(run)[0].scores["all"]
    modelled = dict(zip(map(str, run.results["DO"].time.values.astype("datetime64[s]")),
                        run.results["DO"].sel(segment=OAK_CITY).values.astype(float)))
    with open(river.parent / "data/oak_city_daily.csv", newline="", encoding="utf-8") as file:
        measured = {row["moment"].replace(" ", "T") + ":00": row["oxygen_mg_l"] for row in csv.DictReader(file)}
    days = [day for day in measured if measured[day] and modelled.get(day) and day >= "2011-10-01"]
    own = vesk.stats.scores([float(measured[day]) for day in days], [modelled[day] for day in days])
    assert own["count"] == 366 and list(own) == list(whole)
    assert own == {name: pytest.approx(value, rel=1e-12) for name, value in whole.items()}
    flat = vesk.stats.scores([2, 2, math.nan], [2, 3, 1])
    assert (flat["count"], flat["bias"], flat["nse"], flat["kge"]) == (2, 0.5, None, None)
    assert json.dumps(flat)
