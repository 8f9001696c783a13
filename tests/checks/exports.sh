#!/bin/sh
# Lists the plug-in's dynamic symbols and fails on any that is not meant, and on what a host relies on that is missing.
# usage: exports.sh PLUGIN VERSION
set -eu
plugin=$1
version=$2
status=0

wanted="FMExternCallProc
Orlo_RegisterUpdateScript"
exported=$(nm -D --defined-only "$plugin" | awk '{print $3}' | sort)
if [ "$exported" != "$wanted" ]; then
  echo "exports: expected exactly:"; echo "$wanted"
  echo "exports: found:"; echo "$exported"
  status=1
fi

dynamic=$(readelf -d "$plugin")
echo "$dynamic" | grep -q "SONAME.*\[$version\]" || { echo "exports: the SONAME is not the version $version"; status=1; }
echo "$dynamic" | grep -q 'NEEDED.*\[libFMWrapper.so\]' || { echo "exports: libFMWrapper.so is not named as needed"; status=1; }
echo "$dynamic" | grep -q 'RUNPATH.*\[/opt/FileMaker/lib\]' || { echo "exports: the run path is not /opt/FileMaker/lib"; status=1; }

# Nothing in the plug-in opens a network connection.
for library in libcurl libxml2 libresolv; do
  ! echo "$dynamic" | grep -q "NEEDED.*\[$library" || { echo "exports: $library is named as needed"; status=1; }
done

# Whatever host functions it imports must exist in the interface that the plug-in declares.
header=$3
for symbol in $(nm -D --undefined-only "$plugin" | awk '{print $2}' | grep '^FM_' || true); do
  grep -q "\b$symbol(" "$header" || { echo "exports: imports the unknown host function $symbol"; status=1; }
done
[ $status = 0 ] && echo "exports: as meant"
exit $status
