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

    def call(self, *arguments, program=TOOL, environment=None, **options):
        """Runs the tool to its end, whatever its status is then; without input unless the options, which are those of
        subprocess.run, say otherwise."""
        values = {"HOME": str(self.home), "PATH": os.environ["PATH"], "LANG": "C.UTF-8"} | (environment or {})
        streams = {} if "input" in options else {"stdin": subprocess.DEVNULL}
        streams |= {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
        return subprocess.run([program, *map(str, arguments)], env=values, timeout=60, **(streams | options))

    def run_tool(self, *arguments, status=0, may_print=False, stdout=subprocess.PIPE, **environment):
        """Runs the tool and checks its status; one line on standard error for the statuses 2 and 3, else none."""
        done = self.call(*arguments, stdout=stdout, text=True, environment=environment)
        self.assertEqual(done.returncode, status, done.stderr)
        if status >= 2:
            self.assertRegex(done.stderr, r"\Aquillmarkctl: [^\n]+: [^\n]+\n\Z")
            self.assertTrue(may_print or not done.stdout, done.stdout)
        return done

    def run_with_input(self, *arguments, text="", status=0, **environment):
        """Standard output of the tool that reads the text, which may be bytes. `self.error_text` is one line for the statuses 2
        and 3, else empty."""
        done = self.call(*arguments, input=text if isinstance(text, bytes) else text.encode(), environment=environment)
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
        return self.run_tool(*arguments, status=3, may_print=True)

    def failed_json(self, *arguments):
        return json.loads(self.failed(*arguments).stdout)

    def failure(self, *arguments, status=3, **options):
        return self.run_tool(*arguments, status=status, **options).stderr

    def copy_app(self):
        """A bundle of the test's own, to be changed."""
        return Path(shutil.copytree(APP, self.home / "Copy.app"))

    def write_file(self, name, contents):
        """A file in the home folder, of a text or of bytes, with the folders above it. \\returns its path."""
        path = self.home / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(contents if isinstance(contents, bytes) else contents.encode())
        return path

    def make_bundle(self, path, identifier):
        self.write_file(f"{path}/Contents/Info.plist", plistlib.dumps({"CFBundleIdentifier": identifier}))
        return str(self.home / path)
