#!/usr/bin/env python3
"""Makes the tables of the user guide's tutorial "A river from nothing": millbrook.xlsx and millbrook.sqlite.

    examples/millbrook/make_tables.py [FOLDER]      default: this folder

The river is invented. The same input gives the same bytes, so that files can be compared.
"""
import datetime
import pathlib
import sqlite3
import string
import sys
import zipfile
from xml.sax.saxutils import escape

SEGMENTS = [
    ("Description", "Volume", "Velocity multiplier", "Velocity exponent", "Depth multiplier", "Depth exponent",
     "Segment type", "Bottom segment", "Length", "Width", "Minimum depth", "Slope", "Bottom roughness"),
    ("Mill bridge", 47500, 0.139, 0.6, 0.6, 0.4, "Surface", "None", 5000, 12, 0.1, 0.0005, 0.035),
    ("Sewage works", 47500, 0.139, 0.6, 0.6, 0.4, "Surface", "None", 5000, 12, 0.1, 0.0005, 0.035),
    ("Lower weir", 47500, 0.139, 0.6, 0.6, 0.4, "Surface", "None", 5000, 12, 0.1, 0.0005, 0.035),
]
PAIRS = [
    ("From", "To", "Fraction of flow"),
    ("Boundary", "Mill bridge", 1),
    ("Mill bridge", "Sewage works", 1),
    ("Sewage works", "Lower weir", 1),
    ("Lower weir", "Boundary", 1),
]
FIRST_DAY = datetime.datetime(2024, 6, 1)
OXYGEN = [8.6, 8.5, 8.5, 8.3, 8.2, 8.0, 8.1, 8.4, 8.6, 8.7, 8.7]  # g/m3 above the mill bridge, day by day
SAMPLES = [  # site, substance, {day: g/m3}
    ("mill bridge", "CBOD", {0: 2.4, 3: 2.9, 6: 3.1, 10: 2.5}),
    ("mill bridge", "ammonium", {0: 0.1, 3: 0.15, 6: 0.2, 10: 0.1}),
]

DATE_STYLE = 1  # style index of date cells; 0 is the default style
CONTENT_TYPES = (
    '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
    '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
    '<Default Extension="xml" ContentType="application/xml"/>'
    '<Override PartName="/xl/workbook.xml" '
    'ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml"/>'
    '<Override PartName="/xl/styles.xml" '
    'ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml"/>{sheets}</Types>'
)
SHEET_TYPE = (
    '<Override PartName="/xl/worksheets/sheet{}.xml" '
    'ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml"/>'
)
RELATIONS = '<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">{}</Relationships>'
RELATION = (
    '<Relationship Id="rId{}" '
    'Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/{}" Target="{}"/>'
)
MAIN = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
WORKBOOK = (
    f'<workbook xmlns="{MAIN}" xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships">'
    "<sheets>{}</sheets></workbook>"
)
STYLES = (
    f'<styleSheet xmlns="{MAIN}"><fonts count="1"><font><sz val="11"/><name val="Calibri"/></font></fonts>'
    '<fills count="2"><fill><patternFill patternType="none"/></fill><fill><patternFill patternType="gray125"/></fill>'
    '</fills><borders count="1"><border><left/><right/><top/><bottom/><diagonal/></border></borders>'
    '<cellStyleXfs count="1"><xf numFmtId="0" fontId="0" fillId="0" borderId="0"/></cellStyleXfs>'
    '<cellXfs count="2"><xf numFmtId="0" fontId="0" fillId="0" borderId="0" xfId="0"/>'
    '<xf numFmtId="22" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/></cellXfs></styleSheet>'
)


def cell(place, value):
    if isinstance(value, datetime.datetime):
        day = (value - datetime.datetime(1899, 12, 30)) / datetime.timedelta(days=1)
        return f'<c r="{place}" s="{DATE_STYLE}"><v>{day:g}</v></c>'
    if isinstance(value, str):
        return f'<c r="{place}" t="inlineStr"><is><t>{escape(value)}</t></is></c>'
    return f'<c r="{place}"><v>{value}</v></c>'


def sheet(rows):
    lines = (
        f'<row r="{i}">' + "".join(cell(f"{letter}{i}", value) for letter, value in zip(string.ascii_uppercase, row)) + "</row>"
        for i, row in enumerate(rows, 1)
    )
    columns = f'<cols><col min="1" max="{len(rows[0])}" width="18" customWidth="1"/></cols>'
    return f'<worksheet xmlns="{MAIN}">{columns}<sheetData>{"".join(lines)}</sheetData></worksheet>'


def write_xlsx(path, sheets):
    """sheets: {name: rows of texts, numbers and date-times}."""
    numbers = range(1, len(sheets) + 1)
    styles = len(sheets) + 1
    parts = {
        "[Content_Types].xml": CONTENT_TYPES.format(sheets="".join(SHEET_TYPE.format(i) for i in numbers)),
        "_rels/.rels": RELATIONS.format(RELATION.format(1, "officeDocument", "xl/workbook.xml")),
        "xl/workbook.xml": WORKBOOK.format(
            "".join(f'<sheet name="{name}" sheetId="{i}" r:id="rId{i}"/>' for i, name in zip(numbers, sheets))
        ),
        "xl/_rels/workbook.xml.rels": RELATIONS.format(
            "".join(RELATION.format(i, "worksheet", f"worksheets/sheet{i}.xml") for i in numbers)
            + RELATION.format(styles, "styles", "styles.xml")
        ),
        "xl/styles.xml": STYLES,
        **{f"xl/worksheets/sheet{i}.xml": sheet(rows) for i, rows in zip(numbers, sheets.values())},
    }
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, text in parts.items():
            entry = zipfile.ZipInfo(name, (2024, 6, 1, 0, 0, 0))
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n' + text)


def write_sqlite(path):
    path.unlink(missing_ok=True)
    database = sqlite3.connect(path)
    with database:
        database.execute("CREATE TABLE samples (sampled TEXT, site TEXT, substance TEXT, concentration REAL)")
        for site, substance, values in SAMPLES:
            rows = [(f"{day(number):%Y-%m-%d %H:%M}", site, substance, value) for number, value in values.items()]
            database.executemany("INSERT INTO samples VALUES (?, ?, ?, ?)", rows)
    database.close()


def day(number):
    return FIRST_DAY + datetime.timedelta(days=number)


def main(folder):
    oxygen = [("DATE_TIME", "RESULT")] + [(day(i), value) for i, value in enumerate(OXYGEN)]
    write_xlsx(folder / "millbrook.xlsx", {"segments": SEGMENTS, "pairs": PAIRS, "oxygen": oxygen})
    write_sqlite(folder / "millbrook.sqlite")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).parent)
