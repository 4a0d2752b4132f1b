"""Whatever the terminal, folder, home folder or language: the core is started."""

import os
import pwd
import resource
import shutil
import subprocess
from pathlib import Path

from machine import (APP, CORE, HOME, LAUNCHER, LOG_FOLDER, USER, LauncherTest, end_cores, environment, processes_of, run,
                     run_launcher, set_preferences, wait_until)


class Surroundings(LauncherTest):
    def test_in_every_language_of_the_texts(self):
        for language in ("de_DE.UTF-8", "fr_FR.UTF-8", "es_ES.UTF-8", "ja_JP.UTF-8"):
            with self.subTest(language):
                self.assert_starts_one_more(environment(LANG=language))
                end_cores()

    def test_in_a_language_without_texts(self):
        self.assert_starts_one_more(environment(LANG="tlh_QO.UTF-8"))

    def test_with_a_list_of_languages(self):
        self.assert_starts_one_more(environment(LANG="es_ES.UTF-8", LANGUAGE="xx:ja:de_AT:fr"))

    def test_with_a_language_that_is_no_language(self):
        self.assert_starts_one_more(environment(LANG="../../../../etc/passwd", LANGUAGE=":::" + "x" * 10000))

    def test_without_any_environment_but_the_path(self):
        self.assert_starts_one_more({"PATH": "/usr/bin:/bin"})

    def test_finds_the_home_folder_of_the_account_when_the_environment_names_none(self):
        self.assertEqual(pwd.getpwuid(USER).pw_dir, str(HOME))
        result = run_launcher(env=environment(HOME=None))
        self.assertEqual(result.returncode, 0)
        self.assertIn("Will terminate now", self.log())

    def test_with_a_home_folder_that_needs_care_in_every_format_and_shell(self):
        home = HOME / 'Ünïcode "100%@ %s" \'x\' $(touch x) 日本'
        home.mkdir()
        os.chown(home, USER, USER)
        result = run_launcher(env=environment(HOME=home))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        logs = list((home / "Library/Logs/Quillmark/Quillmark").iterdir())
        self.assertIn("Will terminate now", logs[0].read_text())

    def test_words_that_it_does_not_know_are_passed_over(self):
        for words in (["--nonsense", "x"], ["-psn_0_12345"], ["-h"], [""], ["--version=1"]):
            with self.subTest(words):
                done = run(LAUNCHER, *words)
                self.assertEqual((done.stdout, done.stderr, done.returncode), ("", "", 0))
                wait_until(lambda: processes_of(CORE), "the core runs")
                end_cores()

    def test_asked_for_help_or_its_version_it_starts_nothing(self):
        for words, answer in ((["--help"], r"\AUsage: Quillmark \[--help\] \[--version\]\n(.*\n)+\Z"),
                              (["x", "--version"], r"\AQuillmark 1\.14\.4 \(1303\)\n\Z")):
            done = run(LAUNCHER, *words)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertRegex(done.stdout, answer)
        self.assertEqual(processes_of(CORE), [])
        self.assertFalse(LOG_FOLDER.exists())

    def test_through_a_symbolic_link(self):
        link = Path("/tmp/quill")
        link.symlink_to(LAUNCHER)
        self.assert_started(run_launcher(link))

    def test_by_a_relative_path(self):
        self.assert_started(run_launcher("./Quillmark", cwd=LAUNCHER.parent))

    def test_from_a_folder_that_is_gone(self):
        folder = Path("/tmp/gone")
        folder.mkdir()
        os.chown(folder, USER, USER)
        result = run_launcher(cwd=folder, before=folder.rmdir)
        self.assertEqual(result.returncode, 0)  # the shells that it asks complain about their folder
        self.core()

    def test_from_another_place_starts_the_core_of_that_place(self):
        copy = HOME / "Downloads & more/Quillmark.app"
        shutil.copytree(APP, copy)
        set_preferences(moveToApplicationsFolderAlertSuppress=True)  # nobody is here to answer the offer
        result = run_launcher(copy / "Contents/MacOS/Quillmark")
        self.assertEqual(result.returncode, 0)
        core = copy / CORE.relative_to(APP)
        wait_until(lambda: processes_of(core), "the core of the copy runs")
        self.assertIn(f'Launched "{core}"', self.log())

    def test_when_its_output_goes_to_a_full_disk(self):
        set_preferences(StdioLogging="detailed")
        with open("/dev/full", "w") as full:
            self.assertEqual(run_launcher(stdout=full, stderr=full).returncode, 0)
        self.core()

    def test_without_descriptors_it_says_so_and_gives_up(self):
        """One for each library that is loaded, and no second one."""
        result = run_launcher(before=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (4, 4)))
        self.assertEqual(result.stderr, "Quillmark: could not start: nothing can be waited for: Too many open files\n")
        self.assert_refused(result)

    def test_where_the_process_table_is_hidden(self):
        script = f"umount -l /proc && exec setpriv --reuid {USER} --regid {USER} --clear-groups {LAUNCHER}"
        result = subprocess.run(["unshare", "--mount", "sh", "-c", script], env=environment(), cwd=HOME, stdin=subprocess.DEVNULL,
                                capture_output=True, text=True, timeout=60)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.core()
        self.assertIn(" Quillmark[", self.log())

    def assert_starts_one_more(self, env):
        before = set(processes_of(CORE))
        result = run_launcher(env=env)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(len(set(processes_of(CORE)) - before), 1)
