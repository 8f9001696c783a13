#!/bin/sh
# Shows the main job: a week of a calendar, read through the plug-in. Called by ./run demo.
#   sh examples/demo.sh BUILD_FOLDER [FILE.ics]
set -eu

build=$(cd "$1" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
file=${2:-}
orlocal=$build/orlocal

explain() { printf '\n\033[1m%s\033[0m\n' "$*"; }
[ -t 1 ] || explain() { printf '\n%s\n' "$*"; }

# What the person has set elsewhere must not touch a store of theirs.
unset ORLOCAL_SYSTEM_MINOR ORLOCAL_NOW || true
folder=$build/demo
mkdir -p "$folder"

# Deleting a store and the files that SQLite keeps beside it.
fresh_store() {
  ORLOCAL_STORE=$1
  export ORLOCAL_STORE
  rm -f "$1" "$1-wal" "$1-shm" "$1-journal"
}

if [ -z "$file" ]; then
  fresh_store "$folder/sample.db"
  # The samples are made for one week and one zone; so everybody sees the same.
  TZ=Europe/Berlin ORLOCAL_NOW=2026-11-02T08:00:00Z
  export TZ ORLOCAL_NOW
  day=2 month=11 year=2026

  explain "1. Importing the sample calendars into a store of their own: $ORLOCAL_STORE"
  "$orlocal" import "$here"/work.ics "$here"/family.ics "$here"/travel.ics "$here"/errands.ics "$here"/projects.ics
  "$orlocal" import-contacts "$here/contacts.vcf"
else
  [ -r "$file" ] || { printf 'demo: %s cannot be read\n' "$file" >&2; exit 1; }
  fresh_store "$folder/own.db"

  explain "1. Importing $file into a store of its own: $ORLOCAL_STORE"
  # What is refused is listed; the rest came in and is worth looking at.
  "$orlocal" import "$file" || echo "Not everything could be imported; the lines above say what and why."

  # Timestamps reach the plug-in only in zones of whole hours.
  case $(date +%z) in
    *00) ;;
    *)
      echo "Your time zone is not whole hours from Greenwich, where the functions take no dates; shown in UTC instead."
      TZ=UTC
      export TZ
      ;;
  esac
  monday=$("$orlocal" run "$here/busy_week.calc")
  if [ -z "$monday" ]; then
    echo "There are no events in $file; the current week is shown."
    monday=$(date '+%d %m %Y' | sed 's/^0//; s/ 0/ /')
  fi
  # shellcheck disable=SC2086
  set -- $monday
  day=$1 month=$2 year=$3
fi
"$orlocal" calendars

explain "2. Loading Orlocal.fmx as a database host does, and running examples/week.calc through its functions"
{
  printf 'Let( $$first = Date( %s ; %s ; %s ) ; "First day: " & $$first )\n' "$month" "$day" "$year"
  cat "$here/week.calc"
} | "$orlocal" run -

first=$(printf '%04d-%02d-%02d' "$year" "$month" "$day")
explain "3. The same days as orlocal agenda shows them, read from the store without the plug-in"
last=$("$orlocal" eval "GetAsText( Date( $month ; $day ; $year ) + 6 )")
"$orlocal" agenda --from "$first" --to "$last"

page=$folder/month.html
explain "4. The month as a page for a browser: $page"
rm -f "$page"
"$orlocal" report "${first%-*}" --html "$page"

explain "Try it yourself"
cat <<END
The console on this store (type a calculation, Tab completes, Ctrl-D ends):
  ${TZ:+TZ=$TZ }$orlocal --store $ORLOCAL_STORE
For example:
  Orlo_EventsFetch( Timestamp( "$first 00:00:00" ) ; "" ; "" ; "" )
  Orlo_OpenItemAt( "event" ; 1 )
  Orlo_GetProperty( "event" ; "title" )
All functions: $orlocal functions        All commands: $orlocal --help
END

# Somebody who watches may go on right here.
if [ -t 0 ] && [ -t 1 ]; then
  printf '\nOpen the console now? [y/N] '
  read -r answer || answer=
  case $answer in [yY]*) exec "$orlocal" ;; esac
fi
