import unittest

from tool import ToolTest

DOMAIN = "com.apple.NSTask.OneLineTasksWithOutput"


class Run(ToolTest):
    def test_what_a_program_prints_is_told(self):
        self.assertEqual(self.json("run", "/bin/echo", "a b"), {"output": "a b\n", "error": None})

    def test_options_behind_the_path_are_the_programs_own(self):
        self.assertEqual(self.json("run", "/bin/echo", "-n", "--pretty", "x")["output"], "--pretty x")

    def test_all_is_the_programs_own_behind_two_dashes(self):
        self.assertEqual(self.json("run", "--", "/usr/bin/printf", "%s|", "--help", "", "-h")["output"], "--help||-h|")

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

    def test_the_path_is_required(self):
        self.failure("run", status=2)


if __name__ == "__main__":
    unittest.main()
