"""Records of a data file as JSON for `vki load`; omitted members take their defaults."""
import datetime

DAY_ZERO = datetime.date(1600, 1, 1)  # of the dates in series
DATE_ZERO = datetime.date(1899, 12, 30)  # of the start and end of a run
OUTSIDE = -1


def point(date, value, seconds=43200):
    """One point of a series; the default time is noon, the middle of the day of a daily mean."""
    return [(date - DAY_ZERO).days, seconds, value]


def series(values):
    """{date: value} as points."""
    return [point(date, values[date]) for date in sorted(values)]


def query(name, source):
    """A stored query that is executed before each run; source: a Source of build.py."""
    return {
        "name": name,
        "file_name": source.file,
        "table_name": source.table or source.file,  # as in the dialog, the table of a single-table file has the file's name
        "date_time_field": source.moment,
        "value_field": source.value,
        "conditions": [{"field_name": field, "value_text": text} for field, text in source.rows.items()],
        "deferred": True,
    }


def flow_function(description, points, pairs):
    """pairs: (from, to, fraction of the flow)."""
    return {
        "points": points,
        "pairs": [{"fraction": fraction, "from_segment": a, "to_segment": b} for a, b, fraction in pairs],
        "description": description,
    }


def exchange_function(description, points, pairs):
    """pairs: (segment, segment, area in m2, mixing length in m)."""
    return {
        "points": points,
        "pairs": [{"area": area, "length": length, "segment_one": a, "segment_two": b} for a, b, area, length in pairs],
        "description": description,
    }


def fields(names, surface_water):
    """All fields of a kind; the first, surface water, is in use and has these functions."""
    rows = [{"functions": [], "used": False, "description": name} for name in names]
    rows[0].update(functions=surface_water, used=True)
    return rows


def flow_fields(functions):
    solids = [f"Solids {i}" for i in (1, 2, 3)]
    return fields(["Surface Water", "Pore Water", *solids, "Evaporation/Precipitation"], functions)


def exchange_fields(functions):
    return fields(["Surface Water", "Pore Water"], functions)


def outside_contacts(data):
    """Segments that a pair connects to the outside: each needs a boundary in every system, and no other segment may
    have one."""
    ends = [
        (pair[one], pair[other])
        for kind, one, other in (
            ("exchange_fields", "segment_one", "segment_two"),
            ("flow_fields", "from_segment", "to_segment"),
        )
        for field in data[kind]
        for function in field["functions"]
        for pair in function["pairs"]
    ]
    touching = {max(pair) for pair in ends if (pair[0] == OUTSIDE) != (pair[1] == OUTSIDE)}
    return sorted(touching)
