"""Where the tests of the resources find the sources and the built bundle."""

import os
import plistlib
from pathlib import Path

SOURCES = Path(os.environ.get("QUILLMARK_SOURCES", Path(__file__).parents[2]))
APP = Path(os.environ.get("QUILLMARK_APP", SOURCES / "build/release/Quillmark.app"))
RESOURCES = APP / "Contents/Resources"


def property_list(path):
    with open(path, "rb") as file:
        return plistlib.load(file)
