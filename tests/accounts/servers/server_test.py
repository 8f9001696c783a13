#!/usr/bin/env python3
"""Orlocal against a calendar server of another make: one line a scenario.

usage: server_test.py SERVER --orlocal PROGRAM [--only NAME,NAME] [--items N] [--kills N] [--seed N]

Status 1 when a scenario fails. What the server cannot do is skipped, and said with its reason.
"""
import argparse
import pathlib
import random
import sys
import tempfile
import time

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))
import scenario  # noqa: E402
import servers  # noqa: E402
import scenarios_items  # noqa: E402,F401
import scenarios_series  # noqa: E402,F401
import scenarios_conflicts  # noqa: E402,F401
import scenarios_calendars  # noqa: E402,F401
import scenarios_load  # noqa: E402,F401
import scenarios_account  # noqa: E402,F401


def run_one(each, server, options, folder):
    """One of "ok", "skipped" and "FAILED"."""
    began = time.monotonic()
    notes = []
    words, why = "ok", ""
    try:
        with scenario.Bench(server, folder, options, notes.append) as bench:
            each.run(bench)
    except scenario.Skipped as skipped:
        words, why = "skipped", f": {skipped}"
    except Exception as failed:  # one that fails must not hide the others
        words, why = "FAILED", f"\n{failed if isinstance(failed, scenario.Unexpected) else repr(failed)}"
    print(f"{words:8}{server.name}  {each.sentence} ({each.name}, {time.monotonic() - began:.1f} s){why}", flush=True)
    for note in notes:
        print(f"        {note}", flush=True)
    return words


def finish(name, outcomes):
    """The exit status."""
    print(f"{name}: {outcomes.count('ok')} went well, {outcomes.count('skipped')} skipped, {outcomes.count('FAILED')} failed")
    return 1 if "FAILED" in outcomes else 0


def main():
    parser = argparse.ArgumentParser(description="Orlocal against a calendar server of another make.")
    parser.add_argument("server", choices=sorted(servers.SERVERS))
    parser.add_argument("--orlocal", required=True, type=pathlib.Path, help="the built program")
    parser.add_argument("--only", default="", help="names of scenarios, with commas")
    parser.add_argument("--items", type=int, default=2000, help="items of the scenario many_items")
    parser.add_argument("--kills", type=int, default=20, help="turns of the scenario killed, two syncs each")
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 32), help="of the moments of the kills")
    options = parser.parse_args()
    options.orlocal = options.orlocal.resolve()
    names = [name for name in options.only.split(",") if name]
    unknown = set(names) - {each.name for each in scenario.ALL}
    if unknown:
        parser.error(f"no scenario {', '.join(sorted(unknown))}; there are {', '.join(each.name for each in scenario.ALL)}")
    chosen = [each for each in scenario.ALL if not names or each.name in names]
    with tempfile.TemporaryDirectory() as folder, servers.running(options.server) as server:
        outcomes = [run_one(each, server, options, pathlib.Path(folder) / each.name) for each in chosen]
    return finish(server.name, outcomes)


if __name__ == "__main__":
    sys.exit(main())
