"""The three questions to the process table, asked about real processes."""

import shutil
import signal
import subprocess
import unittest
from pathlib import Path

from machine import TOOL, end_with, run, start, status_of, wait_until


class ProcessDetection(unittest.TestCase):
    def run_process(self, name):
        """Lets a process of that name run until the test ends."""
        program = Path("/tmp/processes") / name
        program.parent.mkdir(exist_ok=True)
        shutil.copy("/bin/sleep", program)
        process = end_with(self, start(program, "1000"))
        wait_until(lambda: status_of(process.pid)["Name"] != "python3", "the program runs")
        return process

    def finds(self, name="QuillmarkCore"):
        status = run(TOOL, "process", "core-running", name).returncode
        self.assertIn(status, (0, 1))
        return status == 0

    def test_finds_nothing_when_nothing_runs(self):
        self.assertFalse(self.finds())

    def test_finds_a_core(self):
        self.run_process("QuillmarkCore")
        self.assertTrue(self.finds())

    def test_finds_a_core_whatever_name_is_asked_for(self):
        self.run_process("QuillmarkCore")
        self.assertTrue(self.finds("SomethingElse"))

    def test_finds_the_core_of_another_product_name(self):
        self.run_process("FederCore")
        self.assertTrue(self.finds("FederCore"))
        self.assertFalse(self.finds())

    def test_finds_the_product_word_a_blank_and_mac(self):
        self.run_process("Quillmark Mac")
        self.assertTrue(self.finds())

    def test_finds_a_process_whose_name_merely_contains_the_word(self):
        self.run_process("MyQuillmarkCore")  # 15 characters, as many as the process table holds
        self.assertTrue(self.finds())

    def test_finds_a_core_whose_name_the_process_table_cuts_off(self):
        self.run_process("Quillmark BusinessCore")
        self.assertTrue(self.finds("Quillmark BusinessCore"))
        self.assertFalse(self.finds("Quillmark HomeCore"))

    def test_finds_a_word_that_the_process_table_cuts_off(self):
        self.run_process("AnotherQuillmarkCore")
        self.assertTrue(self.finds())

    def test_finds_a_script_by_its_whole_name(self):
        script = Path("/tmp/processes/MyOwnQuillmarkCore.sh")
        script.parent.mkdir(exist_ok=True)
        script.write_text("#!/bin/sh\nread line\n")
        script.chmod(0o755)
        process = end_with(self, start(script, stdin=subprocess.PIPE))
        wait_until(lambda: status_of(process.pid)["Name"] == "MyOwnQuillmarkC", "the script runs")
        self.assertTrue(self.finds())

    def test_a_core_that_has_ended_and_that_its_parent_has_not_asked_about_does_not_run(self):
        process = self.run_process("QuillmarkCore")
        process.send_signal(signal.SIGKILL)
        wait_until(lambda: status_of(process.pid)["State"].startswith("Z"), "the core is defunct")
        self.assertFalse(self.finds())

    def test_does_not_find_the_launcher_or_other_letter_case(self):
        self.run_process("Quillmark")
        self.run_process("quillmarkcore")
        self.run_process("QuillmarkMac")
        self.assertFalse(self.finds())

    def test_does_not_find_the_relaunch_helper(self):
        self.run_process("relaunchqm-X")
        self.assertFalse(self.finds("relaunchqm"))
        self.run_process("XrelaunchqmCore")
        self.assertFalse(self.finds("Core"))

    def test_is_not_confused_by_odd_names(self):
        for name in ("a b c", "line\nbreak", "\xe4\xf6\xfc", "$(reboot)", "'"):
            self.run_process(name)
        self.assertFalse(self.finds())
        self.run_process("QuillmarkCore")
        self.assertTrue(self.finds())

    def test_no_longer_finds_a_core_that_has_ended(self):
        process = self.run_process("QuillmarkCore")
        process.send_signal(signal.SIGTERM)
        process.wait()
        self.assertFalse(self.finds())
