#!/usr/bin/env python3
"""What a comparison counts as falling short, so that its exit status can be believed."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "bench"))

from comparing import report  # pylint: disable=wrong-import-position

QUICK = report.Item("quick", "work", "a peer", 0.5, 0.4)
UNBOUND = report.Item("unbound", "other work", "a peer")


def shortfalls(items=(), results=None, missing=None, at_rest=None, growth=None):
    return [why for _, why in report.shortfalls(items, results or {}, missing or {}, at_rest, growth)]


class Shortfalls(unittest.TestCase):
    def test_a_ratio_up_to_the_target_is_none(self):
        self.assertEqual(shortfalls([QUICK], {"quick": [(0.5, 1.0)]}), [])
        self.assertEqual(shortfalls([QUICK], {"quick": [(0.51, 1.0)]}), ["NOT met"])

    def test_the_median_counts(self):
        self.assertEqual(shortfalls([QUICK], {"quick": [(0.1, 1.0), (9.0, 1.0), (0.3, 1.0)]}), [])
        self.assertEqual(shortfalls([QUICK], {"quick": [(0.1, 1.0), (9.0, 1.0), (0.6, 1.0)]}), ["NOT met"])

    def test_what_has_no_target_cannot_miss_it_but_has_to_be_measured(self):
        self.assertEqual(shortfalls([UNBOUND], {"unbound": [(9.0, 1.0)]}), [])
        self.assertEqual(shortfalls([UNBOUND], missing={"unbound": "not installed"}), ["MISSING: not installed"])

    def test_the_window_counts(self):
        rows = [["wake-ups", "0", "0", "", report.verdict(0, 0, 0)], ["memory", "70 MiB", "64 MiB", "48 MiB",
                                                                       report.verdict(70, 64, 48)]]
        self.assertEqual(shortfalls(at_rest=rows), ["NOT met"])

    def test_growth_counts_at_its_end(self):
        self.assertEqual(shortfalls(growth={"rows": {1: 1.0, 10: 40.0, 100: 400.0}}), [])
        self.assertEqual(shortfalls(growth={"rows": {1: 1.0, 10: 10.0, 100: 1000.0}}), ["FASTER than its input"])

    def test_pixels_may_grow_as_memory_does_and_nothing_else_may(self):
        memory = {report.FILLED: {100: 1.0, 1000: 25.0}}
        self.assertEqual(shortfalls(growth=memory), [])
        self.assertEqual(shortfalls(growth={"pixels tinted": {100: 1.0, 1000: 30.0}, **memory}), [])
        self.assertEqual(shortfalls(growth={"pixels tinted": {100: 1.0, 1000: 40.0}, **memory}), ["FASTER than its input"])
        self.assertEqual(shortfalls(growth={"rows": {100: 1.0, 1000: 30.0}, **memory}), ["FASTER than its input"])

    def test_themes_may_grow_as_reading_their_files_does(self):
        system = {report.READ: {100: 1.0, 1000: 18.0}}
        self.assertEqual(shortfalls(growth=system), [])
        self.assertEqual(shortfalls(growth={"themes listed": {100: 1.0, 1000: 20.0}, **system}), [])
        self.assertEqual(shortfalls(growth={"themes listed": {100: 1.0, 1000: 24.0}, **system}), ["FASTER than its input"])
        self.assertEqual(shortfalls(growth={"themes listed": {100: 1.0, 1000: 20.0}}), ["FASTER than its input"])
        self.assertEqual(shortfalls(growth={"pixels tinted": {100: 1.0, 1000: 20.0}, **system}), ["FASTER than its input"])

    def test_the_table_says_the_same(self):
        text = report.text([QUICK, UNBOUND], {"quick": [(0.6, 1.0)]}, {}, {"unbound": "not installed"}, None, None)
        self.assertIn("NOT met", text)
        self.assertIn("MISSING: not installed", text)


if __name__ == "__main__":
    unittest.main()
