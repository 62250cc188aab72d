"""Many runs: tables of cases, executors, failures, resuming, samples."""
import concurrent.futures
import csv
import io
import json
import os
import shutil
import subprocess
import sys

import pytest
from conftest import ROOT

import vesk

TABLE = [vesk.Parameter("oxidation", "constant.21", 0.05, 0.3, 0.12), vesk.Parameter("flow", "flow.0.0*=", 0.5, 2, 1, "log")]


def many(river, values, folder, executor=None, **more):
    return vesk.run_many(vesk.rows(river, TABLE, values), executor, output_dir=folder, results="DO@25", **more)


def table_of(folder):
    done = subprocess.run([os.path.join(os.environ["VESK_BIN"], "vesk-results"), "collect", folder], capture_output=True,
                          text=True, check=False)
    return list(csv.DictReader(io.StringIO(done.stdout))), done


def test_failed_cases_are_values_and_the_others_go_on(river, tmp_path):
    cases = [[0.1 + row / 100, 1.0] for row in range(8)]
    cases[2][0] = cases[5][0] = 99
    runs = many(river, cases, tmp_path)
    assert len(runs) == 8 and sorted(run.row for run in runs) == list(range(8))
    assert sorted(run.row for run in runs.failed) == [2, 5]
    assert [run.ok for run in runs.in_order()] == [row not in (2, 5) for row in range(8)]
    failure = next(run for run in runs if run.row == 2)
    assert failure.error.status == failure.record["status"] == 64 and "range" in str(failure.error)
    assert "2 of them failed" in runs._repr_html_() and "range" in failure._repr_html_()
    assert len({tuple(run.series["DO@25"]) for run in runs if run.ok}) == 6

    collected, _ = table_of(tmp_path)
    assert [row["class"] for row in collected].count("permanent") == 2
    assert float(collected[3]["constant.21"]) == cases[3][0] and collected[3]["flow.0.0*="] == "1.0"
    assert os.path.basename(os.path.dirname(collected[2]["record"])) == "2"
    assert collected[2]["cause"] == str(failure.error) and collected[2]["outputs"] == "0"


def test_resuming_runs_what_is_missing_or_changed(copy, tmp_path):
    folder = tmp_path / "out"
    cases = [[0.1, 1.0], [0.2, 1.0], [0.3, 1.0], [99, 1.0]]

    def resumed(values=cases, **more):
        return [run.resumed for run in many(copy, values, folder, resume=True, **more).in_order()]

    assert resumed() == [False] * 4
    assert resumed() == [True, True, True, False]
    (folder / "0/roanoke.results.csv").unlink()
    (folder / "1/roanoke.run.json").write_text('{"format": "vesk run record", "version": 2}')
    assert "unsupported record version" in table_of(folder)[1].stderr and table_of(folder)[1].returncode == 1
    assert resumed() == [False, False, True, False]
    assert resumed([[0.1, 1.0], [0.2, 1.5], [0.3, 1.0]]) == [True, False, True]
    assert resumed(queries=False) == [False] * 4
    assert resumed(queries=False) == [True, True, True, False]
    assert resumed() == [False] * 4
    with open(copy.parent / "data/oak_city_daily.csv", "a", encoding="utf-8") as table:
        table.write("\n")
    assert resumed() == [False] * 4
    model = vesk.read(copy)
    model["segments"][0]["volume"] *= 1.1
    vesk.write(model, copy)
    assert resumed() == [False] * 4
    assert resumed() == [True, True, True, False]


def test_rows_of_vesk_run_agree_with_cases(copy, tmp_path):
    """What GNU parallel and Slurm have run is resumed here, and the other way round."""
    table = tmp_path / "runs.csv"
    table.write_text('id,constant.{CBOD oxidation temperature coefficient},constant.21\na,1.05,0.1\nb,1.05,99\nc,1.06,0.2\n')
    words = ["--set-from", table, "--output-dir", tmp_path / "out", "--rows", "0-1", "--quiet", "-RUN", "--no-queries"]
    subprocess.run([os.path.join(os.environ["VESK_BIN"], "vesk-run"), copy, *words], capture_output=True, check=False)

    def pending():
        words = [sys.executable, "-m", "vesk", "pending", copy, table, tmp_path / "out", "--", "--no-queries"]
        return subprocess.run(words, env={**os.environ, "PYTHONPATH": str(ROOT / "python")}, capture_output=True, text=True,
                              check=True).stdout.split()

    assert pending() == ["1", "2"]
    runs = vesk.run_many(vesk.rows(copy, None, table), output_dir=tmp_path / "out", queries=False, resume=True)
    assert [(run.name, run.ok, run.resumed) for run in runs.in_order()] == [
        ("a", True, True), ("b", False, False), ("c", True, False)]
    assert pending() == ["1"]


class EndsItsWorker(concurrent.futures.ProcessPoolExecutor):
    """One of its workers is killed with the third case."""
    given = 0

    def submit(self, fn, *arguments, **more):
        self.given += 1
        return super().submit(os.kill, os.getpid(), 9) if self.given < 0 else super().submit(
            fn if self.given != 3 else _die, *arguments, **more)


def _die(*_):
    os.kill(os.getpid(), 9)


def test_an_executor_that_dies_leaves_a_value_for_each_case(river, tmp_path):
    with EndsItsWorker(1) as executor:
        runs = many(river, [[0.1, 1.0]] * 5, tmp_path, executor)
        assert [run.ok for run in runs.in_order()] == [True, True, False, False, False]
    assert all(str(run.error).startswith("The executor failed: A process in the process pool") for run in runs.failed)
    again = many(river, [[0.1, 1.0]] * 5, tmp_path, resume=True)
    assert [run.resumed for run in again.in_order()] == [True, True, False, False, False] and not again.failed
    with pytest.raises(ValueError, match="An executor has a function submit; 3 has none."):
        many(river, [[0.1, 1.0]], tmp_path, 3)


