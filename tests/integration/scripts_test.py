"""What the scripts that people call say when something keeps them from their work: one line, within seconds."""

import os
import shutil
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
PRIVROOT = PROJECT / "scripts/private-root/privroot"
SECONDS = 20  # that a script may take to say what is wrong; the longest of its own limits, with a busy machine in mind


class ScriptsTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory(dir=".")))
        self.programs = self.folder.resolve() / "programs"
        self.programs.mkdir()

    def replace(self, program, text):
        """Puts a program of the test's own first in PATH."""
        path = self.programs / program
        path.write_text(f"#!/bin/bash\n{text}\n")
        path.chmod(0o755)

    def run_with(self, *command, path=None, cwd=None, user=None):
        """\\returns the status and the lines that the command prints."""
        environment = os.environ | {"PATH": f"{self.programs}:{path or os.environ['PATH']}"}
        begin = time.monotonic()
        result = subprocess.run(command, env=environment, cwd=cwd, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, user=user,
                                stderr=subprocess.STDOUT, text=True, timeout=120)
        self.assertLess(time.monotonic() - begin, SECONDS)
        return result.returncode, result.stdout.splitlines()

    def only_path(self, *programs):
        """A folder for PATH in which there is nothing but these programs of the machine."""
        folder = self.folder.resolve() / "only"
        folder.mkdir()
        for program in programs:
            (folder / program).symlink_to(shutil.which(program))
        return str(folder)


class PrivateRootObstacles(ScriptsTest):
    def obstacle(self, **options):
        status, lines = self.run_with(PRIVROOT, "--obstacle", **options)
        self.assertEqual(status, 0, lines)
        return "\n".join(lines)

    def test_are_told_when_unshare_never_returns(self):
        self.replace("unshare", "sleep 1000")
        text = self.obstacle()
        self.assertRegex(text, "root|ordinary users")
        self.assertEqual(text.count("\n"), 0)

    def test_name_the_right_that_root_lacks_and_what_gives_it(self):
        self.replace("id", "echo 0")
        self.replace("unshare", "exit 1")
        self.replace("sed", "echo 00000000a80425fb")  # the rights of a usual container
        text = self.obstacle()
        for words in ("CAP_SYS_ADMIN", "--privileged", "docker run --cap-add SYS_ADMIN --security-opt seccomp=unconfined",
                      "podman run --cap-add SYS_ADMIN"):
            self.assertIn(words, text)

    def test_name_the_setting_that_keeps_ordinary_users_from_user_namespaces(self):
        self.replace("id", '[ "$1" = -u ] && echo 4242 || echo somebody')
        self.replace("grep", "exit 0")
        self.replace("unshare", "exit 1")
        self.replace("cat", "echo 1")
        self.assertEqual(self.obstacle(), "AppArmor allows ordinary users no user namespaces here: work as root, or "
                                          "sudo sysctl -w kernel.apparmor_restrict_unprivileged_userns=0")

    def test_name_the_command_that_gives_a_user_a_range_of_ids(self):
        self.replace("id", '[ "$1" = -u ] && echo 4242 || echo somebody')
        self.assertEqual(self.obstacle(), "somebody has no range in /etc/subuid: sudo usermod --add-subuids 100000-165535 "
                                          "--add-subgids 100000-165535 somebody")

    def test_are_none_because_administrators_programs_are_not_in_path(self):
        path = ":".join(folder for folder in os.environ["PATH"].split(":") if "sbin" not in folder)
        self.assertEqual(self.obstacle(path=path), self.obstacle())
        state, setup = self.folder / "state", self.folder / "setup.sh"
        setup.write_text(":\n")
        self.addCleanup(subprocess.run, [PRIVROOT, "--remove", state])
        status, lines = self.run_with(PRIVROOT, state, setup, "echo", "ran", path=path)
        if status != 77:
            self.assertEqual((status, lines), (0, ["ran"]))

    def test_can_be_told_beforehand(self):
        environment = os.environ | {"QUILLMARK_NO_PRIVATE_ROOT": "it is forbidden here"}
        result = subprocess.run([PRIVROOT, self.folder / "state", "/dev/null", "true"], env=environment, capture_output=True,
                                text=True)
        self.assertEqual((result.returncode, result.stderr), (77, "privroot: no private root here: it is forbidden here\n"))

    def test_end_run_before_anything_is_installed_or_built(self):
        self.replace("id", '[ "$1" = -u ] && echo 4242 || echo somebody')
        status, lines = self.run_with(PROJECT / "run")
        self.assertEqual((status, len(lines)), (1, 1), lines)
        self.assertTrue(lines[0].startswith("run: failed: no private root here: somebody has no range in"), lines)


