import json
import plistlib

from tool import APP, ToolTest

VERSION = "1.14.4"


class Status(ToolTest):
    def setUp(self):
        super().setUp()
        self.app = self.copy_app()

    def status(self, *items, status=0, **options):
        """What the tool tells about a catalogue of these items."""
        self.write_catalogue({"RequiredItems": items})
        return self.json("status", "--bundle", self.app, status=status, **options)

    def write_catalogue(self, root):
        (self.app / "Contents/Resources/RequiredItems.plist").write_bytes(plistlib.dumps(root))

    def assert_counters(self, told, **changed):
        """They are those of a catalogue in order, but for the changed ones."""
        in_order = {"numberRepairsRequired": 0, "numberItemsMissing": 0, "helperRepairRequired": False,
                    "macFuseRepairRequired": False, "restartIndex": -1}
        self.assertEqual({key: value for key, value in told.items() if key != "items"}, in_order | changed)

    def item(self, kind, name="x", path="none", **more):
        return {"Type": kind, "Name": name, "InstallPath": str(self.home / path)} | more

    def make_component(self, path, version):
        self.write_file(f"{path}/Contents/Info.plist", plistlib.dumps({"CFBundleShortVersionString": version}))
        return path

    def make_tool(self, script):
        self.write_file("tool", f"#!/bin/sh\n{script}\n").chmod(0o775)  # so that it never is the administrator's
        return "tool"

    def test_the_bundles_own_catalogue_is_told_item_by_item(self):
        done = self.call("status", text=True)
        told = json.loads(done.stdout)
        catalogue = plistlib.loads((APP / "Contents/Resources/RequiredItems.plist").read_bytes())["RequiredItems"]
        self.assertEqual([(item["type"], item["name"], item["installPath"]) for item in told["items"]],
                         [(item["Type"], item["Name"], item.get("InstallPath")) for item in catalogue])
        # What is installed here decides, but the answer fits the counters.
        self.assertEqual(done.returncode, int(told["numberRepairsRequired"] + told["numberItemsMissing"] > 0))

    def test_an_empty_catalogue_is_in_order(self):
        told = self.status()
        self.assertEqual(told["items"], [])
        self.assert_counters(told)

    def test_a_missing_or_damaged_catalogue_is_told_and_not_taken_for_an_empty_one(self):
        catalogue = self.app / "Contents/Resources/RequiredItems.plist"
        catalogue.write_text("no property list")
        for command in ("status", "repair"):
            self.assertEqual(self.failure(command, "--bundle", self.app), f"quillmarkctl: {catalogue}: can't be read\n")
        catalogue.unlink()
        self.assertEqual(self.failure("status", "--bundle", self.app), f"quillmarkctl: {catalogue}: can't be read\n")

    def test_every_item_is_told_with_its_status(self):
        told = self.status(self.item("Bundle", "QuillmarkFS", self.make_component("Q.fs", VERSION), Version=VERSION),
                           self.item("QMTool", "tool"),
                           {"Type": "CoreApp", "Name": "QuillmarkCore", "Resource": "QuillmarkCore.app"}, status=1)
        self.assertEqual(told["items"], [
            {"index": 0, "type": "Bundle", "name": "QuillmarkFS", "installPath": str(self.home / "Q.fs"), "status": "OK"},
            {"index": 1, "type": "QMTool", "name": "tool", "installPath": str(self.home / "none"), "status": "Missing"},
            {"index": 2, "type": "CoreApp", "name": "QuillmarkCore", "installPath": None, "status": "OK"}])
        self.assert_counters(told, numberRepairsRequired=1, numberItemsMissing=1, helperRepairRequired=True)

    def test_the_keys_are_told_whatever_the_language_is(self):
        for language in ("C.UTF-8", "de_DE.UTF-8", "ja_JP.UTF-8"):
            told = self.status(self.item("QMTool"), status=1, LANG=language, LANGUAGE=language[:2])
            self.assertEqual(told["items"][0]["status"], "Missing")

    def test_every_status_has_its_key(self):
        old = self.make_component("Old.plugin", "0.1.0")
        tool = self.make_tool(f"echo 'Tool, Limited {VERSION}.0'")
        told = self.status(self.item("Bundle", path=old, Version="0.1.0"), self.item("FinderCM"),
                           self.item("FinderCM", path=old), self.item("QMTool", path=tool),
                           self.item("Bundle", path=self.make_component("None.fs", ""), Version="1.0.0"),
                           self.item("FinderCM", MaxMacOSX="10.3"), self.item("New type"), status=1)
        self.assertEqual([item["status"] for item in told["items"]],
                         ["OK", "Missing", "Old Version", "Wrong Permissions", "Invalid", "Not Required", "OK"])
        self.assert_counters(told, numberRepairsRequired=3, numberItemsMissing=4, helperRepairRequired=True)

    def test_a_missing_file_system_is_no_repair_of_a_helper(self):
        told = self.status(self.item("Bundle", "QuillmarkFS"), status=1)
        self.assert_counters(told, numberItemsMissing=1, macFuseRepairRequired=True)

    def test_an_old_overlay_is_recorded_for_the_restart(self):
        old = self.make_component("Old.plugin", "0.1.0")
        told = self.status(self.item("Framework"), self.item("FinderOverlayInsert", path=old), status=1)
        self.assertEqual(told["restartIndex"], 1)

    def test_items_that_are_none_keep_their_places(self):
        self.write_catalogue({"RequiredItems": ["text", 7, {"Type": 1}]})
        told = self.json("status", "--bundle", self.app)
        nothing = {"type": "", "name": "", "installPath": None, "status": "OK"}
        self.assertEqual(told["items"], [{"index": index} | nothing for index in range(3)])

    def test_a_tool_that_cannot_be_started_is_old_and_no_failure(self):
        self.write_file("plain", "no program")
        self.assertEqual(self.status(self.item("QMTool", path="plain"), status=1)["items"][0]["status"], "Old Version")

    def test_what_a_tool_prints_does_not_get_among_the_results(self):
        tool = self.make_tool("echo noise; echo noise >&2; echo Limited 0.1.0.0")
        self.assertEqual(self.status(self.item("QMTool", path=tool), status=1)["items"][0]["status"], "Old Version")

    def test_the_log_shows_on_standard_error_when_asked_for(self):
        self.write_catalogue({"RequiredItems": [self.item("Framework", "Runtime")]})
        told = self.run_tool("status", "--bundle", self.app, "--log-level", "verbose").stderr
        self.assertIn('Install check: Framework "Runtime" is "OK"', told)

    def test_ten_thousand_items_are_told(self):
        told = self.status(*[self.item("QMTool", str(number)) for number in range(10_000)], status=1)
        self.assertEqual(len(told["items"]), 10_000)
        self.assertEqual(told["numberRepairsRequired"], 10_000)
