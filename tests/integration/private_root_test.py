"""What a private root promises to those inside."""

import os
import shutil
import unittest
from pathlib import Path

from machine import APP, HOME, USER, run, start


class PrivateRoot(unittest.TestCase):
    def answer(self, *command):
        done = run(*command)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout.strip()

    def test_gives_set_user_id_programs_their_rights(self):
        tool = Path("/Library/Application Support/Quillmark/whoami")
        shutil.copy("/usr/bin/whoami", tool)
        os.chmod(tool, 0o4755)
        self.assertEqual(self.answer("/usr/bin/whoami"), "tester")
        self.assertEqual(self.answer(tool), "root")

    def test_holds_the_bundle_as_the_users_own(self):
        self.assertEqual(APP.stat().st_uid, USER)
        self.assertTrue((APP / "Contents/MacOS/Quillmark").is_file())

    def test_has_no_other_users_home_folders_and_no_temporary_files_of_others(self):
        self.assertEqual(os.listdir("/home"), [HOME.name])
        self.assertEqual(os.listdir("/tmp"), [])
        self.assertEqual(os.listdir("/.old"), [])

    def test_shows_no_processes_of_the_host(self):
        self.assertLess(len([name for name in os.listdir("/proc") if name.isdigit()]), 10)

    def test_cannot_write_to_the_hosts_files(self):
        for folder in ("/usr", "/var", "/opt"):
            with self.subTest(folder), self.assertRaises(OSError):
                Path(folder, "written").touch()

    def test_lets_the_user_write_where_a_mac_does(self):
        for folder in (HOME, Path("/Applications"), Path("/tmp")):
            with self.subTest(folder):
                self.answer("/usr/bin/touch", folder / "written")

    def test_keeps_the_administrators_folders_for_him(self):
        for folder in (Path("/Library"), Path("/Library/Application Support"), Path("/System")):
            with self.subTest(folder):
                self.assertNotEqual(start("/usr/bin/touch", folder / "written").wait(), 0)

    def test_names_a_session_bus_that_is_not_there(self):
        address = os.environ["DBUS_SESSION_BUS_ADDRESS"]
        self.assertTrue(address.startswith("unix:path=/run/user/1001/"))
        self.assertFalse(Path(address.removeprefix("unix:path=")).exists())
