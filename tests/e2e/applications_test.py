"""Real applications: found in the process table, launched by identifier, asked to quit."""

import json
import os
import plistlib
import shutil
import signal
import subprocess
import unittest
from pathlib import Path

from machine import APP, HOME, TOOL, USER, end_with, has_ended, make_user_folder, processes_of, run, signals, start, wait_until

IDENTIFIER = "com.example.application"


class Applications(unittest.TestCase):
    def make_bundle(self, folder=Path("/Applications"), name="Example", identifier=IDENTIFIER):
        """An application that sleeps. \\returns its bundle."""
        bundle = folder / f"{name}.app"
        executable = bundle / "Contents/MacOS" / name
        make_user_folder(executable.parent)
        executable.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy("/bin/sleep", executable)
        information = {"CFBundleIdentifier": identifier, "CFBundleExecutable": name}
        (bundle / "Contents/Info.plist").write_bytes(plistlib.dumps(information))
        return bundle

    def run_bundle(self, bundle, before=lambda: None):
        executable = bundle / "Contents/MacOS" / bundle.stem
        process = end_with(self, start(executable, "1000", before=before))
        wait_until(lambda: process.pid in processes_of(executable), "the application runs")
        return process

    def tool(self, *arguments):
        done = run(TOOL, *arguments, timeout=30)
        return done.returncode, done.stdout

    def records(self):
        status, out = self.tool("process", "list")
        self.assertEqual(status, 0)
        return json.loads(out)

    def test_a_running_bundle_is_listed_with_its_identifier_process_and_path(self):
        bundle = self.make_bundle()
        process = self.run_bundle(bundle)
        self.assertIn({"bundleIdentifier": IDENTIFIER, "processIdentifier": process.pid, "path": str(bundle)}, self.records())
        self.assertEqual(self.tool("process", "running", IDENTIFIER)[0], 0)
        self.assertEqual(self.tool("process", "running", IDENTIFIER.upper())[0], 1)

    def test_one_whose_program_was_replaced_meanwhile_is_listed_still(self):
        bundle = self.make_bundle()
        process = self.run_bundle(bundle)
        os.unlink(bundle / "Contents/MacOS/Example")
        self.assertIn(process.pid, [record["processIdentifier"] for record in self.records()])

    def test_a_helper_inside_a_bundle_is_no_application(self):
        self.assertNotIn(str(APP), [record["path"] for record in self.records()])  # the tool itself runs from there

    def test_an_application_is_launched_by_its_identifier_from_either_folder(self):
        for folder in (Path("/Applications"), HOME / "Applications"):
            bundle = self.make_bundle(folder, "Launched", f"com.example.{folder.parent.name}")
            executable = bundle / "Contents/MacOS/Launched"
            shutil.copy(TOOL, executable)  # any program will do that ends by itself
            self.assertEqual(self.tool("process", "launch", f"com.example.{folder.parent.name}"), (0, ""))

    def test_an_application_that_cannot_be_started_is_an_error_that_names_it(self):
        bundle = self.make_bundle()
        os.chmod(bundle / "Contents/MacOS/Example", 0o644)
        status, out = self.tool("process", "launch", IDENTIFIER)
        self.assertEqual(status, 3)
        self.assertEqual(json.loads(out)["description"], f'launchApplication "{bundle}" failed')

    def test_one_that_quits_politely_is_waited_for(self):
        process = self.run_bundle(self.make_bundle())
        self.assertEqual(self.tool("process", "quit", IDENTIFIER, "--wait", "4"), (0, ""))
        self.assertEqual(process.wait(timeout=20), -signal.SIGTERM)

    def test_one_that_ignores_the_request_is_a_time_out(self):
        process = self.run_bundle(self.make_bundle(), before=lambda: signal.signal(signal.SIGTERM, signal.SIG_IGN))
        self.assertIn(signal.SIGTERM, signals(process.pid, "SigIgn"))
        status, out = self.tool("process", "quit", IDENTIFIER, "--wait", "1")
        self.assertEqual(status, 3)
        self.assertEqual((json.loads(out)["code"], json.loads(out)["failureReason"]), (-3, "quitApplication failed"))
        self.assertFalse(has_ended(process.pid))

    def test_one_that_dies_meanwhile_has_quit(self):
        process = self.run_bundle(self.make_bundle(), before=lambda: signal.signal(signal.SIGTERM, signal.SIG_IGN))
        tool = start(TOOL, "process", "quit", IDENTIFIER, "--wait", "20")
        process.kill()
        process.wait()
        self.assertEqual(tool.communicate(timeout=20)[0], "")
        self.assertEqual(tool.returncode, 0)

    def test_without_waiting_the_request_is_all(self):
        self.run_bundle(self.make_bundle(), before=lambda: signal.signal(signal.SIGTERM, signal.SIG_IGN))
        self.assertEqual(self.tool("process", "quit", IDENTIFIER), (0, ""))

    def test_an_application_of_another_user_cannot_be_asked(self):
        bundle = self.make_bundle()
        process = end_with(self, subprocess.Popen([bundle / "Contents/MacOS/Example", "1000"]))  # as root
        self.assertNotEqual(os.stat(f"/proc/{process.pid}").st_uid, USER)
        self.assertEqual(self.tool("process", "running", IDENTIFIER)[0], 1)
