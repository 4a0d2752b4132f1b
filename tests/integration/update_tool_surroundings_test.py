"""The update tool as a process: what it inherits from a hostile caller, and what it leaves when it is disturbed."""

import fcntl
import os
import random
import resource as limits
import shutil
import signal
import stat
import subprocess
import time
from pathlib import Path

from components import (BUSY, FILE_SYSTEM, LOCK, OVERLAY_TOOL, TOOLS, UPDATE_TOOL, AttackTest, fingerprint, make_bundle, make_package,
                        of_release, resource, signed)
from machine import HOME, PATIENCE, USER, end_with, full_pipe, has_ended, start, status_of, wait_until

NAMES = ["finderoverlaytool", "finderoverlaytool.sig", "updateqm", "updateqm.sig"]
REPAIR = ("repairother", *signed("finderoverlaytool"))


def hold_lock(test):
    """The update tool waits for its turn, until the test ends."""
    lock = os.open(LOCK, os.O_RDWR | os.O_CREAT, 0o600)
    test.addCleanup(os.close, lock)
    fcntl.flock(lock, fcntl.LOCK_EX)
    return lock


class BigPackageTest(AttackTest):
    def big_package(self, mebibytes):
        tree = make_bundle(self.folder / "tree", FILE_SYSTEM.name)
        (tree / FILE_SYSTEM.name / "big").write_bytes(os.urandom(1 << 20) * mebibytes)
        return make_package(self.folder / "x.pkg", tree)


class HostileSurroundings(BigPackageTest):
    def assert_all_or_nothing(self, *command, **options):
        """It does its work, or says why not and has changed nothing; it leaves nothing behind."""
        before = fingerprint()
        status, error = self.run_tool(*command, **options)
        if status != 0:
            self.assertEqual(fingerprint(), before, error)
        return status

    def deep_package(self):
        tree = make_bundle(self.folder / "tree", FILE_SYSTEM.name)
        deep = tree / FILE_SYSTEM.name / "a/b/c/d/e/f"
        deep.mkdir(parents=True)
        (deep / "program").write_text("x")
        (deep / "program").chmod(0o700)
        return make_package(self.folder / "deep.pkg", tree), FILE_SYSTEM / "a/b/c/d/e/f/program"

    def test_with_few_descriptors_installs_all_or_nothing(self):
        package, program = self.deep_package()
        for number in range(3, 48):
            shutil.rmtree(FILE_SYSTEM, ignore_errors=True)
            few = lambda: limits.setrlimit(limits.RLIMIT_NOFILE, (number, number))
            if self.assert_all_or_nothing("repairpackage", package, before=few) == 0:
                self.assertEqual(stat.S_IMODE(program.stat().st_mode), 0o755)
                self.assertEqual({path.lstat().st_uid for path in FILE_SYSTEM.rglob("*")}, {0})
        self.assertTrue(program.exists(), "with the highest limit it was to be installed")

    def test_with_low_limits_it_does_all_or_nothing(self):
        for name, value in (("FSIZE", 4096), ("AS", 64 << 20), ("DATA", 4 << 20), ("STACK", 64 << 10), ("CPU", 0), ("NPROC", 1)):
            with self.subTest(name):
                number = getattr(limits, f"RLIMIT_{name}")
                self.assert_all_or_nothing(*REPAIR, before=lambda: limits.setrlimit(number, (value, value)))

    def test_a_limit_that_the_caller_could_lift_himself_does_not_count(self):
        def lower():
            for name, value in (("FSIZE", 4096), ("NOFILE", 64)):
                number = getattr(limits, f"RLIMIT_{name}")
                limits.setrlimit(number, (value, limits.getrlimit(number)[1]))

        OVERLAY_TOOL.unlink()
        self.assert_done(*REPAIR, before=lower)

    def test_the_callers_timers_do_not_end_it_half_way(self):
        """Before it acts they may; then it leaves nothing."""
        ended = set()
        for timer in (signal.ITIMER_REAL, signal.ITIMER_VIRTUAL, signal.ITIMER_PROF):
            for _ in range(25):
                after = random.uniform(0.0005, 0.02)
                process = start(UPDATE_TOOL, *REPAIR, before=lambda: signal.setitimer(timer, after))
                process.communicate(timeout=PATIENCE)
                ended.add(process.returncode)
                self.assertEqual(sorted(os.listdir(TOOLS)), NAMES)
        self.assertIn(-signal.SIGALRM, ended, "no timer was ever quick enough: the test shows nothing")

    def test_has_no_more_rights_than_it_needs_while_it_acts(self):
        package = self.big_package(200)
        process = start(UPDATE_TOOL, "repairpackage", package, before=lambda: os.nice(19))
        facts = wait_until(lambda: self.facts_while_it_writes(process.pid), "the tool writes")
        process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0)
        names = {number for number in range(64) if int(facts["CapEff"], 16) >> number & 1}
        self.assertEqual(names, {0, 1, 3, 4, 6, 7})  # CHOWN, DAC_OVERRIDE, FOWNER, FSETID, SETGID, SETUID
        self.assertEqual((facts["CapPrm"], facts["NoNewPrivs"], facts["nice"]), (facts["CapEff"], "1", 0))
        blocked = int(facts["SigBlk"], 16)
        for number in (signal.SIGINT, signal.SIGALRM, signal.SIGTSTP, signal.SIGTTOU, signal.SIGPROF, signal.SIGXCPU):
            self.assertTrue(blocked >> (number - 1) & 1, number)

    def facts_while_it_writes(self, pid):
        facts = status_of(pid)
        staged = [name for name in os.listdir(FILE_SYSTEM.parent) if name.startswith(".quillmark-")]
        return facts | {"nice": os.getpriority(os.PRIO_PROCESS, pid)} if staged and facts["NoNewPrivs"] == "1" else None

    def test_says_its_line_without_waiting_for_a_reader(self):
        writing = full_pipe(self)
        process = start(UPDATE_TOOL, "sing", stderr=writing)
        os.close(writing)
        self.assertEqual(process.wait(timeout=PATIENCE), 64)

    def test_a_payload_of_half_a_gigabyte_leaves_nothing_on_the_disk(self):
        large = self.folder / "large"
        with large.open("wb") as file:
            file.truncate(400 << 20)
        large.chmod(0o644)
        process = start(UPDATE_TOOL, "repairother", large, resource("finderoverlaytool.sig"))
        while process.poll() is None:
            self.assertEqual(sorted(os.listdir(TOOLS)), NAMES)
            time.sleep(0.01)
        process.communicate()
        self.assertNotEqual(process.returncode, 0)


