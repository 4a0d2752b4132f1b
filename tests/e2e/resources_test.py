"""A bundle with a resource missing or damaged."""

import plistlib

from machine import CORE, RESOURCES, LauncherTest, processes_of, run_launcher, set_preferences


class Resources(LauncherTest):
    def test_without_the_configuration_the_core_is_started_all_the_same(self):
        (RESOURCES / "Config.plist").unlink()
        self.assert_started(run_launcher())

    def test_with_a_damaged_configuration_the_core_is_started_all_the_same(self):
        (RESOURCES / "Config.plist").write_text("<plist>")
        self.assert_started(run_launcher())

    def test_without_the_defaults_nothing_says_how_much_to_log_and_the_start_ends(self):
        (RESOURCES / "Defaults.plist").unlink()
        self.assert_refused(run_launcher(), error='ASSERTION ERROR: fileLevel (file "')

    def test_with_damaged_defaults_the_start_ends(self):
        (RESOURCES / "Defaults.plist").write_text("<plist><dict><key>FileLogging</key>")
        self.assert_refused(run_launcher())

    def test_without_the_defaults_the_users_preferences_are_enough(self):
        (RESOURCES / "Defaults.plist").unlink()
        set_preferences(FileLogging="verbose", StdioLogging="error")
        self.assert_started(run_launcher())

    def test_without_the_defaults_half_of_the_preferences_is_not_enough(self):
        (RESOURCES / "Defaults.plist").unlink()
        set_preferences(FileLogging="verbose")
        self.assert_refused(run_launcher(), error='ASSERTION ERROR: stdoutLevel (file "')

    def test_what_ends_the_start_is_told_in_the_products_name(self):
        table = RESOURCES / "en.lproj/Localizable.strings"
        texts = plistlib.loads(table.read_bytes())
        table.write_bytes(plistlib.dumps(texts | {"ProductName": "Feder"}))
        set_preferences(FileLogging="loud")
        self.assertIn("\nFeder: could not start: Invalid file logging level", "\n" + run_launcher().stderr)
        (RESOURCES / "Defaults.plist").unlink()
        set_preferences(StdioLogging="error")
        self.assertIn("\nFeder: could not start: an internal check failed", run_launcher().stderr)

    # Deliberate: whether the core could be started is not looked at.
    def test_without_the_core_the_launcher_ends_as_if_it_had_started_it(self):
        CORE.unlink()
        self.assertEqual(run_launcher().returncode, 0)
        self.assertIn(f'Launched "{CORE}"', self.log())

    # Deliberate, as above.
    def test_with_a_core_that_may_not_be_run_the_launcher_ends_as_if_it_had_started_it(self):
        CORE.chmod(0o644)
        self.assertEqual(run_launcher().returncode, 0)
        self.assertEqual(processes_of(CORE), [])
