#!/bin/sh
# Installs, upgrades, downgrades, removes and purges the packages of a suite in a bare system, and runs the archive in another
# one that has nothing but its base.
# usage: try.sh SUITE VERSION FOLDER_OF_RESULTS
set -eu
suite=$1
version=$2
out=$3
here=$(cd "$(dirname "$0")" && pwd)
. "$here/chroots.sh"
say() { printf '\n== %s\n' "$*"; }
fail() { printf 'run package: %s\n' "$*" >&2; exit 1; }
did() { echo "  $*"; }

# use SYSTEM PROGRAM [PLUGIN_FOLDER]: what somebody does first.
use() {
  cat >"$1/srv/use.sh" <<'END'
set -eu
program=$1
version=$2
export TZ=Europe/Berlin ORLOCAL_NOW=2026-11-02T08:00:00Z ORLOCAL_STORE=/srv/used.db
rm -f /srv/used.db*
"$program" --version | grep -qF "orlocal $version"
"$program" new "Lunch with Grace tomorrow 12:30 1h" | grep -q "Tue 3 Nov 2026 12:30"
"$program" agenda --from 2026-11-03 --to 2026-11-03 | grep -q "12:30.*Lunch with Grace"
[ "$("$program" eval Orlo_Version)" = "$version" ]
[ "$("$program" eval 'Orlo_CalOpenCalendarWithTitle( "Calendar" )' 'Orlo_GetProperty( "calendar" ; "title" )' | tail -1)" = Calendar ]
"$program" doctor --plugin none | grep -q "Europe/Berlin, now +01:00"
"$program" export -o /srv/used.ics && grep -q "SUMMARY:Lunch with Grace" /srv/used.ics
"$program" backup /srv/used.backup --replace >/dev/null
"$program" functions --json | grep -q Orlo_EventsFetch
LANGUAGE=de LANG=C.UTF-8 "$program" functions | grep -q "Kalender"
LANGUAGE=de LANG=C.UTF-8 "$program" reminders --done | grep -q "Keine solchen Erinnerungen"
# A server that does not answer is told as that; libraries for the network load.
if "$program" subscribe https://127.0.0.1:9/none.ics 2>/srv/refused; then exit 1; fi
grep -qi "127.0.0.1" /srv/refused
folder="/opt/host/Extensions"
rm -rf /opt/host /etc/orlocal && mkdir -p "$folder" && chown nobody "$folder"
unset ORLOCAL_STORE
"$program" install-plugin --folder "$folder" --settings /etc/orlocal/orlocal.conf --store /var/lib/orlocal/calendar.db >/dev/null
[ "$(stat -c %U "$folder/Orlocal.fmx" /var/lib/orlocal/calendar.db | sort -u)" = nobody ]
"$program" install-plugin --folder "$folder" --settings /etc/orlocal/orlocal.conf --remove >/dev/null
[ -z "$(ls "$folder")" ] && [ ! -e /etc/orlocal ]
rm -rf /opt/host /var/lib/orlocal /srv/used.db* /srv/used.ics /srv/used.backup /srv/refused
END
  inside "$1" sh /srv/use.sh "$2" "$version" || fail "$suite: $2 does not do what it should"
}

# use_as_library SYSTEM: a program that is built with the packaged store, and the packaged module.
use_as_library() {
  cat >"$1/srv/use.cpp" <<'END'
#include <cstdio>
#include "store/calendar_store.h"
int main() {
  orlocal::store::StoreOptions options;
  options.file = "/srv/library.db";
  const auto store = orlocal::store::CalendarStore::open(std::move(options));
  if (!store) { return std::puts(store.error().message.c_str()), 1; }
  return (*store)->calendars(orlocal::store::CalendarKind::kEvents)->size() == 1 ? 0 : 1;
}
END
  inside "$1" sh -c "apt-get install -y -qq --no-install-recommends g++ pkg-config >/dev/null 2>&1 && cd /srv &&
    g++ -std=c++20 use.cpp \$(pkg-config --cflags --static --libs orlocalstore) -o use && ./use && rm -f library.db* && python3 -c 'import orlocal'" ||
    fail "$suite: the library or the module does not do what it should"
}

# files_of SYSTEM: all that is there but for what packages' own tools note.
files_of() {
  (cd "$1" && find . \( -path ./proc -o -path ./var/lib/dpkg -o -path ./var/cache -o -path ./var/log -o -path ./tmp \
    -o -path ./srv -o -path ./var/lib/apt \) -prune -o -print | sort)
}

