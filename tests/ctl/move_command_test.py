"""What a move into the Applications folder would do, told without doing it."""

import plistlib
import re

from tool import ToolTest

OFFER = "I can move myself to the Applications folder if you'd like."
PASSWORD = f"{OFFER} Note that this will require an administrator password."


class MovePlan(ToolTest):
    def plan(self, app=None, **environment):
        options = ["--bundle", app] if app else []
        return self.json(*options, "move", "plan", **environment)

    def copy_to(self, *parts):
        """A copy of the bundle, in folders of the home folder."""
        place = self.home.joinpath(*parts)
        place.parent.mkdir(parents=True, exist_ok=True)
        return self.copy_app().rename(place)

    def preferences(self, **values):
        self.write_file("Library/Preferences/com.quillmark.QuillmarkLauncher.plist", plistlib.dumps(values))

    def test_tells_everything_about_a_first_move(self):
        app = self.copy_to("Downloads", "First.app")
        plan = self.plan(app)
        process = re.search(r"ps -p (\d+) ", plan["relaunchCommand"]).group(1)
        self.assertEqual(plan, {
            "offer": True, "reason": f'"{app}" lies outside the Applications folders', "source": str(app),
            "destination": "/Applications/First.app", "needsAuthorisation": True, "onDiskImage": False,
            "informativeText": PASSWORD,
            "relaunchCommand": f"(while [ `ps -p {process} | wc -l` -gt 1 ]; do sleep 0.1; done; /usr/bin/xattr -d -r "
                               "com.apple.quarantine '/Applications/First.app'; open '/Applications/First.app') &",
            "detachCommand": None})
        self.assertTrue(app.is_dir())

    def test_is_about_the_tools_own_bundle_unless_another_is_named(self):
        self.assertTrue(self.plan()["source"].endswith("/Quillmark.app"))

    def test_speaks_the_users_language(self):
        plan = self.plan(self.copy_to("Downloads", "First.app"), LANG="de_DE.UTF-8")
        self.assertRegex(plan["informativeText"], "Administrators")

    def test_says_why_nothing_is_offered(self):
        for place, reason in ((("Applications", "A.app"), '"{}" lies in an Applications folder'),
                              (("Desktop", "Applications", "A.app"), 'A folder of "{}" is called Applications'),
                              (("Downloads", "Ada's.app"), 'The path "{}" holds a single quote. Not offering to move it.')):
            with self.subTest(place=place):
                app = self.copy_to(*place)
                plan = self.plan(app)
                self.assertEqual((plan["offer"], plan["reason"]), (False, reason.format(app)))

    def test_says_that_the_user_wants_no_offer(self):
        self.preferences(moveToApplicationsFolderAlertSuppress=True)
        plan = self.plan(self.copy_to("Downloads", "A.app"))
        self.assertEqual((plan["offer"], plan["reason"]), (False, "The user asked not to be asked again"))

    def test_goes_by_the_bundles_own_defaults_too(self):
        app = self.copy_to("Downloads", "A.app")
        defaults = app / "Contents/Resources/Defaults.plist"
        values = plistlib.loads(defaults.read_bytes())
        defaults.write_bytes(plistlib.dumps(values | {"moveToApplicationsFolderAlertSuppress": True}))
        self.assertFalse(self.plan(app)["offer"])
        self.preferences(moveToApplicationsFolderAlertSuppress=False)
        self.assertTrue(self.plan(app)["offer"])

    def test_says_that_preferences_can_not_be_read(self):
        (self.home / "Library/Preferences/com.quillmark.QuillmarkLauncher.plist").mkdir(parents=True)
        self.assertIn("can't be read", self.failure("move", "plan"))

    def test_takes_no_other_type_for_the_users_wish(self):
        self.preferences(moveToApplicationsFolderAlertSuppress=["YES"])
        self.assertTrue(self.plan(self.copy_to("Downloads", "A.app"))["offer"])

    def test_a_wrong_command_line_is_status_2(self):
        for arguments in ([], ["plan", "x"], ["plans"]):
            self.failure("move", *arguments, status=2)
