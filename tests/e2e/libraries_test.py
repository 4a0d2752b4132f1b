"""What a usual start loads: libraries that only windows, secrets or signatures need would slow down every start."""

import re
import unittest
from pathlib import Path

from machine import LauncherTest, environment, run_launcher

NOT_YET = ("libQt6Gui", "libQt6Widgets", "libQt6DBus", "libcrypto", "libssl", "libminizip", "libsecret", "libX11",
           "libxcb", "libdbus", "libgio", "libquillmark-windows", "libquillmark-session",
           "libquillmark-keyring")


class Libraries(LauncherTest):
    def loaded(self):
        """The names of all libraries that were loaded from the start to the end, by the loader's own account."""
        self.assert_started(run_launcher(env=environment(LD_DEBUG="files", LD_DEBUG_OUTPUT="/tmp/loader")))
        reports = [path.read_text() for path in Path("/tmp").glob("loader.*")]
        report = next(text for text in reports if "Quillmark.app/Contents/MacOS/Quillmark" in text)
        return set(re.findall(r"calling init: \S*/([^/\s]+)", report))

    def test_of_windows_secrets_and_signatures_are_not_loaded_by_a_usual_start(self):
        loaded = self.loaded()
        self.assertTrue(any(name.startswith("libQt6Core.") for name in loaded), "the loader told nothing")
        self.assertEqual([name for name in loaded if name.startswith(NOT_YET)], [])


if __name__ == "__main__":
    unittest.main()
