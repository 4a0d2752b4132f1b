import json

from tool import APP, ToolTest

DOMAIN = "com.apple.NSTask.OneLineTasksWithOutput"


class Run(ToolTest):
    def test_what_a_program_prints_is_told(self):
        self.assertEqual(self.json("run", "/bin/echo", "a b"), {"output": "a b\n", "error": None})

    def test_options_behind_the_path_are_the_programs_own(self):
        self.assertEqual(self.json("run", "/bin/echo", "-n", "--pretty", "x")["output"], "--pretty x")

    def test_all_is_the_programs_own_behind_two_dashes(self):
        self.assertEqual(self.json("run", "--", "/usr/bin/printf", "%s|", "--help", "", "-h")["output"], "--help||-h|")

    def test_two_dashes_behind_the_path_are_the_programs_own(self):
        self.assertEqual(self.json("run", "/usr/bin/printf", "%s|", "--", "a")["output"], "--|a|")
        self.assertEqual(self.json("run", "--", "/usr/bin/printf", "%s|", "--", "--")["output"], "--|--|")

    def test_what_asks_for_help_behind_the_path_asks_the_program(self):
        self.assertEqual(self.json("run", "/usr/bin/printf", "%s|", "-h", "--help", "--version")["output"],
                         "-h|--help|--version|")
        self.assertIn("Usage: quillmarkctl run", self.run_tool("run", "--help").stdout)
        self.assertIn("Usage: quillmarkctl run", self.run_tool("run", "--pretty", "-h", "/bin/echo").stdout)

    def test_options_before_the_path_are_ours(self):
        for options in (["--pretty"], ["--bundle", APP, "--pretty"], ["--log-level", "error", "--pretty"],
                        ["--pretty", f"--bundle={APP}"]):
            for before, behind in (([], options), (options, []), (options, ["--"]), ([], [*options, "--"])):
                with self.subTest(before=before, behind=behind):
                    output = self.run_tool(*before, "run", *behind, "/bin/echo", "--log-level", "-x").stdout
                    self.assertGreater(output.count("\n"), 2)
                    self.assertEqual(json.loads(output)["output"], "--log-level -x\n")
        self.assertIn("--frob", self.failure("run", "--frob", "/bin/echo", status=2))

    def test_words_reach_the_program_as_they_are(self):
        words = ["[a,b]", "{}", "", "%%", "ä", "'", "a\nb", "--a=b", "-"]
        self.assertEqual(self.json("run", "/usr/bin/printf", "%s|", *words)["output"], "".join(word + "|" for word in words))

    def test_a_program_may_be_called_like_an_option(self):
        program = self.write_file("-x", "#!/bin/sh\necho $#\n")
        program.chmod(0o755)
        self.assertIn("could not be run", self.failure("run", "--", "-y", stdout=None, status=3))
        self.assertEqual(self.json("run", "--", program, "run")["output"], "1\n")

    def test_output_on_standard_error_is_told_and_is_no_failure(self):
        result = self.json("run", "/bin/sh", "-c", "echo out; echo err >&2")
        self.assertEqual(result, {"output": "out\n", "error": {
            "domain": DOMAIN, "code": -2, "standardError": "err\n", "terminationStatus": 0, "failureReason": None,
            "description": None}})

    def test_another_status_than_zero_is_a_failure_that_tells_the_output(self):
        self.assertEqual(self.failed_json("run", "/bin/sh", "-c", "echo out; exit 3"), {"output": "out\n", "error": {
            "domain": DOMAIN, "code": -1, "standardError": "", "terminationStatus": 3, "failureReason": "Process Failed",
            "description": "Task terminationStatus was 3"}})

    def test_a_program_that_does_not_exist_is_a_failure(self):
        result = self.failed_json("run", "/no/such/program")
        self.assertEqual((result["output"], result["error"]["code"]), (None, -1))

    def test_of_a_locale_without_utf_8_qt_says_nothing(self):
        done = self.run_tool("run", "/bin/true", LC_ALL="C", QT_FORCE_STDERR_LOGGING="1")
        self.assertEqual(done.stderr, "")

    def test_a_program_without_a_name_is_told_as_one(self):
        self.assertEqual(self.failed("run", "").stderr, 'quillmarkctl: "": could not be run\n')

    def test_the_path_is_required(self):
        for words in (["run"], ["run", "--"], ["run", "--pretty"], ["--pretty", "run"]):
            self.failure(*words, status=2)
