#!/bin/sh
# Makes the archive that runs on any Linux of this processor whose C library is not older than this system's: what the
# packages hold, with the libraries that they need, and what the program else takes from a system.
# usage: archive.sh VERSION FOLDER_OF_PACKAGES FOLDER_FOR_IT
set -eu
version=$1
packages=$2
out=$3
say() { printf '\n== %s\n' "$*"; }
fail() { printf 'run package: %s\n' "$*" >&2; exit 1; }

machine=$(uname -m)
triplet=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
name=orlocal-$version-linux-$machine
work=$out/archive
tree=$work/$name
say "Making the archive $name.tar.xz"
rm -rf "$work"
mkdir -p "$work/unpacked"
for package in "$packages"/orlocal_*.deb "$packages"/orlocal-plugin_*.deb; do dpkg-deb -x "$package" "$work/unpacked"; done
mv "$work/unpacked/usr" "$tree"
rm -rf "$tree/share/lintian"
own=$tree/lib/$triplet/orlocal
plugin_libraries=$own/Orlocal.libraries
mkdir "$plugin_libraries"

# The C library and what belongs to it are every system's own; one from elsewhere would not fit its loader.
stays_away() {
  case "$1" in
    ld-linux*.so.* | libc.so.* | libm.so.* | libdl.so.* | libpthread.so.* | librt.so.* | libresolv.so.* | libFMWrapper.so) return 0 ;;
  esac
  return 1
}

# needed_by FILE: names and files of the libraries that it needs, directly or not.
needed_by() {
  LD_LIBRARY_PATH=$own ldd "$1" | awk '$2 == "=>" && $3 ~ /^\// { print $1, $3 }'
}

# carry FILE FOLDER: what FILE needs and no folder of ours has goes into FOLDER.
carry() {
  needed_by "$1" | while read -r library file; do
    if stays_away "$library" || [ -e "$plugin_libraries/$library" ] || [ -e "$2/$library" ]; then continue; fi
    cp -L "$file" "$2/$library"
    chmod 644 "$2/$library"
    owner=$(dpkg-query -S "$(readlink -f "$file")" "$file" 2>/dev/null | sed 's/:.*//' | head -1)
    [ -n "$owner" ] || fail "no package owns $file, so its licence is not known"
    echo "$owner" >>"$work/owners"
  done
}
carry "$own/Orlocal.fmx" "$plugin_libraries"
mkdir "$own/libraries"
carry "$own/libFMWrapper.so" "$own/libraries"
carry "$tree/bin/orlocal" "$own/libraries"

# Each file finds the others from where it stands. The plug-in's own libraries go with it into a host's folder.
patchelf --set-rpath "\$ORIGIN/Orlocal.libraries:/opt/FileMaker/lib" "$own/Orlocal.fmx"
patchelf --set-rpath "\$ORIGIN/libraries:\$ORIGIN/Orlocal.libraries" "$own/libFMWrapper.so"
patchelf --set-rpath "\$ORIGIN/../lib/$triplet/orlocal:\$ORIGIN/../lib/$triplet/orlocal/libraries:\$ORIGIN/../lib/$triplet/orlocal/Orlocal.libraries" \
  "$tree/bin/orlocal"
for library in "$plugin_libraries"/*; do patchelf --set-rpath "\$ORIGIN" "$library"; done
for library in "$own"/libraries/*; do patchelf --set-rpath "\$ORIGIN:\$ORIGIN/../Orlocal.libraries" "$library"; done

# Zones for a system without tzdata: those of the machine win.
cp -aL /usr/share/zoneinfo "$tree/share/zoneinfo"
rm -rf "$tree/share/zoneinfo/posix" "$tree/share/zoneinfo/right" "$tree/share/zoneinfo/localtime" "$tree/share/zoneinfo/posixrules"
echo tzdata >>"$work/owners"

# Licences of what was carried.
mkdir -p "$tree/share/doc/orlocal/licences"
sort -u "$work/owners" | while read -r owner; do
  cp -L "/usr/share/doc/$owner/copyright" "$tree/share/doc/orlocal/licences/$owner.txt"
done
cp -L /usr/share/common-licenses/LGPL-2.1 /usr/share/common-licenses/GPL-3 /usr/share/common-licenses/GPL-2 \
  /usr/share/common-licenses/LGPL-3 /usr/share/common-licenses/Apache-2.0 /usr/share/common-licenses/MPL-2.0 \
  /usr/share/common-licenses/LGPL-2 /usr/share/common-licenses/GFDL-1.3 "$tree/share/doc/orlocal/licences/"
# Which packages, and versions, these came from: who gives the archive on can say where the sources are.
sort -u "$work/owners" | xargs dpkg-query -W -f '${source:Package} ${source:Version} (${Package})\n' | sort \
  >"$tree/share/doc/orlocal/licences/SOURCES"

oldest=$(find "$tree/bin" "$own" -type f \( -name '*.so*' -o -name orlocal -o -name '*.fmx' \) -exec objdump -T {} + 2>/dev/null |
  grep -o 'GLIBC_2\.[0-9.]*' | sort -uV | tail -1)
echo "needs a C library from ${oldest#GLIBC_} on"
echo "${oldest#GLIBC_}" >"$tree/share/doc/orlocal/licences/C_LIBRARY"

# The same bytes each time: order, owners, moments and modes do not come from this machine.
tar c -C "$work" --format=posix --pax-option=exthdr.name=%d/PaxHeaders/%f,delete=atime,delete=ctime --sort=name --owner=0 --group=0 \
  --numeric-owner --mtime="@${SOURCE_DATE_EPOCH:?}" --mode=u+rwX,go+rX,go-w "$name" | xz -9 -T1 >"$out/$name.tar.xz"
rm -rf "$work"
ls -l "$out/$name.tar.xz" | awk '{ print $5, $9 }'