class Confined(BigPackageTest):
    """The process that takes archives and packages apart."""

    def test_can_only_compute_and_write_to_one_pipe(self):
        everybodys = Path("/tmp/everybodys")
        everybodys.write_text("x")
        everybodys.chmod(0o666)
        somebody = end_with(self, subprocess.Popen(["sleep", "infinity"], user=65534))
        told = subprocess.run(["/run/probes/ConfinementProbe", str(somebody.pid)], stdout=subprocess.PIPE, text=True, check=True)
        answers = dict(line.split(": ") for line in told.stdout.splitlines())
        self.assertEqual(answers.pop("compute in memory"), "done")
        self.assertEqual(answers.pop("use a lot of memory"), "Cannot allocate memory")
        self.assertEqual(len(answers), 15)
        self.assertEqual(set(answers.values()), {"Operation not permitted"}, answers)
        self.assertIsNone(somebody.poll())
        self.assertTrue(everybodys.exists())

    def test_is_gone_with_the_tool(self):
        """Whatever it was doing: here it can't go on, for the one that reads is stopped."""
        package = self.big_package(50)
        hold_lock(self)
        process = start(UPDATE_TOOL, "repairpackage", package)
        children = lambda: Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()
        confined = wait_until(lambda: [pid for pid in children() if status_of(pid)["Uid"].split() == ["65534"] * 4], "it reads")
        process.kill()
        process.communicate()
        wait_until(lambda: all(has_ended(pid) for pid in confined), "it is gone")


