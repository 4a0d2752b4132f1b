"""A desktop of a test's own inside the private root: a display, and if wanted a window manager and a session bus through
which windows are looked at and worked as an assistive program does."""

import json
import os
import re
import shutil
import subprocess
from pathlib import Path

from machine import FILES, PATIENCE, LauncherTest, end_with, environment, skip_without, start, wait_until

PYTHON = "/usr/bin/python3"
ACCESSIBILITY = Path(__file__).with_name("accessibility.py")
PICTURES = FILES / "pictures"  # what lies here is brought out of the private root


def require_accessibility():
    """Ends this program as a skipped test, and says so, where the packages for accessible desktops are not installed."""
    programs = {"Xvfb": "xvfb", "openbox": "openbox", "xprop": "x11-utils", "dbus-daemon": "dbus-daemon"}
    missing = [package for program, package in programs.items() if shutil.which(program) is None]
    if not Path("/usr/share/dbus-1/services/org.a11y.Bus.service").exists():
        missing.append("at-spi2-core")
    library = 'import gi; gi.require_version("Atspi", "2.0"); from gi.repository import Atspi'
    if subprocess.run([PYTHON, "-c", library], capture_output=True).returncode != 0:
        missing += ["python3-gi", "gir1.2-atspi-2.0"]
    if missing:
        skip_without(missing)


class Accessible:
    """An object of the accessibility tree with those below it, as they were when somebody looked."""

    def __init__(self, told):
        self.role, self.name, self.description = told["role"], told["name"], told["description"]
        self.states, self.actions, self.value = told["states"], told["actions"], told["value"]
        self.children = [Accessible(child) for child in told["children"]]

    def __iter__(self):
        """The object itself and all below it, in the order of the tree."""
        yield self
        for child in self.children:
            yield from child

    def all(self, role=None, name=None, state=None):
        """Those with the role, the name and the state that are given."""
        return [one for one in self
                if role in (None, one.role) and name in (None, one.name) and (state is None or state in one.states)]

    def one(self, role=None, name=None, state=None):
        """The only such object."""
        found = self.all(role, name, state)
        wanted = ", ".join(word for word in (role, name and f'"{name}"', state) if word is not None)
        assert len(found) == 1, f"{len(found)} objects were found, where one was wanted: {wanted}; in:\n{self}"
        return found[0]

    def __str__(self):
        facts = [f'{self.role} "{self.name}"', *self.states]
        if self.description:
            facts.insert(1, f'described "{self.description}"')
        if self.actions:
            facts.append(f"actions {self.actions}")
        if self.value:
            facts.append("value {} of {} to {}".format(*self.value))
        below = "".join(f"\n{child}" for child in self.children)
        return ", ".join(facts) + below.replace("\n", "\n  ")


def is_alert_ready(tree):
    """True when the alert of this tree can be worked: its window is the active one, and a button has the focus. One comes
    before the other."""
    return tree.all("alert", state="active") and tree.all("push button", state="focused")


