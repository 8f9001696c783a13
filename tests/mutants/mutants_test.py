#!/usr/bin/env python3
"""What is changed, what is left alone, and what a sample takes."""
import pathlib
import re
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))
from equivalent import TABLE, verdicts_of  # noqa: E402
from mutants import are_enough  # noqa: E402
from nearby import NEARBY, Programs, stages_for  # noqa: E402
from operators import OPERATORS  # noqa: E402
from places import all_changes, changes_in, sample_of  # noqa: E402
from workshop import SUITE, bring_up_to_date, status_of  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[2]


def changed(text, operator):
    """The texts that an operator makes of one."""
    return [change.of(text) for change in changes_in("src/a.cpp", text) if change.operator == operator]


def in_function(statement):
    return "int f(int a, int b) {\n  " + statement + "\n}\n"


# Operator, statement of a function, the statements that it becomes.
CASES = [
    ("comparison", "if (a < b) { g(); }", ["if (a <= b) { g(); }"]),
    ("comparison", "return a == b || a >= 2;", ["return a != b || a >= 2;", "return a == b || a > 2;"]),
    ("comparison", "std::vector<int> c = make<int>();", []),
    ("comparison", "template <class T> struct S;", []),
    ("connective", "return a && b || c;", ["return a || b || c;", "return a && b && c;"]),
    ("connective", "const auto&& c = g();", []),
    ("sum", "return a + b;", ["return a - b;"]),
    ("sum", "return -a;", []),
    ("sum", "const auto* c = &a;", []),
    ("sum", "a += b;", ["a -= b;"]),
    ("step", "++a;", ["--a;"]),
    ("truth", "return true;", ["return false;"]),
    ("dropped not", "return !a;", ["return a;"]),
    ("dropped not", "return a != b;", []),
    ("negated condition", "if (a) { g(); }", ["if (!(a)) { g(); }"]),
    ("negated condition", "if (auto c = g(); a || c) { g(); }", ["if (auto c = g(); !(a || c)) { g(); }"]),
    ("negated condition", "if (const auto* c = g()) { g(); }", ["if (const auto* c = g(); !c) { g(); }"]),
    ("negated condition", "if (!a) { g(); }", []),
    ("negated condition", "if (a == b) { g(); }", []),
    ("negated choice", "return g(a) ? b : 1;", ["return !(g(a)) ? b : 1;"]),
    ("negated choice", "a = b || g(c, a) ? 1 : 2;", ["a = !(b || g(c, a)) ? 1 : 2;"]),
    ("negated choice", "g(a, b ? 1 : 2);", ["g(a, !(b) ? 1 : 2);"]),
    ("dropped statement", "g(a);", [";"]),
    ("dropped statement", "a.b = c;", [";"]),
    ("dropped statement", "++a;", [";"]),
    ("dropped statement", "ORLOCAL_CHECK(g(a));", [";"]),
    ("dropped statement", "ORLOCAL_TRY(const auto c, g(a));", []),
    ("dropped statement", "int c = a;", []),
    ("dropped statement", "std::vector<int> c(a);", []),
    ("dropped statement", "Thing& c = a;", []),
    ("dropped statement", "return g(a);", []),
    ("dropped statement", "const auto h = [&] { g(a); };", ["const auto h = [&] { ; };"]),
    ("empty answer", "return g(a);", ["return {};"]),
    ("empty answer", "return std::nullopt;", []),
    ("empty answer", "return {a, b};", []),
    ("swapped arguments", "g(a, b);", ["g(b, a);"]),
    ("swapped arguments", "g(a.x(), 1, 2);", ["g(a.x(), 2, 1);"]),
    ("swapped arguments", "if (a, b) { }", []),
    ("swapped arguments", "g(a, a);", []),
    ("swapped arguments", "g(a, 1);", []),
    ("other number", "return 9;", ["return 10;"]),
    ("other number", "return 1.5;", []),
    ("other number", "std::array<int, 3> c;", []),
    ("other number", "int c[3];", []),
    ("other number", "g(\"9\", '9'); // 9", []),
    ("comparison", "static_assert(sizeof(a) == 4);", []),
    ("comparison", "const auto c = R\"(a == b)\"; /* a == b */", []),
    ("comparison", "struct S { bool g() { return a == b; } };", ["struct S { bool g() { return a != b; } };"]),
]


