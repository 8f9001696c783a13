#!/bin/sh
# fuzz/run.sh BUILD SECONDS TARGET…: runs the targets for that long in all, as many at once as there are processors, each
# for its share. What is new and of use is kept beside findings in fuzz/findings-TARGET. Status 1 when something is found.
set -eu
build=$1
seconds=$2
shift 2
cd "$(dirname "$0")"
at_once=$(nproc 2>/dev/null || echo 1)
[ "$at_once" -le $# ] || at_once=$#
share=$((seconds * at_once / $#))
[ "$share" -gt 0 ] || { echo "fuzz: that is less than a second for each of $# targets" >&2; exit 2; }
found=$(mktemp)
trap 'rm -f "$found"' EXIT

fuzz_one() {
  target=$1
  findings="findings-$target"
  mkdir -p "$findings/corpus"
  case "$target" in
    icalendar | recurrence | files | zones) dictionary="dictionaries/icalendar.dict" ;;
    *) dictionary="dictionaries/$target.dict" ;;
  esac
  if [ -f "$dictionary" ]; then dictionary="-dict=$dictionary"; else dictionary="-verbosity=1"; fi
  status=0
  "$build/fuzz/${target}_fuzz" -max_total_time="$share" -timeout=25 -rss_limit_mb=1024 -print_final_stats=1 "$dictionary" \
    -artifact_prefix="$findings/" "$findings/corpus" "corpus/$target" >"$findings/log" 2>&1 || status=$?
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$findings/log")
  echo "$target: ${executions:-no} executions in $share s"
  [ "$status" = 0 ] || { tail -n 40 "$findings/log" >&2; echo "$target" >>"$found"; }
}

# A queue for each processor.
queue=0
while [ "$queue" -lt "$at_once" ]; do
  (
    at=0
    for target in "$@"; do
      [ $((at % at_once)) != "$queue" ] || fuzz_one "$target"
      at=$((at + 1))
    done
  ) &
  queue=$((queue + 1))
done
wait
[ ! -s "$found" ] || { echo "fuzz: findings of $(tr '\n' ' ' <"$found"); the inputs are in fuzz/findings-*" >&2; exit 1; }
