#!/usr/bin/env python3
"""Reads every #include below src/ and fails when a layer includes one that it must not know, or when a header includes
itself by way of others: such a one compiles after them only.

usage: layers.py SOURCE_FOLDER
"""
import pathlib
import re
import sys

# Layer -> layers it may include besides itself. A layer is the longest listed folder that holds the file.
# The store's rooms from the bottom up, on what it shares with the host program; each knows those before it, and the
# store's face, last, knows all.
STORE = ["base", "store/time", "store/model", "store/recurrence", "store/icalendar", "store/alarms", "store/file",
         "store/rows", "store/core", "store/edits", "store/invitations", "store"]

# What the store's face speaks in.
SHOWN = {"base", "store", "store/time", "store/model"}

# What the rooms of commands stand on.
COMMANDS = {"host/commands/command_line", "host/commands/words"}

KNOWS = {
    **{room: set(STORE[:floor]) for floor, room in enumerate(STORE)},
    "platform": set(),
    "platform/host": {"platform"},
    "platform/legacy": {"platform"},
    "platform/linux": {"platform", "platform/legacy", *SHOWN, "store/icalendar", "store/edits"},
    "backend": {"platform"},
    "backend/eventkit": {"backend", "platform"},
    "backend/legacy": {"backend", "platform"},
    "bridge": {"backend", "backend/eventkit", "backend/legacy", "platform", "platform/host"},
    "functions": {"bridge", "backend", "backend/eventkit", "backend/legacy", "platform", "platform/host"},
    "notify": {"bridge", "backend", "backend/legacy", "platform", "platform/host"},
    "accounts/transport": {"base"},
    "accounts/dav": {"accounts/transport", "base", "store/icalendar", "store/model", "store/time"},
    "accounts/discovery": {"accounts/dav", "accounts/transport", "base"},
    "accounts/sync": {"accounts/dav", "accounts/transport", *SHOWN, "store/edits", "store/icalendar"},
    "accounts": {"accounts/dav", "accounts/discovery", "accounts/sync", "accounts/transport", *SHOWN, "store/edits",
                 "store/icalendar"},
    "host/language": {"base"},
    "host/fmwrapper": {"base", "platform/host"},
    "host/plugin": {"base", "host/fmwrapper", "platform/host"},
    "host/check": {"base", "host/fmwrapper", "host/plugin", "platform/host"},
    "host/calc": {"base", "host/fmwrapper"},
    "host/console": {"base", "host/calc", "host/fmwrapper", "host/plugin"},
    "host/commands/command_line": {"base", "host/calc", "host/fmwrapper", *SHOWN, "store/file"},
    "host/commands/words": {"base", "store/icalendar", "store/model", "store/recurrence", "store/time"},
    "host/commands/describing": {*COMMANDS, *SHOWN, "store/recurrence"},
    "host/commands/availability": {*COMMANDS, *SHOWN, "host/commands/choosing", "host/commands/describing",
                                   "store/file", "store/icalendar", "store/invitations", "store/recurrence"},
    "host/commands/choosing": {*COMMANDS, *SHOWN},
    "host/commands/alarms": {*COMMANDS, *SHOWN, "host/commands/choosing", "host/commands/describing", "store/alarms",
                             "store/file"},
    "host/commands/changes": {*COMMANDS, *SHOWN, "host/commands/availability", "host/commands/choosing",
                              "host/commands/describing", "store/edits", "store/recurrence"},
    "host/commands/scripting": {*SHOWN, "host/calc", "host/commands/command_line", "host/console", "host/fmwrapper",
                                "host/plugin"},
    "host/commands/views": {*COMMANDS, *SHOWN, "host/commands/choosing", "host/commands/describing", "store/recurrence"},
    "host/commands/browsing": {*COMMANDS, *SHOWN, "host/commands/choosing", "host/commands/describing",
                               "host/commands/scripting", "host/commands/views"},
    "host/commands/reports": {*COMMANDS, *SHOWN, "host/commands/choosing", "host/commands/describing",
                              "host/commands/views"},
    "host/commands/invitations": {*COMMANDS, *SHOWN, "host/commands/choosing", "store/edits",
                                  "store/invitations"},
    "host/commands/transfer": {*COMMANDS, *SHOWN, "host/commands/choosing", "store/file", "store/icalendar"},
    "host/commands/watching": {*COMMANDS, *SHOWN, "host/commands/alarms", "host/commands/describing",
                               "host/commands/scripting", "host/fmwrapper", "host/plugin"},
    "host/commands/accounts": {*COMMANDS, *SHOWN, "accounts", "accounts/discovery", "accounts/sync",
                               "accounts/transport", "store/icalendar"},
    "host/commands/care": {*COMMANDS, *SHOWN, "accounts", "accounts/transport", "host/commands/changes",
                           "host/commands/choosing", "host/commands/describing", "host/commands/scripting", "store/edits",
                           "store/recurrence"},
    "host/commands/checking": {"base", "host/check", "host/commands/command_line", "host/commands/scripting"},
    "host/commands/installing": {"base", "host/calc", "host/commands/command_line", "host/commands/scripting"},
    "host/commands/settings": {*COMMANDS, *SHOWN},
    "host/commands/guide": {*COMMANDS, *SHOWN, "accounts"},
    "host/commands": {f"host/commands/{room}" for room in ("accounts", "alarms", "availability", "browsing", "care", "changes", "checking",
                                                           "command_line", "guide", "installing", "invitations", "reports",
                                                           "scripting", "settings", "transfer", "views", "watching")},
    "host": {"base", "host/calc", "host/commands", "host/commands/command_line", "host/console", "host/fmwrapper",
             "host/language", "host/plugin"},
}

