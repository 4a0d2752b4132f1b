"""Administrator rights as on a desktop: a system bus and polkit in the private root, with the rules that a test wants,
and a password dialog that answers by itself."""

import os
import shutil
import stat
import subprocess
from pathlib import Path

from machine import RESOURCES, USER, end_with, skip, skip_without, start, wait_until

PKEXEC = Path("/usr/bin/pkexec")
PASSWORD_HELPER = Path("/usr/lib/polkit-1/polkit-agent-helper-1")  # runs while a dialog waits for a password
SESSIONS = Path("/run/systemd")
AGENT = Path(__file__).with_name("polkit_agent.py")
SYSTEM_BUS = Path("/run/dbus/system_bus_socket")
ACTIONS = Path("/usr/share/polkit-1/actions")
RULES = Path("/etc/polkit-1/rules.d/50-test.rules")
ADMINISTRATOR = 'polkit.addAdminRule(function(action, subject) { return ["unix-user:tester"]; });\n'
DECIDE = """polkit.addRule(function(action, subject) {
    if (action.id == "org.freedesktop.policykit.exec" || action.id == "com.quillmark.QuillmarkLauncher.administer")
        return polkit.Result.%s;
});
"""


def require_polkit():
    """Ends this program as a skipped test where the packages are not there."""
    missing = [package for path, package in ((PKEXEC, "pkexec"), (PASSWORD_HELPER, "polkitd")) if not path.exists()]
    if missing:
        skip_without(missing)


def prepare_programs_of_root():
    """Makes them root's here, too, where an ordinary user made the private root."""
    for program in (PKEXEC, PASSWORD_HELPER):
        if program.stat().st_uid != 0:
            copy = shutil.copy(program, Path("/run") / program.name)
            os.chmod(copy, 0o4755)
            subprocess.run(["mount", "--bind", copy, program], check=True)


def start_polkit(test, decision):
    """\\param decision YES, NO or AUTH_ADMIN: what polkit answers when somebody wants to run a program as root."""
    require_polkit()
    prepare_programs_of_root()
    shutil.rmtree(RULES.parent, ignore_errors=True)
    RULES.parent.mkdir(parents=True)
    RULES.write_text(DECIDE % decision)
    for folder in (RULES.parent, RULES.parent.parent):
        folder.chmod(0o755)
    Path("/run/dbus").mkdir(exist_ok=True)
    end_with(test, subprocess.Popen(["dbus-daemon", "--system", "--nofork", "--nopidfile", "--nosyslog"],
                                    stdin=subprocess.DEVNULL))
    wait_until(lambda: SYSTEM_BUS.exists() and stat.S_ISSOCK(SYSTEM_BUS.stat().st_mode), "the system bus listens")
    end_with(test, subprocess.Popen(["/usr/lib/polkit-1/polkitd", "--no-debug"], stdin=subprocess.DEVNULL,
                                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
    owned = ["dbus-send", "--system", "--print-reply", "--dest=org.freedesktop.DBus", "/", "org.freedesktop.DBus.NameHasOwner",
             "string:org.freedesktop.PolicyKit1"]
    wait_until(lambda: "true" in subprocess.run(owned, capture_output=True, text=True).stdout, "polkit is there")


def install_action():
    """What a password dialog of the launcher's says, as packages of the product install it. To be called before
    start_polkit()."""
    own = Path("/run/actions")
    shutil.copytree(ACTIONS, own)
    shutil.copy(RESOURCES / "com.quillmark.QuillmarkLauncher.policy", own)
    subprocess.run(["mount", "--bind", own, ACTIONS], check=True)


def start_agent(test, answer, process, *language):
    """A password dialog for what the process asks. \\param answer dismiss or allow. \\returns the agent, which prints
    "asked" for each dialog, and with a language the action and its message."""
    agent = end_with(test, start("/usr/bin/python3", AGENT, answer, str(process), *language, stdin=subprocess.PIPE,
                                 stderr=None))
    test.assertEqual(agent.stdout.readline(), "ready\n")
    return agent


def confirm_password(agent):
    """Does for one dialog what the program does that knows the passwords: root tells polkit that the right one came."""
    cookie = agent.stdout.readline().strip()
    call = ["gdbus", "call", "--system", "--dest", "org.freedesktop.PolicyKit1", "--object-path",
            "/org/freedesktop/PolicyKit1/Authority", "--method",
            "org.freedesktop.PolicyKit1.Authority.AuthenticationAgentResponse2", str(USER), cookie,
            "('unix-user', {'uid': <uint32 0>})"]
    subprocess.run(call, check=True, capture_output=True)
    agent.stdin.write("\n")
    agent.stdin.flush()


def make_administrator(password):
    """The user is the machine's only administrator, and that is his password."""
    hashed = subprocess.run(["openssl", "passwd", "-6", password], capture_output=True, text=True, check=True).stdout.strip()
    with open("/etc/shadow", "a") as file:
        file.write(f"tester:{hashed}:19000:0:99999:7:::\n")
    RULES.with_name("40-test-administrator.rules").write_text(ADMINISTRATOR)


def start_session():
    """A graphical session of the user's, as the system's session manager tells of it in its files: that is where desktops'
    password dialogs, and polkit, look for the session that a process belongs to."""
    if not os.path.ismount("/sys/fs/cgroup"):
        skip("no control groups are mounted here, by which the programs of a session are told")
    for name, facts in (("sessions/1", "UID=1001 USER=tester ACTIVE=1 STATE=active REMOTE=0 TYPE=x11 CLASS=user"),
                        ("users/1001", "NAME=tester STATE=active DISPLAY=1 SESSIONS=1 ACTIVE_SESSIONS=1")):
        file = SESSIONS / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text("\n".join(facts.split()) + "\n")


def join_session(process):
    """Lets the process belong to it, which is told by its control group."""
    group = "/user.slice/user-1001.slice/session-1.scope\n"
    file = SESSIONS / "group"
    file.write_text(f"1:name=systemd:{group}0::{group}")  # as older systems and as newer ones tell it
    subprocess.run(["mount", "--bind", file, f"/proc/{process}/cgroup"], check=True)


class watch_registration:
    """Begins to watch the system bus, before a program that shows password dialogs is started."""

    def __init__(self, test):
        self.monitor = subprocess.Popen(["dbus-monitor", "--system", "--profile"], stdout=subprocess.PIPE, text=True)
        end_with(test, self.monitor)
        self.monitor.stdout.readline()

    def wait(self):
        """Until polkit has the program on its list."""
        call = None  # its sender and serial number
        for line in self.monitor.stdout:
            kind, _, serial, sender, receiver, *rest = line.split("\t")
            if kind == "mc" and rest[-1].startswith("RegisterAuthenticationAgent"):
                call = (sender, serial)
            elif kind == "mr" and call == (receiver, rest[0].strip()):
                return
