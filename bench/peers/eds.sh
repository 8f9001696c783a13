#!/bin/sh
# Evolution Data Server with a D-Bus and folders of its own, given the tasks that are measured; its processes end with that
# D-Bus. usage: eds.sh FOLDER import FILE | month | warm ROUNDS | add ROUNDS | again ROUNDS
# The last one is the month in new processes while the servers run on: a line of seconds each.
set -eu
folder=$1
task=$2
argument=${3:-}
export HOME="$folder" XDG_CONFIG_HOME="$folder/config" XDG_DATA_HOME="$folder/data" XDG_CACHE_HOME="$folder/cache"
export XDG_RUNTIME_DIR="$folder/runtime" GSETTINGS_BACKEND=memory
mkdir -p -m 700 "$XDG_RUNTIME_DIR"
if [ "$task" = again ]; then
  # shellcheck disable=SC2016
  set -- sh -c '"$1" "$2" month >"$2/answer"
    for round in $(seq "$3"); do
      begun=$(date +%s.%N)
      "$1" "$2" month >"$2/answer"
      echo "$(date +%s.%N) $begun" | awk "{ print \$1 - \$2 }"
    done' again "$EDS" "$folder" "$argument"
else
  set -- "$EDS" "$folder" "$task" "$argument"
fi
exec dbus-run-session -- "$@" 2>"$folder/messages"
