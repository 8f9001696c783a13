#!/bin/sh
# The version stands in CMakeLists.txt; the newest entries of both change logs must be of that one.
# usage: versions.sh SOURCE_FOLDER VERSION
set -eu
source=$1
version=$2
status=0
# heads FILE PATTERN: its first line that heads an entry has the version in brackets of the pattern.
heads() {
  [ "$(grep -m 1 "$2" "$source/$1" | sed "s/$2.*/\\1/")" = "$version" ] || { echo "versions: the newest entry of $1 is not of $version" && status=1; }
}
heads debian/changelog '^orlocal (\([0-9.]*\))'
heads CHANGELOG.md '^## \([0-9.]*\)'
[ $status = 0 ] && echo "versions: all of $version"
exit $status
