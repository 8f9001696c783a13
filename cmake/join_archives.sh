#!/bin/sh
# Makes one archive of several. Objects of one name stay apart.
# usage: join_archives.sh AR ARCHIVE FILE…
set -eu
ar=$1
archive=$2
shift 2
{
  echo "CREATE $archive"
  for file in "$@"; do echo "ADDLIB $file"; done
  echo SAVE
  echo END
} | "$ar" -M
