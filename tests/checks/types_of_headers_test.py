#!/usr/bin/env python3
"""types_of_headers.py must find what it is there for, and nothing else."""
import unittest

from types_of_headers import types


class Types(unittest.TestCase):
    def names(self, text):
        return [name for name, _ in types(text)]

    def test_that_others_can_name(self):
        text = "namespace a::b {\nstruct One {\n};\nenum class Two : int { kOne };\nclass API Three final : public One {\n};\n}  // namespace a::b\n"
        self.assertEqual(self.names(text), ["a::b::One", "a::b::Two", "a::b::Three"])

    def test_of_an_unnamed_namespace_and_within_others(self):
        text = "namespace a {\nnamespace {\nstruct One {\n};\n}  // namespace\nstruct Two {\n  struct Three {\n  };\n};\n}  // namespace a\n"
        self.assertEqual(self.names(text), ["a::Two"])

    def test_that_are_named_defined_elsewhere_or_specialised(self):
        text = "namespace a {\nclass One;\nstruct Two::Data {\n};\ntemplate <>\nstruct Three<int> {\n};\n}  // namespace a\n"
        self.assertEqual(self.names(text), [])


if __name__ == "__main__":
    unittest.main()
