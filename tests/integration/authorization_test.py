"""Administrator rights through the real polkit: who is asked, what is granted, and what the root helper does with it."""

import os
import resource
import shutil
import signal
import socket
import struct
import subprocess
import unittest
from pathlib import Path

from machine import APP, end_with, full_pipe, has_ended, processes_of, signals, start, wait_until
from polkit import confirm_password, install_action, prepare_programs_of_root, require_polkit, start_agent, start_polkit

ADMIN = "system.privilege.admin"
DENIED, CANCELED, CANNOT_EXECUTE = "-60005", "-60006", "-60031"
PROBE = APP / "Contents/MacOS/AuthorizationProbe"
HELPER = APP / "Contents/Helpers/quillmark-root-helper"


class AuthorizationTest(unittest.TestCase):
    def setUp(self):
        shutil.copy("/run/probes/AuthorizationProbe", PROBE)

    def start_probe(self, *steps, as_root=False, **options):
        command = [PROBE, *map(str, steps)]
        pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL, "text": True} | options
        probe = subprocess.Popen(command, **pipes) if as_root else start(*command, **pipes)
        return end_with(self, probe)

    def go(self, probe, *answers):
        """Lets the probe begin, which is to give these answers first."""
        probe.stdin.write("\n")
        probe.stdin.flush()
        self.assertEqual([probe.stdout.readline().strip() for _ in answers], list(answers))

    def end_sleepers(self):
        for pid in processes_of("/usr/bin/sleep"):
            os.kill(pid, signal.SIGKILL)

    def answers(self, *steps, **options):
        """What the steps answer, as lines, with nobody there to answer a dialog."""
        out, _ = self.start_probe(*steps, **options).communicate("\n", timeout=60)
        lines = out.splitlines()
        self.assertEqual(lines[0], "0")
        return lines[1:]


class Rights(AuthorizationTest):
    def test_granted_by_the_rules_let_programs_run_as_root(self):
        start_polkit(self, "YES")
        self.assertEqual(self.answers("rights", ADMIN, "output", 1, "/usr/bin/id", "-u"), ["0", "0", "0"])

    def test_refused_by_the_rules_are_denied(self):
        start_polkit(self, "NO")
        self.assertEqual(self.answers("rights", ADMIN, "run", 0, "/usr/bin/true"), [DENIED, CANNOT_EXECUTE])

    def test_that_a_password_is_needed_for_are_denied_where_nobody_can_ask_for_it(self):
        start_polkit(self, "AUTH_ADMIN")
        self.assertEqual(self.answers("rights", ADMIN), [DENIED])

    def test_are_denied_without_a_system_bus(self):
        require_polkit()
        prepare_programs_of_root()
        self.assertEqual(self.answers("rights", ADMIN), [DENIED])

    def test_are_denied_without_the_program_that_asks(self):
        require_polkit()
        empty = Path("/tmp/empty")
        empty.write_text("")
        subprocess.run(["mount", "--bind", empty, "/usr/bin/pkexec"], check=True)
        self.assertEqual(self.answers("rights", ADMIN), [DENIED])

    def test_are_denied_without_the_helper(self):
        start_polkit(self, "YES")
        HELPER.unlink()
        self.assertEqual(self.answers("rights", ADMIN), [DENIED])

    def test_of_another_name_are_denied_without_a_dialog(self):
        start_polkit(self, "YES")
        self.assertEqual(self.answers("rights", "system.preferences", "rights", ""), [DENIED, DENIED])

    def test_are_not_asked_for_when_the_process_is_root_already(self):
        self.assertEqual(self.answers("rights", ADMIN, "output", 1, "/usr/bin/id", "-u", as_root=True), ["0", "0", "0"])

    def test_without_rights_nothing_runs(self):
        self.assertEqual(self.answers("run", 1, "/usr/bin/touch", "/tmp/ran", as_root=True), [CANNOT_EXECUTE])
        self.assertFalse(Path("/tmp/ran").exists())


