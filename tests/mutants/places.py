"""The places of sources that can be changed, and which of them a sample takes."""
import dataclasses
import hashlib
import pathlib

from operators import OPERATORS
from tokens import Source


@dataclasses.dataclass(frozen=True)
class Change:
    """One change of one file; `start` and `end` are what of its text is replaced."""

    file: str
    line: int
    operator: str
    start: int
    end: int
    replacement: str
    before: str  # the lines that it touches, in one
    after: str
    repetition: int  # of the same change of the same text of the same file

    def of(self, text):
        return text[:self.start] + self.replacement + text[self.end:]


def joined(text):
    return " ".join(text.split())


def inside_static_assert(source):
    """Stretches of text that the compiler alone looks at."""
    for index in range(len(source.tokens) - 1):
        if source.word(index) in ("static_assert", "requires") and source.word(index + 1) == "(":
            yield source.tokens[index].start, source.tokens[source.partner[index + 1]].end


def changes_in(file, text):
    """Every change of a source, from the top."""
    source = Source(text)
    untouched = list(inside_static_assert(source))
    seen = {}
    for index in range(len(source.tokens)):
        for name, operator in OPERATORS.items():
            for start, end, replacement in operator(source, index):
                if any(first <= start < last for first, last in untouched):
                    continue
                first = text.rfind("\n", 0, start) + 1
                last = text.find("\n", end)
                before = joined(text[first:last])
                after = joined(text[first:start] + replacement + text[end:last])
                key = (before, after, name)
                seen[key] = seen.get(key, 0) + 1
                yield Change(file, text.count("\n", 0, start) + 1, name, start, end, replacement, before, after,
                             seen[key])


def all_changes(root, folders):
    """Every change below folders of the project."""
    for folder in folders:
        top = pathlib.Path(root, folder)
        files = [top] if top.is_file() else sorted([*top.rglob("*.cpp"), *top.rglob("*.h")])
        for path in files:
            yield from changes_in(path.relative_to(root).as_posix(), path.read_text(encoding="utf-8"))


def sample_of(changes, count, seed):
    """`count` of them, or all for 0. Who is taken depends on the change and the seed, so other places may come and go."""
    def lot(change):
        words = f"{seed}\n{change.file}\n{change.operator}\n{change.before}\n{change.after}\n{change.repetition}"
        return hashlib.sha256(words.encode()).digest()
    changes = sorted(changes, key=lot)
    taken = changes[:count] if count else changes
    # By file, so that a file that was changed is compiled as it was only once.
    return sorted(taken, key=lambda change: (change.file, change.start, change.end, change.operator))