class OneAtATime(AttackTest):
    def test_one_that_waits_goes_on_when_the_other_ends(self):
        OVERLAY_TOOL.unlink()
        lock = hold_lock(self)
        process = start(UPDATE_TOOL, *REPAIR)
        wait_until(lambda: str(LOCK) in [os.readlink(path) for path in Path(f"/proc/{process.pid}/fd").iterdir()], "it waits")
        self.assertFalse(OVERLAY_TOOL.exists())
        fcntl.flock(lock, fcntl.LOCK_UN)
        process.communicate(timeout=PATIENCE)
        self.assertEqual(process.returncode, 0)
        self.assertTrue(OVERLAY_TOOL.exists())

    def test_one_that_waits_too_long_says_so(self):
        hold_lock(self)
        self.assert_refused(BUSY, *REPAIR, words=["another one is at work"])

    def test_those_that_wait_are_the_callers_who_can_end_them(self):
        hold_lock(self)
        processes = [start(UPDATE_TOOL, *REPAIR) for _ in range(10)]
        for process in processes:
            wait_until(lambda: "nanosleep" in Path(f"/proc/{process.pid}/wchan").read_text() or
                       status_of(process.pid)["Uid"].split()[0] == str(USER), "it waits")
            self.assertEqual(start("/bin/kill", "-KILL", str(process.pid)).wait(), 0)
            process.communicate(timeout=PATIENCE)
            self.assertEqual(process.returncode, -signal.SIGKILL)

    def test_those_that_are_stopped_keep_nobody_waiting(self):
        """Before they act they can be stopped, and have not got the lock; then they can't."""
        for _ in range(30):
            process = start(UPDATE_TOOL, *REPAIR)
            time.sleep(random.random() * 0.02)  # any moment will do
            start("/bin/kill", "-STOP", str(process.pid), stderr=subprocess.DEVNULL).wait()
            self.assert_done(*REPAIR)
            process.kill()
            process.communicate()

    def test_only_the_administrator_can_take_the_lock(self):
        self.assert_done(*REPAIR)
        self.assertEqual((stat.S_IMODE(LOCK.stat().st_mode), LOCK.stat().st_uid), (0o600, 0))
        self.assertNotEqual(start("/bin/sh", "-c", f"exec 9<{LOCK}", stderr=subprocess.DEVNULL).wait(), 0)


class Killed(AttackTest):
    """At each call of the system in turn that changes a file."""

    CALLS = ("mkdirat", "symlinkat", "write", "fchmod", "fsync", "renameat", "renameat2", "unlinkat", "fremovexattr", "openat")

    def kill_at_each_call(self, command, check):
        for call in self.CALLS:
            self.assertLess(self.kill_at_each(call, command, check), 300, "it never came to its end")

    def kill_at_each(self, call, command, check):
        """\\returns how often it makes the call."""
        for number in range(1, 300):
            inject = f"inject={call}:signal=KILL:when={number}"
            process = subprocess.run(["strace", "-qqq", "-e", f"trace={call}", "-e", inject, "-o", "/dev/null", *command],
                                     capture_output=True)
            check()
            if process.returncode == 0:
                return number - 1
        return 300

    def repair_all(self):
        subprocess.run([UPDATE_TOOL, "repairpermissions"], check=True, capture_output=True)

    def test_the_update_tool_is_the_old_one_or_the_new_one_and_can_repair_itself(self):
        newer, signature = of_release("updateqm", "1.14.5.1303", self.folder)
        contents = {resource("updateqm").read_bytes(), newer.read_bytes()}

        def check():
            self.assertIn(UPDATE_TOOL.read_bytes(), contents)
            self.assertEqual(stat.S_IMODE(UPDATE_TOOL.stat().st_mode), 0o4755)
            self.repair_all()
            self.assertEqual(sorted(os.listdir(TOOLS)), NAMES)

        self.assertGreaterEqual(self.kill_at_each("renameat2", [newer, "repair", signature], check), 2)
        self.kill_at_each_call([newer, "repair", signature], check)
        self.assertEqual(UPDATE_TOOL.read_bytes(), newer.read_bytes())

    def test_a_bundle_is_the_old_one_or_the_new_one(self):
        tree = make_bundle(self.folder / "tree", FILE_SYSTEM.name, build="1304")
        (tree / FILE_SYSTEM.name / "new").write_text("new")
        package = make_package(self.folder / "x.pkg", tree)
        old = fingerprint(FILE_SYSTEM)
        states = set()

        def check():
            states.add("new" if (FILE_SYSTEM / "new").exists() else "old")
            if "new" not in states:
                self.assertEqual(fingerprint(FILE_SYSTEM), old)
            else:
                self.assertEqual((FILE_SYSTEM / "new").read_text(), "new")

        self.kill_at_each_call([UPDATE_TOOL, "repairpackage", package], check)
        self.assertEqual(states, {"old", "new"})
        self.assertEqual(os.listdir(FILE_SYSTEM.parent), [FILE_SYSTEM.name])