# next_version FILE FOLDER: the same package as a later one.
next_version() {
  rm -rf "$2/tree"
  dpkg-deb -R "$1" "$2/tree"
  sed -i "s/^Version: .*/Version: $version+next/; s/(= $version)/(= $version+next)/g" "$2/tree/DEBIAN/control"
  dpkg-deb --root-owner-group -b "$2/tree" "$2" >/dev/null
  rm -rf "$2/tree"
}

try_packages() {
  say "Packages in a bare $suite"
  system=$out/systems/try-$suite
  fresh_system "$suite" "$system"
  mkdir "$system/srv/now" "$system/srv/next"
  cp "$out/$suite"/*.deb "$system/srv/now"
  rm "$system/srv/now"/*-dbgsym_*.deb
  for file in "$system/srv/now"/*.deb; do next_version "$file" "$system/srv/next"; done
  get="apt-get install -y -qq --no-install-recommends --allow-downgrades -o Dpkg::Use-Pty=0"
  # What they need comes first, so that what is left behind in the end is theirs alone.
  ours="orlocal orlocal-plugin liborlocalstore-dev python3-orlocal"
  log=$out/try-$suite.log
  : >"$log"
  inside "$system" sh -c "$get /srv/now/*.deb" >>"$log" 2>&1 || { tail -5 "$log" >&2; fail "$suite: they cannot be installed"; }
  did "installed: $(inside "$system" dpkg-query -W -f '${Package} ${Version}, ' orlocal orlocal-plugin)"
  inside "$system" test -s /usr/share/man/man7/orlocal-tutorial.7.gz || fail "$suite: the guides are no man pages"
  use "$system" orlocal
  did "used"
  use_as_library "$system"
  did "a program was built with the store, and the module was loaded"
  inside "$system" sh -c "$get /srv/next/*.deb" >>"$log" 2>&1 || fail "$suite: they cannot be upgraded"
  inside "$system" dpkg-query -W -f '${Version}\n' orlocal | grep -q next || fail "$suite: the upgrade did nothing"
  use "$system" orlocal
  did "upgraded, used"
  inside "$system" sh -c "$get /srv/now/*.deb" >>"$log" 2>&1 || fail "$suite: they cannot be downgraded"
  use "$system" orlocal
  did "downgraded, used"
  inside "$system" dpkg --verify $ours | grep . && fail "$suite: files differ from what was packaged"
  inside "$system" apt-get remove -y -qq $ours >>"$log" 2>&1 || fail "$suite: they cannot be removed"
  files_of "$system" >"$out/removed.txt"
  grep -i orlocal "$out/removed.txt" && fail "$suite: that was left behind"
  inside "$system" sh -c "$get /srv/now/*.deb" >>"$log" 2>&1
  inside "$system" apt-get purge -y -qq $ours >>"$log" 2>&1 || fail "$suite: they cannot be purged"
  files_of "$system" >"$out/purged.txt"
  cmp "$out/removed.txt" "$out/purged.txt" || fail "$suite: a purge leaves something else than a removal"
  inside "$system" dpkg-query -W orlocal 2>/dev/null && fail "$suite: it is known still"
  did "removed, installed anew, purged: nothing is left"
  rm -f "$out/removed.txt" "$out/purged.txt"
  remove_system "$system"
}

try_archive() {
  say "The archive in a bare $suite"
  system=$out/systems/bare-$suite
  fresh_system "$suite" "$system"
  tar xJf "$1" -C "$system/opt"
  folder=/opt/$(basename "$1" .tar.xz)
  # Nothing but the base: no library that this one brings, no zones, no authorities.
  rm -rf "$system/usr/share/zoneinfo"
  inside "$system" ldd "$folder/bin/orlocal" >"$out/ldd.txt"
  grep "not found" "$out/ldd.txt" && fail "$suite: a library is missing"
  awk '$2 == "=>" { print $3 }' "$out/ldd.txt" | grep -v "^$folder/" | grep -vE '/(libc|libm|libdl|libpthread|librt|libresolv)\.so' &&
    fail "$suite: it takes that from the system"
  rm -f "$out/ldd.txt"
  use "$system" "$folder/bin/orlocal"
  did "runs in $folder, without zones of the system"
  mv "$system$folder" "$system/srv/moved here"
  use "$system" "/srv/moved here/bin/orlocal"
  did "runs where it was moved to"
  remove_system "$system"
}

[ -d "$out/$suite" ] && try_packages || say "There are no packages of $suite; ./run package --in $suite makes them"
archive=$(ls "$out"/orlocal-"$version"-linux-*.tar.xz 2>/dev/null || true)
[ -z "$archive" ] || try_archive "$archive"
