"""Host names resolved through a hosts file of the test's own."""

import json
import unittest
from pathlib import Path

from machine import TOOL, run

HOSTS = """127.0.0.1 localhost
10.1.0.1 twice.example both.example
10.1.0.2 twice.example
10.1.0.2 shared.example
10.1.0.3 alone.example
10.1.0.4 printer.local
fd00::1 six.example
"""


class HostIdentity(unittest.TestCase):
    def setUp(self):
        Path("/etc/hosts").write_text(HOSTS)
        Path("/etc/nsswitch.conf").write_text("hosts: files\n")
        Path("/etc/host.conf").write_text("multi on\n")

    def tool(self, *arguments):
        done = run(TOOL, "host", *arguments)
        return done.returncode, done.stdout

    def addresses(self, host):
        return json.loads(self.tool("addresses", host)[1])

    def same(self, a, b):
        return self.tool("same", a, b)[0] == 0

    def test_a_name_with_two_addresses_has_both_in_order(self):
        self.assertEqual(self.addresses("twice.example"), ["10.1.0.1", "10.1.0.2"])

    def test_an_unknown_name_has_none(self):
        self.assertEqual(self.tool("addresses", "unknown.example"), (1, "[]\n"))

    def test_a_name_of_the_newer_family_alone_has_none(self):
        self.assertEqual(self.addresses("six.example"), [])
        self.assertFalse(self.same("six.example", "twice.example"))

    def test_a_local_name_is_resolved_like_any_other(self):
        self.assertEqual(self.addresses("printer.local"), ["10.1.0.4"])

    def test_a_shared_address_makes_one_machine(self):
        self.assertTrue(self.same("twice.example", "shared.example"))
        self.assertTrue(self.same("shared.example", "twice.example"))
        self.assertTrue(self.same("both.example", "twice.example"))
        self.assertFalse(self.same("twice.example", "alone.example"))

    def test_letter_case_matters_only_where_nothing_resolves(self):
        self.assertTrue(self.same("Alone.example", "alone.example"))
        self.assertFalse(self.same("Unknown.example", "unknown.example"))

    def test_a_name_of_300_characters_is_unknown(self):
        self.assertEqual(self.addresses("h" * 300), [])