class DeepTrees(AttackTest):
    def test_are_removed_whatever_their_depth(self):
        deep = TOOLS / ".quillmark-0123456789abcdef"
        deep.mkdir(mode=0o700)
        here = os.open(deep, os.O_RDONLY)
        for _ in range(60_000):
            os.mkdir("d", dir_fd=here)
            inner = os.open("d", os.O_RDONLY, dir_fd=here)
            os.close(here)
            here = inner
        os.close(here)
        small = lambda: limits.setrlimit(limits.RLIMIT_STACK, (256 << 10, limits.RLIM_INFINITY))
        self.assert_done(*REPAIR, before=small)
        self.assertFalse(deep.exists())

    def test_with_a_disk_in_them_are_left(self):
        left = TOOLS / ".quillmark-0123456789abcdef"
        (left / "disk").mkdir(parents=True)
        subprocess.run(["mount", "-t", "tmpfs", "none", left / "disk"], check=True)
        self.addCleanup(subprocess.run, ["umount", left / "disk"])
        (left / "disk/file").write_text("precious")
        self.assert_done(*REPAIR)
        self.assertEqual((left / "disk/file").read_text(), "precious")


class TwoAttackers(AttackTest):
    """Beside an honest repair, in random interleavings: 50, or as many as QUILLMARK_INTERLEAVINGS says."""

    def test_cost_an_honest_repair_nothing(self):
        good, signature = self.copy_of("finderoverlaytool")
        for path in (self.folder, good, signature):
            os.chown(path, USER, USER)
        older, older_signature = of_release("finderoverlaytool", "1.14.3.1303", Path("/tmp"))
        victim = HOME / "victim"
        victim.mkdir()
        attacks = [
            lambda: start(UPDATE_TOOL, "repairother", good, signature),
            lambda: start(UPDATE_TOOL, "repairother", older, older_signature),
            lambda: start(UPDATE_TOOL, "repairpermissionsother", "finderoverlaytool"),
            lambda: start(UPDATE_TOOL, "repaircore", victim / "Contents/Resources/QuillmarkCore.app"),
            lambda: start("/bin/sh", "-c", "kill -STOP $(pgrep updateqm)", stderr=subprocess.DEVNULL),
            lambda: start("/bin/sh", "-c", f"mv '{good}' '{good}.x'; ln -s /etc/shadow '{good}'; mv '{good}.x' '{good}'",
                          stderr=subprocess.DEVNULL),
            lambda: start(UPDATE_TOOL, *REPAIR, before=lambda: signal.setitimer(signal.ITIMER_REAL, 0.003)),
            lambda: start(UPDATE_TOOL, "repairpackage", resource("QuillmarkFS.pkg")),
        ]
        for _ in range(int(os.environ.get("QUILLMARK_INTERLEAVINGS", 50))):
            chosen = [random.choice(attacks) for _ in range(4)]
            processes = [attack() for attack in chosen[:2]]
            honest = start(UPDATE_TOOL, *REPAIR)
            processes += [attack() for attack in chosen[2:]]
            for process in processes:
                if process.args[0] != UPDATE_TOOL:
                    process.wait(timeout=PATIENCE)
            # The attackers are the same user, who may stop his own runs before they act.
            subprocess.run(["pkill", "-CONT", "updateqm"])
            for process in processes:
                process.communicate(timeout=PATIENCE)
            honest.communicate(timeout=PATIENCE)
            self.assertEqual(honest.returncode, 0)
            self.assert_is_tool(OVERLAY_TOOL, 0o755)
            self.assertEqual(sorted(os.listdir(TOOLS)), NAMES)