class Dialog(AuthorizationTest):
    def test_that_the_user_dismisses_is_a_cancel(self):
        start_polkit(self, "AUTH_ADMIN")
        probe = self.start_probe("rights", ADMIN)
        agent = start_agent(self, "dismiss", probe.pid)
        out, _ = probe.communicate("\n", timeout=60)
        self.assertEqual(out.splitlines(), ["0", CANCELED])
        self.assertEqual(agent.stdout.readline(), "asked\n")

    def test_comes_once_for_a_whole_reference(self):
        start_polkit(self, "AUTH_ADMIN")
        identity = ("output", 1, "/usr/bin/id", "-u")
        probe = self.start_probe("rights", ADMIN, *identity, "rights", ADMIN, *identity, *identity)
        agent = start_agent(self, "allow", probe.pid)
        self.go(probe)
        self.assertEqual(agent.stdout.readline(), "asked\n")
        confirm_password(agent)
        out, _ = probe.communicate(timeout=60)
        self.assertEqual(out.splitlines(), ["0", "0", "0", "0", "0", "0", "0", "0", "0"])
        agent.kill()
        self.assertEqual(agent.stdout.read(), "")

    MESSAGES = {
        "en_US.UTF-8": "Quillmark wants to repair its components, or to move to the Applications folder.",
        "de_DE.UTF-8": "Quillmark möchte seine Komponenten reparieren oder sich in den Ordner „Programme“ bewegen.",
        "fr_FR.UTF-8": "Quillmark veut réparer ses composants ou se déplacer vers le dossier «\N{NO-BREAK SPACE}Applications"
                       "\N{NO-BREAK SPACE}».",
        "es_ES.UTF-8": "Quillmark quiere reparar sus componentes o moverse a la carpeta «Aplicaciones».",
        "ja_JP.UTF-8": "Quillmarkが、コンポーネントの修復または「アプリケーション」フォルダへの移動を行おうとしています。",
    }

    def test_says_in_the_users_language_what_is_about_to_be_done(self):
        install_action()
        start_polkit(self, "AUTH_ADMIN")
        for language, message in self.MESSAGES.items():
            with self.subTest(language):
                self.assertEqual(self.asked_in(language), ["com.quillmark.QuillmarkLauncher.administer", message])

    def test_has_the_systems_general_words_where_the_action_is_not_installed(self):
        start_polkit(self, "AUTH_ADMIN")
        action, message = self.asked_in("en_US.UTF-8")
        self.assertEqual(action, "org.freedesktop.policykit.exec")
        self.assertIn(str(HELPER), message)

    def asked_in(self, language):
        probe = self.start_probe("rights", ADMIN)
        agent = start_agent(self, "dismiss", probe.pid, language)
        probe.communicate("\n", timeout=60)
        return [agent.stdout.readline().strip() for _ in range(3)][1:]


