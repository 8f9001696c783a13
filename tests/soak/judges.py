"""What must hold: functions of what was written down and what is there, each of which gives sentences of what does not.

They know nothing of processes, so that each can be shown a broken thing (soak_test.py).
"""
import collections
import statistics

from ledger import DONE, REFUSED

MEBIBYTE = 1024 * 1024
# What a process may gain between the second quarter of its samples and the last one: the store fills up meanwhile, and
# what it keeps of rows in memory with it.
MEMORY_ALLOWANCE = 6 * MEBIBYTE
# Connections and threads that a sync has for a moment.
DESCRIPTOR_ALLOWANCE = 8
FEWEST_SAMPLES = 60
# SQLite empties its log after some thousand pages unless somebody reads on; a copy of a store of this size fits in it twice.
LOG_ALLOWANCE = 48 * MEBIBYTE


def confirmed_is_there(ledger, contents, begin, end):
    """`contents`: calendar title to components, as copied between `begin` and `end`."""
    seen = collections.defaultdict(set)
    for components in contents.values():
        for each in components:
            seen[each.title].add(each.version)
    found = []
    for key in ledger.keys():
        if ledger.unsettled(key) or key in ledger.weak:
            continue
        wanted = ledger.possible(key, begin, end)
        # The location of a changed occurrence is its series'; what counts is that it is there.
        there = {None} if key not in seen else seen[key]
        if not there <= wanted and not (ANY in wanted and key in seen):
            found.append(f"\"{key}\" should be {states(wanted)} and is {states(there)}")
    return found


# A version of what is only looked for.
ANY = "*"


def states(versions):
    return " or ".join(sorted("gone" if each is None else each for each in versions))


def once_each(contents):
    """No UID twice in a calendar, and series that hang together."""
    found = []
    for calendar, components in contents.items():
        counts = collections.Counter((each.uid, each.occurrence) for each in components)
        found += [f"{calendar}: UID {uid} is there {count} times, occurrence {occurrence}"
                  for (uid, occurrence), count in counts.items() if count > 1]
        masters = {each.uid: each for each in components if each.occurrence is None}
        for each in components:
            begin, end = each.begin_and_end
            if begin and end and len(begin) == len(end) and begin > end:
                found.append(f"{calendar}: \"{each.title}\" ends at {end}, before its start {begin}")
            if each.occurrence is None:
                continue
            if each.uid not in masters:
                found.append(f"{calendar}: \"{each.title}\" is a changed occurrence of nothing ({each.uid})")
            elif not masters[each.uid].rule:
                found.append(f"{calendar}: \"{each.title}\" is a changed occurrence of \"{masters[each.uid].title}\","
                             " which does not repeat")
    return found


def whole_or_not(groups, contents):
    """Files come in whole or not at all: `groups` are the titles of each that nothing but its import touches."""
    seen = {each.title: each.version for components in contents.values() for each in components}
    return [f"of one file there are different versions: {states(versions)}"
            for versions in ({seen.get(title) for title in titles} for titles in list(groups.values()))
            if len(versions) > 1]


def same_everywhere(copies):
    """`copies`: name of a place to its components of one calendar."""
    found = []
    by_place = {}
    for place, components in copies.items():
        by_place[place] = {(each.uid, each.occurrence): each.fields for each in components}
    (first, wanted), *others = by_place.items()
    for place, there in others:
        found += [f"{name(key)} ({dict(wanted[key]).get('SUMMARY')}) is in {first} and not in {place}"
                  for key in wanted.keys() - there.keys()]
        found += [f"{name(key)} ({dict(there[key]).get('SUMMARY')}) is in {place} and not in {first}"
                  for key in there.keys() - wanted.keys()]
        found += [f"{name(key)} differs: {first} has {dict(set(wanted[key]) - set(there[key]))}, {place} has "
                  f"{dict(set(there[key]) - set(wanted[key]))}"
                  for key in wanted.keys() & there.keys() if set(wanted[key]) != set(there[key])]
    return found


def name(key):
    uid, occurrence = key
    return uid + (f" at {occurrence}" if occurrence else "")