class Operators(unittest.TestCase):
    def test_make_of_a_statement_what_the_table_says(self):
        for operator, statement, expected in CASES:
            with self.subTest(operator=operator, statement=statement):
                self.assertEqual(changed(in_function(statement), operator), [in_function(text) for text in expected])

    def test_have_a_case_each_that_changes_something(self):
        tried = {operator for operator, _, expected in CASES if expected} | {"early return"}
        self.assertEqual(tried, set(OPERATORS))

    def test_return_early_with_what_the_function_gives(self):
        self.assertEqual(changed("int f() { g(); }", "early return"), ["int f() { return {}; g(); }"])
        self.assertEqual(changed("void f(int a) { g(); }", "early return"), ["void f(int a) { return; g(); }"])
        self.assertEqual(changed("void S::f() const { g(); }", "early return"), ["void S::f() const { return; g(); }"])
        self.assertEqual(changed("S::S(int a) : m_a(a) { g(); }", "early return"), [])
        self.assertEqual(changed("namespace n { struct S {}; }", "early return"), [])

    def test_change_numbers_of_tables_and_none_of_types(self):
        self.assertEqual(changed("constexpr Row kRows[] = {\n{7, \"a\"},\n};", "other number"),
                         ["constexpr Row kRows[] = {\n{8, \"a\"},\n};"])
        self.assertEqual(changed("constexpr int kCount = 7;", "other number"), ["constexpr int kCount = 8;"])
        self.assertEqual(changed("struct S {\n  int a[7];\n};", "other number"), [])

    def test_leave_lines_of_the_preprocessor_alone(self):
        self.assertEqual(list(changes_in("a.h", "#if A == 1 && \\\n    B == 2\n#endif\n")), [])


class Changes(unittest.TestCase):
    def test_say_where_they_are_and_what_the_line_becomes(self):
        change = next(change for change in changes_in("src/a.cpp", in_function("if (a <\n      b) { g(); }"))
                      if change.operator == "negated condition")
        self.assertEqual((change.file, change.line), ("src/a.cpp", 2))
        self.assertEqual(change.before, "if (a < b) { g(); }")
        self.assertEqual(change.after, "if (!(a < b)) { g(); }")

    def test_of_all_sources_change_the_text(self):
        for change in all_changes(ROOT, ["src/bridge"]):
            text = (ROOT / change.file).read_text(encoding="utf-8")
            self.assertNotEqual(change.of(text), text, change)


class Samples(unittest.TestCase):
    def setUp(self):
        self.changes = list(all_changes(ROOT, ["src/functions"]))

    def test_of_one_seed_are_the_same(self):
        self.assertEqual(sample_of(self.changes, 20, 3), sample_of(list(reversed(self.changes)), 20, 3))
        self.assertNotEqual(sample_of(self.changes, 20, 3), sample_of(self.changes, 20, 4))

    def test_of_none_are_all(self):
        self.assertEqual(len(sample_of(self.changes, 0, 1)), len(self.changes))

    def test_keep_what_they_had_when_lines_above_are_added(self):
        text = in_function("if (a < b && b < 7) { g(a, b); }")
        one, other = (sample_of(changes_in("a.cpp", words), 3, 1) for words in (text, "// A line.\n" + text))
        self.assertEqual([change.after for change in one], [change.after for change in other])


