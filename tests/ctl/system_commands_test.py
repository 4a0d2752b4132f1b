import platform

from tool import ToolTest


class System(ToolTest):
    def test_the_system_is_told_with_its_processor(self):
        system = self.json("system")
        self.assertEqual(set(system), {"major", "minor", "bugfix", "intel", "appKit"})
        self.assertEqual(system["major"], int(platform.release().split(".")[0]))
        self.assertEqual(system["intel"], platform.machine() == "x86_64")
        self.assertEqual(system["appKit"], 2487)


class Host(ToolTest):
    def test_this_computer_has_a_name_and_a_short_one(self):
        name = self.plain("host", "name")
        self.assertEqual(name.removesuffix("."), platform.node())
        self.assertEqual(self.plain("host", "short"), name.split(".")[0])

    def test_the_addresses_of_a_host_are_listed(self):
        self.assertEqual(self.json("host", "addresses", "127.0.0.1"), ["127.0.0.1"])
        self.assertEqual(self.json("host", "addresses", "no.such.host.invalid", status=1), [])
        self.assertEqual(self.json("host", "addresses", "h" * 300, status=1), [])

    def test_equal_names_and_shared_addresses_are_one_computer(self):
        self.run_tool("host", "same", "no.such.host", "no.such.host")
        self.run_tool("host", "same", "127.0.0.1", "127.1")
        self.run_tool("host", "same", "127.0.0.1", "127.0.0.2", status=1)
        self.run_tool("host", "same", "No.such.host.invalid", "no.such.host.invalid", status=1)


class Process(ToolTest):
    def test_an_application_that_does_not_run_is_a_no(self):
        self.run_tool("process", "running", "com.example.nothing", status=1)

    def test_one_that_cannot_be_launched_is_an_error(self):
        self.assertEqual(self.failed_json("process", "launch", "com.example.nothing"),
                         {"domain": "com.quillmark.Quillmark.Quillmark-Client", "code": -1,
                          "failureReason": "launchApplication failed",
                          "description": 'bundleWithIdentifier "com.example.nothing" failed'})

    def test_asking_one_to_quit_that_does_not_run_is_fine(self):
        self.assertEqual(self.run_tool("process", "quit", "com.example.nothing", "--wait", "1").stdout, "")

    def test_the_list_is_an_array(self):
        self.assertIsInstance(self.json("process", "list"), list)
