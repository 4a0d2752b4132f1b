"""What is kept of the accounts, in a keyring of the test's own."""

from tool import ToolTest

from keyring import Session  # noqa: E402


class Base64(ToolTest):
    def base64(self, command, text, **options):
        return self.run_with_input("base64", command, text=text, **options)

    def test_text_is_encoded_and_decoded_as_it_is(self):
        for text, encoded in (("abc", "YWJj"), ("abc\n", "YWJjCg=="), ("", ""), ("ü€", "w7zigqw=")):
            self.assertEqual(self.base64("encode", text), encoded + "\n")
            self.assertEqual(self.base64("decode", encoded), text + "\n")

    def test_a_final_newline_does_not_keep_a_text_from_being_decoded(self):
        self.assertEqual(self.base64("decode", "YWJj\n"), "abc\n")

    def test_what_is_no_base64_gives_nothing(self):
        for text in ("!!!!", "YWJ", "//79"):
            self.assertEqual(self.base64("decode", text, status=1), "")

    def test_what_is_no_text_is_a_failure(self):
        self.base64("encode", b"\xff", status=3)
        self.assertEqual(self.error_text, "quillmarkctl: standard input: is no UTF-8\n")


class Keychain(ToolTest):
    def setUp(self):
        super().setUp()
        session = Session(self, self.home)
        session.start_keyring()
        self.environment = session.environment

    def keychain(self, *arguments, **options):
        return self.run_with_input("keychain", *arguments, **options, **self.environment)

    def test_a_password_comes_from_standard_input_less_one_final_newline(self):
        for text, stored in (("s3cret", '"s3cret"'), ("s3cret\n", '"s3cret"'), ("a\n\n", '"a\\n"'), ("-- x", '"-- x"')):
            self.keychain("save", "ada", "--password", text=text)
            self.assertEqual(self.keychain("get", "ada"), f'{{"keepSignedIn":null,"password":{stored}}}\n')

    def test_the_choice_is_stored_with_or_without_a_password(self):
        self.keychain("save", "ada", "--password", "--keep-signed-in", "yes", text="p")
        self.assertEqual(self.keychain("get", "ada"), '{"keepSignedIn":true,"password":"p"}\n')
        self.keychain("save", "ada", "--keep-signed-in", "no")
        self.assertEqual(self.keychain("get", "ada"), '{"keepSignedIn":false,"password":"p"}\n')

    def test_what_cannot_be_saved_is_told(self):
        for arguments, why in ((["ada"], "there is nothing to store"), (["ada", "--password"], "there is nothing to store"),
                               (["", "--keep-signed-in", "yes"], "the user name is empty")):
            self.keychain("save", *arguments, status=3)
            self.assertIn(why, self.error_text)
        self.keychain("save", "ada", "--keep-signed-in", "maybe", status=2)
        self.keychain("save", "ada", "--password", text=b"s3cret\xff", status=3)
        self.assertNotIn("s3cret", self.error_text)

    def test_an_account_that_is_not_there_is_the_answer_no(self):
        for arguments in (["get"], ["remove"], ["key", "get"], ["raw", "get"], ["skip-auth", "get"], ["skip-auth", "remove"]):
            self.assertEqual(self.keychain(*arguments, "ada", status=1), "")
        self.keychain("skip-auth", "set", "ada", "yes", status=1)
        self.keychain("flag", "set", "ada", "beta", "yes", status=1)
        self.assertEqual(self.keychain("raw", "get", "ada", status=1), "")

    def test_flags_are_set_told_and_removed(self):
        self.keychain("save", "ada", "--password", text="p")
        for words in (["flag", "{}", "ada", "beta"], ["skip-auth", "{}", "ada"]):
            get, put, remove = ([word.format(verb) for word in words] for verb in ("get", "set", "remove"))
            self.assertEqual(self.keychain(*get, status=1), "")
            for value in ("yes", "no"):
                self.keychain(*put, value)
                self.assertEqual(self.keychain(*get), value + "\n")
            self.keychain(*remove)
            self.keychain(*remove, status=1)
        self.keychain("flag", "set", "ada", "beta", "maybe", status=2)
        self.assertEqual(self.keychain("raw", "get", "ada"), '{"password":"p"}\n')

    def test_an_encryption_key_is_saved_and_told(self):
        self.keychain("key", "save", "ada", text="k/ey\n")
        self.assertEqual(self.keychain("key", "get", "ada"), "k/ey\n")
        self.assertEqual(self.keychain("raw", "get", "ada"), '{"encryptionKey":"k\\/ey"}\n')

    def test_removing_an_account_removes_all_of_it(self):
        self.keychain("key", "save", "ada", text="k")
        self.keychain("remove", "ada")
        self.keychain("key", "get", "ada", status=1)

    def test_a_planted_item_is_told_as_it_is_stored_and_moves_from_the_old_service(self):
        table = self.copy_app() / "Contents/Resources/en.lproj/Localizable.strings"
        table.write_text(table.read_text().replace("<string>Quillmark</string>", "<string>Plume</string>", 1))
        other = ("--bundle", str(self.home / "Copy.app"))
        self.keychain("raw", "set", "ada", "--service", "Quillmark", text="bare\n")
        self.assertEqual(self.keychain("raw", "get", "ada"), "bare\n")
        self.keychain("raw", "get", "ada", *other, status=1)
        self.assertEqual(self.keychain("get", "ada", *other), '{"keepSignedIn":true,"password":"bare"}\n')
        self.assertEqual(self.keychain("raw", "get", "ada", "--service", "Plume"),
                         '{"keepSignedIn":true,"password":"bare"}\n')
        self.keychain("raw", "get", "ada", status=1)

    def test_an_item_that_is_no_text_is_a_failure_for_raw_and_has_no_password(self):
        self.keychain("raw", "set", "ada", text=b"p\xff")
        self.keychain("raw", "get", "ada", status=3)
        self.assertIn("holds no UTF-8 text", self.error_text)
        self.assertEqual(self.keychain("get", "ada"), '{"keepSignedIn":null,"password":null}\n')
