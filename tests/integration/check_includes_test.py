"""What the check of the sources' includes finds, in a small project of the test's own."""

import subprocess
import tempfile
import unittest
from pathlib import Path

CHECK = Path(__file__).resolve().parents[2] / "scripts/check-includes.py"


class CheckIncludes(unittest.TestCase):
    def check(self, includes):
        """\\returns the status and what is printed for sources that include each other so."""
        with tempfile.TemporaryDirectory() as folder:
            for source, included in includes.items():
                for path, text in ((Path(folder, source), f'#include "{included}"\n'), (Path(folder, "src", included), "")):
                    path.parent.mkdir(parents=True, exist_ok=True)
                    with path.open("a") as file:
                        file.write(text)
            result = subprocess.run([CHECK, folder], capture_output=True, text=True)
            self.assertEqual(result.stderr, "")
            return result.returncode, result.stdout.splitlines()

    def test_says_nothing_of_folders_that_only_include_downwards(self):
        self.assertEqual(self.check({"src/a/A.cpp": "b/B.h", "src/b/B.cpp": "platform/P.h", "ctl/C.cpp": "a/A.h",
                                     "src/platform/P.cpp": "platform/linux/L.h"}), (0, [""]))

    def test_names_the_way_of_a_circle_of_folders(self):
        status, lines = self.check({"src/a/A.h": "b/B.h", "src/b/B.h": "c/C.h", "src/c/C.cpp": "a/A.h"})
        self.assertEqual((status, lines[0]), (1, "a circle of folders: src/a -> src/b -> src/c -> src/a"))

    def test_names_a_circle_of_the_folders_of_a_program_that_starts_its_names_in_its_own_folder(self):
        for program in ("ctl", "companions/updateqm"):
            with self.subTest(program):
                status, lines = self.check({f"{program}/a/A.h": "b/B.h", f"{program}/b/B.cpp": "a/A.h", f"{program}/b/B.h": "C.h"})
                self.assertEqual((status, lines[0]), (1, f"a circle of folders: {program}/a -> {program}/b -> {program}/a"))

    def test_names_who_knows_a_backend(self):
        for source in ("src/tools/T.cpp", "ctl/C.cpp", "companions/c/main.cpp"):
            with self.subTest(source):
                self.assertEqual(self.check({source: "platform/linux/L.h"}),
                                 (1, [f"{source} includes src/platform/linux/L.h: only a port may be used"]))
