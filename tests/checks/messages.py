#!/usr/bin/env python3
"""Holds the messages of the program against its code and the catalogues against the messages.

It fails when the template is not what the code has, when a message of a catalogue is untranslated, fuzzy or has other
placeholders than the English one, and when a literal that reads like prose is marked for nobody. That last part covers
the folders in COVERED; a single word that nobody marked it cannot see.

usage: messages.py SOURCE_FOLDER TEMPLATE_MADE_ANEW
"""
import pathlib
import re
import sys

from message_literals import literals, reads_like_prose

# Where all that reads like prose is a message.
COVERED = ["src/base", "src/store", "src/accounts", "src/host/plugin", "src/host/calc", "src/host/console",
           "src/host/commands"]

# In these it is none: what shells and man read, style sheets, words that people type, transcripts and what they print.
ELSEWHERE = {"src/host/commands/guide", "src/host/commands/reports/report_page.cpp",
             "src/host/commands/reports/report_style.h", "src/host/commands/scripting/transcript.cpp",
             "src/host/commands/scripting/transcript_run.cpp", "src/host/commands/scripting/test_command.cpp",
             "src/host/commands/words/terms.cpp"}

# What is read by programs or kept, by the function that gets it or by how it looks.
NOT_SHOWN = {"static_assert", "rfind", "find", "starts_with", "beginCommand", "addText"}
SQL = re.compile(r"\b(SELECT|INSERT|UPDATE|DELETE FROM|CREATE|WHERE|PRAGMA|ORDER BY|FROM|RELEASE|ROLLBACK|ATTACH)\b|^i\.|^, i\.")
EXAMPLES = re.compile(r"(  orlocal\b.*\n?|  echo .*\n?)+")
LEFT_OUT = pathlib.Path(__file__).with_name("unmarked_literals.txt")


def unmarked(root):
    known = {line for line in LEFT_OUT.read_text(encoding="utf-8").splitlines() if line and not line.startswith("#")}
    seen = set()
    for folder in COVERED:
        for file in sorted((root / folder).rglob("*")):
            name = file.relative_to(root).as_posix()
            if file.suffix not in {".h", ".cpp"} or any(name.startswith(each) for each in ELSEWHERE):
                continue
            for each in literals(file.read_text(encoding="utf-8")):
                text = each.text
                if each.marked or each.wide or each.call in NOT_SHOWN or not reads_like_prose(text):
                    continue
                if SQL.search(text) or EXAMPLES.fullmatch(text):
                    continue
                entry = f"{name}: {text.strip()}"
                seen.add(entry)
                if entry not in known:
                    yield f"{name}:{each.line}: \"{text}\" is marked for no translator"
    for entry in sorted(known - seen):
        yield f"{LEFT_OUT.name}: there is no literal \"{entry}\" any more"


QUOTED = re.compile(r'"((?:[^"\\]|\\.)*)"')
PLACEHOLDER = re.compile(r"\{\{|\}\}|\{[^{}]*\}")


def entries(catalogue):
    """(is fuzzy, {keyword: text}) for each message but the header."""
    for block in catalogue.read_text(encoding="utf-8").split("\n\n"):
        texts = {}
        keyword = None
        for line in block.splitlines():
            if line.startswith("#"):
                continue
            match = re.match(r"(msg\w+(?:\[\d\])?) ", line)
            keyword = match.group(1) if match else keyword
            texts[keyword] = texts.get(keyword, "") + "".join(QUOTED.findall(line))
        if texts.get("msgid"):
            yield any(re.match(r"#,.*\bfuzzy\b", line) for line in block.splitlines()), texts


def placeholders(text):
    return sorted(PLACEHOLDER.findall(text))


def faults(catalogue):
    for fuzzy, texts in entries(catalogue):
        english = texts["msgid"]
        if fuzzy:
            yield f"{catalogue.name}: \"{english}\" is fuzzy"
        for keyword, text in texts.items():
            if not keyword.startswith("msgstr"):
                continue
            if not text:
                yield f"{catalogue.name}: \"{english}\" is not translated"
            # A plural may leave the number out in one of its forms.
            wanted = [placeholders(texts[key]) for key in ("msgid", "msgid_plural") if key in texts]
            if text and placeholders(text) not in wanted:
                yield f"{catalogue.name}: \"{text}\" has other placeholders than \"{english}\""


def main():
    root, made = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    found = list(unmarked(root))
    if (root / "po/orlocal.pot").read_bytes() != made.read_bytes():
        found.append("po/orlocal.pot is not what the code has; ./run strings writes it anew")
    languages = [line for line in (root / "po/LINGUAS").read_text(encoding="utf-8").split("\n") if line[:1].isalpha()]
    template = {texts["msgid"] for _, texts in entries(root / "po/orlocal.pot")}
    for language in languages:
        catalogue = root / f"po/{language}.po"
        found += faults(catalogue)
        missing = template - {texts["msgid"] for _, texts in entries(catalogue)}
        found += [f"{catalogue.name}: \"{english}\" is missing; ./run strings brings it in" for english in sorted(missing)]
    for line in found:
        print(line)
    print(f"messages: {len(found)} faults")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
