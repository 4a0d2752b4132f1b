"""./run where no private root can be made, as in a plain container: it is lent the machine's own folders, and takes away what
it has put there, and nothing else. The machine is this test's private root, whose root user is left without the right to
mount."""

import os
import shutil
import signal
import stat
import subprocess
import unittest
from pathlib import Path

from desktop import require_accessibility
from machine import wait_until

PROJECT = Path("/run/project")
BUNDLE = PROJECT / "build/release/Quillmark.app"
APPLICATIONS, LIBRARY = FOLDERS = Path("/Applications"), Path("/Library")
WITHOUT_MOUNTS = ["setpriv", "--bounding-set=-sys_admin", "--inh-caps=-sys_admin"]
RUN = [*WITHOUT_MOUNTS, PROJECT / "run", "--no-build"]
OUTPUT = Path("/run/output")
CORE = APPLICATIONS / "Quillmark.app/Contents/Resources/QuillmarkCore.app/Contents/MacOS/QuillmarkCore"


def everything():
    """All files and folders that ./run could leave behind, with their modes."""
    tops = [Path("/tmp"), Path("/root"), *Path("/run").glob("quillmark*"), *(folder for folder in FOLDERS if folder.exists())]
    return {path: oct(path.lstat().st_mode) for top in tops for path in [top, *top.rglob("*")]}


def processes():
    """The command lines of all that runs here besides the test itself."""
    found = []
    for entry in Path("/proc").glob("[0-9]*"):
        try:
            command = (entry / "cmdline").read_bytes().replace(b"\0", b" ").decode()
            parent = int((entry / "stat").read_text().rpartition(")")[2].split()[1])
        except OSError:
            continue
        if command and int(entry.name) not in (1, os.getpid()) and "plain_container_test" not in command and parent != 0:
            found.append(command)
    return found


