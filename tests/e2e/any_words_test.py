"""The support tool with words of its own vocabulary in any order: whatever somebody types, it ends soon, with a status
that says what that was."""

import random
import re
import subprocess
import unittest
from concurrent.futures import ThreadPoolExecutor

from machine import HOME, TOOL, environment, run
from polkit import prepare_programs_of_root, require_polkit

LONGEST = 4  # words
VECTORS = 5_000  # in each of the four tests, which may run side by side
SOON = 30  # seconds


def vocabulary():
    """The commands, and all words: those of the commands, options and what these take, all from the tool itself, and some
    that it does not know."""
    done = subprocess.run([TOOL, "--generate", "man"], capture_output=True, text=True, check=True)
    commands = [re.sub(r" \\f.*", "", heading).replace("\\-", "-").split()
                for heading in re.findall(r"^\.SS (.*)$", done.stdout, re.MULTILINE)]
    page = re.sub(r"\\f.", "", done.stdout).replace("\\-", "-")
    words = {word for heading in re.findall(r"^\.SS (.*)$", page, re.MULTILINE) for word in heading.split()}
    words |= set(re.findall(r"(?<![\w-])--?[a-z][a-z-]*", page))
    choices = {"on", "off", "yes", "no", "error", "normal", "verbose", "detailed", "any", "string", "int", "long", "array",
               "bool", "anna", "BrandID", "Password", "1", "-1", "0", "nan", "1e999", "99999999999999999999"}
    unknown = {"", "-", "--", "---", "-x", "--nonsense", "=", "--pretty=yes", "ä", "'", "/nowhere"}
    return commands, sorted(words | choices | unknown)


class AnyWords(unittest.TestCase):
    def setUp(self):
        require_polkit()
        prepare_programs_of_root()

    def check(self, seed):
        source = random.Random(seed)
        commands, words = vocabulary()
        self.assertGreater(len(commands), 50)

        def vector():
            """Every other one begins with a command, else hardly any would be more than a wrong command line."""
            begin = source.choice(commands) if source.random() < 0.5 else []
            return begin + [source.choice(words) for _ in range(source.randint(0, LONGEST - len(begin)))]

        vectors = [vector() for _ in range(VECTORS)]
        folder = HOME / f"words-{seed}"
        folder.mkdir()
        folder.chmod(0o777)
        statuses = {0: 0, 1: 0, 2: 0, 3: 0}
        with ThreadPoolExecutor(2) as pool:
            for vector, status in zip(vectors, pool.map(lambda vector: self.status_of(vector, folder), vectors)):
                self.assertIn(status, statuses, vector)
                statuses[status] += 1
        self.assertTrue(all(statuses.values()), statuses)

    def status_of(self, vector, folder):
        tool = run(TOOL, *vector, timeout=SOON, cwd=folder, env=environment(HOME=folder))
        if tool.returncode in (2, 3):
            steps = r"([^\n]+: [^\n]+\n)*" if "repair" in vector else ""
            self.assertRegex(tool.stderr, rf"\A{steps}quillmarkctl: [^\n]+: [^\n]+\n\Z", vector)
        return tool.returncode

    def test_are_answered_one(self):
        self.check(1)

    def test_are_answered_two(self):
        self.check(2)

    def test_are_answered_three(self):
        self.check(3)

    def test_are_answered_four(self):
        self.check(4)
