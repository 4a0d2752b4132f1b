"""The preferences file belongs to the user: whatever is in it, the launcher starts, and throws nothing away."""

import os
import plistlib

from machine import PREFERENCES, LauncherTest, make_user_folder, run_launcher, set_preferences, write_user_file

DAMAGED = PREFERENCES.with_name(PREFERENCES.name + ".damaged")


class Preferences(LauncherTest):
    def assert_set_aside(self, contents):
        write_user_file(PREFERENCES, contents)
        result = run_launcher()
        self.assertEqual(result.returncode, 0)
        self.core()
        self.assertFalse(PREFERENCES.exists())
        self.assertEqual(DAMAGED.read_bytes(), contents)
        for text in (self.log(), result.stderr):
            self.assertRegex(text, rf"\(ERR\) .*{DAMAGED}")

    def test_that_are_no_property_list_are_set_aside_and_an_error_names_them(self):
        self.assert_set_aside(b"FileLogging = verbose\n")

    def test_that_were_cut_off_are_set_aside(self):
        self.assert_set_aside(plistlib.dumps({"FileLogging": "error"})[:-30])

    def test_that_are_empty_are_set_aside(self):
        self.assert_set_aside(b"")

    def test_that_are_damaged_binary_are_set_aside(self):
        self.assert_set_aside(plistlib.dumps({"FileLogging": "error"}, fmt=plistlib.FMT_BINARY)[:-5])

    def test_that_hold_a_list_in_place_of_a_dictionary_are_set_aside(self):
        self.assert_set_aside(plistlib.dumps(["FileLogging"]))

    def test_set_aside_take_the_place_of_older_ones(self):
        write_user_file(DAMAGED, b"older")
        self.assert_set_aside(b"newer")

    def test_in_binary_form_are_read(self):
        write_user_file(PREFERENCES, plistlib.dumps({"FileLogging": "error"}, fmt=plistlib.FMT_BINARY))
        self.assert_started(run_launcher())
        self.assertEqual(self.log(), "")

    def test_of_a_good_start_are_left_as_they_are(self):
        set_preferences(FileLogging="normal", LastUsedUserName="ann")
        before = PREFERENCES.read_bytes()
        self.assert_started(run_launcher())
        self.assertEqual(PREFERENCES.read_bytes(), before)

    def test_are_not_made_when_there_is_nothing_to_keep(self):
        self.assert_started(run_launcher())
        self.assertFalse(PREFERENCES.exists())

    def test_that_may_not_be_read_are_left_alone(self):
        set_preferences(FileLogging="error")
        os.chown(PREFERENCES, 0, 0)
        PREFERENCES.chmod(0o600)
        self.assertEqual(run_launcher().returncode, 0)
        self.core()
        self.assertTrue(PREFERENCES.exists())
        self.assertFalse(DAMAGED.exists())

    def test_that_are_a_named_pipe_do_not_hold_the_start_up(self):
        make_user_folder(PREFERENCES.parent)
        os.mkfifo(PREFERENCES)
        self.assertEqual(run_launcher().returncode, 0)
        self.core()

    def test_with_a_number_in_place_of_a_level_give_its_text(self):
        set_preferences(FileLogging=3)
        self.assert_refused(run_launcher(), 'Invalid file logging level "3"')

    def test_with_a_list_in_place_of_a_level_are_no_level(self):
        set_preferences(FileLogging=["verbose"])
        self.assert_refused(run_launcher(), error='ASSERTION ERROR: fileLevel (file "')

    def test_that_are_a_folder_do_not_hold_the_start_up(self):
        make_user_folder(PREFERENCES)
        result = run_launcher()
        self.assertEqual(result.returncode, 0)
        self.assertRegex(result.stderr, rf'\A[^\n]+ \(ERR\) [^\n]+ The preferences "{PREFERENCES}" can\'t be read \([^\n]+\)\n\Z')
        self.core()
        self.assertTrue(PREFERENCES.is_dir())
