"""The pages that people read: every link, file, command and test that they name is there, and every diagram shows its text."""

import html
import json
import os
import re
import unittest
from functools import cache
from pathlib import PurePosixPath
from urllib.parse import unquote

from bundle import SOURCES

HIDDEN_BUT_OURS = {".ci", ".github"}
SUFFIXES = {".c", ".cmake", ".cpp", ".dot", ".h", ".in", ".json", ".md", ".plist", ".policy", ".py", ".sh", ".strings", ".svg",
            ".txt", ".ui"}
# Of a name: what stands for any text.
PLACEHOLDER = re.compile(r"[A-Z][A-Z_]+(?![a-z])|\*|…")
CODE_SPAN = re.compile(r"(?<!`)`([^`]+)`(?!`)")


@cache
def files():
    """The paths of all files of the project, and of the folders that hold them."""
    found = set()
    for folder, folders, names in os.walk(SOURCES):
        folders[:] = [name for name in folders if name not in ("build", "__pycache__")
                      and (not name.startswith(".") or name in HIDDEN_BUT_OURS)]
        place = PurePosixPath(os.path.relpath(folder, SOURCES).replace(os.sep, "/"))
        found.update(str(place / name) for name in names)
        found.update(f"{place / name}/" for name in folders)
    return found


def pages():
    return sorted(path for path in files() if path.endswith(".md"))


@cache
def text_of(path):
    return (SOURCES / path).read_text("utf-8", errors="replace")


def prose(page):
    """A page without its blocks of code."""
    lines, is_code = [], False
    for line in text_of(page).split("\n"):
        if line.startswith("```"):
            is_code = not is_code
        elif not is_code and not line.startswith("    "):
            lines.append(line)
    return "\n".join(lines)


def code(page):
    """Every line of a page's blocks of code less its remark, and every span of code."""
    is_code = False
    for line in text_of(page).split("\n"):
        if line.startswith("```"):
            is_code = not is_code
        elif is_code or re.match(r" {4}(?![-*\d])", line):
            yield re.sub(r"\s+#.*", "", line).strip()
    for span in CODE_SPAN.findall(prose(page)):
        yield " ".join(span.split())