class Programs(AuthorizationTest):
    def run_as_root(self, *steps):
        return self.answers("rights", ADMIN, *steps, as_root=True)[1:]

    def test_get_nothing_of_the_users_surroundings(self):
        start_polkit(self, "YES")
        lines = self.answers("rights", ADMIN, "output", 0, "/usr/bin/env", "output", 0, "/usr/bin/pwd",
                             "output", 2, "/bin/sh", "-c", "umask; ls /proc/self/fd | wc -l; readlink /proc/self/fd/0")
        self.assertEqual([line for line in lines if line.startswith(("PATH", "LANG"))],
                         ["PATH=/usr/bin:/bin:/usr/sbin:/sbin", "LANG=C.UTF-8"])
        self.assertEqual(lines[-6:-4], ["0", "/"])
        self.assertEqual([line for line in lines if "=" in line and not line.startswith(("PATH", "LANG"))], [])
        self.assertEqual(lines[-3:], ["0022", "4", "/dev/null"])

    def test_get_no_limits_and_no_less_of_the_processors_than_others(self):
        start_polkit(self, "YES")

        def lower():
            for name, value in (("FSIZE", 4096), ("NOFILE", 64), ("CPU", 1000)):
                number = getattr(resource, f"RLIMIT_{name}")
                resource.setrlimit(number, (value, resource.getrlimit(number)[1]))
            os.nice(19)

        lines = self.answers("rights", ADMIN, "output", 2, "/bin/sh", "-c",
                             "ulimit -f; ulimit -t; nice; grep SigBlk /proc/self/status", before=lower)
        self.assertEqual(lines[2:], ["unlimited", "unlimited", "0", "SigBlk:\t0000000000000000"])

    def test_do_not_wait_until_somebody_reads_their_complaints(self):
        start_polkit(self, "YES")
        writing = full_pipe(self)
        lines = self.answers("rights", ADMIN, "run", 2, "/bin/rm", "/no/such/file", "/none", "wait", stderr=writing)
        os.close(writing)
        self.assertEqual(lines, ["0", "0", "exit 1"])

    def test_complain_where_the_launcher_does(self):
        start_polkit(self, "YES")
        reading, writing = os.pipe()
        self.answers("rights", ADMIN, "run", 1, "/bin/rm", "/no/such/file", "wait", stderr=writing)
        os.close(writing)
        with os.fdopen(reading) as complaints:
            self.assertIn("/no/such/file", complaints.read())

    def test_that_are_missing_or_no_programs_are_an_error(self):
        Path("/tmp/plain").write_text("x")
        self.assertEqual(self.run_as_root("run", 0, "/no/such/program", "run", 0, "/tmp/plain", "run", 0, "/tmp"),
                         [CANNOT_EXECUTE] * 3)

    def test_are_named_by_absolute_paths_only(self):
        self.assertEqual(self.run_as_root("run", 0, "id", "run", 0, "./id", "run", 0, ""), [CANNOT_EXECUTE] * 3)

    def test_get_their_arguments_as_they_are(self):
        arguments = ["a b", "", "ä\n'\"$(x)", "--"]
        text = self.run_as_root("output", 5, "/usr/bin/printf", "[%s]", *arguments)
        self.assertEqual("\n".join(text), "0\n" + "".join(f"[{argument}]" for argument in arguments))

    def test_get_no_more_arguments_than_a_request_can_hold(self):
        self.assertEqual(self.run_as_root("run", 300, "/usr/bin/true", *["a"] * 300), [CANNOT_EXECUTE])
        self.assertEqual(self.run_as_root("run", 1, "/usr/bin/true", "a" * 70000), [CANNOT_EXECUTE])
        self.assertEqual(self.run_as_root("run", 1, "/usr/bin/true", "a" * 60000), ["0"])

    def test_are_not_waited_for(self):
        self.assertEqual(self.run_as_root("run", 1, "/usr/bin/sleep", "1000", "run", 0, "/usr/bin/false"), ["0", "0"])
        self.end_sleepers()

    def test_tell_how_they_ended_to_who_waits(self):
        shell = ("run", 2, "/bin/sh", "-c")
        self.assertEqual(self.run_as_root(*shell, "exit 3", "wait", *shell, "kill -9 $$", "wait", "run", 0, "/usr/bin/true",
                                          "wait"),
                         ["0", "exit 3", "0", "signal 9", "0", "exit 0"])

    def test_are_waited_for_in_the_order_of_their_ends(self):
        os.mkfifo("/tmp/go")
        waiting = ("run", 2, "/bin/sh", "-c", "read line < /tmp/go; exit 1")
        self.assertEqual(self.run_as_root(*waiting, "run", 2, "/bin/sh", "-c", "exit 2", "wait", "run", 2, "/bin/sh", "-c",
                                          "echo > /tmp/go; sleep 1000", "wait"),
                         ["0", "0", "exit 2", "0", "exit 1"])
        self.end_sleepers()

    def test_that_are_not_there_are_not_waited_for(self):
        self.assertEqual(self.answers("wait", as_root=True), ["none"])
        self.assertEqual(self.run_as_root("wait", "run", 0, "/no/such/program", "wait", "run", 0, "/usr/bin/true", "wait",
                                          "wait"), ["none", CANNOT_EXECUTE, "none", "0", "exit 0", "none"])

    def test_copy_a_bundle_with_modes_times_links_and_extended_attributes(self):
        bundle, copy = Path("/tmp/A.app"), Path("/tmp/B.app")
        tool = bundle / "Contents/tool"
        tool.parent.mkdir(parents=True)
        tool.write_text("x")
        tool.chmod(0o4751)
        (bundle / "first").write_text("y")
        os.link(bundle / "first", bundle / "second")
        (bundle / "link").symlink_to("nowhere")
        os.setxattr(tool, "user.com.apple.quarantine", b"0083;")
        os.setxattr(bundle, "user.folder", b"z")
        os.utime(tool, ns=(10**18, 10**18 + 123456789))
        os.utime(bundle, ns=(10**18, 10**18 + 987654321))
        self.assertEqual(self.run_as_root("run", 3, "/bin/cp", "-pR", bundle, copy, "wait"), ["0", "exit 0"])
        copied = copy / "Contents/tool"
        self.assertEqual((copied.stat().st_mode & 0o7777, copied.stat().st_mtime_ns), (0o4751, 10**18 + 123456789))
        self.assertEqual(copy.stat().st_mtime_ns, 10**18 + 987654321)
        self.assertEqual(os.getxattr(copied, "user.com.apple.quarantine"), b"0083;")
        self.assertEqual(os.getxattr(copy, "user.folder"), b"z")
        self.assertEqual(os.readlink(copy / "link"), "nowhere")
        self.assertTrue((copy / "first").samefile(copy / "second"))


