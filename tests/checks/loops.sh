#!/bin/sh
# Finds loops over what a call's result holds, as in `for (x : *store.calendars())` or `: store.calendars().value())`: the
# result itself ends before the loop begins, and what it held with it. No compiler of ours warns of that; the result belongs
# in a name first.
# usage: loops.sh FOLDER…
set -eu
if grep -rnE --include='*.h' --include='*.cpp' 'for \([^;]* : (\*+[^;]*\(.*\)|[^;]*\)\.value\(\).*)\) *(\{|$)' "$@"; then
  echo "loops.sh: these loops read a result that is gone; name the result before the loop" >&2
  exit 1
fi
