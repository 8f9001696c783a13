#!/bin/sh
# Runs the measurements against the build in FOLDER. usage: run.sh BUILD_FOLDER [OPTION…]; --help lists them
set -eu
build=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/bench/orlocal_bench" "$build/Orlocal.fmx" "$work/stores" "$@"