# Layers that know the C++ standard library and our own headers, and nothing else of the outside.
STANDARD_ONLY = {"platform", "platform/host", "platform/legacy", "backend", "backend/eventkit", "backend/legacy", "bridge",
                 "functions", "notify"}

STANDARD = set("""
algorithm any array atomic bit bitset cassert cctype cerrno cfloat charconv chrono cinttypes climits clocale cmath compare
complex concepts condition_variable csignal cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar deque exception
execution filesystem format forward_list fstream functional future initializer_list iomanip ios iosfwd iostream istream
iterator limits list locale map memory memory_resource mutex new numbers numeric optional ostream queue random ranges ratio
regex scoped_allocator semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string
string_view system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant
vector version
""".split())

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def layer_of(path):
    folder = pathlib.PurePosixPath(path).parent
    while str(folder) != ".":
        if str(folder) in KNOWS:
            return str(folder)
        folder = folder.parent
    return None


def offences(source):
    for file in sorted(source.rglob("*")):
        if file.suffix not in {".h", ".cpp"}:
            continue
        name = file.relative_to(source).as_posix()
        layer = layer_of(name)
        if layer is None:
            if file.parent != source:
                yield f"{name}: stands in no known layer"
            continue
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            form, target = match.groups()
            if form == '"':
                if not (source / target).exists():
                    # Generated headers carry their layer's folder in their name.
                    if layer_of(target) != layer:
                        yield f"{name}:{number}: includes \"{target}\", which is not below src/"
                    continue
                other = layer_of(target)
                if other != layer and other not in KNOWS[layer]:
                    yield f"{name}:{number}: {layer} must not know {other} (includes \"{target}\")"
            elif layer in STANDARD_ONLY and target not in STANDARD:
                yield f"{name}:{number}: {layer} must not know <{target}>"


def circles(source):
    headers = {path.relative_to(source).as_posix(): path for path in sorted(source.rglob("*.h"))}
    includes = {}
    for name, path in headers.items():
        found = map(INCLUDE.match, path.read_text(encoding="utf-8").splitlines())
        includes[name] = [match.group(2) for match in found if match and match.group(2) in headers]
    done = set()

    def walk(name, way):
        if name in way:
            yield f"{name}: includes itself by way of {', '.join(way[way.index(name) + 1:]) or 'itself'}"
        elif name not in done:
            for target in includes[name]:
                yield from walk(target, [*way, name])
            done.add(name)

    for name in headers:
        yield from walk(name, [])


def main():
    source = pathlib.Path(sys.argv[1])
    found = [*offences(source), *circles(source)]
    for line in found:
        print(line)
    print(f"layers: {len(found)} offences")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
