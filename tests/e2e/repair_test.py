"""The whole repair, with real administrator rights and the real update tool, without a window."""

import json
import shutil
import stat
import subprocess
from pathlib import Path

from components import FILE_SYSTEM, FRAMEWORK, OVERLAY_TOOL, TOOLS, UPDATE_TOOL, resource
from machine import CORE, RESOURCES, TOOL, LauncherTest, processes_of, run_launcher, start
from polkit import confirm_password, start_agent, start_polkit


class Repair(LauncherTest):
    def remove_everything(self):
        for folder in (TOOLS, FILE_SYSTEM.parent, FRAMEWORK.parent):
            shutil.rmtree(folder)
        (RESOURCES / "QuillmarkCore.app").chmod(0o700)

    def repair(self, agent_answer=None):
        """\\returns the exit status, the statuses by name afterwards, and the lines on standard error."""
        held = start("/bin/sh", "-c", f'read go && exec "{TOOL}" repair', stdin=subprocess.PIPE)
        agent = start_agent(self, agent_answer, held.pid) if agent_answer else None
        held.stdin.write("\n")
        held.stdin.flush()
        if agent_answer == "allow":
            self.assertEqual(agent.stdout.readline(), "asked\n")
            confirm_password(agent)
        out, err = held.communicate(timeout=60)
        if held.returncode == 3:
            self.assertEqual(out, "")
            out = start(TOOL, "status").communicate(timeout=60)[0]
        statuses = {item["name"]: item["status"] for item in json.loads(out)["items"]}
        return held.returncode, statuses, err.splitlines()

    def assert_owner_and_mode(self, path, mode):
        status = path.lstat()
        self.assertEqual((status.st_uid, status.st_gid, stat.S_IMODE(status.st_mode)), (0, 0, mode), path)

    def test_of_everything_takes_one_password_and_ends_in_a_working_installation(self):
        self.remove_everything()
        start_polkit(self, "AUTH_ADMIN")
        status, statuses, steps = self.repair("allow")
        self.assertEqual(status, 0, steps)
        self.assertEqual(set(statuses.values()), {"OK", "Not Required"})
        self.assertEqual([step.split(":")[0] for step in steps],
                         ["updateqm", "QuillmarkCore", "finderoverlaytool", "QuillmarkFS"])
        for path, mode in ((UPDATE_TOOL, 0o4755), (OVERLAY_TOOL, 0o755), (FILE_SYSTEM, 0o755)):
            self.assert_owner_and_mode(path, mode)
        for path in (UPDATE_TOOL, OVERLAY_TOOL):
            self.assertEqual(path.read_bytes(), resource(path.name).read_bytes())
        self.assert_started(run_launcher())

    def test_with_a_dismissed_dialog_changes_nothing_and_a_second_one_succeeds(self):
        self.remove_everything()
        start_polkit(self, "AUTH_ADMIN")
        status, statuses, steps = self.repair("dismiss")
        self.assertEqual((status, steps[-1]), (3, "quillmarkctl: updateqm: installing the update tool failed: administrator "
                                                  "rights were not given (status -60006)"))
        self.assertEqual(statuses["finderoverlaytool"], "Missing")
        self.assertFalse(TOOLS.exists())
        self.assertEqual(self.repair("allow")[0], 0)

    def test_with_a_tampered_payload_installs_nothing_of_it(self):
        OVERLAY_TOOL.unlink()
        tampered = RESOURCES / "finderoverlaytool"
        tampered.write_bytes(tampered.read_bytes() + b"\0")
        start_polkit(self, "YES")
        status, statuses, steps = self.repair()
        self.assertEqual((status, statuses["finderoverlaytool"]), (3, "Missing"))
        self.assertFalse(OVERLAY_TOOL.exists())
        self.assertEqual(steps[-1], 'quillmarkctl: finderoverlaytool: repairing what is "Missing" failed: '
                                    f'"{UPDATE_TOOL}" ended with status 67')
        self.assertEqual(processes_of(CORE), [])

    def test_with_a_tampered_update_tool_installs_nothing_at_all(self):
        self.remove_everything()
        tampered = RESOURCES / "updateqm"
        tampered.write_bytes(tampered.read_bytes() + b"\0")
        start_polkit(self, "YES")
        self.assertEqual(self.repair()[0], 3)
        self.assertEqual(list(Path("/Library").rglob("updateqm")), [])

    def test_of_a_bundle_that_tells_no_version_fails_as_it_must(self):
        (FILE_SYSTEM / "Contents/Info.plist").unlink()
        start_polkit(self, "YES")
        status, statuses, steps = self.repair()
        self.assertEqual((status, statuses["QuillmarkFS"]), (3, "Invalid"))
        self.assertEqual(steps[-1], 'quillmarkctl: QuillmarkFS: repairing what is "Invalid" failed: there is no repair for it')
