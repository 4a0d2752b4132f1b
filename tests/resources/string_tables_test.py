"""The string tables: complete, alike in every language, and set in each language's own typography."""

import re
import unittest

from bundle import RESOURCES, SOURCES, property_list

LANGUAGES = ["en", "de", "fr", "es", "ja"]

PRODUCT_NAMES = ["ProductName", "CarryfoldProduct", "BackupProduct", "TeamFolderProduct", "TeamFoldersProduct"]
STATUSES = ["OK", "Missing", "Old Version", "Wrong Permissions", "Invalid", "Not Required"]
LIST_PARTS = ["QuillmarkLauncher_Components", "QuillmarkLauncher_FileSystem", "QuillmarkLauncher_Helpers"]
# Their English text is the key itself.
SENTENCES = STATUSES + [
    "Quit", "Continue", "Installing Quillmark", "Move to Applications folder?",
    "I can move myself to the Applications folder if you'd like.",
    "Note that this will require an administrator password.",
    "This will keep your Downloads folder uncluttered.",
    "Move to Applications Folder", "Do Not Move", "Do not show this message again", "Could not move to Applications folder",
]
KEYS = PRODUCT_NAMES + LIST_PARTS + SENTENCES + ["RunFailedTitle", "RepairFailedTitle", "RepairFailed"] + [
    f"QuillmarkLauncher_{name}" for name in ("AlreadyRunning", "YouMustQuit", "DontInstall", "Details", "FaultyComponents",
                                             "Component", "Status", "Installing", "RepairInfo")]

TOKEN = re.compile(r"\{#(\w+)#\}")
PLACEHOLDER = re.compile(r"%(?:\d+\$)?[-+ #0]*\d*(?:\.\d+)?(?:hh|ll|[hlqzjt])?[@diuxXofeEgGcsp]|%%|%")
BLANKS = re.compile(r"^(\s*).*?(\s*)$", re.DOTALL)

# What must not stand in a text of the language.
WRONG_TYPOGRAPHY = {
    "en": r"""["']|\.\.\.""",
    "de": r"""["'”«»‘]|\.\.\.|[^\u00a0\u202f]…""",
    "fr": r"""["'“”„]|\.\.\.|[^\u00a0\u202f][?!;:»]|«[^\u00a0\u202f]""",
    "es": r"""["'“”„]|\.\.\.|«\s|\s»""",
    "ja": r"""["'“”„«»‘’]|\.\.\.|[?!:;,.()]""",
}

# A text looked up by a literal key, however the literal is written.
LOOK_UP = re.compile(r'(?:QMLocalizedString(?:WithArguments)?|localisedString)\s*\(\s*'
                     r'(?:(?:QStringLiteral|QString|QLatin1String)\s*\(\s*)?u?"((?:[^"\\]|\\.)+)"')


def tables(name, folder=SOURCES / "resources"):
    return {language: property_list(folder / f"{language}.lproj" / name) for language in LANGUAGES}


TABLES = tables("Localizable.strings")
ENGLISH = TABLES["en"]


def keys_looked_up(code):
    return {match.replace('\\"', '"') for match in LOOK_UP.findall(code)}


def blanks_around(text):
    return BLANKS.match(text).groups()


