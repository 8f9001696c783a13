# Sourced by the checks of what is installed, with `check`, `cmake`, `build` and `work` set: installs below `work`, moves
# that to `work`/moved, and goes there. `wrong SENTENCE` tells what is not as it should be; `ended` ends with the status.
set -eu
status=0
wrong() {
  echo "$check: $*"
  status=1
}
ended() {
  [ $status = 0 ] && echo "$check: fine"
  exit $status
}

rm -rf "$work"
mkdir -p "$work/home"
"$cmake" --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/moved"
cd "$work"
