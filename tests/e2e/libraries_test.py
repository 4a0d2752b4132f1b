"""What a usual start loads, and what each shipped program asks for: every library slows down a start, and each that a
program with root's rights loads can have faults of its own."""

import re
import subprocess
from pathlib import Path

from machine import APP, LauncherTest, environment, run_launcher

C_LIBRARY = {"libc.so.6", "libm.so.6"}
BUS = {"libgio-2.0.so.0", "libgobject-2.0.so.0", "libglib-2.0.so.0"}
MODULE = C_LIBRARY | {"libstdc++.so.6", "libgcc_s.so.1"}

# Each may ask for these and no others.
ALLOWED = {
    "MacOS/Quillmark": C_LIBRARY,
    "MacOS/quillmarkctl": C_LIBRARY | {"libcrypto.so.3", "libminizip.so.1", "libz.so.1"},
    "Helpers/open": C_LIBRARY,
    "Helpers/ps": C_LIBRARY,
    "Helpers/quillmark-root-helper": C_LIBRARY,
    "PlugIns/libquillmark-session.so": MODULE | BUS,
    "PlugIns/libquillmark-keyring.so": MODULE | BUS | {"libsecret-1.so.0"},
    "PlugIns/libquillmark-windows.so":
        MODULE | {"libQt6Core.so.6", "libQt6Gui.so.6", "libQt6Widgets.so.6", "libQt6UiTools.so.6"},
    "Resources/updateqm": C_LIBRARY | {"libcrypto.so.3", "libarchive.so.13"},
    "Resources/finderoverlaytool": C_LIBRARY,
    "Resources/QuillmarkCore.app/Contents/MacOS/QuillmarkCore": C_LIBRARY,
}


def without_loader(libraries):
    """The dynamic loader itself is asked for where a program has variables for each thread."""
    return {name for name in libraries if not name.startswith("ld-linux")}


def needed_by(path):
    entries = subprocess.run(["readelf", "-d", path], capture_output=True, text=True, check=True).stdout
    return without_loader(re.findall(r"\(NEEDED\).*\[(.*)\]", entries))


class Libraries(LauncherTest):
    def loaded(self):
        """The names of all libraries that were loaded from the start to the end, by the loader's own account."""
        self.assert_started(run_launcher(env=environment(LD_DEBUG="files", LD_DEBUG_OUTPUT="/tmp/loader")))
        reports = [path.read_text() for path in Path("/tmp").glob("loader.*")]
        report = next(text for text in reports if "Quillmark.app/Contents/MacOS/Quillmark" in text)
        return set(re.findall(r"calling init: \S*/([^/\s]+)", report))

    def test_a_usual_start_loads_the_c_library_and_nothing_else(self):
        loaded = without_loader(self.loaded())
        self.assertIn("libc.so.6", loaded, "the loader told nothing")
        self.assertEqual(loaded - C_LIBRARY, set())

    def test_every_shipped_program_asks_for_its_own_libraries_and_no_others(self):
        programs = {path for path in Path(APP).rglob("*")
                    if path.is_file() and not path.is_symlink() and path.read_bytes()[:4] == b"\x7fELF"}
        names = {str(path.relative_to(Path(APP) / "Contents")) for path in programs}
        self.assertEqual(names, set(ALLOWED))
        for name, allowed in ALLOWED.items():
            self.assertEqual(needed_by(Path(APP) / "Contents" / name) - allowed, set(), name)
