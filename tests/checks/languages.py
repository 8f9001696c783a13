#!/usr/bin/env python3
"""Holds the strings of every language against the functions that the built plug-in registers.

usage: languages.py PROGRAM RESOURCES
"""
import json
import os
import pathlib
import re
import subprocess
import sys


def registered(program, language):
    """What a host of this language is shown of each function."""
    environment = {**os.environ, "LC_ALL": "C.UTF-8", "LANGUAGE": language}
    done = subprocess.run([program, "functions", "--json"], env=environment, capture_output=True, text=True, check=True)
    return json.loads(done.stdout)


def arguments(prototype):
    """The names of the arguments that there must be, and of those that there may be."""
    within = prototype.partition("(")[2].rpartition(")")[0]
    names = lambda text: [name.strip() for name in text.split(";") if name.strip()]
    return names(re.sub(r"\{.*\}", "", within)), names("".join(re.findall(r"\{(.*)\}", within)))


def keys(file):
    return set(re.findall(r'^"([^"]+)" = ".+";$', file.read_text(encoding="utf-8"), re.MULTILINE))


def offences(program, folder):
    languages = sorted(file.name.removesuffix(".lproj") for file in folder.glob("*.lproj"))
    if "en" not in languages or len(languages) < 2:
        yield f"{folder} has not the languages that it should"
    english = {function["id"]: function for function in registered(program, "en")}
    wanted = {"Orlo 1", "Orlo 128", "Orlo 129", "Orlo 132"}
    wanted |= {f"Orlo {number}" for id in english for number in (id, id + 200)}
    for language in languages:
        found = keys(folder / f"{language}.lproj" / "Orlo.strings")
        for key in sorted(found ^ wanted):
            yield f"{language}: \"{key}\" is {'not used' if key in found else 'missing'}"
        for function in registered(program, language):
            where, same = f"{language}: {function['id']}", english[function["id"]]
            must, may = arguments(function["prototype"])
            if not function["prototype"].startswith(same["name"]):
                yield f"{where} is not named {same['name']}"
            if (len(must), len(must + may)) != (function["minimumArguments"], function["maximumArguments"]):
                yield f"{where} takes {function['minimumArguments']} to {function['maximumArguments']} arguments"
            if len(set(must + may)) != len(must + may):
                yield f"{where} names two arguments alike"
            if not function["typeAhead"].startswith("orlocal ") or not function["description"]:
                yield f"{where} is not described"
            if language != "en" and function["description"] == same["description"]:
                yield f"{where} is described in English"
            # Words that functions take are the same in all languages.
            literal = lambda text: sorted(re.findall(r'"(\w+)"', text))
            if literal(function["description"]) != literal(same["description"]):
                yield f"{where} does not name the words of the English description"


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    found = list(offences(program, folder))
    for offence in found:
        print(offence)
    print(f"languages: {len(found)} offences")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
