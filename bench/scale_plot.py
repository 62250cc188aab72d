#!/usr/bin/env python3
"""Draws the figures of scale_bench: time and memory against the size of the model, both axes logarithmic.

    bench/scale_plot.py FIGURES.csv PICTURE.svg
"""
import csv
import math
import sys
from html import escape

# stage in the figures, label, colour: what is drawn in each of the two panels
TIMES = [("vesk-run", "vesk-run, all of it", "#000000"),
         ("run: steps", "run: a day in steps", "#d55e00"),
         ("save", "save", "#0072b2"),
         ("open", "open", "#009e73"),
         ("run: start", "run: start", "#cc79a7"),
         ("validity check", "validity check", "#8a6d00"),
         ("boundary search", "boundary search", "#56b4e9"),
         ("copy: first change", "first change of a copy", "#666666"),
         ("copy: snapshot", "copy", "#999999")]
MEMORY = [("run: steps", "run", "#d55e00"),
          ("open", "open, copied or not", "#009e73"),
          ("file", "the file itself", "#0072b2")]
WIDTH, HEIGHT = 1040, 560
TOP, BOTTOM = 56, 500
FONT = "font-family='DejaVu Sans, Helvetica, Arial, sans-serif'"


def power(exponent):
    """10^exponent for the tick's label."""
    return f"10<tspan dy='-6' font-size='9'>{exponent}</tspan>"


class Panel:
    def __init__(self, left, right, title, curves, drop):
        self.left, self.right, self.title, self.curves = left, right, title, curves
        values = [y for _, _, points in curves for _, y in points]
        sizes = sorted({x for _, _, points in curves for x, _ in points})
        self.sizes = sizes
        self.x_range = math.log10(sizes[0]), math.log10(sizes[-1])
        self.y_range = math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)))
        self.drop = drop  # pixels between two labels

    def x(self, size):
        low, high = self.x_range
        return self.left + (math.log10(size) - low) / max(high - low, 1e-9) * (self.right - self.left)

    def y(self, value):
        low, high = self.y_range
        return BOTTOM - (math.log10(value) - low) / (high - low) * (BOTTOM - TOP)

    def axes(self):
        yield f"<text x='{self.left}' y='{TOP - 24}' font-size='15' font-weight='bold'>{escape(self.title)}</text>"
        for exponent in range(self.y_range[0], self.y_range[1] + 1):
            y = self.y(10.0 ** exponent)
            yield f"<line x1='{self.left}' y1='{y:.1f}' x2='{self.right}' y2='{y:.1f}' stroke='#e3e3e3'/>"
            yield f"<text x='{self.left - 8}' y='{y + 4:.1f}' text-anchor='end'>{power(exponent)}</text>"
        for size in self.sizes:
            x = self.x(size)
            yield f"<line x1='{x:.1f}' y1='{TOP}' x2='{x:.1f}' y2='{BOTTOM}' stroke='#e3e3e3'/>"
            yield f"<text x='{x:.1f}' y='{BOTTOM + 20}' text-anchor='middle'>{power(round(math.log10(size)))}</text>"
        yield (f"<path d='M{self.left} {TOP}V{BOTTOM}H{self.right}' fill='none' stroke='#444444'/>"
               f"<text x='{(self.left + self.right) / 2:.0f}' y='{BOTTOM + 42}' text-anchor='middle'>segments</text>")

    def proportional(self):
        """A dashed line that grows as the model does."""
        low, high = self.y_range
        decades = min(self.x_range[1] - self.x_range[0], high - low)
        from_size, from_value = 10 ** (self.x_range[1] - decades), 10.0 ** (high - decades)
        to_size, to_value = 10 ** self.x_range[1], 10.0 ** high
        x, y = (self.x(from_size) + self.x(to_size)) / 2, (self.y(from_value) + self.y(to_value)) / 2
        angle = math.degrees(math.atan2(self.y(to_value) - self.y(from_value), self.x(to_size) - self.x(from_size)))
        yield (f"<line x1='{self.x(from_size):.1f}' y1='{self.y(from_value):.1f}' x2='{self.x(to_size):.1f}' "
               f"y2='{self.y(to_value):.1f}' stroke='#9a9a9a' stroke-dasharray='5 5'/>"
               f"<text transform='translate({x:.1f} {y - 6:.1f}) rotate({angle:.1f})' text-anchor='middle' "
               f"fill='#777777' font-size='12'>in proportion</text>")

    def lines(self):
        ends = sorted((self.y(points[-1][1]), label, colour) for label, colour, points in self.curves)
        for label, colour, points in self.curves:
            path = " ".join(f"{self.x(x):.1f},{self.y(y):.1f}" for x, y in points)
            yield f"<polyline points='{path}' fill='none' stroke='{colour}' stroke-width='2'/>"
            for x, y in points:
                yield f"<circle cx='{self.x(x):.1f}' cy='{self.y(y):.1f}' r='3' fill='{colour}'/>"
        last = TOP - self.drop
        for y, label, colour in ends:  # no label covers the one above it
            place = max(y, last + self.drop)
            last = place
            yield (f"<path d='M{self.right + 5} {y:.1f}L{self.right + 15} {place:.1f}' stroke='{colour}'/>"
                   f"<text x='{self.right + 19}' y='{place + 4:.1f}' fill='{colour}'>{escape(label)}</text>")


def curves(rows, wanted, column, best):
    for stage, label, colour in wanted:
        found = {}
        for row in rows:
            if row["stage"] == stage:
                found.setdefault(int(row["segments"]), []).append(float(row[column]))
        if found:
            yield label, colour, sorted((size, best(values)) for size, values in found.items())


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    with open(sys.argv[1], newline="", encoding="utf-8") as file:
        rows = list(csv.DictReader(file))
    panels = [Panel(70, 370, "Seconds", list(curves(rows, TIMES, "wall_s", min)), 17),
              Panel(610, 870, "Memory at most, MB", list(curves(rows, MEMORY, "peak_MB", max)), 17)]
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        file.write(f"<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {WIDTH} {HEIGHT}' width='{WIDTH}' "
                   f"height='{HEIGHT}' font-size='13' fill='#222222' {FONT}>\n"
                   f"<rect width='{WIDTH}' height='{HEIGHT}' fill='#ffffff'/>\n")
        for panel in panels:
            for part in (panel.axes, panel.proportional, panel.lines):
                file.write("\n".join(part()) + "\n")
        file.write("</svg>\n")


if __name__ == "__main__":
    main()
