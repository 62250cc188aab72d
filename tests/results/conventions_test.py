"""The bundled engine's results by the rules of the CF conventions, with the libraries that people read them with; files
that these libraries write, read by vesk-results; and its other commands.

The environment variable VESK_BIN names the folder of the programs.
"""
import csv
import io
import json
import os
import pathlib
import re
import subprocess

import netCDF4
import numpy
import pytest
import xarray

BIN = pathlib.Path(os.environ["VESK_BIN"]).resolve()

# Two mixed segments, washed out from the end of February of a leap year on.
MODEL = """MODELTYPE 2
SEEDDATE 2 28 2008
SEEDTIME 18 0 0
ENDJULIAN 2
MINDT 0.0001
FRACMAXTS 0.5
MAXDT 0.01
NPRINT 1
PRINTFUNC 1 0 0.5
NUMSEG 2
VOLUME 1 86400
VOLUME 2 86400
SEGNAME 1 "Mühle, oben"
SEGNAME 2 "lower"
SEGLENGTH 1 1500
INITC 1 1 2
INITC 1 2 4
NINQ 1 1
NOQS 1 1 3
JQ 1 1 1 0
IQ 1 1 1 1
JQ 1 1 2 1
IQ 1 1 2 2
JQ 1 1 3 2
IQ 1 1 3 0
BQ 1 1 1 1
BQ 1 1 2 1
BQ 1 1 3 1
NBRKQ 1 1 1
NOQFUNC 1 1 1 0 1
SOLUTIONTYPE 2
OPENABLED 11 1
OPENABLED 2 1
OPENABLED 5 1
CSVOPENABLED 11 1
"""


@pytest.fixture(scope="module", name="folder")
def run_of_the_model(tmp_path_factory):
    folder = tmp_path_factory.mktemp("results")
    (folder / "river.inp").write_text(MODEL, encoding="utf-8")
    done = subprocess.run(
        [BIN / "vesk-run", "--progress=none", "-IMPORT", "river.inp", "-RUN"],
        cwd=folder, capture_output=True, text=True, check=False,
    )
    assert done.returncode == 0, done.stdout + done.stderr
    return folder


@pytest.fixture(name="results")
def opened(folder):
    with netCDF4.Dataset(folder / "river.nc") as data:
        data.set_auto_mask(False)
        yield data


def outputs(data):
    return [v for v in data.variables.values() if v.dimensions == ("time", "segment")]


def units_are_known(units):
    """To the udunits library, by its program."""
    return subprocess.run(["udunits2", "-H", units, "-W", units], capture_output=True, check=False).returncode == 0


# The numbers are those of the chapters of the CF conventions 1.10.


def test_2_2_types_of_data_are_of_the_classic_model(results):
    assert results.data_model == "NETCDF3_64BIT_OFFSET"
    assert {v.dtype.kind for v in results.variables.values()} <= {"f", "i", "S"}


def test_2_3_names_are_plain_and_differ_not_by_case_alone(results):
    names = [*results.variables, *results.dimensions]
    assert all(re.fullmatch("[A-Za-z][A-Za-z0-9_]*", name) for name in names)
    assert len({name.lower() for name in results.variables}) == len(results.variables)


def test_2_4_time_comes_first_and_alone_may_grow(results):
    assert len(outputs(results)) == 3
    assert [name for name, it in results.dimensions.items() if it.isunlimited()] == ["time"]


def test_2_5_1_fill_values_are_of_their_variables_type_and_not_on_coordinates(results):
    for variable in results.variables.values():
        if hasattr(variable, "_FillValue"):
            assert numpy.asarray(variable._FillValue).dtype == variable.dtype, variable.name
        else:
            assert variable.name in {"time", "segment", "segment_name"}


def test_2_6_the_file_says_what_it_is(results):
    assert results.Conventions == "CF-1.10"
    for name in ("title", "source", "history"):
        assert results.getncattr(name)
    assert not hasattr(results, "featureType")


def test_3_1_units_are_known_to_udunits(results):
    assert units_are_known("m3 s-1") and not units_are_known("nonsense")
    for variable in [*outputs(results), results["length"]]:
        assert units_are_known(variable.units), variable.name


def test_3_2_and_3_3_every_variable_has_a_name_for_people(results):
    assert all(v.long_name for v in results.variables.values())
    standard = {v.standard_name for v in results.variables.values() if hasattr(v, "standard_name")}
    assert standard == {"time"}


def test_4_4_time_is_read_by_cftime(results):
    time = results["time"]
    assert time.calendar == "standard" and time.axis == "T"
    moments = netCDF4.num2date(time[:], time.units, time.calendar)
    assert [m.isoformat() for m in moments] == [
        "2008-02-28T18:00:00", "2008-02-29T06:00:00", "2008-02-29T18:00:00", "2008-03-01T06:00:00", "2008-03-01T18:00:00",
    ]


