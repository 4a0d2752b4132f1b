"""The private root as a test sees it, from inside and as root: it starts programs as the user, and looks at them."""

import contextlib
import os
import plistlib
import resource
import signal
import subprocess
import sys
import time
import unittest
from pathlib import Path

USER = int(os.environ.get("QUILLMARK_USER", 1001))
HOME = Path(os.environ.get("QUILLMARK_HOME", "/home/t"))
FILES = Path(os.environ.get("QUILLMARK_FILES", "/tmp"))  # what is for whoever started this
APP = Path("/Applications/Quillmark.app")
RESOURCES = APP / "Contents/Resources"
LAUNCHER = APP / "Contents/MacOS/Quillmark"
TOOL = APP / "Contents/MacOS/quillmarkctl"
CORE = RESOURCES / "QuillmarkCore.app/Contents/MacOS/QuillmarkCore"
PREFERENCES = HOME / "Library/Preferences/com.quillmark.QuillmarkLauncher.plist"
LOG_FOLDER = HOME / "Library/Logs/Quillmark/Quillmark"
CORE_LOG = HOME / "Library/Logs/Quillmark/QuillmarkCore/QuillmarkCore.log"
PATIENCE = 20  # seconds after which something is taken not to happen any more


def wait_until(condition, what):
    """Returns the first true answer of condition()."""
    end = time.monotonic() + PATIENCE
    while not (answer := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"waited {PATIENCE} s in vain until {what}")
        time.sleep(0.01)
    return answer


def skip(why):
    """Ends this program as a skipped test, and says so. In the middle of a test an exception would count as a failure; what
    the test has started ends with the private root."""
    print(f"skipped: {why}", file=sys.stderr, flush=True)
    os._exit(77)


def skip_without(packages):
    skip(f"install the packages {' '.join(packages)}")


def environment(**changes):
    """The user's environment; a value of None leaves the variable out."""
    values = {"PATH": os.environ["PATH"], "HOME": str(HOME), "USER": "tester", "LOGNAME": "tester", "LANG": "C.UTF-8"}
    values.update(changes)
    return {name: str(value) for name, value in values.items() if value is not None}


def start(program, *arguments, before=lambda: None, **options):
    """Starts a program as the ordinary user, in the home folder, free to leave core dumps there; before() runs in the
    child just before the program does. Further options are those of subprocess.Popen."""

    def prepare():
        resource.setrlimit(resource.RLIMIT_CORE, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))
        for number in (signal.SIGINT, signal.SIGQUIT):  # a shell that starts something in the background ignores them
            signal.signal(number, signal.SIG_DFL)
        before()

    settings = {"cwd": HOME, "env": environment(), "stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE,
                "stderr": subprocess.PIPE, "text": True}
    return subprocess.Popen([program, *arguments], user=USER, group=USER, extra_groups=[], preexec_fn=prepare,
                            **(settings | options))


def end_with(test, process):
    """The process is killed when the test ends, if it still runs. \\returns the process."""
    test.addCleanup(process.communicate)
    test.addCleanup(process.kill)
    return process


def run(program, *arguments, timeout=PATIENCE, **options):
    """Starts a program as start() does, and waits for its end. \\returns its status, standard output and standard error."""
    process = start(program, *arguments, **options)
    out, err = process.communicate(timeout=timeout)
    return subprocess.CompletedProcess(program, process.returncode, out or "", err or "")


def run_launcher(program=LAUNCHER, **options):
    return run(program, **options)


def processes_of(executable):
    found = []
    for entry in Path("/proc").glob("[0-9]*"):
        try:
            if os.readlink(entry / "exe") == str(executable):
                found.append(int(entry.name))
        except OSError:
            pass  # ended meanwhile
    return found


def has_ended(pid):
    try:
        return status_of(pid)["State"].startswith("Z")
    except OSError:
        return True


def status_of(pid):
    """What the system tells about the process, by name: "PPid", "SigBlk" and so on."""
    lines = Path(f"/proc/{pid}/status").read_text().splitlines()
    return {name: value.strip() for name, _, value in (line.partition(":") for line in lines)}


def signals(pid, name):
    """The signals in one of the process's sets, such as "SigBlk", without the C library's own two."""
    mask = int(status_of(pid)[name], 16)
    return {number for number in range(1, 65) if mask >> (number - 1) & 1} - {32, 33}


def descriptors(pid):
    """What each open descriptor of the process leads to."""
    folder = Path(f"/proc/{pid}/fd")
    return {int(entry.name): os.readlink(entry) for entry in folder.iterdir()}


def full_pipe(test):
    """\\returns the end of a pipe that nobody reads and that takes nothing more; it is to be closed."""
    reading, writing = os.pipe()
    test.addCleanup(os.close, reading)
    os.set_blocking(writing, False)
    try:
        while True:
            os.write(writing, bytes(65536))
    except BlockingIOError:
        os.set_blocking(writing, True)
        return writing


def fill(file):
    """Writes until the file system is full."""
    with open(file, "wb", buffering=0) as stream, contextlib.suppress(OSError):
        while stream.write(bytes(4096)):
            pass


def make_user_folder(path):
    """The folder and those above it up to the home folder, all the user's own."""
    for folder in [*reversed(path.parents), path]:
        if HOME in folder.parents and not folder.exists():
            folder.mkdir()
            os.chown(folder, USER, USER)


def write_user_file(path, contents):
    make_user_folder(path.parent)
    path.write_bytes(contents)
    os.chown(path, USER, USER)


def set_preferences(**values):
    write_user_file(PREFERENCES, plistlib.dumps(values))


def launcher_logs():
    return sorted(LOG_FOLDER.glob("*")) if LOG_FOLDER.is_dir() else []


def end_cores():
    """Kills every core, so that the launcher can start another one."""
    for pid in processes_of(CORE):
        os.kill(pid, signal.SIGKILL)
    wait_until(lambda: not processes_of(CORE), "the cores are gone")


class LauncherTest(unittest.TestCase):
    """Asserts what the launcher has done."""

    def core(self):
        """The process id of the one core that runs and has said so in its log."""

        def running():
            lines = CORE_LOG.read_text().splitlines() if CORE_LOG.exists() else []
            return [pid for pid in processes_of(CORE) if any(f"[{pid}] running" in line for line in lines)]

        pids = wait_until(running, "the core runs")
        self.assertEqual(len(pids), 1, "one core was to run")
        return pids[0]

    def log(self):
        """The text of the launcher's only log file."""
        files = launcher_logs()
        self.assertEqual(len(files), 1, f"one log file was expected: {files}")
        return files[0].read_text()

    def assert_started(self, result):
        """The launcher did what it is for."""
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return self.core()

    def assert_refused(self, result, *words, error=""):
        """The launcher gave up as it should: its own status, one sentence for the user that holds the words, the error on
        standard error, no core and no core dump."""
        self.assertEqual(result.returncode, 78, result.stderr)
        sentences = [line for line in result.stderr.splitlines() if line.startswith("Quillmark: could not start: ")]
        self.assertEqual(len(sentences), 1, result.stderr)
        self.assertIn(error, result.stderr)
        for word in words:
            self.assertIn(str(word), sentences[0])
        self.assertEqual(processes_of(CORE), [])
        self.assertEqual([path for path in HOME.iterdir() if path.name.startswith("core")], [])
