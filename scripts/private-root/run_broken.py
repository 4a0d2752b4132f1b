"""The part of ./run --broken that happens in the private root, as root. It gives the machine what a repair needs: polkit
and a password dialog that answers by itself. Without a display it also is the user who presses "Continue", and leaves
pictures in the folder pictures of QUILLMARK_FILES (/tmp). The launcher is run by run-inside.sh, whose arguments these are.
"""

import os
import sys
import threading
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[2] / "tests/support"))  # which drives windows and polkit, too
from desktop import Desktop
from machine import FILES, USER, environment, start, wait_until
from polkit import confirm_password, start_agent, start_polkit

LAUNCHER_PID = FILES / "launcher.pid"
OUTCOME = FILES / "outcome"
OWN_OUTPUT = FILES / "run-broken.out"  # of what is started here, which people needn't see

person = os.fdopen(os.dup(1), "w")  # who reads what ./run says; nothing that is started here inherits it


def say(text):
    print(f"run: {text}", file=person, flush=True)


class Process:
    """What Desktop wants to know of a process that another one has started."""

    def __init__(self, pid):
        self.pid = pid

    def poll(self):
        return None if Path(f"/proc/{self.pid}").exists() else "an unknown status"


def answer_password_dialogs(agent):
    while agent.stdout.readline():
        say("the launcher asks for administrator rights; the password dialog of this machine grants them")
        confirm_password(agent)


class User:
    """Sits at a display without a screen."""

    def __init__(self, test):
        self.desktop = Desktop(test)
        self.desktop.start_window_manager()
        self.desktop.start_accessibility()

    def repair(self, launcher):
        self.desktop.wait_for(launcher, lambda tree: tree.all("push button", "Continue", "focused"), "the window is up")
        self.desktop.take_picture("at-fault")
        say('the window lists what is at fault; pressing "Continue"')
        self.desktop.press(launcher, "push button", "Continue")
        self.desktop.wait_for(launcher, lambda tree: tree.all("progress bar", state="showing"), "the repair is under way")
        self.desktop.take_picture("repairing", still=False)


def main(arguments):
    with OWN_OUTPUT.open("w") as output:
        os.dup2(output.fileno(), 1)
        os.dup2(output.fileno(), 2)
    test = unittest.TestCase()  # owns what is started
    try:
        if USER != 0:  # a launcher that is root's asks for no rights
            start_polkit(test, "AUTH_ADMIN")
        if "DISPLAY" in os.environ:
            user = None
            say('several components are at fault: press "Continue" in the launcher\'s window')
            variables = {name: os.environ[name] for name in ("DISPLAY", "XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS")}
        else:
            user = User(test)
            say("several components are at fault, and there is no display here: using one without a screen")
            variables = {"XDG_RUNTIME_DIR": os.environ["XDG_RUNTIME_DIR"]} | user.desktop.variables
        variables |= {name: os.environ[name] for name in ("QUILLMARK_FILES", "XAUTHORITY") if name in os.environ}
        inside = start("bash", Path(__file__).with_name("run-inside.sh"), *arguments, env=environment(**variables),
                       stdout=person, stderr=person)
        test.addCleanup(lambda: (inside.kill(), inside.wait()))
        launcher = Process(int(wait_until(lambda: LAUNCHER_PID.exists() and LAUNCHER_PID.read_text(), "the launcher runs")))
        if USER != 0:
            agent = start_agent(test, "allow", launcher.pid)
            threading.Thread(target=answer_password_dialogs, args=[agent], daemon=True).start()
        if user:
            user.repair(launcher)
        while not OUTCOME.exists() and inside.poll() is None:
            time.sleep(0.05)
        person.close()  # the machine may stay up for long
        return inside.wait()
    except Exception as error:
        OUTCOME.write_text(f"failed: {error}\n")
        return 1
    finally:
        test.doCleanups()


sys.exit(main(sys.argv[1:]))
