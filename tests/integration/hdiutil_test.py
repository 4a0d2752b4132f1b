"""The program that lets go of disk images for the launcher's shells."""

import subprocess
import unittest
from pathlib import Path

from machine import APP

HDIUTIL = APP / "Contents/Helpers/hdiutil"


def hdiutil(*arguments, **options):
    return subprocess.run([HDIUTIL, *arguments], capture_output=True, text=True, timeout=20, **options)


class Hdiutil(unittest.TestCase):
    def test_unmounts_a_volume(self):
        volume = Path("/tmp/Quillmark 1.14")
        volume.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "image", volume], check=True)
        self.assertTrue(volume.is_mount())
        self.assertEqual(hdiutil("detach", volume).returncode, 0)
        self.assertFalse(volume.is_mount())

    def test_asks_the_desktop_first(self):
        folder = Path("/tmp/programs")
        folder.mkdir()
        (folder / "gio").write_text('#!/bin/sh\nprintf "%s|" "$@" >/tmp/asked\n')
        (folder / "gio").chmod(0o755)
        self.assertEqual(hdiutil("detach", "/media/Quillmark 1.14", env={"PATH": f"{folder}:/usr/bin:/bin"}).returncode, 0)
        self.assertEqual(Path("/tmp/asked").read_text(), "mount|--unmount|/media/Quillmark 1.14|")

    def test_what_is_no_volume_is_a_failure(self):
        self.assertNotEqual(hdiutil("detach", "/usr").returncode, 0)

    def test_takes_one_folder(self):
        for arguments in ([], ["detach"], ["attach", "x"], ["detach", "a", "b"]):
            self.assertEqual(hdiutil(*arguments).returncode, 1)
