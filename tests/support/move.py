"""The launcher outside the Applications folder, as a user who has downloaded it starts it."""

import hashlib
import os
import shutil
import stat
import subprocess
from pathlib import Path

from desktop import WindowTest, is_alert_ready
from machine import APP, CORE, HOME, LOG_FOLDER, PATIENCE, USER, processes_of, wait_until
from polkit import confirm_password, start_agent

MOVE, DO_NOT_MOVE, AGAIN = "Move to Applications Folder", "Do Not Move", "Do not show this message again"
QUESTION, FAILED = "Move to Applications folder?", "Could not move to Applications folder"
OFFER = "I can move myself to the Applications folder if you'd like."
PASSWORD = f"{OFFER} Note that this will require an administrator password."
DOWNLOADS = f"{OFFER} This will keep your Downloads folder uncluttered."
DOWNLOADED = HOME / "Downloads/Quillmark.app"
TRASH = HOME / ".local/share/Trash"


def as_user(*command):
    subprocess.run(command, check=True, user=USER, group=USER, extra_groups=[])


def copy_bundle(source, target):
    """As it is, with the user's links and extended attributes."""
    as_user("mkdir", "-p", target.parent)
    as_user("cp", "-a", source, target)
    return target


def give_everything(bundle):
    """What a copy might lose: a link that leads nowhere, odd modes, old times, extended attributes, an empty folder."""
    resources = bundle / "Contents/Resources"
    for name, mode in (("private", 0o600), ("run me", 0o751), ("häß\nlich", 0o640)):
        (resources / name).write_text(name)
        (resources / name).chmod(mode)
        os.chown(resources / name, USER, USER)
        os.setxattr(resources / name, "user.origin", name.encode())
    (resources / "empty").mkdir(mode=0o2750)
    os.chown(resources / "empty", USER, USER)
    (resources / "empty").chmod(0o2750)
    os.symlink("private", resources / "link")
    os.symlink("/nowhere/at all", resources / "lost link")
    for path in (resources / "link", resources / "lost link"):
        os.lchown(path, USER, USER)
    os.setxattr(bundle, "user.origin", b"download")
    for number, path in enumerate(sorted([bundle, *bundle.rglob("*")], key=lambda path: -len(path.parts))):
        os.utime(path, ns=(10**18, 10**18 + number), follow_symlinks=False)


def facts(path):
    """All that a copy is to keep of a file, link or folder."""
    status = path.lstat()
    kind = stat.S_IFMT(status.st_mode)
    contents = None
    if kind == stat.S_IFREG:
        contents = hashlib.sha256(path.read_bytes()).hexdigest()
    elif kind == stat.S_IFLNK:
        contents = os.readlink(path)
    attributes = {} if kind == stat.S_IFLNK else {name: os.getxattr(path, name) for name in os.listxattr(path)}
    return status.st_mode, status.st_uid, status.st_gid, status.st_mtime_ns, contents, attributes


def snapshot(bundle):
    return {str(path.relative_to(bundle)): facts(path) for path in [bundle, *bundle.rglob("*")]}


class MoveTest(WindowTest):
    """The bundle has been taken out of /Applications and lies in the download folder."""

    maxDiff = 3000

    def setUp(self):
        super().setUp()
        copy_bundle(APP, DOWNLOADED)
        shutil.rmtree(APP)

    def put_old_copy(self, place=APP):
        """An older copy that the user may replace."""
        copy_bundle(DOWNLOADED, place)
        (place / "Contents/old").write_text("old")
        os.chown(place / "Contents/old", USER, USER)

    def start_launcher(self, bundle=DOWNLOADED, **options):
        """The launcher with its question up. \\returns what it shows."""
        options = {"stdout": subprocess.DEVNULL} | options
        self.launcher = self.desktop.start(bundle / "Contents/MacOS/Quillmark", **options)
        return self.wait_for(is_alert_ready, "the question is up")

    def answer(self, button, bundle=DOWNLOADED):
        self.start_launcher(bundle)
        self.press(button)

    def wait_for_failure(self):
        return self.wait_for(lambda tree: tree.all("label", FAILED, "showing"), "the failure is told")

    def give_password(self):
        """Presses the button, and knows the password."""
        agent = start_agent(self, "allow", self.launcher.pid)
        self.press(MOVE)
        self.assertEqual(agent.stdout.readline(), "asked\n")
        confirm_password(agent)

    def assert_goes_on(self, bundle, launches):
        """The launcher has ended, and the core runs that was to."""
        self.assert_ended()
        self.assert_runs_from(bundle, launches)

    def assert_starts_without_a_word(self, bundle):
        launcher = self.desktop.start(bundle / "Contents/MacOS/Quillmark")
        self.assertEqual(launcher.communicate(timeout=PATIENCE), ("", ""))

    def core_of(self, bundle):
        """The path of the core inside a bundle."""
        return bundle / CORE.relative_to(APP)

    def assert_runs_from(self, bundle, launches):
        """One core runs, and it is that bundle's, after so many starts of the launcher."""
        core = self.core_of(bundle)
        wait_until(lambda: processes_of(core), f"{core} runs")
        wait_until(lambda: not self.launchers(), "the launchers have ended")
        self.assertEqual(len(processes_of(core)), 1)
        self.assertEqual(self.log().count(" did begin launching..."), launches)

    def launchers(self):
        """The launchers that run, wherever they lie."""
        return [entry.name for entry in Path("/proc").glob("[0-9]*") if executable(entry).endswith("/MacOS/Quillmark")]

    def log(self):
        """The text of all log files, in the order of the starts."""
        return "".join(file.read_text() for file in sorted(LOG_FOLDER.glob("*.log")))

    def end_core_of(self, bundle):
        subprocess.run(["pkill", "-KILL", "-x", "QuillmarkCore"], check=True)
        wait_until(lambda: not processes_of(self.core_of(bundle)), "the core has gone")


def executable(process):
    try:
        return os.readlink(process / "exe")
    except OSError:
        return ""
