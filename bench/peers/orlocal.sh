#!/bin/sh
# Our own program, given the tasks that are measured. usage: orlocal.sh FOLDER import FILE | month | add FILE
set -eu
store="$1/calendars.db"
case "$2" in
  import | add) exec "$ORLOCAL" --store "$store" import "$3" >/dev/null ;;
  month) exec "$ORLOCAL" --store "$store" --json agenda --from 2026-11-01 --to 2026-11-30 ;;
esac
