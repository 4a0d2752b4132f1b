"""A log folder that can't be used costs the log and one line that says where and why, and never the start."""

import os
import subprocess
import time
from pathlib import Path

from machine import (CORE, HOME, LOG_FOLDER, USER, LauncherTest, fill, launcher_logs, make_user_folder, processes_of,
                     run_launcher, wait_until, write_user_file)


def mount_on_log_folder(options):
    make_user_folder(LOG_FOLDER)
    options = f"uid={USER},gid={USER},mode=755,{options}"
    subprocess.run(["mount", "-t", "tmpfs", "-o", options, "logs", LOG_FOLDER], check=True)


class LogFolder(LauncherTest):
    def assert_starts_without_log(self, words):
        """The core runs, and standard error has one line, with these words."""
        result = run_launcher()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertRegex(result.stderr, rf"\A[^\n]* \(ERR\) [^\n]*There is no log file: {words}[^\n]*\n\Z")
        wait_until(lambda: processes_of(CORE), "the core runs")

    def put_in_the_files_place(self, plant):
        """A start within the next seconds finds something in the place of its log file."""
        make_user_folder(LOG_FOLDER)
        now = int(time.time())
        for second in range(now, now + 10):
            plant(LOG_FOLDER / time.strftime("Quillmark-%Y-%m-%d-%H%M%S.log", time.localtime(second)))

    def test_with_a_link_in_the_files_place_leaves_its_target_alone(self):
        precious = HOME / "letter"
        write_user_file(precious, b"kept")
        self.put_in_the_files_place(lambda place: place.symlink_to(precious))
        self.assert_starts_without_log("Failed to open log file")
        self.assertEqual(precious.read_bytes(), b"kept")

    def test_with_a_pipe_in_the_files_place_does_not_hold_the_start_up(self):
        self.put_in_the_files_place(lambda place: os.mkfifo(place, 0o666))
        self.assert_starts_without_log("Failed to open log file")

    def test_that_belongs_to_the_administrator_is_told_with_the_files_path(self):
        make_user_folder(LOG_FOLDER)
        os.chown(LOG_FOLDER, 0, 0)
        self.assert_starts_without_log(rf'Failed to open log file "{LOG_FOLDER}/Quillmark-[0-9-]+\.log" for writing')

    def test_that_cannot_be_made_is_told_with_its_path(self):
        make_user_folder(HOME / "Library")
        os.chown(HOME / "Library", 0, 0)
        self.assert_starts_without_log(f'Failed to create "{LOG_FOLDER}"')

    def test_that_is_a_file_is_told_with_its_path(self):
        write_user_file(LOG_FOLDER, b"")
        self.assert_starts_without_log(f'Failed to open log file "{LOG_FOLDER}')

    def test_below_a_file_is_told_with_its_path(self):
        write_user_file(HOME / "Library/Logs", b"")
        self.assert_starts_without_log(f'Failed to create "{LOG_FOLDER}"')

    def test_without_room_for_one_more_file_is_told_with_the_files_path(self):
        mount_on_log_folder("nr_inodes=2")
        Path(LOG_FOLDER, "last one").touch()
        self.assert_starts_without_log(f'Failed to open log file "{LOG_FOLDER}')

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
