"""The preference file while the program that writes it is killed, and while several write it."""

import errno
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
FAILING_CALLS = Path(os.environ["QUILLMARK_PROBES"]) / "FailingCalls.so"
# What each of the calls that read a file may fail with.
FAILURES = {"openat": (errno.EACCES, errno.EMFILE, errno.ENFILE, errno.EIO, errno.ENOMEM, errno.EINTR),
            "fstat": (errno.EIO, errno.ENOMEM), "read": (errno.EIO, errno.ENOMEM)}


def limit_files():
    """What writes more than so many bytes to a file is killed."""
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))


class Preferences(unittest.TestCase):
    def setUp(self):
        self.home = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.file = self.home / "Library/Preferences/com.quillmark.QuillmarkLauncher.plist"
        self.file.parent.mkdir(parents=True)

    def start(self, *arguments, **options):
        return subprocess.Popen([TOOL, *map(str, arguments)], env={"HOME": str(self.home), "PATH": os.environ["PATH"]},
                                stdin=subprocess.DEVNULL, **options)

    def users(self):
        return plistlib.loads(self.file.read_bytes())["UserList"]

    def neighbours(self):
        """All beside the file, but for the lock, which stays."""
        return [path for path in self.file.parent.iterdir() if path.name != f".{self.file.name}.lock"]

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

    def test_forty_writers_of_different_accounts_lose_none(self):
        writers = [self.start("user", "set", f"user{number}", "FirstName", "x") for number in range(40)]
        self.assertEqual([writer.wait() for writer in writers], [0] * 40)
        self.assertEqual({user["UserName"] for user in self.users()}, {f"user{number}" for number in range(40)})

    def test_writers_of_one_record_lose_no_setting(self):
        writers = [self.start("user", "set", "anna", f"Key{number}", "x") for number in range(20)]
        writers += [self.start("user", "clean"), self.start("user", "rename", "5", "bert")]
        self.assertEqual([writer.wait() for writer in writers], [0] * 21 + [1])
        self.assertEqual(len(self.users()), 1)
        self.assertLessEqual({f"Key{number}" for number in range(20)}, set(self.users()[0]))

    def run_failing(self, call, number, error, *arguments):
        """Runs the tool with one failing call. None when there was no such call."""
        told = self.home / "told"
        told.unlink(missing_ok=True)
        done = subprocess.run([TOOL, *arguments], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60,
                              env={"HOME": str(self.home), "PATH": os.environ["PATH"], "LD_PRELOAD": str(FAILING_CALLS),
                                   "QUILLMARK_FAIL_CALL": call, "QUILLMARK_FAIL_FILE": "/" + self.file.name,
                                   "QUILLMARK_FAIL_AT": str(number), "QUILLMARK_FAIL_ERRNO": str(error),
                                   "QUILLMARK_FAIL_TOLD": str(told)})
        return done if told.exists() else None

    def test_a_file_that_can_not_be_read_once_loses_no_account(self):
        accounts = [{"UserName": name, "AccountId": number} for number, name in enumerate(("anna", "bert", "carl"))]
        before = plistlib.dumps({"Theirs": "kept", "UserList": accounts, "LastUsedUserName": "anna"})
        for arguments in (("user", "set", "bert", "FirstName", "Bert"), ("user", "set", "new", "FirstName", "New"),
                          ("user", "unset", "anna", "AccountId"), ("user", "rename", "1", "bernd"), ("user", "remove", "anna"),
                          ("user", "clean", "anna"), ("user", "selected", "bert"), ("user", "list"), ("user", "show", "anna"),
                          ("user", "get", "anna", "AccountId"), ("user", "features"), ("brand",)):
            for call, errors in FAILURES.items():
                for error in errors:
                    seen = 0
                    self.file.write_bytes(before)
                    while done := self.run_failing(call, seen + 1, error, *arguments):
                        seen += 1
                        with self.subTest(arguments=arguments, call=call, error=error, number=seen):
                            stored = plistlib.loads(self.file.read_bytes())
                            self.assertEqual(stored["Theirs"], "kept")
                            if done.returncode == 0:
                                self.assertIn("carl", [user["UserName"] for user in stored["UserList"]])
                            else:
                                self.assertEqual(done.returncode, 3)
                                self.assertRegex(done.stderr, rf"\Aquillmarkctl: {self.file}: can't be (read|written) \(.+\)\n\Z")
                                self.assertEqual(self.file.read_bytes(), before)
                        self.file.write_bytes(before)
                    self.assertGreater(seen, 0, f"{arguments} never called {call}")