class PlainContainer(unittest.TestCase):
    def setUp(self):
        BUNDLE.parent.mkdir(parents=True)
        shutil.move(APPLICATIONS / "Quillmark.app", BUNDLE)
        for folder in FOLDERS:
            subprocess.run(["umount", folder], check=True)
            folder.rmdir()
        Path("/run/quillmark-updateqm.lock").unlink()  # of the installation that was moved away
        self.before = everything()

    def run_script(self, *options):
        """\\returns the status and the lines that ./run has printed."""
        with OUTPUT.open("w") as output:  # no pipe, which what is kept up would hold open
            status = subprocess.run([*RUN, *options], env=self.environment(), stdin=subprocess.DEVNULL, stdout=output,
                                    stderr=output, timeout=90).returncode
        return status, OUTPUT.read_text().splitlines()

    def run_to_status(self, status, *options):
        """\\returns the lines that it has printed."""
        ended_with, lines = self.run_script(*options)
        self.assertEqual(ended_with, status, lines)
        return lines

    def environment(self):
        return {name: value for name, value in os.environ.items() if name != "DISPLAY"}

    def assert_nothing_left(self):
        self.assertEqual(everything(), self.before)
        self.assertEqual(processes(), [])

    def keep_up(self):
        """./run --keep. \\returns the command that takes it away again."""
        lines = self.run_to_status(0, "--keep")
        command = next(line.partition("remove it:")[2].split() for line in lines if "remove it:" in line)
        self.addCleanup(subprocess.run, command, capture_output=True)
        return command

    def take_away(self, command):
        # What stays is told by the one that was kept up, whose output was that of ./run.
        subprocess.run(command, check=True, timeout=60)
        self.assertEqual(processes(), [])

    def test_starts_the_core_and_leaves_nothing(self):
        lines = self.run_to_status(0)
        self.assertRegex(lines[-1], r"^run: core started \(pid \d+\)$")
        self.assert_nothing_left()

    def test_says_in_one_line_what_is_forbidden_and_what_to_do(self):
        lines = [line for line in self.run_script()[1] if "no private root here" in line]
        self.assertEqual(len(lines), 1)
        for words in ("CAP_SYS_ADMIN", "docker run --cap-add SYS_ADMIN", "podman run", "own /Applications and /Library"):
            self.assertIn(words, lines[0])

    def test_repairs_what_is_broken(self):
        require_accessibility()
        lines = self.run_to_status(0, "--broken")
        self.assertRegex(lines[-1], r"^run: core started \(pid \d+\)$")
        self.assertIn('pressing "Continue"', "\n".join(lines))
        self.assert_nothing_left()

    def test_leaves_folders_that_were_empty_as_they_were(self):
        APPLICATIONS.mkdir()
        APPLICATIONS.chmod(0o775)
        self.before = everything()
        self.run_to_status(0)
        self.assert_nothing_left()

    def test_refuses_folders_that_are_in_use(self):
        LIBRARY.mkdir()
        (LIBRARY / "precious").write_text("mine")
        self.before = everything()
        lines = self.run_to_status(1)
        self.assertRegex(lines[-1], r"^run: failed: .*/Library is in use here \(it holds precious\): move it away first")
        self.assert_nothing_left()

    def test_refuses_a_folder_that_is_a_link(self):
        Path("/tmp/elsewhere").mkdir()
        APPLICATIONS.symlink_to("/tmp/elsewhere")
        self.before = everything()
        lines = self.run_to_status(1)
        self.assertIn("/Applications is in use here", lines[-1])
        self.assert_nothing_left()

    def test_does_not_share_the_folders_with_another_run(self):
        self.keep_up()
        lines = self.run_to_status(1)
        self.assertIn("/Applications is in use here", lines[-1])
        self.assertTrue(CORE.exists())

    def test_leaves_nothing_when_it_is_interrupted_whenever_that_is(self):
        moments = {
            "while it installs": lambda: (APPLICATIONS / "Quillmark.app").exists(),
            "before the launcher runs": lambda: (LIBRARY / "Filesystems/QuillmarkFS.fs").exists(),
            "while the core runs": lambda: any(str(CORE) in command for command in processes()),
        }
        for what, moment in moments.items():
            for number in (signal.SIGINT, signal.SIGTERM):
                with self.subTest(what, signal=number.name):
                    script = subprocess.Popen([*RUN, "--log-level", "detailed"], env=self.environment(),
                                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                              preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
                    wait_until(moment, what)
                    script.send_signal(number)
                    self.assertIn(script.wait(timeout=60), (130, 0))
                    self.assert_nothing_left()

    def test_leaves_nothing_of_a_display_that_could_not_tidy_up(self):
        command = self.keep_up()
        subprocess.run(["pkill", "-KILL", "Xvfb"], check=True)
        self.take_away(command)
        self.assertEqual(everything(), self.before)

    def test_leaves_nothing_when_the_installation_ends_half_way(self):
        (BUNDLE / "Contents/Resources/updateqm").write_text("#!/bin/false\n")
        self.run_to_status(1)
        self.assert_nothing_left()

    def test_leaves_what_others_have_put_there(self):
        command = self.keep_up()
        strangers = [APPLICATIONS / "Other.app", APPLICATIONS / "Quillmark.app/Contents/note",
                     LIBRARY / "Application Support/Other", LIBRARY / "Frameworks/QuillmarkRuntime.framework/mine"]
        for path in strangers:
            path.write_text("mine")
        self.take_away(command)
        left = {path for folder in FOLDERS for path in folder.rglob("*") if not path.is_dir()}
        self.assertEqual(left, set(strangers))

    def test_removes_nothing_through_a_link(self):
        command = self.keep_up()
        elsewhere = Path("/tmp/elsewhere")
        shutil.move(LIBRARY / "Filesystems", elsewhere)
        (LIBRARY / "Filesystems").symlink_to(elsewhere)
        before = sorted(elsewhere.rglob("*"))
        self.take_away(command)
        self.assertEqual(sorted(elsewhere.rglob("*")), before)

    def test_does_not_follow_a_link_that_stands_for_an_applications_folder(self):
        command = self.keep_up()
        elsewhere = Path("/tmp/elsewhere")
        APPLICATIONS.rename("/Moved")
        elsewhere.mkdir()
        (elsewhere / "Quillmark.app").write_text("mine")
        APPLICATIONS.symlink_to(elsewhere)
        self.take_away(command)
        self.assertTrue(stat.S_ISLNK(APPLICATIONS.lstat().st_mode))
        self.assertEqual((elsewhere / "Quillmark.app").read_text(), "mine")
