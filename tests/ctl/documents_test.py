"""The manual page and the completions, which the build makes from the command line itself."""

import re
import subprocess

from tool import APP, COMMANDS, ToolTest

RESOURCES = APP / "Contents/Resources"


class Documents(ToolTest):
    def complete(self, *words):
        """What bash offers for the last of the words."""
        script = ('source "$1"; shift; COMP_WORDS=(quillmarkctl "$@"); COMP_CWORD=$#; _quillmarkctl; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        done = subprocess.run(["bash", "-c", script, "-", RESOURCES / "completions/quillmarkctl.bash", *words],
                              capture_output=True, text=True, check=True)
        return done.stdout.split()

    # What offers a command behind the words of its group.
    OFFERS = {
        "bash": lambda group, word: rf"'{group}'\) words='[^']*(?<![\w-]){word}(?![\w-])",
        "zsh": lambda group, word: rf"'{group}'\) compadd -- [^;]*(?<![\w-]){word}(?![\w-])",
        "fish": lambda group, word: (rf"quillmarkctl {group}\*.* -a {word} " if group
                                     else rf"__fish_use_subcommand' -a {word} "),
    }

    def test_the_manual_page_has_a_section_for_every_command(self):
        page = (RESOURCES / "man/man1/quillmarkctl.1").read_text()
        for command in COMMANDS:
            self.assertIn("\n.SS " + command.replace("-", "\\-"), page)
        self.assertIn(".SH EXIT STATUS", page)

    def test_bash_completes_commands_step_by_step(self):
        self.assertEqual(self.complete("ve"), ["verify", "version"])
        self.assertEqual(self.complete("version", ""),
                         ["self", "parse", "component", "build", "--help", "--version", "--bundle", "--pretty", "--log-level"])
        self.assertEqual(self.complete("log", "wr"), ["write"])

    def test_bash_completes_a_commands_own_options_behind_its_arguments(self):
        self.assertEqual(self.complete("log", "write", "normal", "x", "--fi"), ["--file-level"])

    def test_bash_offers_no_hidden_option(self):
        self.assertEqual(self.complete("--gen"), [])

    def test_every_shell_has_every_command(self):
        for shell in ("bash", "zsh", "fish"):
            text = (RESOURCES / f"completions/quillmarkctl.{shell}").read_text()
            for command in COMMANDS:
                *group, word = command.split()
                self.assertRegex(text, self.OFFERS[shell](re.escape(" ".join(group)), re.escape(word)), command)
