# Sourced by the shell recipes. Sets here (this folder), python, and out, the output folder: build/many_runs; if
# installed, many_runs in the current folder. Adds the Python package and the programs to the search paths; the programs
# are in VESK_BIN, else in build/release/bin, else already on the PATH.
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
[ ! -d "$root/python" ] || export PYTHONPATH=$root/python${PYTHONPATH:+:$PYTHONPATH}
if [ -z "${VESK_BIN:-}" ] && [ -x "$root/build/release/bin/vesk-run" ]; then VESK_BIN=$root/build/release/bin; fi
[ -z "${VESK_BIN:-}" ] || export VESK_BIN PATH="$VESK_BIN:$PATH"
export PYTHONDONTWRITEBYTECODE=1
if [ -d "$root/python" ]; then out=$root/build/many_runs; else out=$PWD/many_runs; fi
python=/usr/bin/python3 # Debian's, which has the packages
command -v vesk-run >/dev/null || { echo "vesk-run is missing: build it with ./run, or set VESK_BIN." >&2; exit 1; }