class StringTables(unittest.TestCase):
    def each_text(self):
        for language, table in TABLES.items():
            for key, text in table.items():
                yield language, key, text

    def test_every_text_that_the_program_needs_is_there(self):
        for language, table in TABLES.items():
            self.assertEqual(sorted(KEYS), sorted(table), language)

    def test_every_language_folder_is_one_of_the_known(self):
        folders = {folder.stem for folder in (SOURCES / "resources").glob("*.lproj")}
        self.assertEqual(folders, set(LANGUAGES))

    def test_the_texts_of_the_information_property_list_are_in_every_language(self):
        english = property_list(SOURCES / "resources/en.lproj/InfoPlist.strings")
        for language, table in tables("InfoPlist.strings").items():
            self.assertEqual(english.keys(), table.keys(), language)
            self.assertTrue(all(text.strip() for text in table.values()), language)

    def test_every_literal_key_in_the_sources_has_a_text(self):
        for folder in ("src", "ctl"):
            for path in sorted((SOURCES / folder).rglob("*")):
                if path.suffix in (".cpp", ".h", ".mm"):
                    missing = keys_looked_up(path.read_text("utf-8")) - ENGLISH.keys()
                    self.assertFalse(missing, path)

    def test_literal_keys_are_found_however_they_are_written(self):
        code = '''QMLocalizedString(QStringLiteral("A")) QMLocalizedString(u"B"_s) QMLocalizedString( u"C \\"c\\"")
                  QMLocalizedStringWithArguments("D", name) manager.localisedString(QString(u"E"))
                  QMLocalizedString(key) otherString("F")'''
        self.assertEqual(keys_looked_up(code), {"A", "B", 'C "c"', "D", "E"})

    def test_no_text_is_empty(self):
        for language, key, text in self.each_text():
            self.assertTrue(text.strip(), (language, key))

    def test_every_text_begins_and_ends_with_the_blanks_of_the_english_one(self):
        for language, key, text in self.each_text():
            self.assertEqual(blanks_around(text), blanks_around(ENGLISH[key]), (language, key))

    def test_only_the_parts_of_the_list_in_the_check_window_begin_with_line_breaks(self):
        for language, key, text in self.each_text():
            before, after = blanks_around(text)
            lines = {"QuillmarkLauncher_Components": "\n\n"}.get(key, "\n") if key in LIST_PARTS else ""
            self.assertEqual(before, lines, (language, key))
            self.assertEqual(after, "", (language, key))

    def test_every_text_has_the_tokens_of_the_english_one(self):
        for language, key, text in self.each_text():
            self.assertEqual(set(TOKEN.findall(text)), set(TOKEN.findall(ENGLISH[key])), (language, key))

    def test_tokens_are_known_and_whole(self):
        for language, key, text in self.each_text():
            self.assertLessEqual(set(TOKEN.findall(text)), set(PRODUCT_NAMES), (language, key))
            self.assertNotRegex(TOKEN.sub("", text), r"[{}#]", (language, key))

    def test_every_text_has_the_placeholders_of_the_english_one(self):
        for language, key, text in self.each_text():
            expected = sorted(PLACEHOLDER.findall(ENGLISH[key]))
            self.assertEqual(sorted(PLACEHOLDER.findall(text)), expected, (language, key))

    def test_the_repair_failure_is_a_format_that_takes_no_argument(self):
        for language, table in TABLES.items():
            self.assertLessEqual(set(PLACEHOLDER.findall(table["RepairFailed"])), {"%%"}, language)

    def test_product_names_are_spelt_out_only_where_they_are_defined(self):
        for language, key, text in self.each_text():
            if key in PRODUCT_NAMES:
                self.assertNotRegex(text, r"[{}]", (language, key))
            else:
                self.assertNotRegex(text, "Quillmark|Carryfold", (language, key))

    def test_the_product_and_its_features_have_one_name_in_all_languages(self):
        for language, table in TABLES.items():
            names = [table[key] for key in PRODUCT_NAMES[:3]]
            self.assertEqual(names, ["Quillmark", "Carryfold", "Quillmark Backup"], language)

    def test_team_folders_have_a_plural_where_the_language_has_one(self):
        for language, table in TABLES.items():
            same = table["TeamFolderProduct"] == table["TeamFoldersProduct"]
            self.assertEqual(same, language == "ja", language)

    def test_status_texts_differ_from_each_other(self):
        for language, table in TABLES.items():
            self.assertEqual(len({table[status] for status in STATUSES}), len(STATUSES), language)

    def test_english_sentences_read_like_their_keys(self):
        for key in SENTENCES:
            self.assertEqual(ENGLISH[key].replace("{#ProductName#}", ENGLISH["ProductName"]), key)

    def test_texts_are_translated(self):
        for language, key, text in self.each_text():
            if language != "en" and key not in PRODUCT_NAMES + ["OK"]:
                self.assertNotEqual(text, ENGLISH[key], (language, key))

    def test_texts_name_the_continue_button_as_it_is_labelled(self):
        quoted = {"en": "“{}”", "de": "„{}“", "fr": "«\u00a0{}\u00a0»", "es": "«{}»", "ja": "「{}」"}
        for language, table in TABLES.items():
            for key in ("QuillmarkLauncher_RepairInfo", "RepairFailed"):
                self.assertIn(quoted[language].format(table["Continue"]), table[key], language)

    def test_quotes_dots_and_blanks_follow_the_typography_of_the_language(self):
        for language, key, text in self.each_text():
            if language == "en" and text == key:
                continue  # The key itself is the text, apostrophe included.
            self.assertNotRegex(TOKEN.sub("X", text), WRONG_TYPOGRAPHY[language], (language, key))

    def test_the_typography_rules_catch_what_they_are_for(self):
        wrong = {
            "en": ['"Quit"', "can't", "..."],
            "de": ['"Ja"', "”Ja“", "«Ja»", "geht's", "Bitte warten…"],
            "fr": ['"Oui"', "l'or", "“Oui”", "Oui ?", "Oui?", "«Oui»", "« Oui »"],
            "es": ['"Sí"', "“Sí”", "« Sí »"],
            "ja": ['"はい"', "“はい”", "はい?", "はい..."],
        }
        right = {
            "en": "Don’t click “Quit”…",
            "de": "Klicken Sie auf „Ja“, wenn es geht\u00a0…",
            "fr": "Cliquez sur «\u00a0Oui\u00a0» pour l’ouvrir\u202f?",
            "es": "¿Hacer clic en «Sí»…?",
            "ja": "「はい」をクリックしますか？",
        }
        for language in LANGUAGES:
            self.assertNotRegex(right[language], WRONG_TYPOGRAPHY[language])
            for text in wrong[language]:
                self.assertRegex(text, WRONG_TYPOGRAPHY[language], language)

    def test_the_bundle_carries_the_same_tables(self):
        for name in ("Localizable.strings", "InfoPlist.strings"):
            for language in LANGUAGES:
                table = f"{language}.lproj/{name}"
                source = (SOURCES / "resources" / table).read_bytes()
                self.assertEqual((RESOURCES / table).read_bytes(), source, table)
