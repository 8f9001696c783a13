#!/bin/sh
# calcurse, given the tasks that are measured. usage: calcurse.sh FOLDER import FILE | month | add FILE
set -eu
folder=$1
calcurse() { command calcurse -D "$folder" -C "$folder" "$@"; }
# Where it leaves its account of what it did not import.
export TMPDIR="$folder"
case "$2" in
  # Status 1 says that it refused some; they are listed in the account.
  import) calcurse -q -i "$3" 2>/dev/null || [ $? = 1 ] ;;
  add) calcurse -q -i "$3" ;;
  # What lasts several days is shown on each of them; whole days have no times but that of the day's heading.
  month)
    calcurse -Q --from 11/01/2026 --to 11/30/2026 --filter-type cal \
      --format-apt '%(start:epoch)\t%(end:epoch)\t%m\n' --format-recur-apt '%(start:epoch)\t%(end:epoch)\t%m\n' \
      --format-event 'day\t%m\n' --format-recur-event 'day\t%m\n'
    ;;
esac
