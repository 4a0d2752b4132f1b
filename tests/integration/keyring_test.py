"""The desktop's keyring, by way of the support tool: a real one that is present, absent, locked, silent."""

import json
import os
import re
import signal
import socket
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from keyring import Session  # noqa: E402

APP = Path(os.environ["QUILLMARK_APP"])
TOOL = APP / "Contents/MacOS/quillmarkctl"
SERVICE = "Quillmark"
LIMIT = 5  # seconds
DOCUMENT = '{"encryptionKey":"k","keepSignedIn":true,"password":"p"}'
# All that reads, writes or deletes an item.
OPERATIONS = (("get", "ada"), ("save", "ada", "--password", "--keep-signed-in", "no"), ("remove", "ada"),
              ("flag", "get", "ada", "beta"), ("flag", "set", "ada", "beta", "yes"), ("flag", "remove", "ada", "beta"),
              ("skip-auth", "set", "ada", "yes"), ("key", "get", "ada"), ("key", "save", "ada"), ("raw", "get", "ada"),
              ("raw", "set", "ada"))


class Keyring(unittest.TestCase):
    def setUp(self):
        self.home = Path(self.enterContext(tempfile.TemporaryDirectory(ignore_cleanup_errors=True)))
        self.session = Session(self, self.home)

    def keychain(self, *arguments, status=0, text=""):
        done = self.session.run(TOOL, "keychain", *arguments, input=text)
        self.assertEqual(done.returncode, status, done.stderr)
        self.error_text = done.stderr
        return done.stdout

    def assert_out_of_reach(self, why):
        """Every operation fails, in time, and says why."""
        begin = time.monotonic()
        processes = {arguments: subprocess.Popen([TOOL, "keychain", *arguments], stdin=subprocess.PIPE, text=True,
                                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                                 env=self.session.environment) for arguments in OPERATIONS}
        for process in processes.values():
            process.stdin.close()
        for arguments, process in processes.items():
            with self.subTest(arguments), process:
                self.assertEqual(process.wait(timeout=30), 3)
                self.assertEqual(process.stderr.read(), f'quillmarkctl: keychain item of "ada": {why}\n')
        self.assertLess(time.monotonic() - begin, LIMIT)

    def test_an_account_is_absent_present_changed_and_absent_again(self):
        self.session.start_keyring()
        self.keychain("get", "ada", status=1)
        self.keychain("save", "ada", "--password", "--keep-signed-in", "yes", text="s3cret\n")
        self.assertEqual(json.loads(self.keychain("get", "ada")), {"password": "s3cret", "keepSignedIn": True})
        self.keychain("save", "ada", "--password", text="other")
        self.assertEqual(json.loads(self.keychain("get", "ada")), {"password": "other", "keepSignedIn": True})
        self.assertEqual(self.session.items(SERVICE, "ada"), 1)
        self.keychain("remove", "ada")
        self.keychain("get", "ada", status=1)
        self.assertEqual(self.session.items(SERVICE, "ada"), 0)

    def test_items_survive_the_keyrings_end(self):
        self.session.start_keyring()
        self.keychain("raw", "set", "ada", text=DOCUMENT)
        self.session.signal_keyring(signal.SIGKILL)
        self.session.run("gdbus", "wait", "--session", "--timeout", "5", "org.freedesktop.secrets")
        self.session.start_keyring()
        self.assertEqual(self.keychain("raw", "get", "ada"), DOCUMENT + "\n")

    def test_names_and_secrets_are_any_text(self):
        self.session.start_keyring()
        for name in ("grün€𝄞", "", "a b'\"\\", "x" * 5000):
            self.keychain("raw", "set", name, "--service", "Ünïcode", text=name + "€\n\n")
            self.assertEqual(self.keychain("raw", "get", name, "--service", "Ünïcode"), name + "€\n\n")
        self.keychain("raw", "get", "grün", "--service", "Ünïcode", status=1)

    def test_an_item_may_hold_a_megabyte_also_where_no_memory_may_be_locked(self):
        self.session.start_keyring()
        text = "0123456789abcdef" * 65536
        self.keychain("raw", "set", "ada", text=text)
        self.assertEqual(self.keychain("raw", "get", "ada"), text + "\n")
        done = self.session.run("bash", "-c", f"ulimit -l 0; '{TOOL}' keychain raw get ada")
        self.assertEqual(done.stdout, text + "\n")

    def test_items_of_other_programs_are_read_and_ours_by_them(self):
        self.session.start_keyring()
        self.session.run("secret-tool", "store", "--label", "L", "service", SERVICE, "account", "ada", input="bare",
                         check=True)
        self.assertEqual(json.loads(self.keychain("get", "ada")), {"password": "bare", "keepSignedIn": True})
        self.assertEqual(self.session.items(SERVICE, "ada"), 1)
        self.keychain("raw", "set", "bob", text="ours")
        done = self.session.run("secret-tool", "lookup", "service", SERVICE, "account", "bob")
        self.assertEqual(done.stdout, "ours")

    def test_a_locked_keyring_is_no_empty_one_and_keeps_what_it_has(self):
        self.session.start_keyring()
        self.keychain("raw", "set", "ada", text=DOCUMENT)
        self.session.lock()
        self.assert_out_of_reach("the keyring is locked")
        self.keychain("get", "nobody", status=3)
        self.session.signal_keyring(signal.SIGKILL)
        self.session.start_keyring()
        self.assertEqual(self.keychain("raw", "get", "ada"), DOCUMENT + "\n")

    def test_a_session_without_a_keyring_service_is_no_empty_keyring(self):
        self.assert_out_of_reach("there is no keyring service, or it does not answer")

    def test_a_service_without_a_keyring_is_no_empty_keyring(self):
        self.session = Session(self, self.home, starts_services=True)
        self.assert_out_of_reach("there is no default keyring")

    def test_a_keyring_on_a_full_disk_says_so_and_keeps_what_it_has(self):
        self.session.start_keyring()
        document = '{"beta":true,"password":"p"}'
        self.keychain("raw", "set", "ada", text=document)
        self.session.fill_disk()
        for arguments, why in ((("save", "ada", "--password"), "can't be written"),
                               (("save", "bob", "--password"), "can't be written"),
                               (("flag", "set", "ada", "gamma", "yes"), "can't be written"),
                               (("flag", "remove", "ada", "beta"), "can't be written"),
                               (("skip-auth", "set", "ada", "yes"), "can't be written"),
                               (("key", "save", "ada"), "can't be written"), (("remove", "ada"), "can't be deleted")):
            self.keychain(*arguments, status=3, text="s3cret")
            self.assertTrue(self.error_text.endswith(why + "\n"), self.error_text)
        self.assertEqual(self.keychain("raw", "get", "ada"), document + "\n")
        self.keychain("get", "bob", status=1)

    def test_a_service_that_never_answers_holds_nobody_up_and_loses_nothing(self):
        self.session.start_keyring()
        self.keychain("raw", "set", "ada", text=DOCUMENT)
        self.session.signal_keyring(signal.SIGSTOP)
        try:
            self.assert_out_of_reach("there is no keyring service, or it does not answer")
        finally:
            self.session.signal_keyring(signal.SIGCONT)
        self.assertEqual(self.keychain("raw", "get", "ada"), DOCUMENT + "\n")

    def test_a_bus_that_never_answers_holds_nobody_up(self):
        silent = socket.socket(socket.AF_UNIX)
        silent.bind(str(self.home / "silent"))
        silent.listen(8)
        self.addCleanup(silent.close)
        for address in (f"unix:path={self.home}/silent", f"unix:path={self.home}/none", "nonsense"):
            self.session.environment["DBUS_SESSION_BUS_ADDRESS"] = address
            begin = time.monotonic()
            self.keychain("raw", "get", "ada", status=3)
            self.assertLess(time.monotonic() - begin, LIMIT)

    def test_a_session_without_a_bus_has_no_keyring_and_gets_no_bus(self):
        del self.session.environment["DBUS_SESSION_BUS_ADDRESS"]
        self.session.environment |= {"LD_DEBUG": "files", "DISPLAY": ":0"}
        self.keychain("raw", "get", "ada", status=3)
        self.assertIn("libc.so", self.error_text)
        self.assertNotIn("libgio", self.error_text)
        self.assertNotIn("libsecret", self.error_text)

    def test_a_lost_module_is_told_of_and_nothing_else_happens(self):
        app = self.home / "Copy.app"
        subprocess.run(["cp", "-r", APP, app], check=True)
        (app / "Contents/PlugIns/libquillmark-keyring.so").unlink()
        done = self.session.run(app / "Contents/MacOS/quillmarkctl", "keychain", "get", "ada", "--log-level", "error")
        self.assertEqual(done.returncode, 3)
        self.assertEqual(done.stderr.count("The keyring can't be asked"), 1)

    def test_many_processes_at_once_leave_one_whole_item(self):
        self.session.start_keyring()
        texts = [letter * 20000 for letter in "abcdefgh"]
        processes = [subprocess.Popen([TOOL, "keychain", "raw", "set", "ada"], stdin=subprocess.PIPE, text=True,
                                      env=self.session.environment) for _ in texts]
        for process, text in zip(processes, texts):
            process.stdin.write(text)
        for process in processes:
            process.stdin.close()
        self.assertEqual([process.wait(timeout=30) for process in processes], [0] * len(texts))
        self.assertIn(self.keychain("raw", "get", "ada").rstrip("\n"), texts)
        self.assertEqual(self.session.items(SERVICE, "ada"), 1)

    def test_any_thread_may_ask(self):
        self.session.start_keyring()
        done = self.session.run(Path(os.environ["QUILLMARK_PROBES"]) / "KeyringProbe", APP)
        self.assertEqual(done.stdout, "0 faults\n", done.stderr)

    def test_a_process_goes_on_with_a_keyring_that_was_started_anew(self):
        self.session.start_keyring()
        probe = subprocess.Popen([Path(os.environ["QUILLMARK_PROBES"]) / "KeyringProbe", APP, "between"], text=True,
                                 env=self.session.environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(lambda: (probe.kill(), probe.communicate()))
        self.assertEqual(probe.stdout.readline(), "between\n")
        self.session.signal_keyring(signal.SIGKILL)
        self.session.start_keyring()
        self.assertEqual(probe.communicate("\n", timeout=60)[0], "0 faults\n")

    def test_nobody_looks_into_a_process_that_asks_for_secrets(self):
        self.session.start_keyring()
        done = self.session.run(Path(os.environ["QUILLMARK_PROBES"]) / "KeyringProbe", APP)
        self.assertNotIn("others can look into", done.stdout)

    def test_no_secret_crosses_the_bus_in_the_clear(self):
        self.session.start_keyring()
        monitor = subprocess.Popen(["dbus-monitor", "--session"], stdout=subprocess.PIPE, text=True,
                                   env=self.session.environment)
        self.addCleanup(monitor.communicate)
        self.addCleanup(monitor.kill)
        monitor.stdout.readline()
        self.keychain("save", "ada", "--password", text="s3cret-s3cret")
        self.keychain("get", "ada")
        self.session.run("gdbus", "emit", "--session", "-o", "/the/end", "-s", "the.end.Signal", check=True)
        lines = []
        while not lines or "the.end" not in lines[-1]:
            lines.append(monitor.stdout.readline())
        traffic = "".join(lines)
        self.assertIn("GetSecret", traffic)
        self.assertNotIn("s3cret-s3cret", traffic)
        self.assertIsNone(re.search(r"73\s+33\s+63\s+72\s+65\s+74", traffic))