def test_5_coordinate_variables_are_monotonic(results):
    for name in ("time", "segment"):
        variable = results[name]
        assert variable.dimensions == (name,)
        assert (numpy.diff(variable[:]) > 0).all()
    assert list(results["segment"][:]) == [0, 1]


def test_5_named_coordinates_are_there(results):
    for variable in outputs(results):
        for name in variable.coordinates.split():
            assert set(results[name].dimensions) - {"name_length"} <= set(variable.dimensions)


def test_6_1_labels_are_letters_and_say_how_they_are_encoded(results):
    labels = results["segment_name"]
    assert labels.dimensions == ("segment", "name_length") and labels._Encoding == "utf-8"
    labels.set_auto_chartostring(False)  # version 1.6.2 counts letters where it should count bytes
    assert [b"".join(row).decode(labels._Encoding).rstrip("\0") for row in labels[:]] == ["Mühle, oben", "lower"]


def test_7_3_cell_methods_name_dimensions(results):
    for variable in outputs(results):
        method = re.fullmatch(r"(\w+): point", variable.cell_methods)
        assert method and method[1] in variable.dimensions


def test_a_length_that_is_not_known_is_missing(results):
    results.set_auto_mask(True)
    assert results["length"][:].tolist() == [1500, None]


def test_xarray_selects_by_segment_and_time(folder):
    with xarray.open_dataset(folder / "river.nc") as data:
        values = data.tracer.sel(segment=1)
        assert values.dims == ("time",)
        with open(folder / "river_tracer.csv", newline="", encoding="utf-8") as table:
            column = [float(row["lower"]) for row in csv.DictReader(table)]
        assert values.values.tolist() == pytest.approx(column, rel=1e-6)
        assert float(data.tracer.sel(time="2008-02-29T06:00", segment=0)) == pytest.approx(2 * numpy.exp(-0.5), rel=1e-5)
        assert [str(name) for name in data.segment_name.values] == ["Mühle, oben", "lower"]


def test_vesk_results_lists_it(folder):
    found = json.loads(program("list", folder / "river.nc", "--format", "json"))
    assert found["times"] == {"count": 5, "first": "2008-02-28T18:00:00", "last": "2008-03-01T18:00:00"}
    assert found["segments"] == [
        {"number": 1, "name": "Mühle, oben", "length": 1500}, {"number": 2, "name": "lower", "length": None},
    ]
    assert [(it["name"], it["units"], it["cell_methods"]) for it in found["variables"]] == [
        ("tracer", "g/m3", "time: point"), ("flow", "m3 s-1", "time: point"), ("temperature", "degC", "time: point"),
    ]


# Files that other people write.


def program(*arguments, status=0):
    done = subprocess.run([BIN / "vesk-results", *arguments], capture_output=True, text=True, check=False)
    assert done.returncode == status, done.stderr
    return done.stdout if status == 0 else done.stderr


def rows(text):
    return list(csv.DictReader(io.StringIO(text)))


def write_foreign(path, **how):
    """Stations over hours, compressed in chunks, with names as texts of any length."""
    with netCDF4.Dataset(path, "w", format="NETCDF4") as data:
        data.createDimension("obs", 30)
        data.createDimension("station", 7)
        time = data.createVariable("obs", "i4", ("obs",))
        time.units, time.calendar = how.get("units", "hours since 2001-02-28 00:00"), how.get("calendar", "gregorian")
        time[:] = numpy.arange(30)
        names = data.createVariable("id", str, ("station",))
        names.cf_role = "timeseries_id"
        names[:] = numpy.array([f"gauge {i} – {'x' * (i + 1)}" for i in range(7)], dtype=object)
        value = data.createVariable("temp", "i2", ("obs", "station"), zlib=True, chunksizes=(4, 3), fill_value=-999)
        value.scale_factor, value.add_offset, value.units = 0.01, 10.0, "degC"
        table = numpy.add.outer(numpy.arange(30), numpy.arange(7)) / 10 + 10
        value[:] = numpy.ma.masked_equal(table, 10.0)


def test_a_chunked_packed_file_of_stations(tmp_path):
    write_foreign(tmp_path / "foreign.nc")
    found = rows(program("series", tmp_path / "foreign.nc", "--variable", "temp", "--segment", "3", "--segment", "1"))
    assert list(found[0]) == ["time", "gauge 2 – xxx", "gauge 0 – x"]
    assert [row["time"] for row in (found[0], found[29])] == ["2001-02-28T00:00:00", "2001-03-01T05:00:00"]
    assert [float(row["gauge 2 – xxx"]) for row in found] == pytest.approx([10.2 + i / 10 for i in range(30)])
    assert found[0]["gauge 0 – x"] == "" and float(found[1]["gauge 0 – x"]) == pytest.approx(10.1)
    at_noon = rows(program("profile", tmp_path / "foreign.nc", "--variable", "temp", "--time", "2001-02-28T12:10:00"))
    assert {row["time"] for row in at_noon} == {"2001-02-28T12:00:00"}
    assert [float(row["temp"]) for row in at_noon] == pytest.approx([11.2 + i / 10 for i in range(7)])


