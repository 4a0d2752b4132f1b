"""Session buses of the test's own, with or without a real keyring on them."""

import os
import re
import resource
import subprocess

NAME = "org.freedesktop.secrets"
CONFIGURATION = """<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><auth>EXTERNAL</auth>{services}
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>"""


class Session:
    """A home folder and a bus on which no service is started unless that is asked for. Ends with the test."""

    def __init__(self, test, home, starts_services=False):
        runtime = home / "run"
        runtime.mkdir(mode=0o700, exist_ok=True)
        configuration = home / "bus.conf"
        configuration.write_text(
            CONFIGURATION.format(services="<standard_session_servicedirs/>" if starts_services else ""))
        self.environment = {"HOME": str(home), "XDG_RUNTIME_DIR": str(runtime), "PATH": os.environ["PATH"],
                            "LANG": "C.UTF-8"}
        bus = subprocess.Popen(["dbus-daemon", f"--config-file={configuration}", "--print-address", "--nofork"], text=True,
                               env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        test.addCleanup(bus.communicate)
        test.addCleanup(bus.kill)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()

    def run(self, *arguments, **options):
        return subprocess.run([str(argument) for argument in arguments], env=self.environment, capture_output=True,
                              text=True, timeout=30, **options)

    def call(self, path, method, *arguments):
        done = self.run("gdbus", "call", "--session", "-d", NAME, "-o", path, "-m", method, *arguments)
        if done.returncode != 0:
            raise AssertionError(done.stderr)
        return done.stdout

    def start_keyring(self):
        """A keyring with an empty password, unlocked. It ends with its bus, and not by the signal of fill_disk()."""
        self.run("gnome-keyring-daemon", "--unlock", "--components=secrets", input="\n", check=True, restore_signals=False)
        self.run("gdbus", "wait", "--session", "--timeout", "20", NAME, check=True)

    def lock(self):
        self.call("/org/freedesktop/secrets", "org.freedesktop.Secret.Service.Lock",
                  "['/org/freedesktop/secrets/collection/login']")

    def keyring_process(self):
        done = self.run("gdbus", "call", "--session", "-d", "org.freedesktop.DBus", "-o", "/org/freedesktop/DBus", "-m",
                        "org.freedesktop.DBus.GetConnectionUnixProcessID", NAME, check=True)
        return int(re.search(r"uint32 (\d+)", done.stdout)[1])

    def signal_keyring(self, number):
        os.kill(self.keyring_process(), number)

    def fill_disk(self):
        """The keyring can't write its file any more."""
        process = self.keyring_process()
        _, most = resource.prlimit(process, resource.RLIMIT_FSIZE)
        resource.prlimit(process, resource.RLIMIT_FSIZE, (0, most))

    def items(self, service, account):
        """How many items with these names there are."""
        found = self.call("/org/freedesktop/secrets", "org.freedesktop.Secret.Service.SearchItems",
                          f"{{'service': '{service}', 'account': '{account}'}}")
        return found.count("/org/freedesktop/secrets/collection/")
