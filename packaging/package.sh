#!/bin/sh
# Makes packages of what was committed last. Called by ./run package; the words stand in usage() below.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
out=$root/build/package
. "$here/chroots.sh"

say() { printf '\n== %s\n' "$*"; }
fail() { printf 'run package: %s\n' "$*" >&2; exit 1; }
usage() {
  cat <<END
usage: ./run package                  the source package, packages for this system, the archive that runs anywhere
       ./run package --in SUITE       packages in a clean folder of that suite: bookworm, trixie (root)
       ./run package --try [SUITE…]   install, upgrade, downgrade, remove and purge them, and run the archive, in bare folders
                                      of each suite; without a name of this system's (root)
       ./run package --twice          build once more, in a clean folder of this system's suite, and compare the bytes (root)
All lands in build/package. --mirror URL, first of all, or ORLOCAL_MIRROR names the archive of bare folders; else it is the one
that apt gets this system's packages from. What is not committed is not packaged.
END
}

# What is packaged, whatever is committed meanwhile.
commit=$(git -C "$root" rev-parse HEAD)
version=$(sed -n 's/^project(orlocal VERSION \([0-9.]*\) .*/\1/p' "$root/CMakeLists.txt")
[ -n "$version" ] || fail "CMakeLists.txt names no version"

check_versions() {
  sh "$root/tests/checks/versions.sh" "$root" "$version" >&2 || fail "add an entry for $version there"
}

# sources FOLDER: what was committed last, and its moment, which all that is made carries.
sources() {
  rm -rf "$1"
  mkdir -p "$1"
  git -C "$root" -c tar.umask=0022 archive --prefix="orlocal-$version/" "$commit" | tar x -C "$1"
  SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct "$commit")
  export SOURCE_DATE_EPOCH
  git -C "$root" diff --quiet "$commit" || say "What is not committed is left out"
}

# packages_here FOLDER: builds in FOLDER, where `sources` has put them. Settings of whoever builds do not count.
packages_here() {
  say "Building packages in $1; the first time takes long"
  (
    cd "$1/orlocal-$version"
    unset ORLOCAL_STORE ORLOCAL_NOW
    # A compiler cache that rewrites paths leaves its traces in what debuggers read, and so in the identity of each file.
    unset CCACHE_BASEDIR CCACHE_NOHASHDIR
    TZ=UTC LC_ALL=C.UTF-8 dpkg-buildpackage --no-sign --build=full >../build.log 2>&1
  ) || { tail -30 "$1/build.log" >&2; fail "building failed; $1/build.log has all of it"; }
}

# lint FOLDER
lint() {
  say "lintian"
  lintian --allow-root --fail-on error,warning --tag-display-limit 0 --info "$1"/orlocal_*.changes || fail "lintian found something; see the lines above"
  echo "nothing"
}

# keep FOLDER NAME: the results of a build.
keep() {
  rm -rf "${out:?}/$2"
  mkdir -p "$out/$2"
  find "$1" -maxdepth 1 -type f ! -name build.log -exec mv {} "$out/$2" \;
  (cd "$out/$2" && ls -l | awk 'NR > 1 { print $5, $9 }')
}

everything() {
  check_versions
  mkdir -p "$out"
  exec 9>"$out/lock"
  flock -n 9 || fail "another one is at work in build/package; wait until it has ended"
  rm -f "$out/commit"
  sources "$out/work"
  packages_here "$out/work"
  lint "$out/work"
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  say "Packages of $codename: build/package/$codename"
  keep "$out/work" "$codename"
  sh "$here/archive.sh" "$version" "$out/$codename" "$out"
  echo "$commit" >"$out/commit"
}

# in_suite SUITE [NAME]: the results go to the folder of that name, else to one of the suite's.
in_suite() {
  suite=$1
  [ "$(id -u)" = 0 ] || fail "clean folders need root"
  check_versions
  sources "$out/work-$suite"
  (cd "$out/work-$suite" && dpkg-source -b "orlocal-$version" >/dev/null)
  fresh_system "$suite" "$out/systems/build-$suite"
  system=$out/systems/build-$suite
  say "Building in a clean $suite"
  mkdir "$system/build"
  cp "$out/work-$suite"/orlocal_*.dsc "$out/work-$suite"/orlocal_*.tar.* "$system/build"
  inside "$system" apt-get install -qq -y --no-install-recommends build-essential dpkg-dev >"$out/work-$suite/apt.log" 2>&1
  inside "$system" sh -c "cd /build && apt-get build-dep -qq -y --no-install-recommends ./orlocal_$version.dsc" >>"$out/work-$suite/apt.log" 2>&1 ||
    { tail -5 "$out/work-$suite/apt.log" >&2; fail "what building needs cannot be installed in $suite"; }
  inside "$system" sh -c "useradd -m builder && chown -R builder /build"
  inside "$system" su builder -c "cd /build && dpkg-source -x orlocal_$version.dsc orlocal-$version >/dev/null &&
    cd orlocal-$version && SOURCE_DATE_EPOCH=$SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8 dpkg-buildpackage --no-sign --build=full" \
    >"$out/work-$suite/build.log" 2>&1 ||
    { tail -30 "$out/work-$suite/build.log" >&2; fail "building in $suite failed; $out/work-$suite/build.log has all of it"; }
  keep "$system/build" "${2:-$suite}"
  remove_system "$system"
}

try_suites() {
  [ "$(id -u)" = 0 ] || fail "bare folders need root"
  [ $# != 0 ] || set -- "$(. /etc/os-release && echo "$VERSION_CODENAME")"
  for suite in "$@"; do
    sh "$here/try.sh" "$suite" "$version" "$out"
  done
}

# Two builds of one commit: the one here, and one in another folder of a clean system, by another user, from the source
# package, without a compiler cache.
twice() {
  [ "$(id -u)" = 0 ] || fail "clean folders need root"
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  [ "$(cat "$out/commit" 2>/dev/null)" = "$commit" ] || everything
  in_suite "$codename" clean
  sh "$here/archive.sh" "$version" "$out/clean" "$out/clean"
  say "Comparing"
  status=0
  for file in "$out/$codename"/*.deb "$out/$codename"/*.dsc "$out/$codename"/*.tar.xz "$out"/orlocal-"$version"-linux-*.tar.xz; do
    name=$(basename "$file")
    if cmp -s "$file" "$out/clean/$name"; then echo "same       $name"; else echo "different  $name" && status=1; fi
  done
  return $status
}

if [ "${1:-}" = --mirror ]; then
  ORLOCAL_MIRROR=${2:?--mirror needs an address}
  export ORLOCAL_MIRROR
  shift 2
fi
case "${1:-}" in
  "") everything ;;
  --in) in_suite "${2:?--in needs the name of a suite}" ;;
  --try) shift && try_suites "$@" ;;
  --twice) twice ;;
  --help) usage ;;
  *) usage >&2 && exit 2 ;;
esac
