#!/bin/sh
# Runs the examples of docs/functions.md as one transcript, and checks that each function has a section.
# usage: functions_reference.sh ORLOCAL DOCUMENT WORK_FOLDER
set -eu
orlocal=$1
document=$2
work=$3
mkdir -p "$work"
transcript="$work/functions_reference.txt"
awk '/^```transcript$/ {inside = 1; next} /^```$/ {if (inside) print ""; inside = 0} inside' "$document" >"$transcript"

status=0
for name in $("$orlocal" functions --json | grep -o '"name": *"Orlo_[A-Za-z]*"' | grep -o 'Orlo_[A-Za-z]*' | sort -u); do
  grep -q "^## 1[0-9]* $name\$" "$document" || { echo "docs/functions.md has no section for $name"; status=1; }
  grep -q "^> .*$name" "$transcript" || { echo "docs/functions.md has no example that calls $name"; status=1; }
done
"$orlocal" test "$transcript" || status=1
exit $status
