import re
from pathlib import Path

from tool import ToolTest

LINE = r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{4} quillmarkctl\[\d+\] \(%s\) \[0x[0-9a-f]+\] %s"


class LogWrite(ToolTest):
    def write(self, *arguments, **options):
        """The path that is printed, and the messages in that file."""
        path = Path(self.plain("log", "write", *arguments, **options))
        return path, path.read_text()

    def test_a_line_is_written_and_the_path_printed(self):
        path, contents = self.write("normal", "support was here")
        self.assertEqual(path.parent, self.home / "Library/Logs/Quillmark/Quillmark")
        self.assertRegex(path.name, r"^Quillmark-\d{4}-\d\d-\d\d-\d{6}\.log$")
        self.assertRegex(contents, "^" + LINE % ("nrm", "support was here") + "\n$")

    def test_each_text_is_a_line_and_may_be_empty_or_look_like_an_option(self):
        _, contents = self.write("normal", "--", "a b", "", "--pretty", "100 %d %@")
        self.assertEqual([re.sub(r"^.*\[0x[0-9a-f]+\] ", "", line) for line in contents.splitlines()],
                         ["a b", "", "--pretty", "100 %d %@"])

    def test_lines_can_be_repeated(self):
        _, contents = self.write("normal", "a", "b", "--repeat", "600")
        self.assertEqual(contents.count("\n"), 1200)
        _, contents = self.write("normal", "a", "--repeat", "0", "--folder", self.home / "none")
        self.assertEqual(contents, "")

    def test_folder_family_and_product_can_be_given(self):
        path, _ = self.write("normal", "x", "--family", "F", "--product", "P")
        self.assertEqual(path.parent, self.home / "Library/Logs/F/P")
        path, _ = self.write("normal", "x", "--folder", "~/logs", "--product", "P")
        self.assertEqual(path.parent, self.home / "logs")
        self.assertTrue(path.name.startswith("P-"))

    def test_the_files_level_decides_what_is_written(self):
        _, contents = self.write("detailed", "x", "--file-level", "verbose", "--folder", self.home / "a")
        self.assertEqual(contents, "")
        _, contents = self.write("detailed", "x", "--file-level", "detailed", "--folder", self.home / "b")
        self.assertRegex(contents, LINE % ("dtl", "x"))

    def test_lines_show_on_standard_error_when_asked_for(self):
        for option in ("--stdio-level", "--log-level"):
            done = self.run_tool("log", "write", "normal", "seen", option, "normal")
            self.assertRegex(done.stderr, LINE % ("nrm", "seen"))
            self.assertEqual(done.stdout.count("\n"), 1)

    def test_an_unknown_level_is_the_loggers_own_fault(self):
        self.assertEqual(self.failure("log", "write", "normal", "x", "--file-level", "Verbose"),
                         'quillmarkctl: log write: Invalid file logging level "Verbose"\n')
        self.assertEqual(self.failure("log", "write", "normal", "x", "--stdio-level", "loud"),
                         'quillmarkctl: log write: Invalid stdout logging level "loud"\n')

    def test_empty_names_are_failures_and_no_crash(self):
        for option, name in (("--file-level", "file level"), ("--stdio-level", "stdio level"), ("--family", "family name"),
                             ("--product", "product name")):
            self.assertIn(f"the {name} is empty", self.failure("log", "write", "normal", "x", option, ""))

    def test_a_folder_that_cannot_be_made_is_named(self):
        (self.home / "file").touch()
        self.assertEqual(self.failure("log", "write", "normal", "x", "--folder", self.home / "file/logs"),
                         f'quillmarkctl: log write: Failed to create "{self.home}/file/logs" (Not a directory)\n')

    def test_a_file_that_cannot_be_opened_is_named(self):
        self.assertRegex(self.failure("log", "write", "normal", "x", "--folder", "/proc"),
                         r'Failed to open log file "/proc/Quillmark-.*\.log" for writing')
