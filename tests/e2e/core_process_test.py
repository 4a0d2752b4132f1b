"""The core must owe nothing to the launcher: the launcher ends at once, and the core runs for days."""

import fcntl
import os
import signal
import termios

from machine import (CORE, CORE_LOG, LAUNCHER, LauncherTest, descriptors, has_ended, run_launcher, signals, start,
                     status_of, wait_until)

NOTHING = {0: "/dev/null", 1: "/dev/null", 2: "/dev/null"}


class CoreProcess(LauncherTest):
    def assert_holds_nothing_but_its_log(self, core):
        held = {number: path for number, path in descriptors(core).items() if path != str(CORE_LOG)}
        self.assertEqual(held, NOTHING)

    def test_runs_on_when_the_launcher_has_ended(self):
        core = self.assert_started(run_launcher())
        self.assertEqual(status_of(core)["PPid"], "1", "its parent was to be gone")
        self.assertFalse(has_ended(core))

    def test_leads_a_session_of_its_own(self):
        core = self.assert_started(run_launcher())
        self.assertEqual((os.getsid(core), os.getpgid(core)), (core, core))

    def test_runs_on_when_the_terminal_that_the_launcher_was_started_in_is_closed(self):
        terminal, side = os.openpty()
        launcher = start(LAUNCHER, stdin=side, stdout=side, stderr=side, start_new_session=True,
                         before=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        self.assertEqual(launcher.wait(timeout=20), 0)
        core = self.core()
        os.close(side)
        os.close(terminal)
        with open(f"/proc/{core}/stat") as stat:
            terminal_of_core = stat.read().rpartition(")")[2].split()[4]
        self.assertEqual(terminal_of_core, "0", "it was to have no terminal")
        self.assertFalse(has_ended(core))

    def test_belongs_to_the_user(self):
        run_launcher()
        self.assertEqual(set(status_of(self.core())["Uid"].split()), {"1001"})

    def test_holds_no_descriptor_of_the_launcher(self):
        run_launcher()
        self.assert_holds_nothing_but_its_log(self.core())

    def test_holds_no_descriptor_that_the_launcher_was_given(self):
        files = [os.open("/etc/hostname", os.O_RDONLY) for _ in range(5)]
        far = os.dup2(files[0], 200)
        run_launcher(pass_fds=[*files, far])
        self.assert_holds_nothing_but_its_log(self.core())

    def test_has_the_null_device_even_when_the_launcher_has_no_standard_streams(self):
        def close_all():
            for number in range(3):
                os.close(number)

        self.assertEqual(run_launcher(before=close_all).returncode, 0)
        self.assert_holds_nothing_but_its_log(self.core())

    def test_blocks_no_signal_even_when_the_launcher_did(self):
        blocked = {signal.SIGTERM, signal.SIGCHLD, signal.SIGUSR1}
        run_launcher(before=lambda: signal.pthread_sigmask(signal.SIG_BLOCK, blocked))
        self.assertEqual(signals(self.core(), "SigBlk"), set())

    def test_ignores_no_signal_even_when_the_launcher_did(self):
        def ignore():
            for number in (signal.SIGHUP, signal.SIGPIPE, signal.SIGINT, signal.SIGCHLD):
                signal.signal(number, signal.SIG_IGN)

        run_launcher(before=ignore)
        self.assertEqual(signals(self.core(), "SigIgn"), set())

    def test_quits_when_asked_even_when_the_launcher_would_not_have(self):
        run_launcher(before=lambda: signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGTERM}))
        core = self.core()
        os.kill(core, signal.SIGTERM)
        wait_until(lambda: has_ended(core), "the core has quit")
        self.assertIn(f"QuillmarkCore[{core}] quits on signal {signal.SIGTERM}", CORE_LOG.read_text())

    def test_keeps_no_folder_busy(self):
        run_launcher()
        self.assertEqual(os.readlink(f"/proc/{self.core()}/cwd"), "/")

    def test_is_started_by_its_full_path_and_without_arguments(self):
        run_launcher()
        with open(f"/proc/{self.core()}/cmdline") as file:
            self.assertEqual(file.read().split("\0"), [str(CORE), ""])
