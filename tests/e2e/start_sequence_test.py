"""The whole start-up, step by step as the log tells it, for each way that it can go."""

import subprocess

from components import OVERLAY_TOOL
from machine import APP, PATIENCE, wait_until
from move import DO_NOT_MOVE, DOWNLOADED, MOVE, MoveTest

BEGUN = ["Quillmark version 1.14.4 (1303)", "Quillmark did begin launching..."]
MOVING = ["Moving myself to the Applications folder"]
CHECKED = ["Quillmark did finish launching"]
FAULT = [f'"finderoverlaytool" is not in order: Missing ("{OVERLAY_TOOL}")']


class StartSequence(MoveTest):
    def launched(self, bundle):
        core = self.core_of(bundle)
        return [f'Launching "{core}"...', f'Launched "{core}"', "Will terminate now"]

    def messages(self):
        return [line.split("] ", 2)[2] for line in self.log().splitlines() if "(nrm)" in line or "(ERR)" in line]

    def start_in_order(self, bundle):
        """Of a launcher in the Applications folder, to its end."""
        launcher = self.desktop.start(bundle / "Contents/MacOS/Quillmark", stdout=subprocess.DEVNULL)
        self.assertEqual(launcher.wait(timeout=PATIENCE), 0)

    def test_with_everything_in_order(self):
        self.put_old_copy()
        self.start_in_order(APP)
        self.assert_runs_from(APP, launches=1)
        self.assertEqual(self.messages(), BEGUN + CHECKED + self.launched(APP))

    def test_beside_a_running_core(self):
        self.put_old_copy()
        self.start_in_order(APP)
        self.assert_runs_from(APP, launches=1)
        before = self.messages()
        OVERLAY_TOOL.unlink()
        self.start_launcher()
        self.press("Quit")
        self.assert_ended()
        self.assertEqual(self.messages(),
                         before + BEGUN + ["Letting other copy run, we will terminate", "User did quit"])
        self.assertTrue(DOWNLOADED.exists())
        self.assert_runs_from(APP, launches=2)

    def test_that_moves(self):
        self.put_old_copy()
        self.answer(MOVE)
        self.assert_goes_on(APP, launches=2)
        self.assertEqual(self.messages(), BEGUN + MOVING + BEGUN + CHECKED + self.launched(APP))

    def test_that_does_not_move(self):
        self.answer(DO_NOT_MOVE)
        self.assert_goes_on(DOWNLOADED, launches=1)
        self.assertEqual(self.messages(), BEGUN + CHECKED + self.launched(DOWNLOADED))

    def test_with_a_component_at_fault(self):
        OVERLAY_TOOL.unlink()
        self.answer(DO_NOT_MOVE)
        self.wait_for(lambda tree: tree.all("table cell", "finderoverlaytool"), "the window shows the fault")
        wait_until(lambda: self.messages() == BEGUN + CHECKED + FAULT, "the log tells the fault")

    def test_that_moves_with_a_component_at_fault_shows_it_from_its_new_place(self):
        self.put_old_copy()
        OVERLAY_TOOL.unlink()
        self.answer(MOVE)
        self.assert_ended()
        wait_until(lambda: self.messages() == BEGUN + MOVING + BEGUN + CHECKED + FAULT, "the moved launcher tells the fault")
        self.assertEqual(len(self.launchers()), 1)
