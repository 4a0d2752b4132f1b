"""The stand-in for the core: other tests believe what it writes and shows, so that has to be true."""

import os
import signal

from machine import (CORE, CORE_LOG, LauncherTest, end_with, has_ended, make_user_folder, processes_of, signals, start,
                     wait_until)


class CoreCompanion(LauncherTest):
    def start_core(self, **options):
        # A process left over would keep the pipes of this test's own open.
        return end_with(self, start(CORE, **options))

    def test_writes_its_process_id_into_its_log(self):
        process = self.start_core()
        self.assertEqual(self.core(), process.pid)

    def test_writes_that_it_quits_on_each_signal_that_asks_for_it(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number):
                process = self.start_core()
                self.core()
                process.send_signal(number)
                self.assertEqual(process.wait(timeout=20), 0)
                self.assertRegex(CORE_LOG.read_text(), rf"\[{process.pid}\] quits on signal {int(number)}\n$")

    def test_appends_to_its_log(self):
        for _ in range(3):
            process = self.start_core()
            self.core()
            process.terminate()
            process.wait(timeout=20)
        self.assertEqual(len(CORE_LOG.read_text().splitlines()), 6)

    def test_leaves_ignored_signals_ignored(self):
        process = self.start_core(before=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        self.core()
        self.assertEqual(signals(process.pid, "SigIgn"), {signal.SIGHUP})
        process.send_signal(signal.SIGHUP)
        process.terminate()
        process.wait(timeout=20)
        self.assertRegex(CORE_LOG.read_text(), rf"quits on signal {int(signal.SIGTERM)}\n$")

    def test_leaves_blocked_signals_blocked(self):
        process = self.start_core(before=lambda: signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGTERM}))
        self.core()
        wait_until(lambda: signals(process.pid, "SigBlk") == {signal.SIGTERM}, "the core waits with the given mask")

    def test_runs_on_without_a_log_that_it_can_write(self):
        make_user_folder(CORE_LOG.parent)
        os.chown(CORE_LOG.parent, 0, 0)
        process = self.start_core()
        wait_until(lambda: signals(process.pid, "SigCgt"), "the core is ready for signals")
        self.assertEqual(processes_of(CORE), [process.pid])
        process.terminate()
        self.assertEqual(process.wait(timeout=20), 0)

    def test_sleeps_while_it_waits(self):
        process = self.start_core()
        self.core()

        def sleeps():
            with open(f"/proc/{process.pid}/wchan") as state:
                return "sigsuspend" in state.read()

        wait_until(sleeps, "the core sleeps until a signal comes")
        self.assertFalse(has_ended(process.pid))
