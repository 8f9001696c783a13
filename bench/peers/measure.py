#!/usr/bin/env python3
"""Gives the peers that are there and our own programs the same tasks, and shows what came of it; started by run.sh."""

import argparse
import os
import re
import resource
import shutil
import signal
import statistics
import subprocess
import sys
import time
from dataclasses import dataclass, field
from pathlib import Path

import dateutil

import answers
from judge import judge

HERE = Path(__file__).resolve().parent
PATIENCE = 600  # seconds that we wait for one task
WORTHWHILE = 120  # seconds; whose import would take longer at ten times the size is left out there
AGAIN_WITHIN = 20  # an import that takes longer is done once
TASKS = {"import": "import of the file", "month": "month, cold", "again": "month, cold, its servers running",
         "warm": "month, warm", "add": "add an event"}


@dataclass
class Peer:
    name: str
    ours: str  # what of ours stands beside it
    package: str
    command: list
    needs: list  # files without which it is not there
    answer: callable
    tasks: tuple


class LeftOut(Exception):
    """Says why a peer has no figures."""


@dataclass
class Figures:
    seconds: dict = field(default_factory=dict)  # task -> list
    processor: dict = field(default_factory=dict)  # task -> list
    peak: float = 0  # KiB, of the cold month
    entries: set = None


def peers(build):
    library, program = ("import", "month", "warm", "add"), ("import", "month", "add")
    script = lambda name: ["sh", str(HERE / name)]
    tool = lambda name: Path(shutil.which(name) or "/nowhere/" + name)
    server = Path("/usr/share/dbus-1/services/org.gnome.evolution.dataserver.Calendar8.service")
    return [
        Peer("our store", "our store", "", [build / "ours"], [build / "ours"], answers.from_library, library),
        Peer("libical", "our store", "libical3", [build / "libical"], [build / "libical"], answers.from_library,
             library),
        Peer("KCalendarCore", "our store", "libkf5calendarcore5abi2", [build / "kcalendarcore"],
             [build / "kcalendarcore"], answers.from_library, library),
        Peer("Evolution Data Server", "our store", "evolution-data-server", script("eds.sh"),
             [build / "eds", server, tool("dbus-run-session")], answers.from_library, library + ("again",)),
        Peer("orlocal", "orlocal", "", script("orlocal.sh"), [build / "orlocal/orlocal"], answers.from_orlocal,
             program),
        Peer("calcurse", "orlocal", "calcurse", script("calcurse.sh"), [tool("calcurse")], answers.from_calcurse,
             program),
        Peer("khal", "orlocal", "khal", script("khal.sh"), [tool("khal")], answers.from_khal, program),
    ]


def perform(peer, folder, *task):
    """Runs a task in a process of its own: what it printed, seconds, processor time, peak in KiB. Servers are not
    in the last two."""
    memory = folder.parent / "memory"
    command = ["/usr/bin/time", "-q", "-f", "%M", "-o", memory, *peer.command, folder, *task]
    before, begun = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
    words = [str(word) for word in command]
    child = subprocess.Popen(words, stdout=subprocess.PIPE, start_new_session=True, text=True)
    try:
        printed, _ = child.communicate(timeout=PATIENCE)
    except subprocess.TimeoutExpired:
        os.killpg(child.pid, signal.SIGKILL)
        child.communicate()
        raise LeftOut(f"it had not done the task {task[0]} after {PATIENCE} s") from None
    passed, after = time.monotonic() - begun, resource.getrusage(resource.RUSAGE_CHILDREN)
    if child.returncode != 0:
        raise LeftOut(f"the task {task[0]} failed with status {child.returncode}")
    processor = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return printed, passed, processor, float(memory.read_text().split()[-1])


def timed_within(printed):
    return [float(line) for line in printed.split()]


