"""A desktop without a script language gives no answers; every command takes that for one."""

from tool import ToolTest


class Finder(ToolTest):
    def test_nothing_is_selected_in_a_finder_that_does_not_answer(self):
        self.assertEqual(self.json("finder", "selection"), [])
        self.assertEqual(self.json("finder", "selection", "--retry"), [])

    def test_a_finder_that_does_not_answer_shows_its_servers(self):
        self.assertEqual(self.plain("finder", "servers"), "yes")

    def test_what_nobody_answers_prints_nothing(self):
        self.assertEqual(self.run_tool("finder", "servers", "on").stdout, "")
        self.assertEqual(self.run_tool("finder", "servers", "off").stdout, "")
        self.assertEqual(self.run_tool("finder", "refresh", self.home).stdout, "")

    def test_a_file_that_is_not_there_is_refreshed_in_vain(self):
        self.assertEqual(self.run_tool("finder", "refresh", "no such file").stdout, "")

    def test_a_wrong_command_line_is_status_2(self):
        for arguments in ([], ["refresh"], ["refresh", "a", "b"], ["servers", "yes"], ["servers", ""],
                          ["selection", "x"], ["selection", "--nonsense"]):
            self.failure("finder", *arguments, status=2)
