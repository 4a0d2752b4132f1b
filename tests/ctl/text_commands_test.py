
from tool import APP, ToolTest


class Texts(ToolTest):
    def test_a_key_has_its_text_with_the_product_name(self):
        self.assertEqual(self.plain("text", "ProductName"), "Quillmark")
        self.assertIn("Quillmark", self.plain("text", "QuillmarkLauncher_AlreadyRunning"))

    def test_texts_come_in_the_users_language(self):
        texts = {language: self.plain("text", "Wrong Permissions", LANG=f"{language}.UTF-8")
                 for language in ("en_US", "de_DE", "fr_FR", "es_ES", "ja_JP")}
        self.assertEqual(len(set(texts.values())), 5, texts)
        self.assertEqual(self.plain("text", "Wrong Permissions", LANG="it_IT.UTF-8"), texts["en_US"])

    def test_a_missing_key_is_its_own_text_and_may_be_empty(self):
        self.assertEqual(self.plain("text", "no such key"), "no such key")
        self.assertEqual(self.plain("text", ""), "")

    def test_a_section_without_an_entry_falls_back_to_the_plain_key(self):
        self.assertEqual(self.plain("text", "Quit", "--section", "Nowhere"), "Quit")
        self.assertEqual(self.plain("text", "Quit", "--section", "Nowhere", "--strip"), "Quit")

    def test_product_names_and_blanks_are_stripped_from_the_sections_key(self):
        self.assertEqual(self.plain("text", "DontInstall", "--section", "QuillmarkLauncher"),
                         self.plain("text", "QuillmarkLauncher_DontInstall"))
        self.assertEqual(self.plain("text", "Missing", "--section", "Quillmark", "--strip"), "Missing")

    def test_arguments_are_put_into_the_text(self):
        self.assertEqual(self.plain("text", "%2$@ and %1$@", "--arg", "a", "--arg", ""), " and a")
        self.assertEqual(self.plain("text", "%@ %@", "--arg", "one"), "%@ %@")

    def test_arguments_may_hold_what_looks_like_a_format(self):
        self.assertEqual(self.plain("text", "<%@>", "--arg", "%s%n"), "<%s%n>")


class Brand(ToolTest):
    def test_without_accounts_there_is_no_brand_and_the_default_logo(self):
        self.assertEqual(self.json("brand"), {"brandID": -1, "reseller": False, "logo": "logo-1.bmp"})

    def test_a_downloaded_logo_is_told_by_its_path(self):
        logo = self.write_file("Library/Application Support/Quillmark/logo--1.bmp",
                               (APP / "Contents/Resources/logo-15.bmp").read_bytes())
        self.assertEqual(self.json("brand")["logo"], str(logo))

    def test_a_downloaded_logo_that_is_no_picture_gives_way_to_the_default_one(self):
        self.write_file("Library/Application Support/Quillmark/logo--1.bmp", "BM no bitmap")
        self.assertEqual(self.json("brand")["logo"], "logo-1.bmp")


class Errors(ToolTest):
    def test_a_number_has_the_systems_text(self):
        self.assertEqual(self.plain("error", "posix", "13"), "Posix error 13 (Permission denied)")
        self.assertEqual(self.plain("error", "posix", "--", "-1"), "Unknown Posix error")


class Versions(ToolTest):
    def test_the_bundles_version_comes_with_or_without_its_build(self):
        self.assertEqual(self.plain("version", "self"), "1.14.4 (1303)")
        self.assertEqual(self.plain("version", "self", "--short"), "1.14.4")

    def test_a_text_is_taken_apart_into_four_numbers(self):
        self.assertEqual(self.json("version", "parse", "1.14.4 (1303)\nmore"),
                         {"major": 1, "minor": 14, "build": 4, "revision": 1303})
        self.assertEqual(self.json("version", "parse", "1.2"), {"major": 0, "minor": 0, "build": 0, "revision": 0})
        self.assertEqual(self.json("version", "parse", ""), {"major": 0, "minor": 0, "build": 0, "revision": 0})

    def test_a_components_version_has_three_numbers_or_is_none(self):
        self.assertEqual(self.json("version", "component", "2.0.1"), {"major": 2, "minor": 0, "bugfix": 1})
        self.assertEqual(self.run_tool("version", "component", "1.2", status=1).stdout, "")

    def test_the_build_is_printed_or_the_text_named(self):
        self.assertEqual(self.plain("version", "build", "1.14.4 (1303)"), "1303")
        self.assertIn('"1.14.4"', self.failure("version", "build", "1.14.4"))

    def test_another_bundle_has_its_own_version(self):
        app = self.copy_app()
        information = app / "Contents/Info.plist"
        information.write_text(information.read_text().replace("1.14.4", "2.0.1"))
        self.assertEqual(self.plain("version", "self", "--bundle", app), "2.0.1 (1303)")