def run_round(peer, figures, folder, file, one_event, first):
    """One round of all tasks."""
    note = lambda task, seconds: figures.seconds.setdefault(task, []).append(seconds)
    spent = lambda task, seconds: figures.processor.setdefault(task, []).append(seconds)
    if first or figures.seconds["import"][0] < AGAIN_WITHIN:
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        _, seconds, processor, _ = perform(peer, folder, "import", file)
        note("import", seconds)
        spent("import", processor)
    printed, seconds, processor, peak = perform(peer, folder, "month")
    note("month", seconds)
    spent("month", processor)
    told = re.search(r"^peak\t(\d+)$", printed, re.M)  # a library's own word, with its servers
    figures.peak = max(figures.peak, float(told.group(1)) if told else peak)
    if first:
        figures.entries = answers.cut(peer.answer(printed))
    for task in ("again", "warm"):
        if task in peer.tasks:
            figures.seconds.setdefault(task, []).extend(timed_within(perform(peer, folder, task, "3")[0]))
    if "warm" in peer.tasks:
        figures.seconds.setdefault("add", []).extend(timed_within(perform(peer, folder, "add", "3")[0]))
    else:
        note("add", perform(peer, folder, "add", one_event)[1])


ONE_EVENT = ("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Orlocal//Measurements//EN\r\nBEGIN:VEVENT\r\n"
             "UID:added-{0}\r\nDTSTAMP:20260101T000000Z\r\n"
             "DTSTART:20261201T100000Z\r\nDTEND:20261201T110000Z\r\nSUMMARY:Added {0}\r\n"
             "END:VEVENT\r\nEND:VCALENDAR\r\n")


def measure(found, build, work, size, rounds, left_out):
    """Peers take turns in each round, so that a slow minute of the machine meets all of them. Those that failed, or
    would be too slow at the next size, are added to `left_out`."""
    file = work / f"{size}.ics"
    subprocess.run([build / "make_file", file, str(size)], check=True)
    results = {}
    for number in range(rounds):
        one_event = work / "one.ics"
        one_event.write_text(ONE_EVENT.format(number), newline="")
        for peer in found:
            if peer.name in left_out:
                continue
            print(f"{size} events, round {number + 1} of {rounds}: {peer.name}", file=sys.stderr, flush=True)
            figures = results.setdefault(peer.name, Figures())
            folder = work / re.sub(r"\W", "-", f"{peer.name}-{size}")
            try:
                run_round(peer, figures, folder, file, one_event, number == 0)
            except LeftOut as reason:
                left_out[peer.name] = f"{reason} with {size:,} events"
                del results[peer.name]
    for name, figures in results.items():
        if 10 * figures.seconds["import"][0] > WORTHWHILE:
            left_out[name] = f"its import of {size:,} events took {figures.seconds['import'][0]:.0f} s"
    return file, results


def shown(seconds):
    for unit, factor in (("s", 1), ("ms", 1e3), ("µs", 1e6)):
        if seconds * factor >= 1:
            break
    value = seconds * factor
    return f"{value:.0f} {unit}" if value >= 100 else f"{value:.3g} {unit}"


def cell(times, floor):
    median = statistics.median(times)
    text = shown(median)
    if len(times) > 1:
        text += f" ({shown(min(times))} to {shown(max(times))})"
    if floor is None or floor is times:
        return text
    ratio = median / statistics.median(floor)
    return text + (f", **{ratio:.0f}**" if ratio >= 100 else f", **{ratio:.3g}**")


def times_table(found, results, kind):
    """A row for each peer; `kind` is the field of Figures."""
    of = {peer.name: getattr(results[peer.name], kind) for peer in found if peer.name in results}
    tasks = [task for task in TASKS if any(task in each for each in of.values())]
    memory = kind == "seconds"
    yield "| who | " + " | ".join(TASKS[task] for task in tasks) + (" | peak memory |" if memory else " |")
    yield "|---" * (len(tasks) + 1 + memory) + "|"
    for peer in found:
        if not of.get(peer.name) or (not memory and "again" in peer.tasks):
            continue
        mine, ours = of[peer.name], of[peer.ours]
        # New processes beside running servers are compared with a new process, too.
        cells = [cell(mine[task], ours["month" if task == "again" else task]) if task in mine else "" for task in tasks]
        if memory:
            cells.append(f"{results[peer.name].peak / 1024:.1f} MiB")
        yield f"| {peer.name} | " + " | ".join(cells) + " |"


def counts_table(found, results, verdict):
    yield "| who | occurrences | as the judge has it | missing | further | of these, starts that no rule names |"
    yield "|---|---|---|---|---|---|"
    judged, starts = answers.cut(verdict.entries), answers.cut(verdict.starts)
    yield f"| python-dateutil | {len(judged)} | {len(judged)} | | | |"
    for peer in found:
        if peer.name in results:
            entries = results[peer.name].entries
            missing, further = judged - entries, entries - judged
            open_ones = sum(title in verdict.undefined for _, _, title in missing)
            lost = f"{len(missing)}, {open_ones} of them of such series" if missing else "0"
            yield (f"| {peer.name} | {len(entries)} | {len(entries & judged)} | {lost} | {len(further)} | "
                   f"{len(further & starts)} |")