class Desktop:
    """What is started here ends with the test."""

    def __init__(self, test):
        self.test = test
        self.assistant = None
        # Programs that are told of no bus start one of their own.
        self.variables = {"DISPLAY": self._start_display(), "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}

    def environment(self, **changes):
        """The user's, on this desktop."""
        return environment(**(self.variables | changes))

    def start(self, program, *arguments, **options):
        """Starts a program of the user's that is killed when the test ends, if it still runs."""
        return end_with(self.test, start(program, *arguments, **({"env": self.environment()} | options)))

    def run(self, *command, **options):
        """Runs a program of the user's to its end. \\returns its status and outputs."""
        process = self.start(*command, **options)
        out, err = process.communicate(timeout=PATIENCE)
        return subprocess.CompletedProcess(command, process.returncode, out, err)

    def start_window_manager(self):
        """With one, a new window becomes the active one, and its title is drawn."""
        self.start("openbox", "--sm-disable", stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(lambda: "#" in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK").stdout,
                   "the window manager is there")
        # A window that comes while it still starts it may overlook until something else happens. So it is given the name of
        # one desktop, to which it adds the others': at its start, perhaps, but for the second time only when it is ready.
        for name in ("first", "second"):
            wait_until(lambda: self._completes_names_of_desktops(name), "the window manager is ready")

    def _completes_names_of_desktops(self, name):
        self.run("xprop", "-root", "-f", "_NET_DESKTOP_NAMES", "8u", "-set", "_NET_DESKTOP_NAMES", name)
        return f'"{name}", ' in self.run("xprop", "-root", "_NET_DESKTOP_NAMES").stdout

    def start_accessibility(self):
        """A session bus, which starts what accessibility needs when it is first asked, and programs that take part."""
        bus = self.start("dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address",
                         f"--address=unix:tmpdir={FILES}", stderr=subprocess.DEVNULL)
        self.variables |= {"DBUS_SESSION_BUS_ADDRESS": bus.stdout.readline().strip(),
                           "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}

    def tree(self, process):
        """The accessible objects of the process, or None while it shows no window."""
        told = self._ask("tree", process.pid)
        return told and Accessible(told)

    def wait_for(self, process, condition, what):
        """Returns the tree of the process as soon as condition(tree) is true of it."""
        tree = None

        def look():
            nonlocal tree
            tree = self.tree(process)
            return tree is not None and condition(tree)

        try:
            wait_until(look, what)
        except AssertionError as error:
            status = process.poll()
            state = "runs" if status is None else f"has ended with {status}"
            raise AssertionError(f"{error}; the program {state} and shows:\n{tree}") from None
        return tree

    def press(self, process, role, name):
        """Does what a click on the only such object does."""
        self._ask("press", process.pid, role, name)

    def windows(self):
        """The ids of all windows that the window manager knows, from the lowest to the topmost."""
        return self._window_ids("_NET_CLIENT_LIST_STACKING")

    def active_window(self):
        return (self._window_ids("_NET_ACTIVE_WINDOW") or [None])[0]

    def window_facts(self, window, *properties):
        """What xprop tells of them; "" of a window that is gone."""
        return self.run("xprop", "-id", window, *properties).stdout

    def is_above(self, window):
        """Whether the window manager keeps it above ordinary windows."""
        return "_NET_WM_STATE_ABOVE" in self.window_facts(window, "_NET_WM_STATE")

    def owner(self, window):
        """The process that the window belongs to."""
        return int(self.window_facts(window, "_NET_WM_PID").rpartition("=")[2] or 0)

    def _window_ids(self, property_):
        return re.findall(r"0x[0-9a-f]+", self.run("xprop", "-root", property_).stdout.partition("#")[2])

    def take_picture(self, name, still=True):
        """Keeps what is on the screen, for people to look at, in a file of that name. \\param still whether nothing moves in
        it, so that it is painted when two pictures in a row are the same."""
        PICTURES.mkdir(exist_ok=True)
        path = PICTURES / f"{name}.png"

        def take():
            before = path.read_bytes() if path.exists() else None
            subprocess.run(["import", "-window", "root", "-define", "png:exclude-chunks=date,time", path],
                           env=os.environ | self.variables, check=True)
            return not still or path.read_bytes() == before

        wait_until(take, "the screen is painted")

    def _ask(self, *request):
        if self.assistant is None:
            self.assistant = self.start(PYTHON, "-B", "-W", "ignore", ACCESSIBILITY, stdin=subprocess.PIPE, stderr=None)
        self.assistant.stdin.write(json.dumps(request) + "\n")
        self.assistant.stdin.flush()
        told = json.loads(self.assistant.stdout.readline())
        assert "error" not in told, told["error"]
        return told["answer"]

    def _start_display(self):
        reading, writing = os.pipe()
        server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1024x768x24", "-nolisten", "tcp", "-noreset"],
            pass_fds=[writing], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.test.addCleanup(server.wait)
        self.test.addCleanup(server.terminate)  # it removes its socket
        os.close(writing)
        with os.fdopen(reading) as number:
            return ":" + number.readline().strip()


class WindowTest(LauncherTest):
    """Works the windows of `self.launcher`, the launcher that was started last, on `self.desktop`."""

    def setUp(self):
        require_accessibility()
        self.desktop = Desktop(self)
        self.desktop.start_window_manager()
        self.desktop.start_accessibility()

    def wait_for(self, condition, what):
        return self.desktop.wait_for(self.launcher, condition, what)

    def press(self, name, role="push button"):
        self.desktop.press(self.launcher, role, name)

    def assert_ended(self):
        _, err = self.launcher.communicate(timeout=PATIENCE)
        self.assertEqual(self.launcher.returncode, 0, err)