class NearbyTests(unittest.TestCase):
    def test_are_those_of_the_longest_folder_that_fits(self):
        self.assertEqual(stages_for("src/store/edits/a.cpp"), NEARBY["src/store/edits"])
        self.assertEqual(stages_for("src/store/a.cpp"), NEARBY["src/store"])
        self.assertEqual(stages_for("bench/a.cpp"), ())

    def test_exist(self):
        listed = "".join(path.read_text(encoding="utf-8") for path in (ROOT / "tests").rglob("CMakeLists.txt"))
        for folder, stages in NEARBY.items():
            self.assertTrue((ROOT / folder).is_dir(), folder)
            for name in [name for stage in stages if isinstance(stage, Programs) for name in stage.names]:
                program, _, cases = name.partition(":")
                self.assertTrue(re.search(rf"orlocal_test\(\s*{program}\s", listed), program)
                texts = [path.read_text(encoding="utf-8") for path in (ROOT / cases).glob("*.cpp")]
                self.assertTrue(not cases or any(map(SUITE.search, texts)), name)


class Copies(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root, self.copy = pathlib.Path(folder.name, "root"), pathlib.Path(folder.name, "copy")
        for name in ("src", "build", ".git"):
            (self.root / name).mkdir(parents=True)
            (self.root / name / "a").write_text("as it is", encoding="utf-8")

    def test_have_the_sources_as_they_are_and_nothing_that_was_built(self):
        bring_up_to_date(self.root, self.copy)
        (self.copy / "src" / "a").write_text("changed", encoding="utf-8")
        (self.copy / "src" / "gone").write_text("", encoding="utf-8")
        bring_up_to_date(self.root, self.copy)
        self.assertEqual([path.relative_to(self.copy).as_posix() for path in self.copy.rglob("*") if path.is_file()], ["src/a"])
        self.assertEqual((self.copy / "src" / "a").read_text(encoding="utf-8"), "as it is")

    def test_leave_the_time_of_what_is_the_same(self):
        bring_up_to_date(self.root, self.copy)
        before = (self.copy / "src" / "a").stat().st_mtime_ns
        bring_up_to_date(self.root, self.copy)
        self.assertEqual((self.copy / "src" / "a").stat().st_mtime_ns, before)


class Commands(unittest.TestCase):
    def status(self, words, patience):
        return status_of(["sh", "-c", words], "/", {"PATH": "/usr/bin:/bin"}, patience, "/dev/null")

    def test_give_their_status(self):
        self.assertEqual(self.status("exit 3", 60), 3)

    def test_that_do_not_end_are_ended(self):
        self.assertIsNone(self.status("sleep 600", 0.1))


class Verdicts(unittest.TestCase):
    def test_are_read_with_their_reasons(self):
        row, = verdicts_of("# Why.\n\nsrc/a.cpp\n  before: a < b\n  after: a <= b\n  because: they are never equal\n")
        self.assertEqual((row.file, row.repetition, row.before, row.after, row.reason),
                         ("src/a.cpp", 0, "a < b", "a <= b", "they are never equal"))

    def test_may_be_about_one_of_several_places_with_the_same_line(self):
        places = [change for change in changes_in("src/a.cpp", in_function("g(a);\n  g(a);"))
                  if change.operator == "dropped statement"]
        every, = verdicts_of("src/a.cpp\n  before: g(a);\n  after: ;\n  because: why\n")
        second, = verdicts_of("src/a.cpp #2\n  before: g(a);\n  after: ;\n  because: why\n")
        self.assertEqual([every.is_about(place) for place in places], [True, True])
        self.assertEqual([second.is_about(place) for place in places], [False, True])

    def test_without_a_reason_are_refused(self):
        with self.assertRaises(ValueError):
            verdicts_of("src/a.cpp\n  before: a\n  after: b\n")

    def test_of_the_table_are_about_changes_that_are_made(self):
        rows = verdicts_of(TABLE.read_text(encoding="utf-8"))
        made = list(all_changes(ROOT, sorted({row.file for row in rows})))
        for row in rows:
            self.assertTrue(any(row.is_about(change) for change in made), row)


class Verdict(unittest.TestCase):
    def test_one_that_nobody_noticed_is_too_many_unless_a_share_is_allowed(self):
        self.assertTrue(are_enough(10, 0, 100))
        self.assertFalse(are_enough(99, 1, 100))
        self.assertTrue(are_enough(9, 3, 75))
        self.assertFalse(are_enough(8, 3, 75))
        self.assertTrue(are_enough(0, 0, 100))


if __name__ == "__main__":
    unittest.main()