def test_calendars_and_units_of_others(tmp_path):
    write_foreign(tmp_path / "foreign.nc", calendar="noleap", units="days since 2000-02-25")
    found = json.loads(program("series", tmp_path / "foreign.nc", "--variable", "temp", "--segment", "1", "--format", "json"))
    assert found["times"][3:5] == ["2000-02-28T00:00:00", "2000-03-01T00:00:00"]
    write_foreign(tmp_path / "foreign.nc", units="months since 2000-01-01")
    assert "counts its times in months" in program("list", tmp_path / "foreign.nc", status=1)


def test_a_file_of_xarray(tmp_path):
    data = xarray.Dataset(
        {"oxygen": (("time", "reach"), numpy.arange(6.0).reshape(3, 2), {"units": "g/m3"})},
        coords={"time": numpy.array(["2000-01-01", "2000-01-02", "2000-01-04"], dtype="datetime64[ns]"), "reach": [5, 9]},
    )
    data.to_netcdf(tmp_path / "xarray.nc")
    found = rows(program("series", tmp_path / "xarray.nc", "--variable", "oxygen", "--segment", "2"))
    assert [tuple(row.values()) for row in found] == [
        ("2000-01-01T00:00:00", "1"), ("2000-01-02T00:00:00", "3"), ("2000-01-04T00:00:00", "5"),
    ]


# Agreement with measurements.


def write_table(folder):
    (folder / "gauges.csv").write_text(
        "site,sampled,tracer mg/l\n"
        "A,2008-02-28 18:00,3\nA,2008-02-29 00:00,<0.5\nA,2008-02-29 06:00,2\nB,2008-02-29 06:00,99\n"
        "A,2008-03-05 06:00,1\n",
        encoding="utf-8",
    )
    return [
        "agreement", folder / "river.nc", "--table", folder / "gauges.csv", "--time-field", "sampled", "--value-field",
        "tracer mg/l", "--where", "site=A", "--variable", "tracer", "--segment", "Mühle, oben", "--name", "upper",
    ]


def test_agreement_with_a_table_is_printed_and_kept(folder):
    found = json.loads(program(*write_table(folder), "--units", "mg/l", "--factor", "1", "--keep", "--format", "json"))
    series = found["series"][0]
    assert {name: series[name] for name in ("measured", "pairs", "below_limit", "without_model")} == {
        "measured": 4, "pairs": 2, "below_limit": 1, "without_model": 1,
    }
    whole = series["estimates"][0]["scores"][-1]
    error = 2 * numpy.exp(-0.5) - 2  # the other one is 2 less 3
    assert (whole["period"], whole["count"]) == ("all", 2)
    assert whole["bias"] == pytest.approx((error - 1) / 2, rel=1e-6)
    assert whole["rmse"] == pytest.approx(numpy.sqrt((error**2 + 1) / 2), rel=1e-6)

    kept = json.loads((folder / "river.measured.json").read_text(encoding="utf-8"))["series"]
    assert [it["query"]["file_name"] for it in kept] == ["gauges.csv"]
    again = rows(program("agreement", folder / "river.nc"))
    assert [(row["estimate"], row["period"], row["count"]) for row in again] == [
        ("model", "2008-02", "2"), ("model", "all", "2"),
        ("the mean of each month as measured", "2008-02", "2"), ("the mean of each month as measured", "all", "2"),
    ]
    assert float(again[1]["bias"]) == whole["bias"] and again[3]["r"] == ""
    (folder / "river.measured.json").unlink()


def test_what_cannot_be_compared_or_understood_is_said_in_one_line(folder):
    table = write_table(folder)
    for words, status, sentence in (
        ([*table, "--units", "mg/l"], 1, "upper: measured in \"mg/l\", but tracer is in \"g/m3\"; give the factor"),
        ([*table, "--from", "2009-01-01"], 1, "upper: has no measured value in the period that is compared."),
        ([*table, "--kind", "weekly mean"], 2, "option --kind: expected \"point\", \"daily mean\" or \"monthly mean\""),
        (["agreement", folder / "river.nc"], 1, "river.measured.json: No such file"),
        (["agreement", folder / "river.nc", "--keep"], 2, "a measured series requires --table."),
        (["series", folder / "river.nc"], 2, "option --variable is missing."),
        (["series", folder / "river.nc", "--time", "2008-02-29"], 2, "\"--time\" is not an option of series."),
        (["profile", folder / "river.nc", "--variable", "tracer", "--time", "2009-01-01"], 1, "covers 2008-02-28T18:00:00"),
        (["profile", folder / "river.nc", "--variable", "trace", "--time", "2008-02-29"], 1, "the nearest is \"tracer\"."),
        (["list"], 2, "the file of results is missing."),
        (["lists", folder / "river.nc"], 2, "unknown command \"lists\"."),
        ([], 2, "no command given."),
    ):
        lines = program(*words, status=status).splitlines()
        assert len(lines) == 1 and sentence in lines[0], lines
