#!/bin/sh
# Installs the peers of packages.txt (Debian 12; root or sudo).
set -eu
cd "$(dirname "$0")"
sudo=""
[ "$(id -u)" = 0 ] || sudo="sudo"
$sudo apt-get update -qq
# shellcheck disable=SC2046
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends $(grep -v '^#' packages.txt) >/dev/null
