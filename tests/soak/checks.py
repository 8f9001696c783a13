"""Gathers what the judges need: of a running store by a copy that the program makes, at the end of everything."""
import contextlib
import json
import shutil
import sqlite3

import calendar_files
import judges
import processes


class Checks:
    def __init__(self, stage, place, ledger, groups):
        self.stage, self.place, self.ledger, self.groups = stage, place, ledger, groups
        self.copy = place.folder / "checked.db"

    def step(self):
        """While all goes on."""
        self.stage.count("checks")
        begin = self.ledger.clock()
        status, _, _ = self.stage.run("check", self.place, "backup", "--replace", self.copy)
        end = self.ledger.clock()
        if status == 0:
            self.judge("check", begin, end, self.contents("check", self.place, self.copy))
            self.whole()
        self.doctor("check", self.place)
        sizes = {}
        for file in self.place.store.parent.iterdir():
            # Logs come and go.
            with contextlib.suppress(FileNotFoundError):
                sizes[file.name] = file.stat().st_size
        self.tell("check", "a bounded folder", judges.folder_is_bounded(sizes))

    def close(self):
        pass

    def judge(self, actor, begin, end, contents):
        self.tell(actor, "what was confirmed", judges.confirmed_is_there(self.ledger, contents, begin, end))
        self.tell(actor, "each item once", judges.once_each(contents))
        if not self.restoring(begin, end):
            self.tell(actor, "a file whole or not at all", judges.whole_or_not(self.groups, contents))

    def restoring(self, begin, end):
        return any(restore.begin < end and restore.end > begin for restore in self.ledger.restores)

    def tell(self, actor, wanted, found):
        for sentence in found:
            self.stage.finding(actor, wanted, sentence)

    def contents(self, actor, place, store):
        """Calendar title to its components, as exported."""
        folder = place.folder / "looked-at"
        shutil.rmtree(folder, ignore_errors=True)
        status, _, _ = self.stage.run(actor, place, "export", "-o", f"{folder}/", more={"ORLOCAL_STORE": str(store)})
        if status != 0:
            self.stage.finding(actor, "an export", f"status {status}")
            return {}
        texts = [file.read_text(encoding="utf-8") for file in sorted(folder.iterdir())]
        return {calendar_files.title_of(text): calendar_files.components(text) for text in texts}

    def whole(self):
        """What SQLite itself says, of the copy."""
        with contextlib.closing(sqlite3.connect(f"file:{self.copy}?mode=ro&immutable=1", uri=True)) as store:
            rows = [row[0] for row in store.execute("PRAGMA integrity_check")]
        if rows != ["ok"]:
            self.stage.finding("check", "a whole file", "; ".join(rows[:5]))

    def doctor(self, actor, place):
        status, out, err = self.stage.run(actor, place, "--json", "doctor", judged=False)
        if status not in (0, 1):
            self.stage.finding(actor, "an answer of doctor", f"status {status}: {err}")
            return
        for row in json.loads(out):
            if row["verdict"] == "problem":
                self.stage.judge(actor, f"doctor: {row['subject']}: {row['finding']}")

    # At the end

    def processes_are_flat(self):
        for (actor, pid), samples in self.stage.samples.items():
            self.tell(actor, "as much memory and as many descriptors as before", judges.is_flat(f"{actor} ({pid})", samples))

    def folder_is_clean(self, place, restores):
        files = {file.name: file.stat().st_size for file in place.store.parent.iterdir()}
        self.tell("end", "nothing left beside the store",
                  judges.folder_is_clean(place.store.name, files, restores, self.stage.killed_writers))

    def nobody_is_left(self, but):
        left = set(processes.descendants()) - but
        if left:
            names = []
            for pid in left:
                with contextlib.suppress(OSError), open(f"/proc/{pid}/cmdline", encoding="utf-8") as file:
                    names.append(file.read().replace("\0", " ").strip())
            if names:
                self.stage.finding("end", "no process left", names)
