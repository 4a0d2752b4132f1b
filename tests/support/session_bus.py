"""A session bus of the user's own in the private root, and programs on it."""

import subprocess
from pathlib import Path

from machine import end_with, environment, start

PYTHON = Path("/usr/bin/python3").resolve()  # the system's own, which has the desktop's libraries
CONFIGURATION = """<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>"""


def start_session_bus(test):
    """A bus that starts no services, and ends with the test. \\returns the user's environment on it."""
    configuration = Path("/tmp/session-bus.conf")
    configuration.write_text(CONFIGURATION)
    bus = end_with(test, start("dbus-daemon", f"--config-file={configuration}", "--print-address", "--nofork",
                               stderr=subprocess.DEVNULL))
    return environment(DBUS_SESSION_BUS_ADDRESS=bus.stdout.readline().strip())


def start_on_bus(test, surroundings, program, *arguments):
    """A Python program on the bus, run by `program` (PYTHON or a copy); it has said "ready" when this comes back."""
    process = end_with(test, start(program, *arguments, env=surroundings | {"PYTHONHOME": "/usr"}))
    line = process.stdout.readline()
    test.assertEqual(line, "ready\n", line or process.stderr.read())
    return process
