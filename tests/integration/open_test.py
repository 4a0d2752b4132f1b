"""The program that starts application bundles for the launcher's shells."""

import shutil
import unittest
from pathlib import Path

from machine import APP, CORE, HOME, end_cores, environment, processes_of, run, wait_until

OPEN = APP / "Contents/Helpers/open"
CORE_APP = CORE.parents[2]


class Open(unittest.TestCase):
    def open(self, *arguments, **options):
        done = run(OPEN, *arguments, **options)
        self.assertEqual(done.stdout, "")
        return done.returncode, done.stderr

    def test_starts_a_bundle_however_it_is_named(self):
        Path("/tmp/link").symlink_to(CORE_APP)
        names = (CORE_APP, f"{CORE_APP}/", CORE_APP.name, "../Resources/" + CORE_APP.name, "/tmp/link")
        for name in names:
            with self.subTest(name):
                self.assertEqual(self.open(name, cwd=CORE_APP.parent), (0, ""))
                wait_until(lambda: processes_of(CORE), "the application runs")
                end_cores()

    def test_starts_what_runs_not_again(self):
        self.assertEqual(self.open(CORE_APP), (0, ""))
        running = wait_until(lambda: processes_of(CORE), "the application runs")
        self.assertEqual(self.open(CORE_APP), (0, ""))
        self.assertEqual(processes_of(CORE), running)

    def test_leaves_its_own_folder_out_of_the_search_path_of_what_it_starts(self):
        helpers = OPEN.parent
        for path in (f"{helpers}:/usr/bin:/bin", f"/usr/bin:{helpers}/:/bin:{helpers}"):
            self.assertEqual(self.open(CORE_APP, env=environment(PATH=path)), (0, ""))
            core = wait_until(lambda: processes_of(CORE), "the application runs")[0]
            variables = Path(f"/proc/{core}/environ").read_bytes().split(b"\0")
            self.assertIn(b"PATH=/usr/bin:/bin", variables)
            end_cores()

    def test_names_what_is_no_application_bundle(self):
        (HOME / "File.app").write_text("x")
        for name in ("/no/such.app", "/usr/bin/true", "/usr/bin", HOME / "File.app", ""):
            with self.subTest(name):
                self.assertEqual(self.open(name), (1, f'open: "{name}" is not an application bundle\n'))

    def test_names_what_cannot_be_started(self):
        (HOME / "Empty.app").mkdir()
        broken = HOME / "Broken.app"
        shutil.copytree(CORE_APP, broken)
        (broken / "Contents/MacOS" / CORE.name).chmod(0o644)
        for bundle in (HOME / "Empty.app", broken):
            self.assertEqual(self.open(bundle), (1, f'open: "{bundle}" can\'t be started\n'))

    def test_takes_one_path(self):
        for arguments in ((), (CORE_APP, CORE_APP)):
            self.assertEqual(self.open(*arguments), (1, "open: it takes the path of one application bundle\n"))
        self.assertEqual(processes_of(CORE), [])
