#!/bin/sh
# Runs transcripts against the built plug-in under Valgrind: no byte is read that nobody wrote, none outside what was
# asked for, and what nobody can reach any more was given back. All of them, by hand, with the test's environment:
#   sh tests/checks/memcheck.sh build/release/orlocal tests/transcripts/*/*.txt
# usage: memcheck.sh ORLOCAL TRANSCRIPT…
set -eu
orlocal=$1
shift
log=$(mktemp)
trap 'rm -f "$log"' EXIT
for transcript in "$@"; do
  # A transcript runs in a process of its own, whose errors are told by its summary alone.
  if ! valgrind --error-exitcode=9 --leak-check=full --errors-for-leak-kinds=definite,indirect,possible \
    "$orlocal" test "$transcript" >"$log" 2>&1 || grep -q 'ERROR SUMMARY: [1-9]' "$log" ||
    [ "$(grep -c 'ERROR SUMMARY: 0' "$log")" -lt 2 ]; then
    cat "$log"
    echo "memcheck.sh: $transcript: the lines above" >&2
    exit 1
  fi
  echo "$transcript: $(grep -c 'ERROR SUMMARY: 0' "$log") processes, no error, nothing lost"
done
