#!/bin/sh
# Installs, moves what was installed, and uses the store as other programs do: by pkg-config, by CMake and from Python.
# usage: library.sh CMAKE COMPILER BUILD_FOLDER SOURCE_FOLDER WORK_FOLDER
check=library
cmake=$1
compiler=$2
build=$3
source=$4
work=$5
. "$source/tests/checks/installed.sh"
export HOME="$work/home" PATH="$work/moved/bin:$PATH" TZ=Europe/Berlin ORLOCAL_NOW=2026-11-02T08:00:00Z LC_ALL=C.UTF-8
export ORLOCAL_SETTINGS="" ORLOCAL_STORE="$work/calendar.db"
unset XDG_CONFIG_HOME || true

orlocal import "$source/examples/family.ics" "$source/examples/errands.ics" >imported
want="2026-11-03 17:00  Football (Jonas)"

found=$(find "$work/moved" -name orlocalstore.pc)
export PKG_CONFIG_PATH="${found%/*}"
# shellcheck disable=SC2046 # words, each by itself
"$compiler" -std=c++20 ${CXXFLAGS:-} "$source/examples/library/month.cpp" -o by_pkg_config \
  $(pkg-config --cflags --static --libs orlocalstore)
./by_pkg_config "$ORLOCAL_STORE" >by_pkg_config.txt
grep -qF "$want" by_pkg_config.txt || wrong "the program built by pkg-config does not show: $want"
if ./by_pkg_config /dev/null/calendar.db 2>error; then wrong "it opens a store that cannot be"; fi
grep -q '^month: ' error || wrong "it does not say why a store cannot be opened"

"$cmake" -S "$source/examples/library" -B cmake -DCMAKE_PREFIX_PATH="$work/moved" -DCMAKE_CXX_COMPILER="$compiler" >configured
"$cmake" --build cmake >built
./cmake/month "$ORLOCAL_STORE" | cmp - by_pkg_config.txt || wrong "the program built by CMake shows something else"

module=$(find "$work/moved" -name orlocal.py)
export PYTHONPATH="${module%/*}" PYTHONDONTWRITEBYTECODE=1
python3 "$source/examples/python/overdue.py" "$ORLOCAL_STORE" >moved.txt
grep -qF "Paint the fence: due 2026-09-30 → 2026-11-03" moved.txt || wrong "Python moves nothing: $(cat moved.txt)"
python3 - <<'END' || wrong "the Python module does not do what it says"
import orlocal

store = orlocal.Store()
made = store.new("Dinner -- friday 19:00", calendar="Family", alarm=["15m", "1h"])
assert made["start"] == "2026-11-06T19:00:00+01:00" and len(made["alarms"]) == 2, made
assert store.edit(made["identifier"], location="-- Luigi's")["location"] == "-- Luigi's"
assert [hit["title"] for hit in store.search("dinner luigi")["results"]] == ["Dinner"]
assert made["identifier"] in [event["identifier"] for event in store.agenda("friday", "friday")["events"]]
assert "Family" in [calendar["title"] for calendar in store.calendars()]
store.remove(made["identifier"])
for words, status in ((("show", made["identifier"]), 1), (("new", "Dinner 25:00"), 2)):
    try:
        store.run(*words)
    except orlocal.Error as error:
        assert error.status == status and str(error), error
    else:
        raise AssertionError(words)
END
ended
