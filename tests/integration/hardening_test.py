"""Every program and library of the bundle is built so that a mistake in memory is hard to make use of."""

import os
import re
import subprocess
import unittest
from pathlib import Path

APP = Path(os.environ["QUILLMARK_APP"])


def read(path, *options):
    return subprocess.run(["readelf", "--wide", *options, path], capture_output=True, text=True, check=True).stdout


class Hardening(unittest.TestCase):
    def files(self):
        """All that is machine code."""
        found = []
        for path in sorted(APP.rglob("*")):
            if path.is_file() and not path.is_symlink():
                with path.open("rb") as file:
                    if file.read(4) == b"\x7fELF":
                        found.append(path)
        names = {path.name for path in found}
        self.assertLessEqual({"Quillmark", "updateqm", "finderoverlaytool", "quillmark-root-helper", "QuillmarkCore", "open", "ps",
                              "libquillmark-windows.so"}, names)
        return found

    def test_loads_at_any_address(self):
        for path in self.files():
            with self.subTest(path.name):
                self.assertIn("DYN (", read(path, "--file-header"))
                self.assertNotIn("TEXTREL", read(path, "--dynamic"))

    def test_has_no_stack_that_can_be_executed(self):
        for path in self.files():
            with self.subTest(path.name):
                self.assertRegex(read(path, "--program-headers"), r"GNU_STACK .* RW +0x")

    def test_lets_nobody_change_where_calls_go(self):
        for path in self.files():
            with self.subTest(path.name):
                self.assertIn("GNU_RELRO", read(path, "--program-headers"))
                self.assertRegex(read(path, "--dynamic"), r"\(FLAGS_1\).*NOW|\(BIND_NOW\)|\(FLAGS\).*BIND_NOW")

    def test_has_no_folder_of_libraries_of_its_own(self):
        for path in self.files():
            with self.subTest(path.name):
                self.assertNotRegex(read(path, "--dynamic"), r"\((RPATH|RUNPATH)\)")

    def test_checks_its_stack_and_what_it_copies(self):
        """As far as it has something to check, which all of these have."""
        for path in self.files():
            with self.subTest(path.name):
                imported = set(re.findall(r"UND (\w+)", read(path, "--dyn-syms")))
                self.assertIn("__stack_chk_fail", imported)
        checked = {name for path in self.files() for name in re.findall(r"UND (__\w+_chk)", read(path, "--dyn-syms"))}
        self.assertTrue(checked)
