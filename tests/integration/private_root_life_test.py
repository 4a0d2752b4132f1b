"""How a private root begins and ends, seen from the host."""

import os
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

PRIVROOT = Path(__file__).resolve().parents[2] / "scripts/private-root/privroot"


def setUpModule():
    with tempfile.TemporaryDirectory(dir=".") as folder:
        Path(folder, "setup.sh").touch()
        probe = subprocess.run([PRIVROOT, f"{folder}/state", f"{folder}/setup.sh", "true"],
                               capture_output=True, text=True)
        subprocess.run([PRIVROOT, "--remove", f"{folder}/state"])
    if probe.returncode == 77:
        print(probe.stderr, end="")
        sys.exit(77)


class PrivateRootLife(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory(dir=".")))
        self.state = self.folder / "state"
        self.setup = self.folder / "setup.sh"
        self.setup.write_text(":\n")
        self.addCleanup(self.remove)

    def privroot(self, *arguments):
        return subprocess.run([PRIVROOT, *arguments], capture_output=True, text=True, timeout=30)

    def remove(self):
        return self.privroot("--remove", self.state)

    def in_root(self, *command):
        return self.privroot(self.state, self.setup, *command)

    def start_in_root(self):
        """A root that is up until somebody ends it."""
        process = subprocess.Popen([PRIVROOT, self.state, self.setup, "sh", "-c", "echo up; sleep 1000"],
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.addCleanup(lambda: (process.kill(), process.communicate()))
        self.assertEqual(process.stdout.readline(), b"up\n")
        return process

    def test_passes_the_commands_words_and_status_on(self):
        result = self.in_root("sh", "-c", 'echo "$(id -un 2>/dev/null || id -u)" "$HOME" "$1"; exit 5', "sh", "a b")
        self.assertEqual(result.returncode, 5)
        self.assertTrue(result.stdout.endswith(" /home/t a b\n"), result.stdout)

    def test_does_not_run_the_command_when_the_setup_fails(self):
        self.setup.write_text("false\n")
        result = self.in_root("echo", "ran")
        self.assertNotEqual(result.returncode, 0)
        self.assertEqual(result.stdout, "")

    def test_keeps_its_files_from_other_users(self):
        self.in_root("true")
        self.assertEqual(self.state.stat().st_mode & 0o777, 0o700)

    def test_leaves_no_process_when_the_command_ends(self):
        result = self.in_root("sh", "-c", "sleep 1000 >/dev/null 2>&1 & cat /proc/self/mountinfo | wc -l")
        self.assertEqual(result.returncode, 0)
        self.assert_no_process()

    def test_leaves_no_mount_on_the_host(self):
        before = Path("/proc/self/mounts").read_text()
        self.in_root("true")
        self.assertEqual(Path("/proc/self/mounts").read_text(), before)

    def test_ends_with_its_starter(self):
        process = self.start_in_root()
        process.kill()
        process.wait()
        self.assert_no_process()

    def test_is_removed_with_everything_while_it_is_up(self):
        self.start_in_root()
        result = self.remove()
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        self.assertFalse(self.state.exists())
        self.assert_no_process()

    def test_can_be_removed_twice(self):
        self.in_root("true")
        for _ in range(2):
            self.assertEqual(self.remove().returncode, 0)

    def test_can_be_entered_while_it_is_up(self):
        self.start_in_root()
        result = self.privroot("--enter", self.state, "sh", "-c", "id -u; ls /home; cat /proc/1/comm")
        self.assertEqual(result.stdout, "0\nt\nprivroot\n")

    def test_cannot_be_entered_when_it_has_ended(self):
        self.in_root("true")
        result = self.privroot("--enter", self.state, "true")
        self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 1))

    def assert_no_process(self):
        """No process is left that was started for this root."""
        end = time.monotonic() + 20
        while remaining := self.processes():
            self.assertLess(time.monotonic(), end, f"still there: {remaining}")
            time.sleep(0.01)

    def processes(self):
        name = os.fsencode(self.state.resolve())
        found = []
        for entry in Path("/proc").glob("[0-9]*"):
            try:
                if name in (entry / "cmdline").read_bytes():
                    found.append(entry.name)
            except OSError:
                pass  # ended meanwhile
        return found
