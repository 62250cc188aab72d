#!/usr/bin/env python3
"""Makes the database files in data/ from the text tables: series in the units of the model, at noon.

    examples/roanoke/make_databases.py [FOLDER]      default: data/
"""
import datetime
import pathlib
import sqlite3
import struct
import sys

import series
import tables

VISUAL_FOXPRO = 0x30
JULIAN_DAY_OF_0001_01_01 = 1721426
NOON = 12 * 3600 * 1000  # ms


def write_dbf(path, rows):
    """Writes a Visual FoxPro table of date-times and doubles; rows: [(date, m3/s)]."""
    fields = ((b"MOMENT", b"T", 8), (b"FLOW_M3_S", b"B", 8))
    header_size = 32 + 32 * len(fields) + 1 + 263  # 263: room for the name of a database
    record_size = 1 + sum(size for _, _, size in fields)
    newest = max(date for date, _ in rows)
    table = struct.pack("<4BIHH20x", VISUAL_FOXPRO, newest.year % 100, newest.month, newest.day, len(rows), header_size,
                        record_size)
    offset = 1
    for name, code, size in fields:
        table += struct.pack("<11scIB15x", name, code, offset, size)
        offset += size
    table += b"\r" + bytes(263)
    for date, value in rows:
        table += struct.pack("<ciid", b" ", date.toordinal() - 1 + JULIAN_DAY_OF_0001_01_01, NOON, value)
    path.write_bytes(table + b"\x1a")


def write_sqlite(path, waters):
    """waters: {name: {date: g/m3}}, in one table."""
    path.unlink(missing_ok=True)
    database = sqlite3.connect(path)
    with database:
        database.execute("CREATE TABLE daily (moment TEXT, water TEXT, oxygen_g_m3 REAL)")
        for water, values in waters.items():
            rows = [(f"{date} 12:00", water, value) for date, value in values.items()]
            database.executemany("INSERT INTO daily VALUES (?, ?, ?)", rows)
    database.close()


def main(folder):
    write_dbf(folder / "release.dbf", sorted(series.release().items()))
    write_sqlite(folder / "boundary_oxygen.sqlite", {water: series.oxygen(water) for water in ("release", "swamp")})


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else tables.HERE / "data")
