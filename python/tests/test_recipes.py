"""The recipes of examples/many_runs in small: killed and resumed, with rows that fail, held against formats."""
import csv
import os
import re
import shutil
import signal
import subprocess
import sys
import time

import pytest
from conftest import OAK_CITY, ROOT

import vesk

RECIPES = ROOT / "examples" / "many_runs"


def call(*words, **more):
    return subprocess.run([*map(str, words)], capture_output=True, text=True, check=False, **more)


def test_gnu_parallel_resumes_after_a_kill_and_lists_failures(tmp_path):
    if not shutil.which("parallel"):
        pytest.skip("GNU parallel is not installed")
    (tmp_path / "sample.csv").write_text("row,oxidation,nitrify,sediment\n" + "".join(
        f"{row},{99 if row in (3, 7, 11) else 0.1 + row / 1000},0.15,1\n" for row in range(16)))
    command = [RECIPES / "gnu_parallel" / "run", tmp_path, "16"]
    with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True) as first:
        while len(list(tmp_path.glob("out/*/roanoke.run.json"))) < 5:
            assert first.poll() is None
            time.sleep(0.02)
        os.killpg(first.pid, signal.SIGKILL)
    while call("pgrep", "-f", f"vesk-run {tmp_path}").returncode == 0:  # runs end with their parents
        time.sleep(0.02)
    before = {record: record.stat().st_mtime_ns for record in tmp_path.glob("out/*/roanoke.run.json") if vesk.Record.read(record).ok}
    assert 0 < len(before) < 13
    done = call(*command)
    assert done.returncode == 1
    assert re.findall(r"row (\d+), status 64: constant.21 .*range", done.stdout) == ["3", "7", "11"]
    assert {record: record.stat().st_mtime_ns for record in before} == before
    with open(tmp_path / "runs.csv", newline="", encoding="utf-8") as file:
        rows = list(csv.DictReader(file))
    assert [row["row"] for row in rows if row["class"] == "good"] == [str(row) for row in range(16) if row not in (3, 7, 11)]
    assert "3 rows to run" in call(*command).stdout


def test_dask_loses_no_case_with_a_worker(tmp_path, river):
    pytest.importorskip("distributed")
    code = f"""
import os, sys
sys.path.insert(0, {str(ROOT / 'python')!r})
import vesk
from distributed import Client, LocalCluster
if __name__ == "__main__":
    with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, Client(cluster) as client:
        cases = vesk.rows({str(river)!r}, None, [{{"constant.21": 0.1 + row / 100, "max_dt": 0.02}} for row in range(6)])
        workers = list(client.run(os.getpid).values())
        runs = vesk.run_many(cases, executor=client, output_dir={str(tmp_path / 'out')!r}, results="DO@25", queries=False)
        for count, run in enumerate(runs):
            if count == 0:
                os.kill(workers[0], 9)
        print([run.row for run in runs.in_order() if run.ok])
"""
    script = tmp_path / "script.py"
    script.write_text(code)
    done = call(sys.executable, script, timeout=80)
    assert done.stdout.strip() == str(list(range(6))), done.stderr
    for row in range(6):
        assert vesk.Record.read(tmp_path / f"out/{row}/roanoke.run.json").ok


def test_calibration_recovers_a_known_answer_and_small_steps_do_not(tmp_path):
    pytest.importorskip("scipy")
    done = call(sys.executable, "-B", RECIPES / "calibration" / "calibrate.py", tmp_path, "--twin")
    assert done.returncode == 0, done.stdout + done.stderr
    assert len(re.findall(r"to \(0\.15\d*, 0\.8\d*\)", done.stdout)) == 2
    assert re.search(r"step, 1.5e-8: \".*satisfied\".*which is wrong", done.stdout)


class Pest:
    """A reader of the files by their format: what PEST does with them in one model run."""

    def __init__(self, control):
        self.folder = control.parent
        lines = control.read_text().splitlines()
        assert lines[:2] == ["pcf", "* control data"]
        sections, name = {}, ""
        for line in lines[1:]:
            if line.startswith("* "):
                name = line[2:]
                sections[name] = []
            else:
                sections[name].append(line.split())
        self.sections = sections
        counts = [int(it) for it in sections["control data"][1]]
        self.parameters = {it[0]: it for it in sections["parameter data"]}
        self.observations = {it[0]: float(it[1]) for it in sections["observation data"]}
        groups = [it[0] for it in sections["parameter groups"]]
        assert counts == [len(self.parameters), len(self.observations), len(groups), 0, len(sections["observation groups"])]
        assert [len(line) for line in sections["control data"]] == [2, 5, 7, 5, 3, 1, 6, 3]
        assert all(len(it) == 10 and it[1] in ("none", "log") and it[6] in groups for it in self.parameters.values())
        assert all(float(it[4]) < float(it[3]) < float(it[5]) for it in self.parameters.values())
        assert all(len(name) <= 20 for name in self.observations)

    def fill_template(self, values):
        template, target = self.sections["model input/output"][0]
        head, *lines = (self.folder / template).read_text().splitlines(keepends=True)
        mark = head.split()[1]
        assert head.split()[0] == "ptf"

        def place(found):
            return f"{values.pop(found[1].strip().lower()):.15g}".rjust(len(found[0]))

        (self.folder / target).write_text(re.sub(f"{mark}([^{mark}]*){mark}", place, "".join(lines)))
        assert not values

    def run(self):
        line = " ".join(self.sections["model command line"][0])
        subprocess.run(line, shell=True, cwd=self.folder, check=True, timeout=60)

    def read_output(self):
        instructions, output = self.sections["model input/output"][1]
        head, *lines = (self.folder / instructions).read_text().splitlines()
        assert head == "pif ~"
        text = (self.folder / output).read_text().splitlines()
        at, found = -1, {}
        for line in lines:
            advance, *words = line.split()
            at += int(advance[1:])
            position = 0
            for word in words:
                if word.startswith("~"):
                    position = text[at].index(word.strip("~"), position) + 1
                else:
                    found[word.strip("!")] = float(re.match(r"\s*([^\s,]+)", text[at][position:])[1])
        return found


def test_pest_files_are_those_of_the_format(river):
    folder = river.parent / "pest"
    done = call(sys.executable, "-B", RECIPES / "pest" / "write_files.py", river, RECIPES / "parameters.csv", folder)
    assert done.returncode == 0, done.stderr
    pest = Pest(folder / "vesk.pst")
    assert list(pest.parameters) == ["oxidation", "nitrify", "sediment"] and len(pest.observations) == 366
    assert pest.observations["s1_20111001_1200"] == 7.1
    pest.fill_template({"oxidation": 0.2, "nitrify": 0.15, "sediment": 1.5})
    pest.run()
    found = pest.read_output()
    run = vesk.run(river, {"constant.21": 0.2, "constant.11": 0.15, "parameter.2.scale": 1.5}, results=f"DO@{{{OAK_CITY}}}", queries=False)
    by_time = {f"s1_{time:%Y%m%d_%H%M}": value for time, value in zip(run.times, run.series["DO@25"])}
    assert found == {name: by_time[name] for name in pest.observations}
    long = (folder / "parameters.csv").read_text().replace("nitrify", "nitrification")
    (folder / "long.csv").write_text(long)
    refused = call(sys.executable, "-B", RECIPES / "pest" / "write_files.py", river, folder / "long.csv", folder)
    assert refused.returncode == 1 and "names of up to 12 letters" in refused.stderr
