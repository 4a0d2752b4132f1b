"""Applications that are on the session's bus, and the file manager that a Mac has the Finder for."""

import json
import os
import plistlib
import shutil
import signal
import socket
import time
import unittest
from pathlib import Path

from machine import APP, TOOL, has_ended, run, signals, wait_until
from session_bus import PYTHON, start_on_bus, start_session_bus

APPLICATION = "/run/project/tests/support/session_application.py"
IDENTIFIER = "com.example.on-the-bus"
FINDER = "com.apple.finder"


class SessionBus(unittest.TestCase):
    def setUp(self):
        self.surroundings = start_session_bus(self)

    def run_application(self, kind):
        """A bundle whose program is on the bus."""
        bundle = Path("/Applications/Example.app")
        executable = bundle / "Contents/MacOS/Example"
        executable.parent.mkdir(parents=True)
        shutil.copy(PYTHON, executable)
        information = {"CFBundleIdentifier": IDENTIFIER, "CFBundleExecutable": "Example"}
        (bundle / "Contents/Info.plist").write_bytes(plistlib.dumps(information))
        return start_on_bus(self, self.surroundings, executable, APPLICATION, IDENTIFIER, kind)

    def run_file_manager(self, kind="files"):
        return start_on_bus(self, self.surroundings, PYTHON, APPLICATION, "org.example.files", kind)

    def tool(self, *arguments, **changes):
        done = run(TOOL, "process", *arguments, timeout=30, env=self.surroundings | changes)
        self.error_text = done.stderr
        return done.returncode, done.stdout

    def quit(self, identifier=IDENTIFIER, seconds="4"):
        return self.tool("quit", identifier, "--wait", seconds)

    def assert_quits(self, process, status=0, **options):
        self.assertEqual(self.quit(**options), (0, ""))
        self.assertEqual(process.wait(timeout=20), status)

    def assert_times_out(self):
        status, out = self.quit(seconds="1")
        self.assertEqual((status, json.loads(out)["code"]), (3, -3))

    def test_an_application_quits_through_its_action_and_not_by_a_signal(self):
        self.assert_quits(self.run_application("quits"))

    def test_one_without_a_list_of_actions_quits_through_its_action_too(self):
        self.assert_quits(self.run_application("plain"))

    def test_one_whose_actions_lack_that_one_is_ended_by_a_signal(self):
        self.assert_quits(self.run_application("lacks"), -signal.SIGTERM)

    def test_one_whose_action_does_nothing_is_left_alone_and_a_time_out(self):
        application = self.run_application("ignores")
        self.assert_times_out()
        self.assertFalse(has_ended(application.pid))

    def test_one_that_is_too_busy_to_answer_is_left_alone_and_a_time_out(self):
        application = self.run_application("busy")
        begin = time.monotonic()
        self.assert_times_out()
        self.assertLess(time.monotonic() - begin, 10)
        self.assertNotIn(signal.SIGTERM, signals(application.pid, "ShdPnd"))

    def test_a_bus_that_never_answers_holds_nobody_up_for_long(self):
        silent = socket.socket(socket.AF_UNIX)
        silent.bind("/tmp/silent")
        os.chmod("/tmp/silent", 0o777)
        silent.listen(8)
        self.addCleanup(silent.close)
        begin = time.monotonic()
        self.assertEqual(self.tool("list", DBUS_SESSION_BUS_ADDRESS="unix:path=/tmp/silent"), (0, "[]\n"))
        self.assertLess(time.monotonic() - begin, 10)

    def test_without_a_bus_applications_are_listed_all_the_same(self):
        self.run_application("quits")
        for address in ("unix:path=/tmp/none", "nonsense"):
            status, out = self.tool("list", DBUS_SESSION_BUS_ADDRESS=address)
            self.assertEqual((status, [record["bundleIdentifier"] for record in json.loads(out)]), (0, [IDENTIFIER]))

    def test_a_lost_session_module_is_told_of_once_and_the_rest_goes_on(self):
        os.unlink(APP / "Contents/PlugIns/libquillmark-session.so")
        application = self.run_application("quits")
        status, out = self.tool("list", "--log-level", "error")
        self.assertEqual([record["processIdentifier"] for record in json.loads(out)], [application.pid])
        self.assertEqual(self.error_text.count("The session's bus can't be asked"), 1)
        self.assertIn("libquillmark-session.so", self.error_text)

    def test_the_file_manager_is_the_finder(self):
        files = self.run_file_manager()
        status, out = self.tool("list")
        self.assertEqual(json.loads(out), [{"bundleIdentifier": FINDER, "processIdentifier": files.pid,
                                            "path": "/System/Library/CoreServices/Finder.app"}])
        self.assertEqual(self.tool("running", FINDER)[0], 0)

    def test_a_file_manager_that_can_be_asked_quits_by_itself(self):
        files = self.run_file_manager("manager")
        wait_until(lambda: self.tool("running", FINDER)[0] == 0, "the file manager is on the bus")
        self.assert_quits(files, identifier=FINDER)

    def test_quitting_the_finder_ends_the_file_manager(self):
        files = self.run_file_manager()
        self.assert_quits(files, -signal.SIGTERM, identifier=FINDER)
        self.assertEqual(self.tool("running", FINDER)[0], 1)

    def test_launching_the_finder_succeeds_and_starts_nothing(self):
        before = len(list(Path("/proc").glob("[0-9]*")))
        self.assertEqual(self.tool("launch", FINDER), (0, ""))
        self.assertLessEqual(len(list(Path("/proc").glob("[0-9]*"))), before)

    def test_only_asking_for_applications_loads_the_bus_library(self):
        for arguments, is_loaded in ((("list",), True), (("core-running", "QuillmarkCore"), False)):
            with self.subTest(arguments):
                self.tool(*arguments, LD_DEBUG="files")
                self.assertEqual("libgio-2.0" in self.error_text, is_loaded)
        self.tool("list", LD_DEBUG="files", **{"DBUS_SESSION_BUS_ADDRESS": ""})
        self.assertNotIn("libgio-2.0", self.error_text)
