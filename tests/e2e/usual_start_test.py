"""A start with everything in order."""

import re

from machine import CORE, LauncherTest, end_cores, launcher_logs, run_launcher


class UsualStart(LauncherTest):
    def test_ends_with_status_0_and_leaves_a_core_running(self):
        result = run_launcher()
        self.assertEqual(result.returncode, 0)
        self.core()

    def test_says_nothing_on_the_terminal(self):
        result = run_launcher()
        self.assertEqual((result.stdout, result.stderr), ("", ""))

    def test_keeps_its_log_in_the_users_log_folder_under_the_time_of_the_start(self):
        run_launcher()
        names = [path.name for path in launcher_logs()]
        self.assertEqual(len(names), 1)
        self.assertRegex(names[0], r"^Quillmark-\d{4}-\d\d-\d\d-\d{6}\.log$")

    def test_logs_each_step_in_order(self):
        run_launcher()
        lines = [line for line in self.log().splitlines() if "(nrm)" in line]
        messages = [line.partition("] (nrm) ")[2].partition("] ")[2] for line in lines]
        self.assertEqual(messages, [
            "Quillmark version 1.14.4 (1303)",
            "Quillmark did begin launching...",
            "Quillmark did finish launching",
            f'Launching "{CORE}"...',
            f'Launched "{CORE}"',
            "Will terminate now",
        ])

    def test_begins_each_log_line_with_time_process_level_and_thread(self):
        run_launcher()
        time = r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{4}"
        start = re.compile(rf"^{time} Quillmark\[\d+\] \((ERR|nrm|vrb|dtl)\) \[0x[0-9a-f]+\] \S")
        for line in self.log().splitlines():
            self.assertRegex(line, start)

    def test_logs_no_errors(self):
        run_launcher()
        self.assertNotIn("(ERR)", self.log())

    def test_appends_to_the_log_when_the_second_start_falls_into_the_same_second(self):
        for _ in range(3):
            run_launcher()
            end_cores()
        text = "".join(path.read_text() for path in launcher_logs())
        self.assertEqual(text.count("Will terminate now"), 3)