class CopyTest(ScriptsTest):
    """The scripts' own steps, in a copy of them with a list of packages of the test's own."""

    def setUp(self):
        super().setUp()
        self.copy = self.folder.resolve() / "copy"
        (self.copy / "scripts").mkdir(parents=True)
        shutil.copy(PROJECT / "scripts/common.sh", self.copy / "scripts")
        (self.copy / "scripts/packages").write_text("build  there    is there\nbuild  part     is part of it\n"
                                                    "build  wanted   is not\ntest   another  neither\n")
        (self.copy / "CMakePresets.json").write_text("{}")


class Packages(CopyTest):
    def setUp(self):
        super().setUp()
        self.replace("dpkg-query", 'echo "installed there part (= 1.2), something"; echo "config-files wanted"')
        self.replace("sudo", '[ "$1" != -n ] || shift; "$@"')

    def install(self, *groups, **options):
        return self.run_with("bash", "-c", f". scripts/common.sh; install_packages {' '.join(groups)}; say done",
                             cwd=self.copy, **options)

    def test_are_asked_for_when_neither_they_nor_what_provides_them_is_there(self):
        self.replace("apt-get", 'echo "$@" >>calls; echo "0 upgraded, 1 newly installed, 0 to remove"\n'
                                'echo "Get:1 http://x y wanted"; echo "Setting up wanted (1)"')
        status, lines = self.install("build")
        self.assertEqual(status, 0, lines)
        self.assertEqual(lines[0], "bash: installing 1 packages and what they need: wanted")
        self.assertEqual(lines[-2:], ["bash: installing: 2 of 2", "bash: done"])
        calls = (self.copy / "calls").read_text().splitlines()
        self.assertTrue(calls[0].endswith(" update"), calls)
        self.assertTrue(calls[1].endswith(" install -y --no-install-recommends wanted"), calls)

    def test_that_cannot_be_had_are_told_in_one_line(self):
        self.replace("apt-get", 'echo "Err:1 http://x y"; echo "E: Unable to locate package wanted"; exit 100')
        status, lines = self.install("build")
        self.assertEqual(status, 1)
        self.assertEqual(lines[1:], ["bash: failed: apt-get could not install the packages: E: Unable to locate package wanted "
                                     "(build/packages.log)"])

    def test_that_need_an_administrator_are_told_in_one_line(self):
        self.replace("id", "echo 4242")
        self.replace("sudo", "exit 1")
        status, lines = self.install("build", "test")
        self.assertEqual((status, lines), (1, ["bash: failed: root rights are needed, and sudo gives none here; as root: "
                                               "apt-get install wanted another"]))

    def test_of_another_system_are_told_as_the_programs_that_are_missing(self):
        (self.programs / "dpkg-query").unlink()
        path = self.only_path("bash", "dirname", "basename", "cmake", "python3")
        status, lines = self.install("build", path=path)
        self.assertEqual((status, len(lines)), (1, 1), lines)
        self.assertRegex(lines[0], r"^bash: failed: not a Debian system, and these programs are missing: c\+\+ ninja pkg-config ")

    def test_that_the_build_misses_are_told_in_one_line(self):
        self.replace("cmake", 'echo "-- missing: fmt, gio-2.0"; echo "CMake Error at"; exit 1')
        status, lines = self.run_with("bash", "-c", ". scripts/common.sh; build release all", cwd=self.copy)
        self.assertEqual(status, 1)
        self.assertEqual(lines, ["bash: configuring release", "bash: failed: the build needs what is missing here: fmt, gio-2.0 "
                                                              "(scripts/packages names Debian's packages)"])


class Build(CopyTest):
    """Configured again only when what is wanted of it differs."""

    def configure(self, *variables):
        self.replace("cmake", 'case $1 in --preset) shift 2; mkdir -p build/release; touch build/release/build.ninja\n'
                              'for v in "$@"; do v=${v#-D}; echo "${v%%=*}:BOOL=${v#*=}"; done >build/release/CMakeCache.txt;; esac')
        status, lines = self.run_with("bash", "-c", f". scripts/common.sh; build release all {' '.join(variables)}", cwd=self.copy)
        self.assertEqual(status, 0, lines)
        return "bash: configuring release" in lines

    def test_is_configured_when_a_variable_is_new_or_has_another_value(self):
        self.assertTrue(self.configure("-DA=ON"))
        self.assertFalse(self.configure("-DA=ON"))
        self.assertFalse(self.configure())
        self.assertTrue(self.configure("-DA=OFF"))
        self.assertTrue(self.configure("-DA=OFF", "-DB=ON"))
