# Sourced by the recipes that are shell scripts. Sets here (this folder), bin (of the programs), python, and makes the
# Python package known. The programs are in VESK_BIN, else in build/release/bin, else on the search path. Sets out, where
# the recipes write: build/many_runs; installed, many_runs in the current folder.
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
[ ! -d "$root/python" ] || export PYTHONPATH=$root/python${PYTHONPATH:+:$PYTHONPATH}
if [ -z "${VESK_BIN:-}" ] && [ -x "$root/build/release/bin/vesk-run" ]; then VESK_BIN=$root/build/release/bin; fi
[ -z "${VESK_BIN:-}" ] || export VESK_BIN PATH="$VESK_BIN:$PATH"
export PYTHONDONTWRITEBYTECODE=1
if [ -d "$root/python" ]; then out=$root/build/many_runs; else out=$PWD/many_runs; fi
python=/usr/bin/python3 # Debian's, which has the packages
command -v vesk-run >/dev/null || { echo "vesk-run is missing: build it with ./run, or set VESK_BIN." >&2; exit 1; }