class Helper(AuthorizationTest):
    def start_helper(self):
        """The helper as the launcher's child. \\returns it and the launcher's end of the socket."""
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        helper = subprocess.Popen([HELPER], stdin=theirs, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        theirs.close()
        ours.settimeout(20)
        end_with(self, helper)
        self.addCleanup(ours.close)
        self.assertEqual(ours.recv(100), b"quillmark root helper 2")
        return helper, ours

    def test_started_by_hand_does_nothing(self):
        helper = subprocess.run([HELPER], stdin=subprocess.DEVNULL, capture_output=True)
        self.assertEqual((helper.returncode, helper.stdout, helper.stderr), (2, b"", b""))

    def test_speaks_to_its_parent_only(self):
        """A socket that was made by another process than the one that starts the helper."""
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        starter = 'import subprocess, sys; sys.exit(subprocess.call([sys.argv[1]], stdin=0))'
        result = subprocess.run(["/usr/bin/python3", "-c", starter, HELPER], stdin=theirs)
        self.assertEqual(result.returncode, 2)
        ours.close()

    def test_serves_nobody_who_has_got_hold_of_the_launchers_socket(self):
        helper, ours = self.start_helper()
        ours.send(b"/usr/bin/true\0")
        self.assertEqual(struct.unpack("i", ours.recv(4))[0], 0)
        thief = "import socket, sys; socket.socket(fileno=int(sys.argv[1])).send(b'/usr/bin/touch\\0/tmp/ran\\0')"
        subprocess.run(["/usr/bin/python3", "-c", thief, str(ours.fileno())], pass_fds=[ours.fileno()], check=True)
        self.assertEqual(helper.wait(timeout=20), 3)
        self.assertFalse(Path("/tmp/ran").exists())

    def test_has_a_launcher_that_nobody_else_can_look_into(self):
        """Or take the socket from, as long as it has one."""
        start_polkit(self, "YES")
        probe = self.start_probe("rights", ADMIN)
        look = lambda: start("/bin/ls", f"/proc/{probe.pid}/fd/", stderr=subprocess.DEVNULL).communicate()[0]
        self.assertNotEqual(look(), "")
        self.go(probe, "0", "0")
        self.assertEqual(look(), "")

    def test_speaks_over_a_socket_that_keeps_messages_apart_only(self):
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_STREAM)
        self.assertEqual(subprocess.run([HELPER], stdin=theirs).returncode, 2)
        ours.close()

    def test_ends_when_the_launcher_lets_go(self):
        helper, ours = self.start_helper()
        ours.close()
        self.assertEqual(helper.wait(timeout=20), 0)

    def test_ends_when_the_launcher_is_killed(self):
        start_polkit(self, "YES")
        probe = self.start_probe("rights", ADMIN)
        self.go(probe, "0", "0")
        helpers = wait_until(lambda: processes_of(HELPER), "the helper runs")
        probe.kill()
        wait_until(lambda: all(has_ended(pid) for pid in helpers), "the helper has ended")

    def test_leaves_nothing_of_programs_that_were_waited_for(self):
        helper, ours = self.start_helper()
        for _ in range(20):
            ours.send(b"/usr/bin/true\0")
            self.assertEqual(ours.recv(4), struct.pack("i", 0))
        for status in [0] * 20 + [-1]:
            ours.send(b"wait\0")
            self.assertEqual(ours.recv(4), struct.pack("i", status))
        self.assertEqual(Path(f"/proc/{helper.pid}/task/{helper.pid}/children").read_text(), "")

    def test_ends_when_the_launcher_is_killed_while_it_waits(self):
        start_polkit(self, "YES")
        probe = self.start_probe("rights", ADMIN, "run", 1, "/usr/bin/sleep", "1000", "wait")
        self.go(probe, "0", "0", "0")
        helper = wait_until(lambda: processes_of(HELPER), "the helper runs")[0]
        wait_until(lambda: self.is_waiting(helper), "the helper waits")
        probe.kill()
        wait_until(lambda: has_ended(helper), "the helper has ended")
        [sleeper] = processes_of("/usr/bin/sleep")  # runs on, as it would without a helper
        os.kill(sleeper, signal.SIGKILL)

    def test_that_is_killed_while_it_waits_leaves_the_launcher_without_a_status(self):
        probe = self.start_probe("rights", ADMIN, "run", 1, "/usr/bin/sleep", "1000", "wait", "wait", "run", 0,
                                 "/usr/bin/true", as_root=True)
        self.go(probe, "0", "0", "0")
        [helper] = processes_of(HELPER)
        wait_until(lambda: self.is_waiting(helper), "the helper waits")
        os.kill(helper, signal.SIGKILL)
        self.assertEqual([probe.stdout.readline() for _ in range(3)], ["none\n", "none\n", CANNOT_EXECUTE + "\n"])
        self.end_sleepers()

    def is_waiting(self, helper):
        """It lets the ends of programs through only then."""
        return signal.SIGCHLD not in signals(helper, "SigBlk")

    def test_answers_other_requests_after_a_wait_that_came_first(self):
        _, ours = self.start_helper()
        for request in (b"/usr/bin/false\0", b"wait\0", b"/usr/bin/true\0"):
            ours.send(request)
        self.assertEqual([struct.unpack("i", ours.recv(4))[0] for _ in range(3)], [0, 1 << 8, 0])

    def test_answers_with_the_reason_when_a_program_cannot_be_started(self):
        _, ours = self.start_helper()
        ours.send(b"/no/such\0")
        self.assertEqual(struct.unpack("i", ours.recv(4))[0], 2)

    def test_ends_at_the_first_request_that_is_none(self):
        requests = {"no end": b"/usr/bin/touch\0/tmp/ran", "relative": b"usr/bin/touch\0/tmp/ran\0", "no path": b"\0/tmp/ran\0",
                    "zero bytes": b"\0\0\0", "a wait without its end": b"wait", "a wait and more": b"wait\0x\0",
                    "too many texts": b"/usr/bin/touch\0" + b"/tmp/ran\0" * 300,
                    "too long": b"/usr/bin/touch\0/tmp/ran\0" + b"x" * 66000 + b"\0"}
        for name, request in requests.items():
            with self.subTest(name):
                helper, ours = self.start_helper()
                ours.send(request)
                self.assertEqual(helper.wait(timeout=20), 3)
                self.assertFalse(Path("/tmp/ran").exists())

    def test_takes_one_descriptor_with_a_request_at_the_most(self):
        helper, ours = self.start_helper()
        reading, writing = os.pipe()
        socket.send_fds(ours, [b"/usr/bin/echo\0hello\0"], [writing])
        ours.recv(4)
        self.assertEqual(os.read(reading, 100), b"hello\n")
        socket.send_fds(ours, [b"/usr/bin/echo\0hello\0"], [writing, writing])
        self.assertEqual(helper.wait(timeout=20), 3)

    def test_takes_no_descriptor_to_wait(self):
        helper, ours = self.start_helper()
        socket.send_fds(ours, [b"wait\0"], [1])
        self.assertEqual(helper.wait(timeout=20), 3)

    def test_any_bytes_do_it_no_harm(self):
        for seed in range(200):
            helper, ours = self.start_helper()
            ours.send(os.urandom(seed + 1))
            self.assertEqual(helper.wait(timeout=20), 3)
            ours.close()
