"""A process table that is hidden, that is full of odd names, and that changes while somebody looks."""

import json
import os
import plistlib
import shutil
import subprocess
import unittest
from pathlib import Path

from machine import HOME, TOOL, USER, end_with, environment, make_user_folder, processes_of, start, status_of, wait_until

IDENTIFIER = "com.example.application"
LISTS = 30  # so often the table is read while it changes

ODD_NAMES = {
    "a blank": "Some name",
    "blanks at both ends": " name ",
    "a newline": "Some\nname",
    "quotes": "Some \"name\" or 'other'",
    "a backslash and a control character": "Some\\name\t\x01",
    "what a shell would run": "$(reboot)`reboot`;&",
    "what a format would take": "100%@ %s %n",
    "letters of many scripts": "Größe 日本語 ✓ 𝄞",
    "a bracket, as idle threads of the system have": "[name]",
}
NO_TEXT = os.fsdecode(b"N\xe4me \xff\xfe\xc3")  # these bytes are not UTF-8


def tool(*arguments, **options):
    """What the tool answers to a question about processes: its status and standard output, which is always UTF-8."""
    process = start(TOOL, "process", *arguments, text=False, **options)
    out, err = process.communicate(timeout=60)
    return process.returncode, out.decode(), err.decode()


class ProcessTable(unittest.TestCase):
    def make_bundle(self, name="Example", identifier=IDENTIFIER, program="/bin/sleep"):
        """An application whose executable is called as it is itself. \\returns its executable."""
        executable = HOME / "Applications" / f"{name}.app/Contents/MacOS" / name
        make_user_folder(executable.parent)
        shutil.copy(program, executable)
        information = {"CFBundleIdentifier": identifier}
        (executable.parents[1] / "Info.plist").write_bytes(plistlib.dumps(information))
        return executable

    def run_for_the_test(self, program):
        process = end_with(self, start(program, "1000"))
        wait_until(lambda: process.pid in processes_of(program), "the program runs")
        return process

    def run_core(self):
        program = Path("/tmp/QuillmarkCore")
        shutil.copy("/bin/sleep", program)
        return self.run_for_the_test(program)

    def run_bundle(self, *arguments):
        """Such an application, for the test. \\returns its process and its executable."""
        executable = self.make_bundle(*arguments)
        return self.run_for_the_test(executable), executable

    def records(self, **options):
        status, out, err = tool("list", **options)
        self.assertEqual((status, err), (0, ""))
        self.assertEqual(out.count("\n"), 1)
        return json.loads(out)

    def record_of(self, process, executable, identifier=IDENTIFIER):
        return {"bundleIdentifier": identifier, "processIdentifier": process.pid, "path": str(executable.parents[2])}


class HiddenProcessTable(ProcessTable):
    def setUp(self):
        self.process, _ = self.run_bundle()
        self.run_core()

    def ask(self, preparation, *question):
        """Asks the tool where root has prepared the process table."""
        script = f'{preparation} && exec setpriv --reuid {USER} --regid {USER} --clear-groups "$@"'
        done = subprocess.run(["unshare", "--mount", "sh", "-c", script, "sh", TOOL, "process", *question], cwd=HOME,
                              env=environment(), stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60)
        return done.returncode, done.stdout

    def assert_finds_nothing(self, preparation):
        self.assertEqual(self.ask(preparation, "list"), (0, "[]\n"))
        self.assertEqual(self.ask(preparation, "running", IDENTIFIER), (1, ""))
        self.assertEqual(self.ask(preparation, "core-running", "QuillmarkCore"), (1, ""))

    def test_nothing_is_found_where_there_is_no_process_table(self):
        self.assert_finds_nothing("umount -l /proc")

    def test_nothing_is_found_where_something_else_is_in_its_place(self):
        self.assert_finds_nothing("mount -t tmpfs none /proc && mkdir /proc/1 /proc/2 && ln -s /nowhere /proc/1/exe")

    def test_nothing_is_found_where_it_may_not_be_read(self):
        self.assert_finds_nothing("mount -t tmpfs -o mode=700 none /proc")

    def test_the_users_own_processes_are_found_where_those_of_others_are_hidden(self):
        hide = "mount -t proc -o hidepid=2 proc /proc"
        status, out = self.ask(hide, "list")
        self.assertEqual((status, [record["processIdentifier"] for record in json.loads(out)]), (0, [self.process.pid]))
        self.assertEqual(self.ask(hide, "running", IDENTIFIER), (0, ""))
        self.assertEqual(self.ask(hide, "core-running", "QuillmarkCore"), (0, ""))


