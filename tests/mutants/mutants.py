#!/usr/bin/env python3
"""Changes the code a little, one change at a time, and lists the changes that no test notices."""
import argparse
import json
import pathlib
import queue
import signal
import sys
import threading
import time

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))
from equivalent import judged_changes  # noqa: E402
from nearby import stages_for  # noqa: E402
from places import all_changes, sample_of  # noqa: E402
from workshop import Workshop, end_what_runs  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = ["src/bridge", "src/functions", "src/backend", "src/notify", "src/store/edits"]
NOTICED, UNNOTICED, NOT_BUILT = "noticed", "unnoticed", "not built"


def words():
    reader = argparse.ArgumentParser(
        prog="./run mutants", description=__doc__,
        epilog="Ends with status 1 when there is a change that no test noticed and tests/mutants/equivalent.txt does not "
               "have, or, with --least, when there are too many of them. A file that was changed is built again with the "
               "tests near it (tests/mutants/nearby.py), in a copy below build/mutants.")
    reader.add_argument("folders", nargs="*", metavar="FOLDER",
                        help=f"folders or files below src/ (without: {', '.join(FOLDERS)})")
    reader.add_argument("--sample", type=int, default=300, metavar="N", help="how many changes are tried (300; 0 is all)")
    reader.add_argument("--seed", type=int, default=1, metavar="S", help="which ones (1); the same seed takes the same")
    reader.add_argument("--workers", type=int, default=1, metavar="N", help="copies that work beside each other (1)")
    reader.add_argument("--least", type=float, default=100, metavar="PERCENT",
                        help="so many of the changes that were built must be noticed (100)")
    reader.add_argument("--list", action="store_true", help="only name the changes")
    reader.add_argument("--json", metavar="FILE", help="write what became of each change")
    return reader.parse_args()


def folders_of(given):
    folders = []
    for name in given or FOLDERS:
        path = (pathlib.Path.cwd() / name) if (pathlib.Path.cwd() / name).exists() else ROOT / name
        if not path.exists() or not path.resolve().is_relative_to(ROOT / "src"):
            sys.exit(f"mutants: {name} is no folder or file below src/")
        folders.append(path.resolve().relative_to(ROOT).as_posix())
    return folders


def tried(workshop, change):
    """What became of one change, and who noticed it."""
    text = (ROOT / change.file).read_text(encoding="utf-8")
    for stage in stages_for(change.file):
        if stage not in workshop.learned:
            workshop.write(change.file, text)
            workshop.learn(stage)
        workshop.write(change.file, change.of(text))
        if not workshop.builds(stage):
            return NOT_BUILT, None
        witness = workshop.first_to_notice(stage)
        if witness:
            return NOTICED, witness
    return UNNOTICED, None


def record(change, verdict, witness):
    return {"file": change.file, "line": change.line, "operator": change.operator, "before": change.before,
            "after": change.after, "verdict": verdict, "noticed_by": witness}


def work(number, files, results, out):
    try:
        workshop = Workshop(ROOT, number)
        while True:
            changes = files.get_nowait()
            for change in changes:
                verdict, witness = tried(workshop, change)
                results.append(record(change, verdict, witness))
                out(f"{len(results)}: {change.file}:{change.line} {change.operator}: {verdict}"
                    + (f" by {witness}" if witness else ""))
            workshop.write(changes[0].file, (ROOT / changes[0].file).read_text(encoding="utf-8"))
    except queue.Empty:
        return
    except (RuntimeError, OSError) as failure:
        results.append(failure)


def show(results):
    for change in results:
        if change["verdict"] == UNNOTICED:
            print("\n{file}:{line}: {operator}\n  before: {before}\n  after: {after}".format(**change))


def are_enough(noticed, unnoticed, least):
    """Whether at least so many of a hundred were noticed; of none there are enough."""
    return noticed * 100 >= least * (noticed + unnoticed)


def main():
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    options = words()
    folders = folders_of(options.folders)
    judged = judged_changes()
    changes = [change for change in all_changes(ROOT, folders) if stages_for(change.file)]
    if not changes:
        sys.exit("mutants: nothing to change there that has tests in tests/mutants/nearby.py")
    # What was judged leaves a sample, and brings no others into it.
    sample = [change for change in sample_of(changes, options.sample, options.seed)
              if not any(verdict.is_about(change) for verdict in judged)]
    if options.list:
        for change in sample:
            print(f"{change.file}:{change.line}: {change.operator}\n  before: {change.before}\n  after: {change.after}")
        return 0
    print(f"{len(sample)} of {len(changes)} changes, seed {options.seed}; what is unchanged is built first", flush=True)
    if not sample:
        return 0

    files = queue.Queue()
    for file in sorted({change.file for change in sample}):
        files.put([change for change in sample if change.file == file])
    begun, results = time.monotonic(), []
    out = lambda line: print(line, flush=True)  # noqa: E731
    workers = [threading.Thread(target=work, args=(number, files, results, out), daemon=True)
               for number in range(1, options.workers + 1)]
    for worker in workers:
        worker.start()
    try:
        for worker in workers:
            worker.join()
    except KeyboardInterrupt:
        end_what_runs()
        print(f"\nstopped after {len(results)} of {len(sample)}")
    failures = [str(result) for result in results if isinstance(result, Exception)]
    if failures:
        sys.exit("mutants: " + "; ".join(failures))

    results.sort(key=lambda change: (change["file"], change["line"], change["operator"], change["after"]))
    show(results)
    count = {verdict: sum(change["verdict"] == verdict for change in results) for verdict in (NOTICED, UNNOTICED, NOT_BUILT)}
    if options.json:
        report = {"folders": folders, "seed": options.seed, "seconds": round(time.monotonic() - begun), "count": count,
                  "changes": results}
        pathlib.Path(options.json).write_text(json.dumps(report, indent=1) + "\n", encoding="utf-8")
    print(f"\n{count[NOTICED]} noticed, {count[UNNOTICED]} unnoticed, {count[NOT_BUILT]} not built")
    return 0 if are_enough(count[NOTICED], count[UNNOTICED], options.least) else 1


if __name__ == "__main__":
    sys.exit(main())
