#!/bin/sh
# khal, given the tasks that are measured. usage: khal.sh FOLDER import FILE | month | add FILE
set -eu
folder=$1
export XDG_CONFIG_HOME="$folder/config" XDG_DATA_HOME="$folder/data" XDG_CACHE_HOME="$folder/cache"
case "$2" in
  import)
    mkdir -p "$folder/config/khal" "$folder/events"
    cat >"$folder/config/khal/config" <<END
[calendars]
[[measured]]
path = $folder/events
[default]
default_calendar = measured
[locale]
local_timezone = Europe/Berlin
default_timezone = Europe/Berlin
timeformat = %H:%M
dateformat = %Y-%m-%d
longdateformat = %Y-%m-%d
datetimeformat = %Y-%m-%d %H:%M
longdatetimeformat = %Y-%m-%d %H:%M
END
    # It warns of exceptions that take nothing out.
    khal import --batch -a measured "$3" >/dev/null 2>&1
    ;;
  # It shows what lasts several days on each of them.
  month) exec khal list --day-format '' --format '{start-long}	{end-long}	{title}' 2026-11-01 2026-11-30 ;;
  add) exec khal new -a measured '2026-12-01 10:00' '2026-12-01 11:00' Added ;;
esac
