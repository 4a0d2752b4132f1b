"""A log folder that can't be used: the launcher says where and why, and never just crashes."""

import os
import subprocess
import unittest
from pathlib import Path

from machine import HOME, LOG_FOLDER, USER, LauncherTest, launcher_logs, make_user_folder, run_launcher, write_user_file


def mount_on_log_folder(options):
    make_user_folder(LOG_FOLDER)
    options = f"uid={USER},gid={USER},mode=755,{options}"
    subprocess.run(["mount", "-t", "tmpfs", "-o", options, "logs", LOG_FOLDER], check=True)


def fill(file):
    """Writes until the file system is full."""
    with open(file, "wb", buffering=0) as stream:
        try:
            while stream.write(b"\0" * 4096):
                pass
        except OSError:
            pass


class LogFolder(LauncherTest):
    def test_that_belongs_to_the_administrator_ends_the_start_with_the_files_path(self):
        make_user_folder(LOG_FOLDER)
        os.chown(LOG_FOLDER, 0, 0)
        result = run_launcher()
        self.assert_refused(result, LOG_FOLDER)
        file = rf"{LOG_FOLDER}/Quillmark-[0-9-]+\.log"
        self.assertRegex(result.stderr, rf'\(ERR\) .*Failed to open log file "{file}" for writing')

    def test_that_cannot_be_made_ends_the_start_with_its_path(self):
        make_user_folder(HOME / "Library")
        os.chown(HOME / "Library", 0, 0)
        result = run_launcher()
        self.assert_refused(result, f'Failed to create "{LOG_FOLDER}"')

    def test_that_is_a_file_ends_the_start_with_its_path(self):
        write_user_file(LOG_FOLDER, b"")
        self.assert_refused(run_launcher(), LOG_FOLDER)

    def test_below_a_file_ends_the_start_with_its_path(self):
        write_user_file(HOME / "Library/Logs", b"")
        self.assert_refused(run_launcher(), f'Failed to create "{LOG_FOLDER}"')

    def test_without_room_for_one_more_file_ends_the_start_with_the_files_path(self):
        mount_on_log_folder("nr_inodes=2")
        Path(LOG_FOLDER, "last one").touch()
        self.assert_refused(run_launcher(), LOG_FOLDER)

    def test_without_room_for_a_line_does_not_keep_the_core_from_running(self):
        mount_on_log_folder("size=4096")
        fill(LOG_FOLDER / "big")
        self.assert_started(run_launcher())
        self.assertIn(0, [path.stat().st_size for path in launcher_logs()])

    def test_that_is_a_link_to_another_place_is_followed(self):
        make_user_folder(LOG_FOLDER.parent)
        elsewhere = HOME / "elsewhere"
        make_user_folder(elsewhere)
        LOG_FOLDER.symlink_to(elsewhere)
        self.assert_started(run_launcher())
        self.assertEqual(len(list(elsewhere.iterdir())), 1)

    def test_is_made_with_all_folders_above_it(self):
        self.assertFalse((HOME / "Library").exists())
        self.assert_started(run_launcher())
        for folder in (LOG_FOLDER, *LOG_FOLDER.parents):
            if HOME in folder.parents:
                self.assertEqual(folder.stat().st_uid, USER)


if __name__ == "__main__":
    unittest.main()
