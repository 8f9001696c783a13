#!/bin/sh
# Measures calendar servers with many clients of ours. usage: run.sh PROGRAM [radicale|cyrus …] [--smoke] [--json FILE]
# [--report FILE] [--show FILE…] [--folder FOLDER]. Started by ./run bench --clients; Cyrus wants root.
set -eu
# The packaged interpreter is the one that the packaged servers belong to.
exec /usr/bin/python3 "$(dirname "$0")/clients.py" "$@"
