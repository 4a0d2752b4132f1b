"""The counts that ./test ends with, from what the real ctest reports."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

REPORTER = Path(__file__).resolve().parents[2] / "scripts/test-results.py"


class TestResults(unittest.TestCase):
    def report(self, tests):
        """The lines of the report on the tests, which are written in ctest's own language."""
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "CTestTestfile.cmake").write_text(tests)
            subprocess.run(["ctest", "--test-dir", folder, "--output-junit", "results.xml"], capture_output=True)
            report = subprocess.run([sys.executable, REPORTER, f"{folder}/results.xml"], capture_output=True, text=True)
            self.assertEqual(report.stderr, "")
            return report.stdout.splitlines()

    def test_counts_what_passed(self):
        self.assertEqual(self.report("add_test(a true)\nadd_test(b true)"), ["2 0 0"])

    def test_shows_the_output_of_what_failed(self):
        lines = self.report('add_test(good true)\nadd_test(bad sh -c "echo 1 \'<\' 2 && exit 3")')
        self.assertRegex(lines[0], r"^failed after \d+\.\d s: bad$")
        self.assertEqual(lines[1:], ["    1 < 2", "1 1 0"])

    def test_says_why_a_test_was_skipped(self):
        lines = self.report('add_test(s sh -c "echo no display && exit 77")\n'
                            "set_tests_properties(s PROPERTIES SKIP_RETURN_CODE 77)")
        self.assertEqual(lines, ["skipped: s: no display", "0 0 1"])

    def test_names_no_more_than_three_tests_that_were_skipped_for_the_same_reason(self):
        names = ["a", "b", "c", "d", "e"]
        tests = "".join(f'add_test({name} sh -c "echo no display && exit 77")\n' for name in names)
        lines = self.report(tests + f"set_tests_properties({' '.join(names)} PROPERTIES SKIP_RETURN_CODE 77)")
        self.assertEqual(lines, ["skipped: a, b, c and 2 more: no display", "0 0 5"])

    def test_counts_a_disabled_test_as_skipped(self):
        self.assertEqual(self.report("add_test(d true)\nset_tests_properties(d PROPERTIES DISABLED ON)"),
                         ["skipped: d: disabled", "0 0 1"])

    def test_counts_a_test_whose_program_is_missing_as_failed(self):
        self.assertEqual(self.report("add_test(m /nowhere/program)")[-1], "0 1 0")

    def test_counts_a_test_that_took_too_long_as_failed(self):
        lines = self.report("add_test(t sleep 100)\nset_tests_properties(t PROPERTIES TIMEOUT 0.2)")
        self.assertEqual(lines[-1], "0 1 0")

    def test_counts_a_crash_as_failed(self):
        self.assertEqual(self.report('add_test(c sh -c "kill -SEGV \\$\\$")')[-1], "0 1 0")