class OddNames(ProcessTable):
    def test_a_bundle_is_listed_by_its_whole_name_whatever_is_in_it(self):
        for what, name in ODD_NAMES.items():
            with self.subTest(what):
                process, executable = self.run_bundle(name)
                self.assertIn(self.record_of(process, executable), self.records())

    def test_a_bundle_is_listed_by_its_whole_name_in_a_language_without_letters(self):
        process, executable = self.run_bundle(ODD_NAMES["letters of many scripts"])
        for language in ("C", "POSIX", "xx_XX"):
            with self.subTest(language):
                self.assertEqual(self.records(env=environment(LANG=language)), [self.record_of(process, executable)])

    def test_an_identifier_is_told_as_it_is(self):
        for what, name in ODD_NAMES.items():
            with self.subTest(what):
                identifier = f"com.example.{name.strip()}".replace("\x01", "")  # which no property list can hold
                process, executable = self.run_bundle("Example", identifier)
                self.assertEqual(self.records(), [self.record_of(process, executable, identifier)])
                self.assertEqual(tool("running", identifier)[0], 0)
                process.kill()
                process.wait()

    def test_a_name_that_is_no_text_leaves_the_answer_a_document_and_the_others_in_it(self):
        self.run_bundle(NO_TEXT)
        process, executable = self.run_bundle()
        self.assertIn(self.record_of(process, executable), self.records())
        self.assertEqual(tool("running", IDENTIFIER)[0], 0)

    def test_a_name_that_is_no_text_neither_hides_a_core_nor_looks_like_one(self):
        for language in ("C.UTF-8", "C"):
            with self.subTest(language):
                odd, _ = self.run_bundle(NO_TEXT)
                self.assertEqual(tool("core-running", "QuillmarkCore", env=environment(LANG=language))[0], 1)
                core = self.run_core()
                self.assertEqual(tool("core-running", "QuillmarkCore", env=environment(LANG=language))[0], 0)
                for process in (odd, core):
                    process.kill()
                    process.wait()

    def test_an_information_file_that_is_none_leaves_its_application_without_an_identifier(self):
        executable = self.make_bundle()
        (executable.parents[1] / "Info.plist").write_bytes(b"\xff\x00<plist>" * 1000)
        process = self.run_for_the_test(executable)
        self.assertEqual(self.records(), [self.record_of(process, executable, "")])


class ChangingProcessTable(ProcessTable):
    def setUp(self):
        self.process, self.executable = self.run_bundle("Stays")

    def start_many_short_processes(self):
        """Applications that end at once, hundreds a second, until the test ends."""
        short = self.make_bundle("Short", "com.example.short", "/bin/true")
        loop = 'while :; do for i in 1 2 3 4 5 6 7 8; do "$0" & done; wait; done'
        crowd = end_with(self, start("/bin/sh", "-c", loop, short))
        wait_until(lambda: self.newest_process() > crowd.pid + 200, "some hundreds have been started")
        return short

    def newest_process(self):
        with subprocess.Popen(["true"]) as process:
            return process.pid

    def test_what_stays_is_in_every_list_and_every_record_is_whole(self):
        short = self.start_many_short_processes()
        before = self.newest_process()
        for _ in range(LISTS):
            records = self.records()
            self.assertIn(self.record_of(self.process, self.executable), records)
            for record in records:
                self.assertIn((record["bundleIdentifier"], record["path"]),
                              [(IDENTIFIER, str(self.executable.parents[2])), ("com.example.short", str(short.parents[2]))])
                self.assertGreater(record["processIdentifier"], 0)
            numbers = [record["processIdentifier"] for record in records]
            self.assertEqual(numbers, sorted(set(numbers)))
        self.assertGreater(self.newest_process() - before, 100)  # or nothing was put to the test

    def test_a_core_is_found_every_time(self):
        self.run_core()
        self.start_many_short_processes()
        for _ in range(LISTS):
            self.assertEqual(tool("core-running", "QuillmarkCore")[0], 0)

    def test_what_has_ended_but_was_not_waited_for_is_not_listed(self):
        ended, _ = self.run_bundle("Ended", "com.example.ended")
        ended.kill()
        wait_until(lambda: status_of(ended.pid)["State"].startswith("Z"), "it has ended")
        self.assertEqual(self.records(), [self.record_of(self.process, self.executable)])

    def test_what_runs_on_when_its_bundle_is_gone_has_lost_its_identifier(self):
        shutil.rmtree(self.executable.parents[2])
        self.assertEqual(self.records(), [self.record_of(self.process, self.executable, "")])
