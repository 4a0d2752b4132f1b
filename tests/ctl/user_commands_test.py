"""The support tool's view of the accounts, over a preference file of the test's own."""

import plistlib

from tool import ToolTest

DEFAULTS = {"ConnectionSpeedDown": 512, "ConnectionSpeedUp": 64, "ConnectionCount": 4, "DownloadBandwidth": 100,
            "UploadBandwidth": 100, "EncryptTransfers": 1}


class User(ToolTest):
    def setUp(self):
        super().setUp()
        self.preferences = self.home / "Library/Preferences/com.quillmark.QuillmarkLauncher.plist"
        self.preferences.parent.mkdir(parents=True)

    def plant(self, *records, **values):
        self.preferences.write_bytes(plistlib.dumps({"UserList": list(records)} | values))

    def stored(self):
        return plistlib.loads(self.preferences.read_bytes())

    def user(self, *arguments, **options):
        return self.run_tool("user", *arguments, **options)

    def test_users_are_listed_in_stored_order(self):
        self.assertEqual(self.json("user", "list"), [])
        self.plant({"UserName": "bert"}, {"Other": 1}, {"UserName": "anna"})
        self.assertEqual(self.json("user", "list"), ["bert", None, "anna"])

    def test_a_record_is_shown_as_it_is_stored(self):
        record = {"UserName": "anna", "BrandID": 15, "Nested": {"a": [1, True, "x"]}}
        self.plant(record)
        self.assertEqual(self.json("user", "show", "anna"), record)
        self.user("show", "bert", status=1)

    def test_a_value_is_got_by_any_accessor(self):
        self.plant({"UserName": "anna", "BrandID": "15", "List": [1, "two"], "ConnectionCount": 4, "Big": 2 ** 40})
        for form, key, expected in (("any", "BrandID", "15"), ("string", "BrandID", "15"), ("int", "BrandID", 15),
                                    ("array", "List", [1, "two"]), ("any", "List", [1, "two"]), ("any", "Nothing", None),
                                    ("int", "Nothing", None), ("int", "List", None), ("any", "ConnectionCount", 1),
                                    ("string", "ConnectionCount", "1"), ("int", "ConnectionCount", 1),
                                    ("long", "Big", 2 ** 40), ("int", "Big", 2 ** 31 - 1)):
            with self.subTest(form=form, key=key):
                self.assertEqual(self.json("user", "get", "anna", key, "--as", form), expected)
        self.assertEqual(self.json("user", "get", "anna", "Nothing", "--as", "int", "--default", "-1"), -1)
        self.assertEqual(self.json("user", "get", "bert", "EncryptTransfers", "--as", "int", "--default", "0"), 1)
        self.user("get", "anna", "BrandID", "--as", "colour", status=2)

    def test_a_value_that_is_set_makes_a_record_with_the_defaults(self):
        self.user("set", "anna", "FirstName", "Anna")
        self.user("set", "anna", "BrandID", "15", "--type", "int")
        self.user("set", "anna", "OnlinePref", "yes", "--type", "bool")
        self.assertEqual(self.stored()["UserList"], [DEFAULTS | {"UserName": "anna", "FirstName": "Anna", "BrandID": 15,
                                                                 "OnlinePref": True}])
        self.user("unset", "anna", "FirstName")
        self.assertNotIn("FirstName", self.stored()["UserList"][0])
        self.user("unset", "anna", "FirstName", status=1)
        self.user("unset", "bert", "EncryptTransfers", status=1)

    def test_a_value_of_the_wrong_type_is_told_of(self):
        self.assertIn("BrandID", self.user("set", "anna", "BrandID", "many", "--type", "int", status=3).stderr)
        self.assertIn("OnlinePref", self.user("set", "anna", "OnlinePref", "maybe", "--type", "bool", status=3).stderr)
        self.assertFalse(self.preferences.exists())

    def test_a_secret_is_not_taken_from_the_command_line(self):
        for key in ("Password", "State"):
            error = self.user("set", "anna", key, "s3cret", status=2).stderr
            self.assertNotIn("s3cret", error)

    def test_preferences_that_can_not_be_written_are_named(self):
        self.preferences.parent.rmdir()
        self.preferences.parent.write_text("in the way")
        self.assertIn(str(self.preferences), self.user("set", "anna", "FirstName", "Anna", status=3).stderr)

    def test_an_account_is_renamed(self):
        self.plant({"UserName": "anna", "AccountId": 5}, {"UserName": "bert", "AccountId": 6})
        self.user("rename", "5", "new")
        self.assertEqual(self.stored()["UserList"], [{"UserName": "bert", "AccountId": 6}, {"UserName": "new", "AccountId": 5}])
        self.user("rename", "7", "other", status=1)
        self.user("rename", "many", "other", status=2)

    def test_a_user_is_removed_with_his_cache(self):
        cache = self.home / "Data/.QM/u1"
        (cache / "part").mkdir(parents=True)
        self.plant({"UserName": "anna", "CacheLocation": str(self.home / "Data"), "CacheName": "u1"}, {"UserName": "bert"},
                   LastUsedUserName="anna")
        self.assertEqual(self.plain("user", "cache-path", "anna"), str(cache))
        self.user("remove", "anna", "--remove-cache")
        self.assertEqual(self.stored(), {"UserList": [{"UserName": "bert"}]})
        self.assertFalse(cache.exists())
        self.assertTrue(cache.parent.exists())
        self.user("remove", "anna", status=1)
        self.user("cache-path", "bert", status=1)

    def test_a_cache_that_stays_is_named(self):
        (self.home / "Data").mkdir()
        (self.home / "Data/.QM").symlink_to(self.home / "unplugged")
        self.plant({"UserName": "anna", "CacheLocation": str(self.home / "Data"), "CacheName": "u1"})
        error = self.user("remove", "anna", "--remove-cache", status=3).stderr
        self.assertTrue(error.startswith(f"quillmarkctl: {self.home}/Data/.QM/u1: the cache is not removed: "), error)
        self.assertEqual(self.stored(), {"UserList": []})

    def test_preferences_that_can_not_be_read_are_named(self):
        self.preferences.mkdir()
        for command in (["list"], ["show", "anna"], ["get", "anna", "BrandID"], ["set", "anna", "BrandID", "1"],
                        ["unset", "anna", "BrandID"], ["rename", "5", "new"], ["remove", "anna"], ["clean"], ["selected"],
                        ["selected", "anna"], ["features"], ["cache-path", "anna"]):
            error = self.user(*command, status=3).stderr
            self.assertEqual(error, f"quillmarkctl: {self.preferences}: can't be read (Invalid argument)\n")
        self.assertIn("can't be read", self.run_tool("brand", status=3).stderr)

    def test_cleaning_drops_what_has_no_name(self):
        self.plant({"UserName": "anna"}, {"Other": 1}, {"UserName": "bert"})
        self.user("clean")
        self.assertEqual(self.json("user", "list"), ["anna", "bert"])
        self.user("clean", "anna")
        self.assertEqual(self.json("user", "list"), ["bert"])

    def test_the_selected_user_is_told_set_and_cleared(self):
        self.user("selected", status=1)
        self.user("selected", "anna")
        self.assertEqual(self.plain("user", "selected"), "anna")
        self.user("selected", "--none")
        self.assertNotIn("LastUsedUserName", self.stored())
        self.user("selected", "anna", "--none", status=2)

    def test_features_are_those_of_the_selected_user(self):
        none = self.json("user", "features")
        self.assertEqual(len(none), 23)
        self.assertEqual((none["selectedUserAccountType"], none["lastUsedUserName"], none["selectedUserClientIdent"]),
                         (10, "", None))
        self.plant({"UserName": "anna", "AccountType": 9, "ShowTeamFolders": 1, "ClientIdent": "id"}, LastUsedUserName="anna")
        features = self.json("user", "features")
        for name, value in (("isBusinessUser", True), ("isBusinessSharing", True), ("isConsumerSharing", False),
                            ("selectedUserHaveClientIdent", True), ("selectedUserClientIdent", "id")):
            self.assertEqual(features[name], value, name)

    def test_the_brand_is_that_of_the_selected_user(self):
        for brand, is_reseller, logo in ((1, False, "logo-1.bmp"), (15, False, "logo-15.bmp"), (10000, False, "logo-1.bmp"),
                                         (10001, True, "logo-1.bmp"), ("15 x", False, "logo-15.bmp")):
            self.plant({"UserName": "anna", "BrandID": brand}, LastUsedUserName="anna")
            told = self.json("brand")
            self.assertEqual((told["reseller"], told["logo"]), (is_reseller, logo), brand)
