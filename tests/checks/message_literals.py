"""The string literals of C++ sources, each with the call that it is an argument of."""
import re
from typing import NamedTuple

# Marks by which xgettext finds messages too (po/messages.sh): function -> places of its arguments that are messages.
MARKS = {"tr": {0}, "trn": {0, 1}, "translatable": {0}, "translated": {0}, "add": {1}, "addUnder": {2}, "addGroup": {1},
         "add_option": {2}, "add_flag": {2}, "startGroup": {0}, "set_help_flag": {1},
         "set_version_flag": {2}}

TOKEN = re.compile(r"""
    //[^\n]* | /\*.*?\*/                                        # comments
  | ^[ \t]*\#[^\n]*(?:\\\n[^\n]*)*                              # the preprocessor's
  | (?P<raw>(?:u8|u|U|L)?R"(?P<mark>[^(\s]*)\((?P<rawtext>.*?)\)(?P=mark)")
  | (?P<prefix>u8|u|U|L)?"(?P<text>(?:[^"\\\n]|\\.)*)"
  | '(?:[^'\\\n]|\\.)+'
  | (?P<name>[A-Za-z_]\w*)
  | (?P<number>\d[\w'.]*)
  | (?P<mark1>[(){}\[\],;])
  | (?P<other>[^\s\w])
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

ESCAPES = {"n": "\n", "t": "\t", '"': '"', "\\": "\\", "'": "'", "0": "\0", "r": "\r"}


class Literal(NamedTuple):
    line: int
    begin: int
    end: int
    text: str
    call: str  # the function whose argument it is; "" where it is none's
    place: int  # of that argument, from 0
    alone: bool  # the argument is this literal and nothing else
    wide: bool

    @property
    def marked(self):
        return self.place in MARKS.get(self.call, ())


def unescaped(text):
    return re.sub(r"\\(.)", lambda match: ESCAPES.get(match.group(1), match.group(1)), text, flags=re.DOTALL)


def literals(source):
    """Those that stand side by side are one."""
    tokens = [match for match in TOKEN.finditer(source) if match.lastgroup]
    kinds = [(match, next((g for g in ("raw", "text", "name", "number", "mark1", "other") if match.group(g) is not None),
                          None)) for match in tokens]
    kinds = [pair for pair in kinds if pair[1]]
    stack = []  # [call, place, place where the argument begins]
    i = 0
    while i < len(kinds):
        match, kind = kinds[i]
        if kind == "mark1":
            mark = match.group()
            if mark in "({[":
                named = mark == "(" and i > 0 and kinds[i - 1][1] == "name"
                stack.append([kinds[i - 1][0].group() if named else "", 0, i + 1])
            elif mark in ")}]" and stack:
                stack.pop()
            elif mark == "," and stack:
                stack[-1][1] += 1
                stack[-1][2] = i + 1
        elif kind in ("raw", "text"):
            first = i
            text = ""
            while i < len(kinds) and kinds[i][1] in ("raw", "text"):
                part = kinds[i][0]
                text += part.group("rawtext") if kinds[i][1] == "raw" else unescaped(part.group("text"))
                i += 1
            call, place, begins = stack[-1] if stack else ("", 0, -1)
            follows = kinds[i][0].group() if i < len(kinds) else ""
            yield Literal(source.count("\n", 0, match.start()) + 1, match.start(), kinds[i - 1][0].end(), text, call, place,
                          begins == first and follows in (")", ","), bool(match.group("prefix")))
            continue
        i += 1


PLACEHOLDER = re.compile(r"\{[^{}]*\}")
PROSE = re.compile(r"[A-Za-z]{2,}[\"'`,;:.)]* [\"'`(]*[a-z]{1,}\b|^[,;.)]? ?[a-z]{2,}( [a-z]+)* $|^,? [a-z]{2,}[ ,;.]?")


def reads_like_prose(text):
    return bool(PROSE.search(PLACEHOLDER.sub("X", text)))