def told_once(ledger, lines):
    """Each commit came as a line for its item, and none that nobody made.

    `lines` are (arrival, position, change, identifier, title). What a watcher had not been told of when a restore put
    another log in place is not owed.
    """
    titles = {identifier: title for _, _, _, identifier, title in lines if title}
    told, heard = collections.defaultdict(dict), []
    for arrival, position, change, identifier, title in lines:
        key = titles.get(identifier, title)
        told[key].setdefault((position, change), arrival)
        # All that ended before the change that this tells of began was told before.
        heard.append((arrival, max((op.begin for op in ledger.ops.get(key, []) if op.begin < arrival), default=0)))
    reaches = [(restore, max((begin for arrival, begin in heard if arrival < restore.begin), default=0))
               for restore in ledger.restores if restore.outcome != REFUSED]
    found = []
    for key, ops in ledger.ops.items():
        if key in ledger.synced or key in ledger.weak:
            continue
        owed = [op for op in ops if op.outcome == DONE and not op.within and is_owed(op, reaches)
                # To remove what is gone is no change.
                and (op.becomes or None not in ledger.possible(key, op.begin, op.begin))]
        positions = {position for position, _ in told[key]}
        if len(positions) < len(owed):
            found.append(f"\"{key}\" was changed {len(owed)} times or more, and told of {len(positions)} times")
        if len(positions) > sum(op.counts for op in ops):
            found.append(f"\"{key}\" was told of {len(positions)} times, and changed {len(ops)} times at most")
        removed = [op for op in owed if op.becomes is None]
        if removed and not any(change == "deleted" and arrival >= removed[-1].begin
                               for (_, change), arrival in told[key].items()):
            found.append(f"that \"{key}\" was removed was not told")
    return found


def is_owed(op, reaches):
    for restore, reach in reaches:
        if op.begin < restore.end:
            return op.end < restore.begin and op.end < reach
    return True


def rang_once(expected, rung, restores):
    """`expected`: titles that had to ring, with what the store says of them; `rung`: (title, alarm's moment, arrival)."""
    counts = collections.defaultdict(list)
    for title, moment, arrival in rung:
        counts[title, moment].append(arrival)
    found = []
    for (title, moment), arrivals in counts.items():
        # A backup brings back up to when alarms were told.
        again = sum(restore.outcome != REFUSED and restore.end > min(arrivals) for restore in restores)
        if len(arrivals) > 1 + again:
            found.append(f"the alarm of \"{title}\" at {moment} was told {len(arrivals)} times, with {again} restores since")
    told = {title for title, _ in counts}
    return found + [f"the alarm of \"{title}\" never rang" for title in expected if title not in told]


def is_flat(name, samples):
    """`samples`: (bytes, descriptors) of one process in the order of time."""
    if len(samples) < FEWEST_SAMPLES:
        return []
    quarter = len(samples) // 4
    found = []
    for what, at, allowance, unit in (("memory", 0, MEMORY_ALLOWANCE, " bytes"),
                                      ("open descriptors", 1, DESCRIPTOR_ALLOWANCE, "")):
        before = statistics.median(sample[at] for sample in samples[quarter:2 * quarter])
        after = statistics.median(sample[at] for sample in samples[-quarter:])
        if after > before + allowance:
            found.append(f"{name}: {what} grew from {before:,.0f} to {after:,.0f}{unit}, {allowance:,} are allowed")
    return found


def folder_is_bounded(sizes):
    """`sizes`: file name beside the store to bytes."""
    return [f"{file} takes {size:,} bytes" for file, size in sizes.items() if file.endswith("-wal") and size > LOG_ALLOWANCE]


def folder_is_clean(store, files, kept_copies, drafts):
    """What lies beside a store that nobody uses: `kept_copies` of restores and `drafts` of killed programs at most.

    `files` are names and sizes. The log may be there when nothing is in it.
    """
    found = []
    copies = [file for file in files if file.startswith(f"{store}.before-restore-")]
    half = [file for file in files if file.startswith(".orlocal-") and file.endswith(".part")]
    if len(copies) > kept_copies:
        found.append(f"{len(copies)} copies of before a restore, and {kept_copies} restores")
    if len(half) > drafts:
        found.append(f"{len(half)} drafts were left, and {drafts} programs killed that write some: {half[:3]}")
    # Of a copy that was being made when its program was killed SQLite's journal is there, too.
    known = {store, f"{store}-bell", f"{store}-sync", *copies, *half, *(f"{draft}-journal" for draft in half)}
    if files.get(f"{store}-wal") == 0:
        known |= {f"{store}-wal", f"{store}-shm"}
    return found + [f"{file} was left beside the store" for file in files if file not in known]
