#!/bin/sh
# Gathers the messages anew, and holds what the tree has against them.
# usage: messages.sh PYTHON SOURCE_FOLDER WORK_FOLDER
set -eu
python=$1
source=$2
work=$3

mkdir -p "$work"
sh "$source/po/messages.sh" "$work/orlocal.pot"
"$python" "$source/tests/checks/messages.py" "$source" "$work/orlocal.pot"
