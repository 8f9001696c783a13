"""What actors may say on their error streams and answer in place of a result, each with the reason; all else is a finding."""
import dataclasses
import re


@dataclasses.dataclass(frozen=True)
class Row:
    pattern: str
    reason: str
    # What must have happened in this run before: "restore", "kill", "stop", "jump"; nothing for what may always be said.
    after: str = ""


ROWS = [
    Row(r"^orlocal: watching ", "what a watcher says when it begins"),
    Row(r"^orlocal: keeping the accounts ", "what sync --follow says when it begins"),
    Row(r"^orlocal: the log of changes does not reach back so far", "a restore begins another log", "restore"),
    Row(r"did not become free in time", "who holds the turn to write was stopped for longer than others wait", "stop"),
    Row(r"not everything could be read, so nothing was removed", "an import that had no turn to write removes nothing", "stop"),
    Row(r"Another sync of .* is running", "sync --follow has the account in hand"),
    Row(r"the file does not say that it is subscribed", "an export says what calendar files have no words for"),
    Row(r"has nothing to write and was left out", "a list without reminders"),
    Row(r"(refused|reset|closed|answer|timed out|connect)", "the server is stopped at times", "stop"),
    Row(r"The calendar store was replaced while it was synced", "a sync that a restore came into writes nothing more", "restore"),
    Row(r"^(orlocal: )?There is nothing to undo", "a restore takes the journal along", "restore"),
    Row(r"cannot be undone|has changed since|nothing to undo|no such command|There is no command",
        "a restore takes the journal along", "restore"),
    Row(r"[Nn]othing .*(found|matches)|is no event|There is no (event|reminder|calendar)", "a restore took it away", "restore"),
]

# Codes of the functions.
CODES = [
    Row("^(9001|9059|9034|9035|9036|9013|9058)$", "what was known by its identifier went with a restore", "restore"),
    Row("^90(17|18|19)$", "what was open, or its calendar, went with a restore", "restore"),
    Row("^9002$", "fewer occurrences than before a restore", "restore"),
    Row("^90(17|18|19|22|78|79)$", "who holds the turn to write was stopped for longer than others wait", "stop"),
]


def reason_for(text, happened, rows):
    """Why a text is right; none when it is not. `happened` are the troubles that there were."""
    return next((row.reason for row in rows if re.search(row.pattern, text) and (not row.after or row.after in happened)),
                None)
