"""The preference file while the program that writes it is killed, and while several write it."""

import os
import plistlib
import random
import resource
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

TOOL = Path(os.environ["QUILLMARK_APP"]) / "Contents/MacOS/quillmarkctl"
USERS = 200
KILLS = 1000
WRITERS = 8


def limit_files():
    """What writes more than so many bytes to a file is killed."""
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))


class Preferences(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.home = Path(folder.name)
        self.file = self.home / "Library/Preferences/com.quillmark.QuillmarkLauncher.plist"
        self.file.parent.mkdir(parents=True)

    def start(self, *arguments, **options):
        return subprocess.Popen([TOOL, *map(str, arguments)], env={"HOME": str(self.home), "PATH": os.environ["PATH"]},
                                stdin=subprocess.DEVNULL, **options)

    def users(self):
        return plistlib.loads(self.file.read_bytes())["UserList"]

    def neighbours(self):
        return list(self.file.parent.iterdir())

    def assert_next_writer_leaves_the_file_alone(self):
        self.assertEqual(self.start("user", "set", "7", "AccountId", "5", "--type", "int").wait(timeout=20), 0)
        self.assertEqual(self.neighbours(), [self.file])

    def test_a_writer_that_is_killed_leaves_the_old_list_or_the_new_one(self):
        self.file.write_bytes(plistlib.dumps(
            {"UserList": [{"UserName": str(number), "AccountId": 0, "Filling": "x" * 100} for number in range(USERS)]}))
        moments = random.Random(1)
        before, changes = 0, 0
        for value in range(1, KILLS + 1):
            writer = self.start("user", "set", "7", "AccountId", value, "--type", "int")
            try:
                writer.wait(timeout=moments.uniform(0, 0.02))
            except subprocess.TimeoutExpired:
                writer.kill()
                writer.wait()
            users = self.users()
            self.assertEqual(len(users), USERS)
            after = {user["UserName"]: user["AccountId"] for user in users}["7"]
            self.assertIn(after, (before, value))
            changes += after != before
            before = after
        self.assertGreater(changes, 0, "no writer ever came to its end")
        self.assertLess(changes, KILLS, "no writer was ever killed before its end")
        self.assertLessEqual(len(self.neighbours()), 2)
        self.assert_next_writer_leaves_the_file_alone()

    def test_a_writer_that_is_killed_in_the_middle_of_the_file_leaves_the_old_list_and_nothing_for_ever(self):
        old = plistlib.dumps({"UserList": [{"UserName": "7"}]})
        self.file.write_bytes(old)
        for _ in range(3):
            writer = self.start("user", "set", "7", "Filling", "x" * 10000, preexec_fn=limit_files)
            self.assertEqual(writer.wait(timeout=20), -signal.SIGXFSZ)
            self.assertEqual(self.file.read_bytes(), old)
            self.assertEqual(len(self.neighbours()), 2)
        self.assert_next_writer_leaves_the_file_alone()

    def test_writers_of_different_keys_at_once_lose_nothing(self):
        self.file.write_bytes(plistlib.dumps({"Theirs": "kept", "UserList": [{"UserName": "anna"}]}))
        for _ in range(20):
            writers = [self.start("user", "selected", f"user{number}") for number in range(WRITERS)]
            writers.append(self.start("user", "set", "anna", "FirstName", "Anna"))
            self.assertEqual([writer.wait() for writer in writers], [0] * (WRITERS + 1))
            stored = plistlib.loads(self.file.read_bytes())
            self.assertEqual(stored["Theirs"], "kept")
            self.assertRegex(stored["LastUsedUserName"], r"\Auser[0-7]\Z")
            self.assertEqual(stored["UserList"][0]["FirstName"], "Anna")
            self.file.write_bytes(plistlib.dumps(stored | {"UserList": [{"UserName": "anna"}]}))


if __name__ == "__main__":
    unittest.main()
