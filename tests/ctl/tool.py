"""Runs the built support tool in a home folder of the test's own."""

import json
import os
import plistlib
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

APP = Path(os.environ["QUILLMARK_APP"])
TOOL = APP / "Contents/MacOS/quillmarkctl"


def all_commands():
    """Every command, as the program itself tells them, in the sections of its manual page."""
    page = subprocess.run([TOOL, "--generate", "man"], capture_output=True, text=True, check=True).stdout
    headings = re.findall(r"^\.SS (.*?)(?: \\f|$)", page, re.MULTILINE)
    return [heading.replace("\\-", "-") for heading in headings]


COMMANDS = all_commands()


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.home = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def run_tool(self, *arguments, status=0, stdout=subprocess.PIPE, **environment):
        """Runs the tool and checks its status; one line on standard error for the statuses 2 and 3, else none."""
        values = {"HOME": str(self.home), "PATH": os.environ["PATH"], "LANG": "C.UTF-8"} | environment
        done = subprocess.run([TOOL, *map(str, arguments)], env=values, stdin=subprocess.DEVNULL, stdout=stdout,
                              stderr=subprocess.PIPE, text=True, timeout=60)
        self.assertEqual(done.returncode, status, done.stderr)
        if status >= 2:
            self.assertRegex(done.stderr, r"\Aquillmarkctl: [^\n]+: [^\n]+\n\Z")
            self.assertIn(done.stdout, (None, ""))
        return done

    def run_with_input(self, *arguments, text="", status=0, **environment):
        """Standard output of the tool that reads the text, which may be bytes. `self.error_text` is one line for the statuses 2
        and 3, else empty."""
        data = text if isinstance(text, bytes) else text.encode()
        done = subprocess.run([TOOL, *arguments], input=data, capture_output=True, timeout=60,
                              env={"HOME": str(self.home), "LANG": "C.UTF-8"} | environment)
        self.error_text = done.stderr.decode()
        self.assertEqual(done.returncode, status, self.error_text)
        self.assertRegex(self.error_text, r"\A[^\n]+\n\Z" if status >= 2 else r"\A\Z")
        return done.stdout.decode()

    def plain(self, *arguments, **options):
        """The one line that a command prints."""
        output = self.run_tool(*arguments, **options).stdout
        self.assertTrue(output.endswith("\n"))
        return output[:-1]

    def json(self, *arguments, **options):
        output = self.run_tool(*arguments, **options).stdout
        self.assertEqual(output.count("\n"), 1)
        return json.loads(output)

    def failed(self, *arguments):
        """A command of status 3 that prints an error besides its line."""
        done = subprocess.run([TOOL, *arguments], env={"HOME": str(self.home), "PATH": os.environ["PATH"]},
                              capture_output=True, text=True, timeout=60)
        self.assertEqual(done.returncode, 3)
        self.assertRegex(done.stderr, r"\Aquillmarkctl: [^\n]+: [^\n]+\n\Z")
        return done

    def failed_json(self, *arguments):
        return json.loads(self.failed(*arguments).stdout)

    def failure(self, *arguments, status=3, **options):
        return self.run_tool(*arguments, status=status, **options).stderr

    def copy_app(self):
        """A bundle of the test's own, to be changed."""
        return Path(shutil.copytree(APP, self.home / "Copy.app"))

    def make_bundle(self, path, identifier):
        contents = self.home / path / "Contents"
        contents.mkdir(parents=True)
        (contents / "Info.plist").write_bytes(plistlib.dumps({"CFBundleIdentifier": identifier}))
        return str(self.home / path)
