"""Tables for notebooks."""

from __future__ import annotations

from html import escape
from typing import Iterable, Sequence


def table(rows: Iterable[Sequence[object]], header: Sequence[str] = (), caption: str = "") -> str:
    """An HTML table of texts; without a header, the first cell of each row is a heading."""
    lines = [f"<caption>{escape(caption)}</caption>"] if caption else []
    if header:
        lines.append("<tr>" + "".join(f"<th>{escape(name)}</th>" for name in header) + "</tr>")
    for row in rows:
        cells = [escape(str(cell)) for cell in row]
        first = f"<td>{cells[0]}</td>" if header else f"<th>{cells[0]}</th>"
        lines.append("<tr>" + first + "".join(f"<td>{cell}</td>" for cell in cells[1:]) + "</tr>")
    return "<table>" + "".join(lines) + "</table>"
