#!/usr/bin/env python3
"""Each thing that must hold, shown something of which it does not."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))
import calendar_files  # noqa: E402
import expected  # noqa: E402
import judges  # noqa: E402
from ledger import DONE, DOUBTED, REFUSED, Ledger, Span  # noqa: E402
from measures import of_process  # noqa: E402


class Book:
    """A ledger whose clock the test moves."""

    def __init__(self):
        self.now = 0.0
        self.ledger = Ledger(clock=lambda: self.now)

    def op(self, begin, end, key, state, outcome=DONE, within=()):
        self.now = begin
        ops = self.ledger.begin({key: state}, within)
        self.now = end
        self.ledger.end(ops, outcome)

    def restore(self, begin, end, backup, outcome=DONE):
        self.now = begin
        restore = self.ledger.begin_restore(Span(*backup))
        self.now = end
        self.ledger.end_restore(restore, outcome)

    def possible(self, begin, end=None, key="a"):
        return self.ledger.possible(key, begin, end or begin)


class Possible(unittest.TestCase):
    def setUp(self):
        self.book = Book()

    def test_is_what_was_confirmed_last(self):
        self.assertEqual(self.book.possible(5), {None})
        self.book.op(1, 2, "a", "v1")
        self.book.op(3, 4, "a", "v2")
        self.assertEqual(self.book.possible(5), {"v2"})
        self.book.op(6, 7, "a", None)
        self.assertEqual(self.book.possible(8), {None})
        self.assertEqual(self.book.possible(5), {"v2"})

    def test_is_both_while_a_change_goes_on(self):
        self.book.op(1, 2, "a", "v1")
        self.book.op(4, 6, "a", "v2")
        self.assertEqual(self.book.possible(5), {"v1", "v2"})
        self.assertEqual(self.book.possible(3, 4.5), {"v1", "v2"})
        self.assertEqual(self.book.possible(3, 3.5), {"v1"})

    def test_is_both_after_a_kill_and_the_former_after_a_refusal(self):
        self.book.op(1, 2, "a", "v1")
        self.book.op(3, 4, "a", "v2", REFUSED)
        self.assertEqual(self.book.possible(5), {"v1"})
        self.book.op(6, 7, "a", "v3", DOUBTED)
        self.assertEqual(self.book.possible(8), {"v1", "v3"})
        self.book.op(9, 10, "a", "v4")
        self.assertEqual(self.book.possible(11), {"v4"})

    def test_goes_back_with_a_restore(self):
        self.book.op(1, 2, "a", "v1")
        self.book.op(5, 6, "a", "v2")
        self.book.restore(7, 8, (3, 4))
        self.assertEqual(self.book.possible(9), {"v1"})
        self.assertEqual(self.book.possible(7.5), {"v1", "v2"})
        self.book.op(10, 11, "a", "v3")
        self.assertEqual(self.book.possible(12), {"v3"})

    def test_is_either_when_a_change_overlaps_the_backup_or_the_restore(self):
        self.book.op(1, 2, "a", "v1")
        self.book.op(3.5, 4.5, "a", "v2")
        self.book.restore(7, 8, (3, 4))
        self.assertEqual(self.book.possible(9), {"v1", "v2"})
        self.book.now = 9
        self.book.ledger.restores.clear()
        self.book.op(7.5, 9, "a", "v3")
        self.book.restore(7, 8, (3, 3.2))
        self.assertEqual(self.book.possible(10), {"v1", "v3"})

    def test_is_told_of_many_restores(self):
        """Without an end if each asked for all before it anew."""
        for number in range(60):
            self.book.op(10 * number, 10 * number + 1, "a", f"v{number}")
            self.book.restore(10 * number + 7, 10 * number + 8, (10 * number + 3, 10 * number + 4))
        self.assertEqual(self.book.possible(1000), {"v59"})

    def test_is_either_when_a_restore_was_killed_and_the_former_when_it_was_refused(self):
        self.book.op(1, 2, "a", "v1")
        self.book.op(5, 6, "a", "v2")
        self.book.restore(7, 8, (3, 4), DOUBTED)
        self.assertEqual(self.book.possible(9), {"v1", "v2"})
        self.book.ledger.restores.clear()
        self.book.restore(7, 8, (3, 4), REFUSED)
        self.assertEqual(self.book.possible(9), {"v2"})


def component(title="a", version="v1", uid=None, occurrence=None, rule=None, **fields):
    fields = {"SUMMARY": title, "LOCATION": version, **fields}
    return calendar_files.Component("VEVENT", uid or title, title, version, occurrence, rule, tuple(fields.items()))


class Judges(unittest.TestCase):
    def setUp(self):
        self.book = Book()

    def complain(self, found, *words):
        self.assertEqual(len(found), 1, found)
        for word in words:
            self.assertIn(word, found[0])

    def confirmed(self, *there):
        return judges.confirmed_is_there(self.book.ledger, {"Work": list(there)}, 100, 101)

    def test_miss_what_was_confirmed(self):
        self.book.op(1, 2, "a", "v1")
        self.assertEqual(self.confirmed(component()), [])
        self.complain(self.confirmed(), "a", "v1", "gone")
        self.complain(self.confirmed(component(version="v0")), "v1", "v0")

    def test_find_what_was_removed(self):
        self.book.op(1, 2, "a", "v1")
        self.book.op(3, 4, "a", None)
        self.assertEqual(self.confirmed(), [])
        self.complain(self.confirmed(component()), "gone")

    def test_miss_what_may_have_any_version(self):
        self.book.op(1, 2, "a", judges.ANY)
        self.assertEqual(self.confirmed(component(version="v7")), [])
        self.complain(self.confirmed(), "a")

    def test_leave_to_the_server_what_a_restore_took_back_of_synced_items_alone(self):
        self.book.op(1, 2, "a", "v1")
        self.book.restore(7, 8, (3, 4))
        self.complain(self.confirmed(), "a")
        self.book.ledger.synced.add("a")
        self.assertEqual(self.confirmed(), [])
        self.book.ledger.synced.add("b")
        self.book.op(9, 10, "b", "v1")
        self.complain(self.confirmed(), "b")

    def once(self, *there):
        return judges.once_each({"Work": list(there)})

    def test_find_an_item_that_is_there_twice(self):
        self.assertEqual(self.once(component(), component("b")), [])
        self.complain(self.once(component(), component()), "2 times")

    def test_find_series_that_do_not_hang_together(self):
        series = component(rule="FREQ=DAILY", uid="s")
        changed = component("b", uid="s", occurrence="20261201T100000")
        self.assertEqual(self.once(series, changed), [])
        self.complain(self.once(changed), "of nothing")
        self.complain(self.once(component(uid="s"), changed), "does not repeat")
        self.complain(self.once(series, changed, changed), "2 times")
        self.complain(self.once(component(DTSTART="20261201T100000", DTEND="20261201T090000")), "before its start")

    def test_find_half_of_a_file(self):
        groups = {"one": ["a", "b"]}
        self.assertEqual(judges.whole_or_not(groups, {"Work": [component("a"), component("b")]}), [])
        self.complain(judges.whole_or_not(groups, {"Work": [component("a"), component("b", "v2")]}), "v1", "v2")
        self.complain(judges.whole_or_not(groups, {"Work": [component("a")]}), "gone", "v1")
        self.assertEqual(judges.whole_or_not(groups, {"Work": []}), [])

    def test_find_what_differs_between_places(self):
        def same(*other):
            return judges.same_everywhere({"here": [component()], "there": list(other)})
        self.assertEqual(same(component()), [])
        self.complain(same(), "in here and not in there")
        self.complain(same(component(), component("b")), "in there and not in here")
        self.complain(same(component(version="v2")), "differs", "v1", "v2")

    def told(self, *lines):
        return judges.told_once(self.book.ledger, list(lines))

    def test_miss_a_change_that_was_not_told(self):
        self.book.op(1, 2, "a", "v1")
        self.book.op(3, 4, "a", "v2")
        first, second = (2.5, 10, "new", "ID", "a"), (4.5, 11, "updated", "ID", "a")
        self.assertEqual(self.told(first, second), [])
        self.complain(self.told(first), "2 times or more, and told of 1")
        # What is told again after a start from an earlier position is the same.
        self.complain(self.told(first, first), "2 times or more, and told of 1")

    def test_find_a_change_that_nobody_made(self):
        self.book.op(1, 2, "a", "v1")
        self.complain(self.told((2.5, 10, "new", "ID", "a"), (4.5, 11, "updated", "ID", "a")), "told of 2 times")

    def test_miss_an_end_that_was_told_as_something_else(self):
        self.book.op(1, 2, "a", "v1")
        self.book.op(3, 4, "a", None)
        self.complain(self.told((2.5, 10, "new", "ID", "a"), (4.5, 11, "updated", "ID", "a")), "removed was not told")
        self.assertEqual(self.told((2.5, 10, "new", "ID", None), (4.5, 11, "deleted", "ID", "a")), [])

    def test_owe_nothing_that_a_restore_took_along_before_it_was_told(self):
        self.book.op(1, 2, "a", "v1")
        self.book.op(3, 4, "b", "v1")
        self.book.op(5, 6, "c", "v1")
        self.book.restore(7, 8, (0, 0.5))
        # That of b was told of before: so a is owed, and c is not.
        self.complain(self.told((6.5, 11, "new", "B", "b")), "\"a\"")
        self.book.op(9, 10, "d", "v1")
        self.assertEqual(len(self.told((6.5, 11, "new", "B", "b"))), 2)

    def test_find_an_alarm_that_rang_twice_or_never(self):
        rung = [("a", "09:00", 1.0)]
        self.assertEqual(judges.rang_once(["a"], rung, []), [])
        self.complain(judges.rang_once(["a", "b"], rung, []), "\"b\" never rang")
        self.complain(judges.rang_once(["a"], rung * 2, []), "2 times")
        self.book.restore(2, 3, (0, 0.5))
        self.assertEqual(judges.rang_once(["a"], rung * 2, self.book.ledger.restores), [])

    def test_find_what_grows(self):
        flat = [(10 * judges.MEBIBYTE, 10)] * 100
        self.assertEqual(judges.is_flat("host", flat), [])
        leak = [(10 * judges.MEBIBYTE + number * judges.MEBIBYTE // 8, 10) for number in range(100)]
        self.complain(judges.is_flat("host", leak), "host", "memory grew")
        self.complain(judges.is_flat("host", [(0, number) for number in range(100)]), "descriptors grew")
        # What it takes to begin with is not judged.
        self.assertEqual(judges.is_flat("host", [(0, 0)] * 20 + flat), [])

    def test_find_a_log_that_grows_and_what_is_left_beside_the_store(self):
        self.assertEqual(judges.folder_is_bounded({"c.db": 10 ** 9, "c.db-wal": 10 ** 6}), [])
        self.complain(judges.folder_is_bounded({"c.db-wal": 10 ** 9}), "c.db-wal")
        good = dict.fromkeys(["c.db", "c.db-bell", "c.db-sync", "c.db.before-restore-1", ".orlocal-1.part", ".orlocal-1.part-journal"], 7)
        self.assertEqual(judges.folder_is_clean("c.db", good, 1, 1), [])
        self.assertEqual(judges.folder_is_clean("c.db", {**good, "c.db-wal": 0, "c.db-shm": 7}, 1, 1), [])
        self.complain(judges.folder_is_clean("c.db", {**good, "c.db-wal": 7}, 1, 1), "c.db-wal was left")
        self.complain(judges.folder_is_clean("c.db", {**good, "c.db-shm": 7}, 1, 1), "c.db-shm was left")
        self.complain(judges.folder_is_clean("c.db", {**good, "c.ics": 7}, 1, 1), "c.ics was left")
        self.complain(judges.folder_is_clean("c.db", good, 0, 1), "1 copies")
        self.complain(judges.folder_is_clean("c.db", good, 1, 0), "1 drafts")


class Texts(unittest.TestCase):
    def test_of_calendars_are_read_as_they_were_written(self):
        text = calendar_files.calendar([calendar_files.event("u", "a title that goes on", "v1", "20261201T100000Z",
                                                             "20261201T110000Z", "RRULE:FREQ=DAILY\r\nEXDATE:2\r\nEXDATE:1\r\n")])
        [read] = calendar_files.components(text.replace("that goes", "that\r\n  goes"))
        self.assertEqual((read.uid, read.title, read.version, read.rule), ("u", "a title that goes on", "v1", "FREQ=DAILY"))
        self.assertEqual(dict(read.fields)["EXDATE"], "1,2")
        self.assertEqual(read.begin_and_end, ("20261201T100000Z", "20261201T110000Z"))
        self.assertEqual(calendar_files.title_of("BEGIN:VCALENDAR\r\nX-WR-CALNAME:Work\r\n"), "Work")

    def test_of_alarms_within_an_event_are_not_its_own(self):
        alarm = "BEGIN:VALARM\r\nSUMMARY:another\r\nEND:VALARM\r\n"
        [read] = calendar_files.components(calendar_files.calendar([calendar_files.event("u", "a", "v1", "1", "2", alarm)]))
        self.assertEqual(read.title, "a")


class Expected(unittest.TestCase):
    def test_texts_are_few_and_have_reasons(self):
        for row in (*expected.ROWS, *expected.CODES):
            self.assertTrue(row.reason)
            self.assertIn(row.after, ("", "restore", "kill", "stop", "jump"))

    def test_texts_do_not_hide_what_is_broken(self):
        everything = {"restore", "kill", "stop", "jump"}
        for text in ("orlocal: The calendar store is damaged: page 7", "terminate called after throwing", "doctor: store: x"):
            self.assertIsNone(expected.reason_for(text, everything, expected.ROWS), text)
        for code in ("9003", "9999", "9998", "-4", ""):
            self.assertIsNone(expected.reason_for(code, everything, expected.CODES), code)

    def test_codes_count_after_their_trouble_alone(self):
        self.assertIsNone(expected.reason_for("9001", set(), expected.CODES))
        self.assertIsNotNone(expected.reason_for("9001", {"restore"}, expected.CODES))


class Measures(unittest.TestCase):
    def test_tell_memory_and_descriptors_of_a_process(self):
        memory, descriptors, resident = of_process(os.getpid())
        self.assertGreater(resident, memory)
        with open(os.devnull, "rb"):
            self.assertEqual(of_process(os.getpid())[1], descriptors + 1)

    def test_tell_nothing_of_a_process_that_is_gone(self):
        with subprocess.Popen(["true"]) as process:
            process.wait()
        self.assertIsNone(of_process(process.pid))


class Written(unittest.TestCase):
    def test_is_each_change_before_it_is_tried(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "ledger"
            ledger = Ledger(path)
            ops = ledger.begin({"a": "v1"})
            self.assertIn('"a": "v1"', path.read_text(encoding="utf-8"))
            ledger.end(ops, DONE)
            self.assertIn(DONE, path.read_text(encoding="utf-8"))
            ledger.file.close()


if __name__ == "__main__":
    unittest.main()
