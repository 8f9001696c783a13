#!/bin/sh
# Runs the measurements against the build in FOLDER. usage: run.sh BUILD_FOLDER [--smoke]
set -eu
build=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
echo "Each row stands beside its floor from the same run; ratios are what counts on a shared machine."
"$build/bench/orlocal_bench" "$build/Orlocal.fmx" "$work/stores" "$@"
