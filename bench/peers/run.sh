#!/bin/sh
# Measures what is installed of the peers beside our store and program. usage: run.sh [--sizes 1000,10000] [--rounds N]
# [--only NAME,NAME] [--report FILE] [--differences FOLDER]. All that it writes lies in build/peers and a temporary folder.
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
build="$root/build/peers"
[ -x /usr/bin/time ] || { echo "run.sh: the package 'time' is missing; bench/peers/install.sh installs it" >&2; exit 1; }
cmake -S "$root/bench/peers" -B "$build" -G Ninja | grep 'not built' || :
cmake --build "$build" -- --quiet
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Nothing of the user's is read or written; the zone is the data's.
export HOME="$work" XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" XDG_CACHE_HOME="$work/cache"
export XDG_RUNTIME_DIR="$work" TMPDIR="$work" TZ=Europe/Berlin LANG=C.UTF-8 LC_ALL=C.UTF-8
python3 "$root/bench/peers/measure.py" "$build" "$work" "$@"
