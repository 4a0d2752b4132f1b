"""What holds for every command."""

import json
import re

from tool import APP, COMMANDS, ToolTest


class Rules(ToolTest):
    def test_every_command_has_help_with_one_example(self):
        for command in COMMANDS:
            help_text = self.run_tool(*command.split(), "--help").stdout
            self.assertEqual(help_text.count("Example: quillmarkctl " + command), 1, command)

    def test_the_commands_are_those_that_the_help_names(self):
        for command in COMMANDS:
            words = command.split()
            self.assertRegex(self.run_tool(*words[:-1], "--help").stdout, rf"(?m)^  {words[-1]} ")

    def test_the_version_is_the_products_with_its_build(self):
        self.assertEqual(self.plain("--version"), "1.14.4 (1303)")

    def test_a_wrong_command_line_is_status_2_and_one_line(self):
        for arguments in ([], ["nonsense"], ["log"], ["log", "nonsense"], ["text"], ["text", "--nonsense", "Quit"],
                          ["error", "posix", "x"], ["error", "posix", "99999999999999999999"], ["version", "self", "more"],
                          ["text", "Quit", "--strip"], ["--log-level", "loud", "brand"], ["--bundle"],
                          ["bundles", "find", "/tmp"], ["log", "write", "loud", "x"]):
            self.failure(*arguments, status=2)

    def test_the_line_names_the_command_and_the_word_at_fault(self):
        self.assertEqual(self.failure("text", "Quit", "--nonsense", status=2),
                         'quillmarkctl: text: there is no "--nonsense"; see --help\n')
        self.assertEqual(self.failure("vresion", status=2), 'quillmarkctl: command line: there is no "vresion"; see --help\n')

    def test_a_bundle_that_is_none_is_named(self):
        missing = self.home / "Missing.app"
        self.assertEqual(self.failure("--bundle", missing, "brand"), f"quillmarkctl: {missing}: is not an application bundle\n")

    def test_another_bundles_resources_can_be_taken(self):
        app = self.copy_app()
        table = app / "Contents/Resources/en.lproj/Localizable.strings"
        table.write_bytes(table.read_bytes().replace(b"<string>Quit</string>", b"<string>Leave</string>"))
        self.assertEqual(self.plain("--bundle", app, "text", "Quit"), "Leave")
        self.assertEqual(self.plain("text", "Quit"), "Quit")

    def test_options_may_stand_before_and_behind_the_command(self):
        self.assertEqual(self.plain("--bundle", APP, "text", "Quit"), self.plain("text", "Quit", "--bundle", APP))

    def test_json_is_one_line_or_indented(self):
        compact = self.run_tool("brand").stdout
        pretty = self.run_tool("brand", "--pretty").stdout
        self.assertEqual(compact.count("\n"), 1)
        self.assertGreater(pretty.count("\n"), 3)
        self.assertEqual(json.loads(compact), json.loads(pretty))

    def test_log_lines_show_only_when_asked_for_and_on_standard_error(self):
        silent = self.run_tool("text", "{#%d", "--arg", "x")
        self.assertEqual(silent.stderr, "")
        told = self.run_tool("text", "{#%d", "--arg", "x", "--log-level", "error")
        self.assertIn("(ERR)", told.stderr)
        self.assertEqual(told.stdout, silent.stdout)

    def test_help_says_what_does_nothing_here(self):
        for command, sentence in (("finder servers", "nothing can be set"), ("finder refresh", "nothing is done"),
                                  ("finder selection", "nothing is ever selected"), ("keychain save", "beyond U+00FF")):
            self.assertIn(sentence, " ".join(self.run_tool(*command.split(), "--help").stdout.split()))

    def test_a_time_to_wait_is_a_finite_number_from_0(self):
        for seconds in ("nan", "inf", "-inf", "-1", "1e999", "x", ""):
            self.assertIn("finite", self.failure("process", "quit", "x", "--wait", seconds, status=2))
        self.run_tool("process", "quit", "no.such.application", "--wait", "0.5")

    def test_nothing_runs_under_an_empty_identifier(self):
        self.run_tool("process", "running", "", status=1)

    def test_a_result_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "w") as full:
            for command in (["brand"], ["version", "self"], ["error", "posix", "1"]):
                self.assertIn("standard output", self.failure(*command, stdout=full))

    def test_no_library_of_windows_secrets_or_buses_is_loaded(self):
        for command in COMMANDS:
            arguments = {"bundles find": ["--identifier", "x", str(self.home)], "error posix": ["1"], "text": ["Quit"],
                         "log write": ["normal", "x"], "version self": [], "brand": [], "bundles stale": [], "system": [],
                         "host name": [], "host short": [], "process list": [], "host same": ["a", "a"],
                         "version build": ["1 2"], "run": ["/bin/true"], "status": [], "finder selection": [],
                         "finder servers": [], "repair": ["--help"], "header render": ["--help"]}.get(command, ["x"])
            done = self.call(*command.split(), *arguments, text=True, environment={"LD_DEBUG": "files"})
            libraries = set(re.findall(r"calling init: (\S+)", done.stderr))
            self.assertTrue(any("libc.so" in library for library in libraries))
            # Without a session bus there is nobody to ask about a secret.
            self.assertFalse([library for library in libraries if re.search(r"Qt6|libsecret|dbus", library)], command)
