#!/usr/bin/env python3
"""Finds types that two files define under one name: the linker takes either of them for both, and says nothing.

Types of unnamed namespaces are a file's own, and so are those within other types.

usage: types_of_headers.py SOURCE_FOLDER
"""
import collections
import pathlib
import re
import sys

NAMESPACE = re.compile(r"^namespace ([\w:]*) ?\{")
NAMESPACE_END = re.compile(r"^\}  // namespace")
# With an attribute or a macro before the name; neither a specialisation nor a member that is defined outside.
TYPE = re.compile(r"^(?:struct|class|enum class|union) (?:[A-Z_]+ )?(\w+)(?: final)?(?: : [^;]*)? ?\{")


def types(text):
    """(name with its namespaces, line) of each type that others can name."""
    spaces = []
    for number, line in enumerate(text.split("\n"), 1):
        opened = NAMESPACE.match(line)
        if opened:
            spaces.append(opened.group(1))
        elif NAMESPACE_END.match(line):
            if spaces:
                spaces.pop()
        else:
            found = TYPE.match(line)
            if found and "" not in spaces:
                yield "::".join([*spaces, found.group(1)]), number


def main():
    root = pathlib.Path(sys.argv[1])
    places = collections.defaultdict(list)
    for file in sorted(root.rglob("*")):
        if file.suffix in {".h", ".cpp"}:
            for name, line in types(file.read_text(encoding="utf-8")):
                places[name].append(f"{file.relative_to(root)}:{line}")
    twice = {name: where for name, where in places.items() if len(where) > 1}
    for name, where in sorted(twice.items()):
        print(f"{name} is defined in {' and '.join(where)}")
    print(f"types: {len(places)} names, {len(twice)} of them twice")
    return 1 if twice or not places else 0


if __name__ == "__main__":
    sys.exit(main())
