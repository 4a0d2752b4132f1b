"""Puts the pictures of every window in every state and language on one page, build/gallery/index.html, with a contact sheet
beside it that is looked through in a minute."""

import html
import os
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

GALLERY = Path(os.environ["QUILLMARK_GALLERY"])
PICTURES = GALLERY / "pictures"
HEADERS = Path(__file__).with_name("pictures")
LANGUAGES = ["en", "de", "fr", "es", "ja"]
THEMES = ["light", "dark"]
SCALES = [1, 2]
THUMBNAIL = 300  # pixels wide, in the contact sheets

PAGE = """<!DOCTYPE html>
<html lang="en"><meta charset="utf-8"><title>Every window</title>
<style>
  body {{ font: 14px sans-serif; margin: 24px; background: #888; color: #fff }}
  section {{ display: flex; flex-wrap: wrap; gap: 12px; align-items: start; margin-bottom: 24px }}
  h2 {{ width: 100%; margin: 0; font-size: 16px }}
  figure {{ margin: 0 }} figcaption {{ font-size: 12px }}
  img.picture {{ max-width: 600px }} a {{ color: #fff }}
</style>
<h1>Every window</h1>
<p>Contact sheets: {sheets}</p>
{sections}
</html>
"""


def states():
    return sorted({path.name.split(".")[0] for path in PICTURES.glob("*.png")})


def picture(state, language, theme, scale):
    return PICTURES / f"{state}.{language}.{theme}@{scale}x.png"


def headers(scale):
    """Of every kind of brand, as the window tests expect them; without those that try sizes."""
    return sorted(path for path in HEADERS.glob(f"*@{scale}x.png") if not re.search("Logo|Title|hidden", path.name))


def figure(path, caption, scale):
    address = html.escape(os.path.relpath(path, GALLERY))
    return (f'<figure><img class="picture" src="{address}" srcset="{address} {scale}x" loading="lazy" alt="">'
            f"<figcaption>{html.escape(caption)}</figcaption></figure>")


def section(title, figures):
    return f"<section><h2>{html.escape(title)}</h2>{''.join(figures)}</section>"


def setUpModule():
    if shutil.which("montage") is None:
        print("skipped: install the package imagemagick", file=sys.stderr)
        sys.exit(77)


class Gallery(unittest.TestCase):
    def test_of_every_window_is_a_page_with_contact_sheets(self):
        self.assertTrue(states(), "the window tests have left no pictures")
        sections, sheets = [], []
        for state in states():
            figures = []
            for scale in SCALES:
                for theme in THEMES:
                    for language in LANGUAGES:
                        path = picture(state, language, theme, scale)
                        self.assertTrue(path.exists(), path)
                        figures.append(figure(path, f"{language}, {theme}, {scale}x", scale))
            sections.append(section(state, figures))
        for scale in SCALES:
            sections.append(section(f"headers, {scale}x", [figure(path, path.stem, scale) for path in headers(scale)]))
            sheets.append(self.make_sheet(scale))
        links = ", ".join(f'<a href="{sheet.name}">{sheet.name}</a>' for sheet in sheets)
        (GALLERY / "index.html").write_text(PAGE.format(sheets=links, sections="\n".join(sections)))

    def make_sheet(self, scale):
        """A row for each state, in light and then in dark colours, in each language; the headers below."""
        sheet = GALLERY / f"contact@{scale}x.png"
        parts = []
        for state in states():
            row = [picture(state, language, theme, scale) for theme in THEMES for language in LANGUAGES]
            parts.append(self.montage(row, f"{state}@{scale}x", len(row), state))
        parts.append(self.montage(headers(scale), f"headers@{scale}x", len(THEMES) * len(LANGUAGES), "headers"))
        subprocess.run(["convert", *parts, "-background", "#888", "-append", sheet], check=True)
        for part in parts:
            part.unlink()
        return sheet

    def montage(self, paths, name, columns, title):
        made = GALLERY / f"part-{name}.png"
        subprocess.run(["montage", *paths, "-tile", f"{columns}x", "-geometry", f"{THUMBNAIL}x>+4+4", "-background", "#888",
                        "-fill", "white", "-title", title, made], check=True)
        return made