@pytest.mark.parametrize("text, cause", [
    ("", "is empty; expected a line with the names of columns."),
    ("constant.21\n1,2\n", "line 2: expected 1 fields, found 2."),
    ("constant.21,constant.21\n1,2\n", "the column constant.21 occurs more than once."),
    ("constant.21,constant.21*=\n1,2\n", "Row 0: constant.21 is set twice."),
    ('constant.21\n"1\n', "line 2: unexpected end of data."),
    ("id,constant.21\na,1\na,2\n", "Two rows have the name a."),
    ("id,constant.21\na/b,1\n", "Row 0: \"a/b\" cannot name a folder"),
])
def test_wrong_tables_are_refused_in_one_sentence(river, tmp_path, text, cause):
    (tmp_path / "runs.csv").write_text(text)
    with pytest.raises(ValueError) as failure:
        vesk.rows(river, None, tmp_path / "runs.csv")
    assert cause in str(failure.value)


def test_cases_come_from_any_table(river, tmp_path):
    (tmp_path / "runs.csv").write_text('\ufeffrow,"oxidation", flow\n a ,0.1,1\n\nb,0.2,"2"\n', encoding="utf-8")
    from_file = vesk.rows(river, TABLE, tmp_path / "runs.csv")
    assert [(it.name, it.row, dict(it.values)) for it in from_file] == [
        ("a", 0, {"constant.21": "0.1", "flow.0.0*=": "1"}), ("b", 1, {"constant.21": "0.2", "flow.0.0*=": "2"})]
    pandas = pytest.importorskip("pandas")
    mappings = [{"oxidation": 0.1, "flow": 1.0}, {"oxidation": 0.2, "flow": 2.0}]
    arrays = [vesk.rows(river, TABLE, it) for it in (mappings, pandas.DataFrame(mappings), pandas.DataFrame(mappings).values)]
    assert arrays[0] == arrays[1] == arrays[2] and arrays[0][1].values["flow.0.0*="] == "2.0"
    with pytest.raises(ValueError, match="Row 1: expected a value for each of 2 parameters, found 1."):
        vesk.rows(river, TABLE, [[1, 2], [1]])
    with pytest.raises(ValueError, match="Row 0: constant.21: expected a finite number, found nan"):
        vesk.rows(river, TABLE, [[float("nan"), 2]])
    own = vesk.parameters(river)
    assert next(it for it in own if it.path == "constant.21").maximum == 10 and any(it.path == "flow.0.0*=" for it in own)


def test_a_sample_is_kept_and_hashed(tmp_path):
    pytest.importorskip("scipy")
    file = tmp_path / "sample.csv"
    first = vesk.sample(TABLE, 16, seed=3, file=file)
    assert vesk.Sample.read(file) == first == vesk.sample(TABLE, 16, seed=3, file=file)
    assert subprocess.run(["sha256sum", file], capture_output=True, text=True, check=True).stdout.startswith(first.sha256)
    assert sorted(int((value - 0.05) / (0.25 / 16)) for value, _ in first.values) == list(range(16))  # one in each stratum
    assert sum(flow < 1 for _, flow in first.values) == 8  # evenly in the logarithm
    with pytest.raises(ValueError, match="holds another sample"):
        vesk.sample(TABLE, 16, seed=4, file=file)
    assert vesk.Sample.read(file) == first
    with pytest.raises(ValueError, match="^x has no range"):
        vesk.sample([vesk.Parameter("x", "max_dt")], 2, seed=1)


def test_the_wheel_works_in_another_folder(river, tmp_path):
    pytest.importorskip("setuptools")
    shutil.copytree(ROOT / "python", tmp_path / "source", ignore=shutil.ignore_patterns("__pycache__", "build", "*.egg-info"))

    plain = {name: value for name, value in os.environ.items() if not name.startswith("PYTHON")}

    def call(*words):
        done = subprocess.run(words, cwd=tmp_path, env=plain, capture_output=True, text=True, check=False)
        assert done.returncode == 0, done.stderr
        return done.stdout

    pip = [sys.executable, "-m", "pip", "--disable-pip-version-check", "--no-cache-dir"]
    call(*pip, "wheel", "--no-index", "--no-build-isolation", "--no-deps", "-w", "wheels", "./source")
    wheel, = (tmp_path / "wheels").iterdir()
    assert wheel.name == "vesk-0.1.0-py3-none-any.whl"
    call(sys.executable, "-m", "venv", "--without-pip", "venv")
    call(*pip, "--python", "venv/bin/python", "install", "--no-index", str(wheel))
    code = (f"import vesk; print(vesk.__file__); run = vesk.run({str(river)!r}, results='DO@25'); "
            "print(len(run.series['DO@25']), 'numpy' in __import__('sys').modules)")
    place, result = call("venv/bin/python", "-c", code).splitlines()
    assert place.startswith(str(tmp_path / "venv")) and result == "382 False"
    assert "py.typed" in call("unzip", "-l", wheel)
    assert json.loads(call("venv/bin/python", "-c", "import vesk, json; print(json.dumps(vesk.__all__))")) == vesk.__all__


def test_each_case_has_a_folder(river, tmp_path):
    cases = vesk.rows(river, TABLE, [[0.1, 1.0], [0.2, 1.0]])
    with pytest.raises(ValueError, match="^Two cases have the same name"):
        vesk.run_many(cases + cases[:1], output_dir=tmp_path)
    assert not list(tmp_path.iterdir())
