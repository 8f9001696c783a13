#!/usr/bin/env python3
"""What a report of gcovr is summed up to."""
import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))
from coverage import counts_of, layer_of, not_run, share  # noqa: E402


def line(number, count, *branches, noncode=False):
    return {"line_number": number, "count": count, "branches": [{"count": taken} for taken in branches], "gcovr/noncode": noncode}


REPORT = {"files": [
    {"file": "src/store/edits/a.cpp", "lines": [line(1, 5, 3, 0), line(2, 0), line(3, 0, noncode=True)]},
    {"file": "src/store/b.cpp", "lines": [line(1, 1, 1, 1)]},
    {"file": "src/host/c.cpp", "lines": [line(1, 0)]},
]}


class Coverage(unittest.TestCase):
    def test_counts_lines_and_branches_of_a_layer(self):
        count = counts_of(REPORT)["src/store/edits"]
        self.assertEqual((count.run_lines, count.lines, count.taken_branches, count.branches), (1, 2, 1, 2))
        self.assertEqual(counts_of(REPORT)["src/store"].lines, 1)

    def test_gives_a_file_to_the_longest_folder_that_fits(self):
        self.assertEqual(layer_of("src/store/edits/a.cpp"), "src/store/edits")
        self.assertIsNone(layer_of("src/host/c.cpp"))

    def test_names_what_was_not_run(self):
        self.assertEqual(list(not_run(REPORT, ["src/store"])),
                         [("src/store/edits/a.cpp", 1, "1 of 2 ways"), ("src/store/edits/a.cpp", 2, "not run")])
        self.assertEqual(list(not_run(REPORT, ["src/host/c.cpp"])), [("src/host/c.cpp", 1, "not run")])

    def test_says_all_of_nothing_less(self):
        self.assertEqual(share(9999, 10000), "99.9 %")
        self.assertEqual(share(10, 10), "100.0 %")


if __name__ == "__main__":
    unittest.main()
