"""The property lists of the built bundle: readable, and with the values that the launcher and the system rely on."""

import re
import unittest
from urllib.parse import urlsplit

from bundle import APP, RESOURCES, SOURCES, property_list


def configuration_keys():
    """The texts of the configuration family in the key list."""
    key_list = (SOURCES / "src/accounts/KeyList.h").read_text("utf-8")
    family = re.search(r"\\name Configuration\n(.*?)\\name", key_list, re.DOTALL).group(1)
    return set(re.findall(r'\{"(\w+)"\}', family))


class InformationPropertyList(unittest.TestCase):
    def setUp(self):
        self.info = property_list(APP / "Contents/Info.plist")

    def test_says_which_program_this_is(self):
        self.assertEqual(self.info, self.info | {
            "CFBundleIdentifier": "com.quillmark.QuillmarkLauncher", "CFBundleExecutable": "Quillmark",
            "CFBundleName": "Quillmark", "CFBundleDisplayName": "Quillmark", "CFBundlePackageType": "APPL",
            "NSPrincipalClass": "NSApplication"})

    def test_gives_the_version_and_the_build(self):
        self.assertEqual(self.info["CFBundleShortVersionString"], "1.14.4")
        self.assertEqual(self.info["CFBundleVersion"], "1303")

    def test_names_every_language_that_has_a_string_table_with_the_development_language_first(self):
        tables = {folder.stem for folder in RESOURCES.glob("*.lproj")}
        self.assertEqual(set(self.info["CFBundleLocalizations"]), tables)
        self.assertEqual(self.info["CFBundleLocalizations"][0], self.info["CFBundleDevelopmentRegion"])

    def test_names_an_icon_that_is_there(self):
        self.assertTrue((RESOURCES / self.info["CFBundleIconFile"]).is_file())

    def test_its_visible_texts_are_the_english_ones_of_the_string_table(self):
        for key, text in property_list(RESOURCES / "en.lproj/InfoPlist.strings").items():
            self.assertEqual(self.info[key], text)

    def test_every_placeholder_of_the_build_is_filled_in(self):
        self.assertNotIn("@", (APP / "Contents/Info.plist").read_text("utf-8"))


class Configuration(unittest.TestCase):
    def setUp(self):
        self.config = property_list(RESOURCES / "Config.plist")

    def test_the_brand_is_the_product_s_own(self):
        self.assertIs(type(self.config["Brand"]), int)
        self.assertEqual(self.config["Brand"], 1)

    def test_gives_a_value_to_every_configuration_key_and_to_no_other(self):
        self.assertEqual(set(self.config), configuration_keys() | {"Brand"})

    def test_every_address_is_a_secure_one_of_the_product(self):
        addresses = {key: text for key, text in self.config.items() if key.endswith(("URL", "Tutorial"))}
        self.assertEqual(len(addresses), 9)
        for key, text in addresses.items():
            parts = urlsplit(text)
            self.assertEqual(parts.scheme, "https", key)
            self.assertTrue(parts.hostname.endswith(".quillmark.example"), key)
        self.assertTrue(self.config["ServerAddress"].endswith(".quillmark.example"))

    def test_the_server_port_is_a_port(self):
        self.assertIn(self.config["ServerPort"], range(1, 65536))

    def test_the_default_logo_is_there(self):
        self.assertTrue((RESOURCES / self.config["DefaultBrandedLogo"]).is_file())


class Defaults(unittest.TestCase):
    def setUp(self):
        self.defaults = property_list(RESOURCES / "Defaults.plist")

    def test_the_log_file_tells_every_step(self):
        self.assertEqual(self.defaults["FileLogging"], "verbose")

    def test_the_terminal_hears_of_errors_only(self):
        self.assertEqual(self.defaults["StdioLogging"], "error")

    def test_the_move_to_the_applications_folder_is_offered(self):
        self.assertIs(self.defaults["moveToApplicationsFolderAlertSuppress"], False)
