"""Secrets that are looked for wherever the support tool writes."""

import os
import plistlib
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

from keyring import Session  # noqa: E402
from machine import wait_until  # noqa: E402

TOOL = Path(os.environ["QUILLMARK_APP"]) / "Contents/MacOS/quillmarkctl"
MARKS = (PASSWORD := "MARKED-PASSWORD", KEY := "MARKED-KEY")
# Whatever may come near a secret, with what is written to standard input. None of these is asked to print one.
OPERATIONS = ((("keychain", "save", "ada", "--password", "--keep-signed-in", "yes"), PASSWORD),
              (("keychain", "key", "save", "ada"), KEY), (("keychain", "raw", "set", "bob"), PASSWORD),
              (("user", "set", "ada", "Password", "-"), PASSWORD), (("user", "set", "ada", "State", "-"), KEY),
              (("user", "set", "ada", "FirstName", "Ada"), ""), (("user", "unset", "ada", "Password"), ""),
              (("keychain", "flag", "set", "ada", "beta", "yes"), ""), (("keychain", "skip-auth", "get", "ada"), ""),
              (("user", "show", "ada"), ""), (("user", "features"), ""), (("brand",), ""),
              (("keychain", "flag", "get", "bob", "beta"), ""), (("keychain", "remove", "bob"), ""),
              (("user", "remove", "ada"), ""))


class Secrets(unittest.TestCase):
    def setUp(self):
        self.home = Path(self.enterContext(tempfile.TemporaryDirectory(ignore_cleanup_errors=True)))
        self.session = Session(self, self.home)
        self.preferences = self.home / "Library/Preferences"
        self.preferences.mkdir(parents=True)
        (self.preferences / "com.quillmark.QuillmarkLauncher.plist").write_bytes(
            plistlib.dumps({"FileLogging": "detailed", "StdioLogging": "detailed", "LastUsedUserName": "ada"}))

    def perform_all(self):
        """\\returns all that was written, but for the keyring's own files."""
        written = ""
        for arguments, text in OPERATIONS:
            done = self.session.run(TOOL, "--log-level", "detailed", *arguments, input=text)
            written += done.stdout + done.stderr
        for path in self.home.rglob("*"):
            if path.is_file() and "keyrings" not in path.parts:
                written += path.read_bytes().decode(errors="replace")
        return written

    def assert_no_marks(self, written):
        for mark in MARKS:
            self.assertNotIn(mark, written)

    def test_are_nowhere_but_in_the_keyring(self):
        self.session.start_keyring()
        for arguments, text in OPERATIONS[:2]:
            self.session.run(TOOL, *arguments, input=text, check=True)
        self.assertIn(PASSWORD, self.session.run(TOOL, "keychain", "get", "ada").stdout)
        written = self.perform_all()
        self.assert_no_marks(written)

    def test_are_nowhere_when_the_keyring_is_locked(self):
        self.session.start_keyring()
        self.session.run(TOOL, "keychain", "raw", "set", "ada", input=PASSWORD, check=True)
        self.session.lock()
        self.assert_no_marks(self.perform_all())

    def test_are_nowhere_when_there_is_no_keyring(self):
        self.assert_no_marks(self.perform_all())

    def test_are_nowhere_when_the_preferences_can_not_be_written(self):
        self.session.start_keyring()
        (self.preferences / "com.quillmark.QuillmarkLauncher.plist").unlink()
        self.preferences.rmdir()
        self.preferences.write_text("in the way")
        self.assert_no_marks(self.perform_all())

    def test_are_no_part_of_a_process_that_waits_with_one(self):
        """Neither its arguments nor its environment, which core dumps and process lists show."""
        self.session.start_keyring()
        self.session.run(TOOL, "keychain", "raw", "set", "ada", input="{}", check=True)
        self.session.signal_keyring(signal.SIGSTOP)
        tool = subprocess.Popen([TOOL, "keychain", "save", "ada", "--password"], env=self.session.environment, text=True,
                                stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

        def shown():
            """Both, or nothing while the system still lays the program out."""
            parts = [Path(f"/proc/{tool.pid}/{name}").read_bytes() for name in ("cmdline", "environ")]
            return all(parts) and b"".join(parts)

        try:
            tool.stdin.write(PASSWORD)
            tool.stdin.close()
            told = wait_until(shown, "the program is laid out")
        finally:
            tool.wait(timeout=20)
            self.session.signal_keyring(signal.SIGCONT)
        self.assertIn(b"--password", told)
        self.assert_no_marks(told.decode())
