"""Changes that change nothing that anybody could notice: the table equivalent.txt, four lines a row."""
import dataclasses
import pathlib

TABLE = pathlib.Path(__file__).parent / "equivalent.txt"
LABELS = ("before: ", "after: ", "because: ")


@dataclasses.dataclass(frozen=True)
class Verdict:
    file: str
    before: str
    after: str
    reason: str


def verdicts_of(text):
    """The rows: a file's name, and indented below it the line before, the line after, and the reason."""
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
        rows.append(Verdict(lines[0].strip(), *values))
    return rows


def equivalent_changes():
    """What the table has, as (file, before, after)."""
    return {(row.file, row.before, row.after) for row in verdicts_of(TABLE.read_text(encoding="utf-8"))}
