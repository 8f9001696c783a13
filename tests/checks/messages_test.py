#!/usr/bin/env python3
"""Shows the check of messages small trees, each with one fault, and sees it name that one."""
import pathlib
import sys
import tempfile

import messages
from message_literals import literals, reads_like_prose

HEADER = 'msgid ""\nmsgstr ""\n"Content-Type: text/plain; charset=UTF-8\\n"\n'

CATALOGUES = {
    'msgid "Gone {}"\nmsgstr "Weg {}"\n': "",
    'msgid "Gone {}"\nmsgstr "Weg"\n': "other placeholders",
    'msgid "Gone {}"\nmsgstr "Weg {} {}"\n': "other placeholders",
    'msgid "Gone {}"\nmsgstr ""\n': "not translated",
    '#, fuzzy\nmsgid "Gone {}"\nmsgstr "Weg {}"\n': "fuzzy",
    'msgid "one day"\nmsgid_plural "{} days"\nmsgstr[0] "ein Tag"\nmsgstr[1] "{} Tage"\n': "",
    'msgid "one day"\nmsgid_plural "{} days"\nmsgstr[0] "ein Tag"\nmsgstr[1] ""\n': "not translated",
}

SOURCES = {
    'out << tr("Nothing is there.");': [],
    'out << "Nothing is there.";': ["Nothing is there."],
    'out << tr("{} of it", some ? "some more" : "");': ["some more"],
    'return failure(code, tr("It is {}", x) + " and not there");': [" and not there"],
    'command.add_option("--x", words->x, "What it is")': [],
    'command.add_option("--x", words->x, made("What it is"))': ["What it is"],
    '// "This is a comment."\nsay("plain");': [],
    'out << tr("Nothing is "\n  "there.");': [],
    'trn("one day is", "{} days are", n, n)': [],
}


def main():
    wrong = 0
    with tempfile.TemporaryDirectory() as folder:
        for text, expected in CATALOGUES.items():
            file = pathlib.Path(folder) / "xx.po"
            file.write_text(HEADER + "\n" + text, encoding="utf-8")
            found = list(messages.faults(file))
            if (expected == "") != (found == []) or expected not in "".join(found):
                print(f"{text!r}: {found}, not {expected!r}")
                wrong += 1
    for source, expected in SOURCES.items():
        found = [each.text for each in literals(source) if not each.marked and reads_like_prose(each.text)]
        if found != expected:
            print(f"{source!r}: {found}, not {expected!r}")
            wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
