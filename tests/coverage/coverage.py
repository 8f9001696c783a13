#!/usr/bin/env python3
"""What the tests ran, by layer, and what they did not: read from gcovr's report on the preset coverage.

coverage.py REPORT.json [FOLDER…]: a table, then what of the folders (below src/; without, the layers of the table) was not run.
"""
import collections
import json
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
# The longest that fits counts.
LAYERS = ["src/bridge", "src/functions", "src/backend", "src/notify", "src/platform", "src/store", "src/store/edits",
          "src/accounts"]


class Count:
    def __init__(self):
        self.lines = self.run_lines = self.branches = self.taken_branches = 0

    def add(self, line):
        self.lines += 1
        self.run_lines += line["count"] > 0
        self.branches += len(line["branches"])
        self.taken_branches += sum(branch["count"] > 0 for branch in line["branches"])

    def row(self, name):
        return (f"{name:<16}{self.run_lines:>6} of {self.lines:>5}{share(self.run_lines, self.lines):>9}"
                f"{self.taken_branches:>8} of {self.branches:>5}{share(self.taken_branches, self.branches):>9}")


def share(part, whole):
    """Rounded down, so that only all is 100 %."""
    return f"{part * 1000 // whole / 10:.1f} %" if whole else "–"


def layer_of(file):
    fitting = [layer for layer in LAYERS if file.startswith(layer + "/")]
    return max(fitting, key=len) if fitting else None


def counted_lines(report):
    """Each line that has code, with its file."""
    for file in report["files"]:
        for line in file["lines"]:
            if not line.get("gcovr/noncode"):
                yield file["file"], line


def counts_of(report):
    counts = collections.OrderedDict((layer, Count()) for layer in LAYERS)
    for file, line in counted_lines(report):
        if layer_of(file):
            counts[layer_of(file)].add(line)
    return counts


def not_run(report, folders):
    """What was not run, as (file, line, how much of it)."""
    for file, line in counted_lines(report):
        if not any(file.startswith(folder.rstrip("/") + "/") or file == folder for folder in folders):
            continue
        taken = sum(branch["count"] > 0 for branch in line["branches"])
        if line["count"] == 0:
            yield file, line["line_number"], "not run"
        elif taken < len(line["branches"]):
            yield file, line["line_number"], f"{taken} of {len(line['branches'])} ways"


def main(arguments):
    if not arguments:
        sys.exit(__doc__)
    report = json.loads(pathlib.Path(arguments[0]).read_text(encoding="utf-8"))
    for file, number, how in sorted(not_run(report, arguments[1:] or LAYERS)):
        text = (ROOT / file).read_text(encoding="utf-8").splitlines()[number - 1].strip()
        print(f"{file}:{number}: {how}: {text}")
    print(f"\n{'':<16}{'lines run':>14}{'':>10}{'branches taken':>16}")
    for layer, count in counts_of(report).items():
        print(count.row(layer))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
