"""Administrator rights as on a desktop: a system bus and polkit in the private root, with the rules that a test wants,
and a password dialog that answers by itself."""

import os
import shutil
import stat
import subprocess
import sys
from pathlib import Path

from machine import USER, start, wait_until

AGENT = Path(__file__).with_name("polkit_agent.py")
SYSTEM_BUS = Path("/run/dbus/system_bus_socket")
RULES = Path("/etc/polkit-1/rules.d/50-test.rules")
DECIDE = """polkit.addRule(function(action, subject) {
    if (action.id == "org.freedesktop.policykit.exec") return polkit.Result.%s;
});
"""


def require_polkit():
    """Ends this program as a skipped test where the packages are not there."""
    missing = [package for path, package in (("/usr/bin/pkexec", "pkexec"), ("/usr/lib/polkit-1/polkitd", "polkitd"))
               if not Path(path).exists()]
    if missing:
        print(f"skipped: install the packages {' '.join(missing)}", file=sys.stderr)
        sys.exit(77)


def prepare_pkexec():
    """Makes pkexec root's here, too, where an ordinary user made the private root."""
    if os.stat("/usr/bin/pkexec").st_uid != 0:
        shutil.copy("/usr/bin/pkexec", "/run/pkexec")
        os.chmod("/run/pkexec", 0o4755)
        subprocess.run(["mount", "--bind", "/run/pkexec", "/usr/bin/pkexec"], check=True)


def start_polkit(test, decision):
    """\\param decision YES, NO or AUTH_ADMIN: what polkit answers when somebody wants to run a program as root."""
    require_polkit()
    prepare_pkexec()
    shutil.rmtree(RULES.parent, ignore_errors=True)
    RULES.parent.mkdir(parents=True)
    RULES.write_text(DECIDE % decision)
    for folder in (RULES.parent, RULES.parent.parent):
        folder.chmod(0o755)
    Path("/run/dbus").mkdir(exist_ok=True)
    bus = subprocess.Popen(["dbus-daemon", "--system", "--nofork", "--nopidfile", "--nosyslog"], stdin=subprocess.DEVNULL)
    test.addCleanup(bus.wait)
    test.addCleanup(bus.kill)
    wait_until(lambda: SYSTEM_BUS.exists() and stat.S_ISSOCK(SYSTEM_BUS.stat().st_mode), "the system bus listens")
    daemon = subprocess.Popen(["/usr/lib/polkit-1/polkitd", "--no-debug"], stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    test.addCleanup(daemon.wait)
    test.addCleanup(daemon.kill)
    owned = ["dbus-send", "--system", "--print-reply", "--dest=org.freedesktop.DBus", "/", "org.freedesktop.DBus.NameHasOwner",
             "string:org.freedesktop.PolicyKit1"]
    wait_until(lambda: "true" in subprocess.run(owned, capture_output=True, text=True).stdout, "polkit is there")


def start_agent(test, answer, process):
    """A password dialog for what the process asks. \\param answer dismiss or allow. \\returns the agent, which prints
    "asked" for each dialog."""
    agent = start("/usr/bin/python3", AGENT, answer, str(process), stdin=subprocess.PIPE, stderr=None)
    test.addCleanup(agent.communicate)
    test.addCleanup(agent.kill)
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