def start_alone(work):
    """What of each time that is taken from outside is no work: seconds in which a program starts and ends."""
    nothing = Peer("true", "", "", ["true"], [], None, ())
    return statistics.median(perform(nothing, work / "nothing", "")[1] for _ in range(20))


def version(package):
    asked = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True, text=True)
    return asked.stdout or "unknown"


def differences(results, verdict, folder):
    """Leaves a file for each peer that differs: which occurrences."""
    judged = answers.cut(verdict.entries)
    for name, figures in results.items():
        lines = [f"{sign}\t{start:.0f}\t{end:.0f}\t{title}{chr(9)}{'open' if title in verdict.undefined else ''}\n"
                 for sign, entries in (("-", judged - figures.entries), ("+", figures.entries - judged))
                 for start, end, title in sorted(entries)]
        if lines:
            (folder / re.sub(r"\W", "-", f"{name}-{len(judged)}.differences")).write_text("".join(lines))


def put(report, lines):
    begin, end = "<!-- results begin -->", "<!-- results end -->"
    text = report.read_text() if report.exists() else f"{begin}\n{end}\n"
    head, tail = text.split(begin)[0], text.split(end)[1]
    report.write_text(f"{head}{begin}\n{lines}\n{end}{tail}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=Path)
    parser.add_argument("work", type=Path)
    parser.add_argument("--sizes", default="1000,10000", help="events in the file (default: %(default)s)")
    parser.add_argument("--rounds", type=int, default=5, help="(default: %(default)s)")
    parser.add_argument("--only", help="a peer's name, or several: only these beside ours")
    parser.add_argument("--report", type=Path, help="a page that the tables are put into, between two marks")
    parser.add_argument("--differences", type=Path, help="a folder for lists of the occurrences in which peers differ")
    options = parser.parse_args()

    os.environ["ORLOCAL"] = str(options.build / "orlocal/orlocal")
    os.environ["EDS"] = str(options.build / "eds")
    found, lines, left_out = [], [], {}
    for peer in peers(options.build):
        if options.only and peer.name != peer.ours and peer.name not in options.only.split(","):
            continue
        if all(file.exists() for file in peer.needs):
            found.append(peer)
        else:
            lines.append(f"{peer.name} is left out: it is not installed (`sh bench/peers/install.sh`).\n")
    versions = ", ".join(f"{peer.name} {version(peer.package)}" for peer in found if peer.package)
    lines.append(f"Measured on {time.strftime('%Y-%m-%d')}, on {os.cpu_count()} hardware threads, with {versions}; "
                 f"python-dateutil {dateutil.__version__} judges. Medians (low to high) of {options.rounds} "
                 "rounds, of one at 100,000 events; in bold the ratio to ours.\n")
    loads = [os.getloadavg()[0]]
    for size in map(int, options.sizes.split(",")):
        rounds = options.rounds if size < 100_000 else 1
        file, results = measure(found, options.build, options.work, size, rounds, left_out)
        verdict = judge(file)
        loads.append(os.getloadavg()[0])
        lines += [f"### {size:,} events\n", *times_table(found, results, "seconds"), "",
                  "Processor time of the same processes (Evolution Data Server's servers could not be counted):\n",
                  *times_table(found, results, "processor"), "",
                  f"Occurrences of November 2026; {len(verdict.undefined):,} series start at a time that their rule "
                  "does not have:\n", *counts_table(found, results, verdict), ""]
        lines += [f"{name} is left out: {why}.\n" for name, why in left_out.items() if name not in results]
        if options.differences:
            options.differences.mkdir(exist_ok=True)
            differences(results, verdict, options.differences)
        if options.report:
            put(options.report, "\n".join(lines))
    lines.append(f"Of each time of a whole process (all but warm months, and what libraries add) a program that does "
                 f"nothing takes {shown(start_alone(options.work))}. Other work went on meanwhile: a load of "
                 f"{min(loads):.1f} to {max(loads):.1f}.")
    text = "\n".join(lines)
    if options.report:
        put(options.report, text)
    print(text)


main()
