"""python3 -m vesk pending MODEL TABLE OUTPUT_DIR [--parameters FILE] [-- OPTIONS]: prints the numbers of the rows that
still have to be run, one per line, as input for `vesk-run --rows -` and GNU parallel."""

from __future__ import annotations

import argparse
import sys

from .cases import rows
from .record import pending


def main() -> int:
    parser = argparse.ArgumentParser(prog="python3 -m vesk", description="Helps scripts that start many runs.")
    commands = parser.add_subparsers(required=True, metavar="COMMAND")
    command = commands.add_parser("pending", help="print the rows that still have to be run, according to the records")
    command.add_argument("model", help="the data file (.vki)")
    command.add_argument("table", help="the table of runs (.csv)")
    command.add_argument("output_dir", help="the folder of the runs")
    command.add_argument("--parameters", help="the table of parameters that the columns are named after")
    command.epilog = "After --: the options of vesk-run that affect the results, such as --no-queries."
    words = sys.argv[1:]
    end = words.index("--") if "--" in words else len(words)
    arguments, options = parser.parse_args(words[:end]), words[end + 1:]
    try:
        cases = rows(arguments.model, arguments.parameters, arguments.table)
        for case in pending(cases, arguments.output_dir, options):
            print(case.row)
    except (OSError, ValueError) as error:
        print(f"vesk: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