def anchors(page):
    """As GitHub makes them of headings."""
    headings = re.findall(r"^#+ +(.*?) *$", prose(page), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", re.sub(r"[`*]", "", heading).lower()).replace(" ", "-") for heading in headings}


def pattern(name):
    """An expression for a name in which words in capitals, stars and dots stand for something."""
    pieces, end = [], 0
    for match in PLACEHOLDER.finditer(name):
        pieces += [re.escape(name[end:match.start()]), ".*"]
        end = match.end()
    return "".join([*pieces, re.escape(name[end:])])


def is_there(name):
    """Whether a file or folder has this path, from the project on or from any folder in it. The build fills in NAME.in."""
    plain = name.rstrip("/")
    if plain in files() or f"{plain}/" in files():
        return True
    wanted = re.compile(rf"(.*/)?{pattern(plain)}" + ("/" if name.endswith("/") else r"(\.in)?/?"))
    return any(wanted.fullmatch(path) for path in files())


def looks_like_file(word):
    if word.startswith(("/", "~", "-", "…", "$", "http")) or re.search(r"[<>=(){}'\"]", word):
        return False
    path = PurePosixPath(word)
    if path.parts[:1] == ("build",) or word == "*":
        return False
    return path.suffix in SUFFIXES or ("/" in word and f"{path.parts[0]}/" in files())


def words_of_files(text):
    for word in text.split():
        word = word.removeprefix("./").rstrip(".,:;")
        if looks_like_file(word):
            yield word


@cache
def words_of_the_code():
    words = set()
    for path in files():
        if not path.endswith(("/", ".bmp", ".icns", ".md", ".png")) and not path.startswith(("docs/", "fuzz/corpus/")):
            if path != f"tests/resources/{os.path.basename(__file__)}":
                words.update(re.findall(r"\w+", text_of(path)))
    return words


@cache
def test_names():
    """Every test by the name that ctest knows it by, but for what parameters add to it."""
    names = set()
    for path in files():
        if not path.startswith("tests/") or not path.endswith(("_test.py", "Test.cpp")):
            continue
        kind = path.split("/")[1]
        if path.endswith(".py"):
            owner = None
            for keyword, name in re.findall(r"^(class |    def test_)(\w+)", text_of(path), re.MULTILINE):
                owner = name if keyword == "class " else owner
                if keyword != "class ":
                    names.add(f"{kind}.{owner}.{name}")
        else:
            prefix = {"windows": "windows.1x."}.get(kind, f"{kind}.")
            names.update(f"{prefix}{suite}.{name}"
                         for suite, name in re.findall(r"^TEST(?:_[FP])?\((\w+),\s*(\w+)\)", text_of(path), re.MULTILINE))
    return names


def is_test(expression):
    return any(re.search(expression, name) for name in test_names())


@cache
def build_files():
    return "\n".join(text_of(path) for path in sorted(files()) if path.endswith(("CMakeLists.txt", ".cmake")))


def help_text(script):
    """What a script says of itself: its help, or what stands above its first line of code."""
    text = text_of(script)
    told = re.search(r"<<HELP\n(.*?)\nHELP\n", text, re.DOTALL)
    return told.group(1) if told else re.split(r"^(?!#|\"\"\"|$| {4})", text.partition('"""')[2] or text, maxsplit=1,
                                               flags=re.MULTILINE)[0]


@cache
def support_commands():
    """Every command of the support tool, with the file of its table; groups of commands, too."""
    commands = {}
    for path in files():
        if re.fullmatch(r"ctl/commands/\w+Commands\.cpp", path):
            for group, name in re.findall(r'^    \{(nullptr|"[^"]*"),\s*"([^"]+)",', text_of(path), re.MULTILINE):
                group = "" if group == "nullptr" else group.strip('"')
                commands[f"{group} {name}".strip()] = path
                while group:
                    commands.setdefault(group, path)
                    group = group.rpartition(" ")[0]
    return commands


class Documents(unittest.TestCase):
    def each(self, give):
        """Everything that `give` gives of a page, with the page's path."""
        for page in pages():
            for thing in give(page):
                yield page, thing

    def commands(self):
        """Every command of every page, as its words."""
        for page, line in self.each(code):
            for command in re.split(r"&&|\|\||[|;]", line):
                words = command.split()
                while words and re.fullmatch(r"[A-Z_]+=\S*", words[0]):
                    del words[0]
                if words:
                    yield page, words

    def test_every_link_leads_to_a_file_and_to_one_of_its_headings(self):
        for page, link in self.each(lambda page: re.findall(r"\[[^\]]*\]\(([^)\s]+)\)", prose(page))):
            if re.match(r"[a-z]+:", link):
                continue
            path, _, anchor = unquote(link).partition("#")
            target = os.path.normpath(PurePosixPath(page).parent / path) if path else page
            self.assertTrue(target in files() or f"{target}/" in files(), f"{page}: {link}")
            if anchor:
                self.assertIn(anchor, anchors(target), f"{page}: {link}")

    def test_every_file_that_a_page_names_is_there(self):
        for page, name in self.each(lambda page: (word for text in code(page) for word in words_of_files(text))):
            if not name.startswith("quillmarkctl"):
                self.assertTrue(is_there(name), f"{page}: {name}")

    def test_no_file_stays_found_that_is_gone(self):
        for name in ("src/launcher/main.cpp", "launcher/main.cpp", "scripts/packages", "ctl/commands/SUBJECTCommands.cpp",
                     "src/utils/", "RequiredItems.plist", "resources/LANGUAGE.lproj/Localizable.strings", "resources/*.lproj"):
            self.assertTrue(is_there(name), name)
        for name in ("src/launcher/mein.cpp", "auncher/main.cpp", "scripts/package", "src/SUBJECTCommands.cpp", "src/util/"):
            self.assertFalse(is_there(name), name)
        self.assertEqual(list(words_of_files("see src/a.h, ./run, Log.h and /etc/passwd or ~/x.plist, build/x.md")),
                         ["src/a.h", "Log.h"])

    def test_every_script_that_a_page_runs_can_be_run_and_has_these_options(self):
        for page, words in self.commands():
            for place, word in enumerate(words):
                if "/" not in word:
                    continue
                script = word.removeprefix("./")
                if script.endswith("/") or script not in files() or not os.access(SOURCES / script, os.X_OK):
                    self.assertFalse(word.startswith("./"), f"{page}: {word}")
                    continue
                told = help_text(script)
                for option in words[place + 1:]:
                    if option.startswith("--"):
                        self.assertIn(option, re.findall(r"(?<![\w-])--[\w-]+", told), f"{page}: {' '.join(words)}")

    def test_every_choice_of_tests_finds_some(self):
        for page, words in self.commands():
            chosen = words[1:] if words[0] == "./test" else words[words.index("-R") + 1:][:1] if "-R" in words else []
            for word in chosen:
                if not word.startswith("-") and not PLACEHOLDER.fullmatch(word):
                    self.assertTrue(is_test(word.strip("'")), f"{page}: {' '.join(words)}")
            for word in words:
                suite = re.fullmatch(r"--gtest_filter='?([^'*…]+)(.*)", word)
                if suite:
                    self.assertTrue(is_test(f"(^|\\.){re.escape(suite[1])}"), f"{page}: {word}")

    def test_every_fuzz_target_that_a_page_names_is_there(self):
        targets = re.search(r"^  targets=\((.*)\)", text_of("fuzz/run"), re.MULTILINE).group(1).split()
        for page, words in self.commands():
            if words[0] == "fuzz/run":
                for word in words[1:]:
                    self.assertTrue(re.fullmatch(r"\d+|-.*", word) or PLACEHOLDER.match(word) or word in targets,
                                    f"{page}: {' '.join(words)}")

    def test_every_preset_target_variable_and_label_of_the_build_is_there(self):
        presets = [preset["name"] for preset in json.loads(text_of("CMakePresets.json"))["buildPresets"]]
        known = {
            "--preset": presets,
            "--target": re.findall(r"add_(?:executable|library|custom_target)\((\w+)", build_files()),
            "-L": re.findall(r"LABELS? (\w+)", build_files()),
            "-D": re.findall(r"\bQUILLMARK_\w+", build_files()),
        }
        for page, words in self.commands():
            for option, value in zip(words, [*words[1:], ""]):
                if option.startswith("-DQUILLMARK"):
                    option, value = "-D", option[2:].partition("=")[0]
                if option in known and words[0] in ("cmake", "ctest"):
                    self.assertIn(value, known[option], f"{page}: {' '.join(words)}")

    def test_every_command_of_the_support_tool_is_in_its_tables_with_these_options(self):
        common = text_of("ctl/CommandLine.cpp")
        for page, words in self.commands():
            if PurePosixPath(words[0]).name != "quillmarkctl" or not words[1:]:
                continue
            named = [word for word in words[1:] if not word.startswith("-")]
            known = [" ".join(named[:count]) for count in range(len(named) + 1)]
            known = [command for command in known if command in support_commands()]
            told = f"{page}: {' '.join(words)}"
            plain = not named or PLACEHOLDER.fullmatch(named[0])
            self.assertTrue(known or plain, told)
            table = text_of(support_commands()[known[-1]]) if known else ""
            if known and any(command.startswith(known[-1] + " ") for command in support_commands()):
                rest = named[len(known[-1].split()):]
                self.assertTrue(not rest or PLACEHOLDER.fullmatch(rest[0]), told)
            for option in (word.partition("=")[0] for word in words if word.startswith("--")):
                self.assertTrue(f'"{option}"' in table + common or option in ("--help", "--version"), told)

    def test_every_name_of_the_code_that_a_page_names_occurs_in_the_code(self):
        for page, name in self.each(lambda page: CODE_SPAN.findall(prose(page))):
            if re.fullmatch(r"_?[A-Za-z]\w+(::\w+)*(\(\))?", name) and not re.match(r"Q[A-Z]", name):
                self.assertFalse(set(re.findall(r"\w+", name)) - words_of_the_code(), f"{page}: {name}")

    def test_every_test_that_stands_behind_a_claim_is_there(self):
        suite = ""
        for name in CODE_SPAN.findall(prose("docs/security.md")):
            if name.startswith("…"):
                name = f"{suite}.{name}"
            elif re.fullmatch(r"(?:[a-z]+\.)?[A-Z]\w+\.[\w*…]+", name) and PurePosixPath(name).suffix not in SUFFIXES:
                suite = re.sub(r"^[a-z]+\.", "", name).partition(".")[0]
            else:
                continue
            expression = re.escape(name).replace("…", ".*").replace(r"\*", ".*")
            self.assertTrue(is_test(f"(^|\\.){expression}$"), name)


def diagrams(ending):
    return {PurePosixPath(path).stem for path in files() if re.fullmatch(rf"docs/diagrams/\w+\.{ending}", path)}


def labels(name):
    """Every line of the labels in a diagram's text."""
    found = set()
    for plain, marked in re.findall(r'label=(?:"((?:[^"\\]|\\.)*)"|<(.*?)>(?=[,\]]))', text_of(f"docs/diagrams/{name}.dot")):
        lines = re.split(r"\\[nlr]", plain) if plain else re.split(r"<[^>]*>", marked)
        found.update(" ".join(html.unescape(line).split()) for line in lines)
    return found - {""}


def drawn_texts(name):
    texts = re.findall(r"<text[^>]*>([^<]*)</text>", text_of(f"docs/diagrams/{name}.svg"))
    return {" ".join(html.unescape(text).split()) for text in texts} - {""}


def arrows(name):
    """The folders of a diagram's nodes, and its arrows as pairs of folders."""
    text = text_of(f"docs/diagrams/{name}.dot")
    folders = dict(re.findall(r'^ *(\w+) \[id="([^"]+)"', text, re.MULTILINE))
    pairs = set()
    for line in re.findall(r"^ *([^\[\n]*->[^\[;]*)", re.sub(r".*style=invis.*", "", text), re.MULTILINE):
        ends = [re.findall(r"\w+", end) for end in line.split("->")]
        for sources, targets in zip(ends, ends[1:]):
            pairs.update((folders[source], folders[target]) for source in sources for target in targets)
    return set(folders.values()), pairs


def includes(folders):
    """Which of the folders includes which other one, by the folder that is nearest to a file."""
    def nearest(path):
        return max((folder for folder in folders if path.startswith(f"{folder}/")), key=len, default=None)

    pairs = set()
    for path in files():
        if path.startswith("src/") and path.endswith((".cpp", ".h")) and nearest(path):
            for included in re.findall(r'^#include "(.+)"', text_of(path), re.MULTILINE):
                pairs.add((nearest(path), nearest(f"src/{included}")))
    return {(source, target) for source, target in pairs if target not in (None, source)}


def reached(start, pairs):
    found, waiting = set(), [start]
    while waiting:
        folder = waiting.pop()
        for target in {target for source, target in pairs if source == folder} - found:
            found.add(target)
            waiting.append(target)
    return found


class Diagrams(unittest.TestCase):
    def test_the_arrows_between_folders_are_those_of_the_sources(self):
        for name in ("folders", "platform"):
            folders, drawn = arrows(name)
            real = includes(folders)
            self.assertFalse(drawn - real, f"{name}: nobody includes that")
            for source, target in real:
                self.assertIn(target, reached(source, drawn), f"{name}: {source} includes {target}")

    def test_every_folder_is_in_a_diagram(self):
        folders = set().union(*(arrows(name)[0] for name in ("folders", "platform")))
        for path in files():
            if re.fullmatch(r"src/(platform/(linux/)?)?[a-z]+/", path):
                inner = any(folder.startswith(path) for folder in folders)
                self.assertTrue(inner or path.rstrip("/") in folders, path)

    def test_each_is_drawn_and_has_a_text(self):
        self.assertEqual(diagrams("dot"), diagrams("svg"))
        self.assertTrue(diagrams("dot"))

    def test_each_picture_shows_its_text_and_nothing_older(self):
        for name in diagrams("dot"):
            self.assertEqual(labels(name), drawn_texts(name), f"docs/diagrams/make {name}")

    def test_every_file_that_a_diagram_names_is_there(self):
        for name in diagrams("dot"):
            for line in labels(name):
                for word in words_of_files(line):
                    self.assertTrue(is_there(word), f"{name}: {word}")

    def test_each_is_shown_on_a_page(self):
        shown = set().union(*(re.findall(r"diagrams/(\w+)\.svg\)", text_of(page)) for page in pages()))
        self.assertEqual(shown, diagrams("svg"))

    def test_each_stands_on_white(self):
        for name in diagrams("svg"):
            self.assertRegex(text_of(f"docs/diagrams/{name}.svg"), r'<polygon fill="white"')
