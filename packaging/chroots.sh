# Bare systems in folders, for who sources this: a base is made once for each suite and kept; each use has a copy.

# The archive that this system's packages come from, unless ORLOCAL_MIRROR names another.
mirror() {
  [ -n "${ORLOCAL_MIRROR:-}" ] && { echo "$ORLOCAL_MIRROR"; return; }
  apt-get indextargets --format '$(REPO_URI)|$(CODENAME)|$(ORIGIN)' 'Created-By: Packages' |
    awk -F'|' '($3 == "Debian" || $3 == "Ubuntu") && $2 !~ /-/ { print $1; exit }'
}

# sources_of SUITE MIRROR: of this system's own suite its updates, too, so that a clean build has what one here has.
sources_of() {
  echo "deb $2 $1 main"
  [ -z "${ORLOCAL_MIRROR:-}" ] || return 0
  apt-get indextargets --format 'deb $(REPO_URI) $(CODENAME) main' 'Created-By: Packages' |
    awk -v suite="$1" 'index($3, suite "-") == 1' | sort -u
}

# base_of SUITE: the file of its bare system.
base_of() {
  base=$out/systems/$1.tar
  if [ ! -f "$base" ]; then
    say "Making a bare $1" >&2
    mkdir -p "$out/systems"
    rm -rf "$out/systems/$1"
    from=$(mirror)
    [ -n "$from" ] || fail "apt names no archive of packages; give one with --mirror"
    debootstrap --variant=minbase "$1" "$out/systems/$1" "$from" >"$out/systems/$1.log" 2>&1 ||
      { tail -3 "$out/systems/$1.log" >&2; fail "there is no bare system of $1 to be had from that archive; --mirror names another"; }
    sources_of "$1" "$from" >"$out/systems/$1/etc/apt/sources.list"
    tar c -C "$out/systems/$1" --one-file-system . >"$base.draft"
    mv "$base.draft" "$base"
    rm -rf "${out:?}/systems/$1"
  fi
  echo "$base"
}

# fresh_system SUITE FOLDER: a bare system, with its lists of packages.
fresh_system() {
  base=$(base_of "$1")
  remove_system "$2"
  mkdir -p "$2"
  tar x -C "$2" -f "$base"
  # Nothing starts a service in there.
  printf '#!/bin/sh\nexit 101\n' >"$2/usr/sbin/policy-rc.d"
  chmod 755 "$2/usr/sbin/policy-rc.d"
  cp /etc/resolv.conf /etc/hosts "$2/etc/" 2>/dev/null || true
  mount -t proc proc "$2/proc"
  mounted_in=$2
  trap 'remove_mount "$mounted_in"' EXIT
  inside "$2" apt-get update -qq
}

# inside FOLDER COMMAND…: runs there as root, with nothing of this system's environment but how the network is reached.
inside() {
  inside_folder=$1
  shift
  env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 TERM=dumb \
    DEBIAN_FRONTEND=noninteractive ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
    chroot "$inside_folder" "$@"
}

remove_mount() {
  while mountpoint -q "$1/proc" 2>/dev/null; do umount "$1/proc"; done
}

remove_system() {
  remove_mount "$1"
  rm -rf --one-file-system "$1"
}
