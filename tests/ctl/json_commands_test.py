"""Flat JSON objects, as the product reads and writes them."""

import json
import os

from tool import ToolTest


class Json(ToolTest):
    def with_input(self, command, text, *options, status=0):
        """What the command writes for this standard input."""
        output = self.run_with_input("json", command, *options, text=text, status=status)
        if status >= 2:
            self.assertRegex(self.error_text, r"\Aquillmarkctl: standard input: [^\n]+\n\Z")
            self.assertEqual(output, "")
            return self.error_text
        return output

    def decoded(self, text):
        output = self.with_input("decode", text)
        self.assertEqual(output.count("\n"), 1)
        return json.loads(output)

    def test_members_are_told_with_their_types(self):
        self.assertEqual(self.decoded('{"a":"x\\/","b":-9223372036854775808,"c":-1.25,"d":true,"e":2.0}\n'),
                         {"a": {"type": "string", "value": "x/"},
                          "b": {"type": "integer", "value": -9223372036854775808},
                          "c": {"type": "double", "value": -1.25},
                          "d": {"type": "boolean", "value": True},
                          "e": {"type": "double", "value": 2}})
        self.assertEqual(self.decoded("{}"), {})

    def test_they_are_read_as_the_product_reads_them(self):
        """Deliberate: not as JSON says."""
        self.assertEqual(self.decoded('{"a":1e3,"b":"\\u0041","c":fxxxx,"d":{"e":1-2}}'),
                         {"e": {"type": "integer", "value": -12}})
        self.assertEqual(self.decoded('{"a":1e3,"b":"\\u0041"}'),
                         {"a": {"type": "integer", "value": 13}, "b": {"type": "string", "value": "u0041"}})

    def test_nothing_decoded_is_status_1(self):
        for text in ("", "{", "}", '{"a":1.2.3}', '{"a":false', "[]", "null"):
            self.assertEqual(self.with_input("decode", text, status=1), "", text)

    def test_what_is_decoded_can_be_indented(self):
        compact = self.with_input("decode", '{"a":1}')
        pretty = self.with_input("decode", '{"a":1}', "--pretty")
        self.assertGreater(pretty.count("\n"), 3)
        self.assertEqual(json.loads(pretty), json.loads(compact))

    def test_an_object_is_encoded_bare_on_one_line(self):
        self.assertEqual(self.with_input("encode", ' {"b": "a/b \\u00e4\\n", "a": true, "c": 1.5, "d": -7 }\n'),
                         '{"a":true,"b":"a\\/b ä\\n","c":1.5,"d":-7}\n')
        self.assertEqual(self.with_input("encode", "{}"), "{}\n")

    def test_large_integers_are_encoded_exactly(self):
        self.assertEqual(self.with_input("encode", '{"a":9223372036854775807}'), '{"a":9223372036854775807}\n')

    def test_values_of_other_kinds_are_encoded_as_empty_texts(self):
        self.assertEqual(self.with_input("encode", '{"a":null,"b":[1,2],"c":{"d":1}}'), '{"a":"","b":"","c":""}\n')

    def test_what_is_encoded_is_decoded_again(self):
        members = {"keepSignedIn": True, "password": 'p"\\/\n\t', "number": 5}
        decoded = self.decoded(self.with_input("encode", json.dumps(members)))
        self.assertEqual({key: member["value"] for key, member in decoded.items()}, members)

    def test_input_that_is_no_object_is_a_failure_that_says_why(self):
        self.assertIn("is no JSON object", self.with_input("encode", "[1]", status=3))
        self.assertIn("is no JSON at byte 5", self.with_input("encode", '{"a":x}', status=3))
        for text in ("", "1", '{"a":1', '{"a":1}}', b'{"a":"\xff"}'):
            self.with_input("encode", text, status=3)

    def test_texts_are_escaped_without_a_line_added(self):
        self.assertEqual(self.with_input("escape", '\\ " / \b \f \n \r \t ä'), '\\\\ \\" \\/ \\b \\f \\n \\r \\t ä')
        self.assertEqual(self.with_input("escape", ""), "")
        self.assertEqual(self.with_input("escape", "x\n"), "x\\n")

    def test_texts_are_unescaped_without_a_line_added(self):
        self.assertEqual(self.with_input("unescape", '\\\\ \\" \\/ \\b \\f \\r \\t ä\n'), '\\ " / \b \f \r \t ä\n')

    def test_an_escaped_backslash_before_a_letter_becomes_the_letters_character(self):
        """Deliberate: the escapes are undone one kind after the other."""
        self.assertEqual(self.with_input("unescape", "\\\\n"), "\n")

    def test_input_that_is_no_utf8_is_a_failure(self):
        for command in ("decode", "escape", "unescape"):
            self.assertIn("UTF-8", self.with_input(command, b'{"a":"\xff"}', status=3))

    def test_input_that_cannot_be_read_is_a_failure(self):
        folder = os.open(self.home, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        for command in ("decode", "encode", "escape", "unescape"):
            done = self.call("json", command, stdin=folder, text=True)
            self.assertEqual((done.returncode, done.stderr), (3, "quillmarkctl: standard input: Is a directory\n"))

    def test_a_text_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "w") as full:
            done = self.call("json", "escape", input=b"x", stdout=full)
        self.assertEqual(done.returncode, 3)
        self.assertIn(b"standard output", done.stderr)
