"""The list of processes that the launcher's questions go by."""

import os
import subprocess
import unittest
from pathlib import Path

from machine import APP, end_with

PS = APP / "Contents/Helpers/ps"
SYSTEMS = "/usr/bin/ps"


def printed(*arguments, program=PS, **options):
    done = subprocess.run([program, *arguments], capture_output=True, text=True, timeout=20, **options)
    return done.stdout.splitlines()


class Ps(unittest.TestCase):
    def run_named(self, name):
        program = Path("/tmp/named") / name
        program.parent.mkdir(exist_ok=True)
        program.write_bytes(Path("/bin/sleep").read_bytes())
        program.chmod(0o755)
        process = end_with(self, subprocess.Popen([program, "1000"]))
        while not os.readlink(f"/proc/{process.pid}/exe").startswith("/tmp"):
            os.sched_yield()
        return process

    def test_lists_what_the_systems_own_lists(self):
        self.run_named("short")
        ours, systems = printed("ax", "-o", "comm"), printed("ax", "-o", "comm", program=SYSTEMS)
        self.assertEqual(ours[0], "COMMAND")
        self.assertEqual(sorted(name[:15] for name in ours[1:] if name != "ps"),
                         sorted(name[:15] for name in systems[1:] if name != "ps"))

    def test_tells_whole_names(self):
        self.run_named("a name that is longer than the process table's")
        self.assertIn("a name that is longer than the process table's", printed("ax", "-o", "comm"))

    def test_a_name_takes_one_line(self):
        self.run_named("two\nlines")
        self.assertIn("two?lines", printed("ax", "-o", "comm"))

    def test_a_name_may_hold_what_the_system_puts_around_it(self):
        self.run_named("a) Z (b")
        self.assertIn("a) Z (b", printed("ax", "-o", "comm"))

    def test_tells_of_one_process_until_it_has_ended(self):
        process = self.run_named("short")
        self.assertEqual(len(printed("-p", str(process.pid))), 2)
        process.kill()
        os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)  # it has ended, and nobody has asked for its status
        self.assertEqual(len(printed("-p", str(process.pid))), 1)
        process.wait()
        self.assertEqual(len(printed("-p", str(process.pid))), 1)

    def test_leaves_all_else_to_the_system(self):
        path = f"{PS.parent}:{os.environ['PATH']}"
        self.assertEqual(printed("-o", "pid=", "-p", str(os.getpid()), env={"PATH": path})[0].strip(), str(os.getpid()))
        done = subprocess.run([PS, "-ef"], env={"PATH": str(PS.parent)}, capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("ps: ", done.stderr)

    def test_stands_before_the_systems_own_with_a_fgrep_that_says_nothing_of_itself(self):
        path = f"{PS.parent}:{os.environ['PATH']}"
        done = subprocess.run(["/bin/sh", "-c", "command -v ps; echo 'a.b' | fgrep 'a.b'; echo 'axb' | fgrep 'a.b'"],
                              env={"PATH": path}, capture_output=True, text=True)
        self.assertEqual((done.stdout, done.stderr), (f"{PS}\na.b\n", ""))
