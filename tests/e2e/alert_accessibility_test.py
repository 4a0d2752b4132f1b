"""The alert beside a running core, as an assistive program finds, reads and presses it."""

from desktop import WindowTest, is_alert_ready, require_accessibility
from machine import CORE, LAUNCHER, PATIENCE, processes_of, run_launcher

MESSAGE = "Quillmark is already running."
INFORMATION = ("Only one copy of Quillmark can run at a time. To use this copy, first quit the one that is running, then "
               "open Quillmark again.")

setUpModule = require_accessibility


class AlertAccessibility(WindowTest):
    def setUp(self):
        self.assertEqual(run_launcher().returncode, 0)
        self.running_core = self.core()
        super().setUp()
        self.launcher = self.desktop.start(LAUNCHER)
        self.tree = self.wait_for(is_alert_ready, "the alert is up")

    def test_is_an_alert_with_the_name_of_its_title_and_both_texts(self):
        self.assertEqual((self.tree.role, self.tree.name), ("application", "Quillmark"))
        alert = self.tree.one("alert")
        self.assertEqual((alert.name, alert.description), ("Quillmark", f"{MESSAGE} {INFORMATION}"))
        self.assertIn("active", alert.states)
        for text in (MESSAGE, INFORMATION):
            self.assertIn("showing", alert.one("label", text).states)
        self.desktop.take_picture("alert-beside-a-running-core")

    def test_is_read_from_the_icon_over_the_texts_to_the_button(self):
        # The icon says nothing that the texts don't: it is a place without a name, which is passed over.
        self.assertEqual([(part.role, part.name) for part in self.tree.one("alert").children],
                         [("filler", ""), ("label", MESSAGE), ("label", INFORMATION), ("push button", "Quit")])

    def test_has_one_button_which_has_the_focus_and_can_be_pressed(self):
        button = self.tree.one("push button")
        self.assertEqual((button.name, button.actions[0]), ("Quit", "Press"))
        for state in ("enabled", "showing", "focused", "is-default"):
            self.assertIn(state, button.states)
        self.assertEqual(self.tree.all(state="focused"), [button])

    def test_ends_the_launcher_and_not_the_core_when_its_button_is_pressed(self):
        self.press("Quit")
        self.assertEqual(self.launcher.wait(timeout=PATIENCE), 0)
        self.assertEqual(processes_of(CORE), [self.running_core])
