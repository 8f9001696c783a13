"""Changes that change nothing that anybody could notice: the table equivalent.txt, four lines a row."""
import dataclasses
import pathlib

TABLE = pathlib.Path(__file__).parent / "equivalent.txt"
LABELS = ("before: ", "after: ", "because: ")


@dataclasses.dataclass(frozen=True)
class Verdict:
    file: str
    repetition: int  # which of the file's places with this change; 0 is every one
    before: str
    after: str
    reason: str

    def is_about(self, change):
        return ((self.file, self.before, self.after) == (change.file, change.before, change.after) and
                self.repetition in (0, change.repetition))


def verdicts_of(text):
    """The rows: a file (and "#2" for the second place alone), and indented below the line before, after, and the reason."""
    rows = []
    for block in text.split("\n\n"):
        lines = [line for line in block.splitlines() if line.strip() and not line.startswith("#")]
        if not lines:
            continue
        values = []
        for label, line in zip(LABELS, lines[1:]):
            if not line.startswith("  " + label):
                raise ValueError(f"{lines[0]}: expected \"{label}\", found \"{line.strip()}\"")
            values.append(line.removeprefix("  " + label).strip())
        if len(lines) != 4 or not values[2]:
            raise ValueError(f"{lines[0]}: a row is a file, before, after, because")
        file, _, repetition = lines[0].partition(" #")
        rows.append(Verdict(file, int(repetition or 0), *values))
    return rows


def judged_changes():
    """What the table has."""
    return verdicts_of(TABLE.read_text(encoding="utf-8"))
