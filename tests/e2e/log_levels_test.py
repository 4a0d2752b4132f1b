"""How much is logged where is for the user to choose, and a choice that makes no sense is said to be none."""

from machine import LauncherTest, launcher_logs, run_launcher, set_preferences


class LogLevels(LauncherTest):
    def test_normal_leaves_the_details_out_of_the_file(self):
        set_preferences(FileLogging="normal")
        self.assert_started(run_launcher())
        self.assertIn("(nrm)", self.log())
        self.assertNotIn("(vrb)", self.log())

    def test_error_leaves_the_file_of_a_good_start_empty(self):
        set_preferences(FileLogging="error")
        self.assert_started(run_launcher())
        self.assertEqual(self.log(), "")

    def test_detailed_is_a_level_of_the_file(self):
        set_preferences(FileLogging="detailed")
        self.assert_started(run_launcher())
        self.assertIn("(nrm)", self.log())

    def test_the_terminal_has_a_level_of_its_own(self):
        set_preferences(FileLogging="error", StdioLogging="verbose")
        result = run_launcher()
        self.assert_started(result)
        self.assertEqual(self.log(), "")
        for words in ("Logging (file) level 0", "Logging (stdout) level 2", "Will terminate now"):
            self.assertIn(words, result.stdout)

    def test_an_unknown_level_of_the_file_ends_the_start_with_its_name(self):
        set_preferences(FileLogging="Verbose")
        self.assert_refused(run_launcher(), 'Invalid file logging level "Verbose"')

    def test_an_unknown_level_of_the_terminal_ends_the_start_with_its_name(self):
        set_preferences(StdioLogging="loud")
        self.assert_refused(run_launcher(), 'Invalid stdout logging level "loud"')

    def test_of_two_unknown_levels_the_one_of_the_file_is_named(self):
        set_preferences(FileLogging="a", StdioLogging="b")
        self.assert_refused(run_launcher(), 'Invalid file logging level "a"')

    def test_a_format_as_a_level_is_taken_as_plain_text(self):
        set_preferences(FileLogging="%s%n%@ {}")
        self.assert_refused(run_launcher(), 'Invalid file logging level "%s%n%@ {}"')

    def test_an_empty_level_of_the_file_ends_the_start(self):
        set_preferences(FileLogging="")
        self.assert_refused(run_launcher(), error='ASSERTION ERROR: [fileLevel length] (file "')

    def test_an_empty_level_of_the_terminal_ends_the_start(self):
        set_preferences(StdioLogging="")
        self.assert_refused(run_launcher(), error='ASSERTION ERROR: [stdoutLevel length] (file "')

    def test_a_refused_level_leaves_no_log_file(self):
        set_preferences(FileLogging="Verbose")
        run_launcher()
        self.assertEqual(launcher_logs(), [])
