#!/bin/sh
# clang-tidy with the checks of .clang-tidy on all sources below src/, as the build in the given folder joins them: each
# header is then read a few times only.
#
# usage: tidy.sh BUILD_FOLDER
set -eu
build=${1:?usage: tidy.sh BUILD_FOLDER}
list=$(mktemp)
trap 'rm -f "$list"' EXIT
python3 - "$build" >"$list" <<'END'
import json, pathlib, sys

root = pathlib.Path.cwd()
places = [str(root / "src") + "/", str(pathlib.Path(sys.argv[1]).resolve() / "src") + "/"]
for entry in json.loads(pathlib.Path(sys.argv[1], "compile_commands.json").read_text()):
    if entry["file"].startswith(tuple(places)):
        print(entry["file"])
END
[ -s "$list" ] || { echo "tidy: $build has no sources of src/; configure it first" >&2; exit 1; }
said=$(xargs -P "$(nproc)" -n 1 clang-tidy -p "$build" --quiet <"$list" 2>/dev/null) && status=0 || status=1
[ -z "$said" ] || printf '%s\n' "$said"
echo "tidy: $(wc -l <"$list") units read, $(printf '%s\n' "$said" | grep -c ' error: ' || true) offences"
exit $status
