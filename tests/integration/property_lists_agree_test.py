"""Our property lists beside those of other programs: same values, no crash, bounded memory.

The documents come from generators with fixed seeds, so a failure repeats. QUILLMARK_PROPERTY_LIST_PROBE names the program
that answers for our reader and writer.
"""

import datetime
import math
import os
import plistlib
import random
import re
import signal
import struct
import subprocess
import unittest

PROBE = os.environ["QUILLMARK_PROPERTY_LIST_PROBE"]
EPOCH = datetime.datetime(1970, 1, 1)
FORMS = {"XML": plistlib.FMT_XML, "binary": plistlib.FMT_BINARY}
MEBIBYTE = 1 << 20
# The sanitizers' own records are many times what they watch over.
MOST_MEMORY = 1024 * MEBIBYTE if os.environ.get("QUILLMARK_SANITIZE") else 64 * MEBIBYTE


class Probe:
    """Our reader and writer, in a process of their own."""

    def __enter__(self):
        self.process = subprocess.Popen([PROBE], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.stdout.close()
        self.process.wait(timeout=60)

    def ask(self, question, document):
        self.process.stdin.write(question + struct.pack(">I", len(document)))
        self.process.stdin.write(document)
        self.process.stdin.flush()

    def answer(self):
        length = self.process.stdout.read(4)
        if len(length) < 4:
            raise AssertionError(f"the reader ended with {self.ending()}")
        return self.process.stdout.read(struct.unpack(">I", length)[0])

    def ending(self):
        status = self.process.wait(timeout=60)
        return signal.Signals(-status).name if status < 0 else f"status {status}"

    def read(self, document):
        """Our value, rendered, and the XML that our writer makes of it."""
        self.ask(b"r", document)
        return self.answer().decode("ascii"), self.answer()

    def accepts(self, document):
        self.ask(b"v", document)
        return self.answer() == b"valid"

    def peak_memory(self):
        with open(f"/proc/{self.process.pid}/status", encoding="ascii") as status:
            return int(re.search(r"VmHWM:\s+(\d+) kB", status.read()).group(1)) * 1024


def utf16(text):
    return text.encode("utf-16-be", "surrogatepass")


def quoted(text):
    codes = struct.unpack(f">{len(utf16(text)) // 2}H", utf16(text))
    return '"' + "".join(chr(c) if 0x20 <= c < 0x7F and c not in b'"\\' else f"\\u{c:04x}" for c in codes) + '"'


def render(value):
    """The same form as the probe's render()."""
    if isinstance(value, plistlib.UID):
        value = {"CF$UID": value.data}
    if isinstance(value, dict):
        return "{" + ",".join(f"{quoted(k)}:{render(value[k])}" for k in sorted(value, key=utf16)) + "}"
    if isinstance(value, list):
        return "[" + ",".join(map(render, value)) + "]"
    if isinstance(value, str):
        return quoted(value)
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, int):
        return f"i{value}"
    if isinstance(value, float):
        return f"r{struct.unpack('>Q', struct.pack('>d', value))[0]:016x}"
    if isinstance(value, bytes):
        return f"x{value.hex()}"
    return f"d{round((value - EPOCH) / datetime.timedelta(milliseconds=1))}"


def as_xml_keeps_it(rendered):
    """XML has no fractions of seconds, and one form of what is not a number."""
    rendered = re.sub(r"\br[7f]ff(?!0{13})[0-9a-f]{13}\b", "r7ff8000000000000", rendered)
    return re.sub(r"\bd(-?\d+)", lambda date: f"d{int(date.group(1)) // 1000 * 1000}", rendered)


class Generator:
    """Values of every type, the rare and the extreme ones often."""

    EDGE_NUMBERS = [0, 1, -1, 255, 256, 65535, 65536, 2**31 - 1, -(2**31), 2**32, 2**63 - 1, -(2**63), 2**63, 2**64 - 1]
    EDGE_REALS = [0.0, -0.0, 0.1, 1e308, 5e-324, math.inf, -math.inf, math.nan, 1 / 3, 123456789.125, 2.0**53]
    ALPHABETS = ["abcdefghijk", " \t\n", "<>&\"'", "äöüßéñ", "日本語テキスト", "😀🚀𝔘", "\u200b\u202e\ufeff\u0301", "]]>/ \\%@"]

    def __init__(self, seed, form, years=range(1, 9999), has_controls=True):
        self.random = random.Random(seed)
        self.is_binary = form == "binary"
        self.years = years
        self.has_controls = has_controls and self.is_binary  # XML carries none of them as they stand

    def text(self):
        alphabet = self.random.choice(self.ALPHABETS)
        if self.has_controls and self.random.random() < 0.1:
            alphabet = "\0\1\x1f\r\x7f"
        length = self.random.choice([0, 1, 2, 5, 14, 15, 16, 40, 300])
        return "".join(self.random.choice(alphabet) for _ in range(length))

    def number(self):
        if self.random.random() < 0.5:
            return self.random.choice(self.EDGE_NUMBERS)
        bits = self.random.randint(1, 64)
        number = self.random.getrandbits(bits)
        return number if bits == 64 else number * self.random.choice([1, -1])

    def real(self):
        if self.random.random() < 0.5:
            return self.random.choice(self.EDGE_REALS)
        return struct.unpack(">d", struct.pack(">Q", self.random.getrandbits(64)))[0]

    def date(self):
        date = datetime.datetime(self.random.choice(self.years), 1, 1)
        date += datetime.timedelta(seconds=self.random.randrange(365 * 86400))
        if self.is_binary and self.random.random() < 0.3:
            date += datetime.timedelta(milliseconds=self.random.randrange(1000))
        return date

    def value(self, depth=0):
        kinds = [self.text, self.number, self.real, self.date, self.data, lambda: self.random.random() < 0.5]
        if depth < 4:
            kinds += [self.array, self.dictionary] * 2
        kind = self.random.choice(kinds)
        return kind(depth + 1) if kind in (self.array, self.dictionary) else kind()

    def data(self):
        return self.random.randbytes(self.random.choice([0, 1, 2, 3, 14, 15, 16, 100, 1000]))

    def array(self, depth):
        return [self.value(depth) for _ in range(self.random.choice([0, 1, 2, 5, 17]))]

    def dictionary(self, depth):
        return {self.text(): self.value(depth) for _ in range(self.random.choice([0, 1, 2, 5, 17]))}

    def document(self):
        # Some of the extreme ones are beyond plistlib itself.
        while True:
            try:
                return plistlib.dumps(self.value(), fmt=FORMS["binary" if self.is_binary else "XML"])
            except (OverflowError, ValueError):
                continue


def documents(form, count, seed, **choices):
    generator = Generator(seed, form, **choices)
    return [generator.document() for _ in range(count)]


class PropertyListsOfOthers(unittest.TestCase):
    maxDiff = 2000

    def assert_reads_as_others_do(self, probe, document):
        ours, xml = probe.read(document)
        self.assertEqual(ours, render(plistlib.loads(document)), document[:2000])
        return ours, xml

    def assert_written_as_read(self, ours, xml, document):
        self.assertEqual(as_xml_keeps_it(render(plistlib.loads(xml))), as_xml_keeps_it(ours), document[:2000])

    def test_xml_documents_read_as_python_reads_them_and_are_written_again(self):
        with Probe() as probe:
            for document in documents("XML", 3000, seed=1):
                ours, xml = self.assert_reads_as_others_do(probe, document)
                self.assert_written_as_read(ours, xml, document)

    def test_binary_documents_read_as_python_reads_them_and_are_written_again(self):
        written = 0
        with Probe() as probe:
            for document in documents("binary", 3000, seed=2):
                ours, xml = self.assert_reads_as_others_do(probe, document)
                # Texts with characters that XML has no place for can't be written.
                if xml or not re.search(r"\\u00(0[0-8bcef]|1.)", ours):
                    self.assert_written_as_read(ours, xml, document)
                    written += 1
        self.assertGreater(written, 2000)

    def test_identifiers_of_archivers_read_as_a_dictionary_with_a_number(self):
        with Probe() as probe:
            for number in (0, 255, 256, 2**32 - 1):
                document = plistlib.dumps([plistlib.UID(number)], fmt=plistlib.FMT_BINARY)
                self.assert_reads_as_others_do(probe, document)

    def test_documents_of_plistutil_read_as_python_reads_them(self):
        compared = 0
        with Probe() as probe:
            for form, other in (("XML", "bin"), ("binary", "xml")):
                # It writes control characters and far years in ways of its own.
                for document in documents(form, 100, seed=3, years=range(1970, 2038), has_controls=False):
                    converted = subprocess.run(["plistutil", "-i", "-", "-f", other], input=document,
                                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
                    if converted.returncode == 0:  # it crashes over some good documents
                        self.assert_reads_as_others_do(probe, converted.stdout)
                        compared += 1
        self.assertGreater(compared, 150)


class DamagedPropertyLists(unittest.TestCase):
    def mutated(self, document, chance):
        damaged = bytearray(document)
        for _ in range(chance.choice([0, 1, 1, 2, 8])):
            damaged[chance.randrange(len(damaged))] ^= 1 << chance.randrange(8)
        if chance.random() < 0.4:
            del damaged[chance.randrange(len(damaged)):]
        if chance.random() < 0.2:
            start = chance.randrange(len(document))
            damaged[start:start] = document[start:start + chance.randrange(64)]
        return bytes(damaged)

    def assert_survived(self, form, seed):
        chance = random.Random(seed)
        refused = 0
        with Probe() as probe:
            for document in documents(form, 1000, seed):
                for damaged in (self.mutated(document, chance) for _ in range(4)):
                    ours, xml = probe.read(damaged)
                    refused += not ours
                    if xml:  # what was accepted is a value that others can read
                        self.assertEqual(as_xml_keeps_it(render(plistlib.loads(xml))), as_xml_keeps_it(ours), damaged[:2000])
            self.assertEqual(probe.read(plistlib.dumps("fine"))[0], '"fine"')
        self.assertGreater(refused, 1000)

    def test_damaged_xml_never_ends_the_reader(self):
        self.assert_survived("XML", seed=4)

    def test_damaged_binary_documents_never_end_the_reader(self):
        self.assert_survived("binary", seed=5)


def xml(content):
    return b'<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">' + content + b"</plist>"


def binary(objects, reference_size=2, root=0, count=None, offset_size=4, doubles=0):
    """A binary document of ready-made objects, the last of which is so many times more in the table."""
    body, offsets = bytearray(b"bplist00"), []
    for encoded in objects:
        offsets.append(len(body).to_bytes(offset_size, "big"))
        body += encoded
    offsets += offsets[-1:] * doubles
    trailer = struct.pack(">6xBBQQQ", offset_size, reference_size, len(offsets) if count is None else count, root, len(body))
    return bytes(body) + b"".join(offsets) + trailer


def counted(kind, count, width=4):
    """The marker of an object of this kind and of that many units."""
    return bytes([kind << 4 | 0xF, 0x10 | int(math.log2(width))]) + count.to_bytes(width, "big")


def reference(number):
    return number.to_bytes(2, "big")


MILLION = 1_000_000
HOSTILE = {
    "XML nested 257 deep": lambda: xml(b"<array>" * 257 + b"</array>" * 257),
    "binary nested 257 deep": lambda: binary([b"\xa1" + reference(n + 1) for n in range(256)] + [b"\xa0"]),
    "XML nested in arrays a million deep": lambda: xml(b"<array>" * MILLION + b"</array>" * MILLION),
    "XML nested in dictionaries a million deep": lambda: xml(b"<dict><key>k</key>" * MILLION + b"</dict>" * MILLION),
    "XML nested and never closed": lambda: xml(b"<array>" * 5 * MILLION),
    "XML nested in unknown elements": lambda: xml(b"<x>" * MILLION + b"</x>" * MILLION),
    "XML whose entities multiply": lambda: b"<!DOCTYPE plist [<!ENTITY a0 'ha'>"
    + b"".join(b"<!ENTITY a%d '&a%d;&a%d;'>" % (n + 1, n, n) for n in range(40))
    + b"]><plist><string>&a40;</string></plist>",
    "XML with an entity that names a file":
        lambda: b'<!DOCTYPE plist [<!ENTITY a SYSTEM "file:///etc/passwd">]><plist><string>&a;</string></plist>',
    "XML with a text of 60 MB": lambda: xml(b"<string>" + b"a" * 60 * MILLION + b"</string>"),
    "XML with 10 million attributes": lambda: b"<plist" + b' a=""' * 10 * MILLION + b"><true/></plist>",
    "XML with a zero in a key": lambda: xml(b"<dict><key>a\0b</key><true/></dict>"),
    "XML with a zero in a text": lambda: xml(b"<string>a\0b</string>"),
    "XML with a reference to the zero character": lambda: xml(b"<string>&#0;</string>"),
    "XML with bad UTF-8": lambda: xml(b"<string>\xff\xfe\xc0\x80</string>"),
    "XML with a surrogate in UTF-8": lambda: xml(b"<string>\xed\xa0\x80</string>"),
    "XML with an overlong number": lambda: xml(b"<integer>" + b"9" * MILLION + b"</integer>"),
    "XML with two values": lambda: xml(b"<true/><true/>"),
    "XML without a value": lambda: xml(b""),
    "XML with a text as its value": lambda: xml(b"text"),
    "XML with a key as its value": lambda: xml(b"<key>k</key>"),
    "XML with another root": lambda: b"<html><dict/></html>",
    "XML without a root": lambda: b"<!-- nothing -->",
    "XML cut in a tag": lambda: xml(b"<dict><key>k</key><stri")[:-8],
    "nothing": lambda: b"",
    "zeros": lambda: bytes(40 * MILLION),
    "binary nested 60 thousand deep": lambda: binary([b"\xa1" + reference(n + 1) for n in range(60_000)] + [b"\x09"]),
    "binary that contains itself": lambda: binary([b"\xa1" + reference(0)]),
    "binary in a circle through a dictionary":
        lambda: binary([b"\xd1" + reference(1) + reference(2), b"\x51k", b"\xa1" + reference(0)]),
    "binary that doubles in each of 60 levels":
        lambda: binary([b"\xa2" + reference(n + 1) * 2 for n in range(60)] + [b"\x09"]),
    "binary with one long text in a thousand places":
        lambda: binary([counted(0xA, 1000) + reference(1) * 1000, counted(5, MILLION) + b"a" * MILLION]),
    "binary with one key a thousand levels wide":
        lambda: binary([counted(0xA, 60_000) + reference(1) * 60_000, counted(0xD, 5000) + reference(2) * 5000
                        + reference(1) * 5000, b"\x51k"]),
    "binary with one text of 2 MB that is 200 objects, each a level deeper":
        lambda: binary([b"\xa2" + reference(200 + n) + reference(n + 1) for n in range(200)]
                       + [counted(5, 2 * MILLION) + b"a" * 2 * MILLION], doubles=200),
    "binary of many objects, none of them used": lambda: binary([b"\x09"] * 9 * MILLION),
    "binary with a huge array": lambda: binary([counted(0xA, 2**63 - 1, 8)]),
    "binary with a huge dictionary": lambda: binary([counted(0xD, 2**63 + 1, 8)]),
    "binary with a huge text": lambda: binary([counted(5, 2**64 - 1, 8)]),
    "binary with a huge wide text": lambda: binary([counted(6, 2**63, 8)]),
    "binary with huge data": lambda: binary([counted(4, 2**62, 8)]),
    "binary that declares many objects": lambda: binary([b"\x09"], count=2**61),
    "binary with a root that is not there": lambda: binary([b"\x09"], root=1),
    "binary with wide offsets": lambda: binary([b"\x09"], offset_size=200),
    "binary with references of no width": lambda: binary([b"\xa1\0"], reference_size=0),
    "binary with a number for a key": lambda: binary([b"\xd1" + reference(1) * 2, b"\x10\x05"]),
    "binary with half a character": lambda: binary([b"\x61\xd8\x00"]),
    "binary with bad ASCII": lambda: binary([b"\x51\xff"]),
    "binary with 20 million wide characters": lambda: binary([counted(6, 20 * MILLION) + b"\0a" * 20 * MILLION]),
    "binary that is nothing but a header": lambda: b"bplist00",
    "binary of another version": lambda: binary([b"\x09"]).replace(b"bplist00", b"bplist15"),
}
LARGE = {
    "XML with 200 thousand tiny elements": lambda: xml(b"<array>" + b"<true/>" * 200_000 + b"</array>"),
    "XML with a text of 10 MB": lambda: xml(b"<string>" + b"a" * 10 * MILLION + b"</string>"),
    "XML with data of 10 MB": lambda: plistlib.dumps(bytes(10 * MILLION)),
    "binary with 500 thousand tiny elements":
        lambda: binary([counted(0xA, MILLION // 2) + reference(1) * (MILLION // 2), b"\x09"]),
    "binary with a text of 15 MB": lambda: binary([counted(5, 15 * MILLION) + b"a" * 15 * MILLION]),
    "binary with a dictionary of 100 thousand":
        lambda: plistlib.dumps({f"{n}": n for n in range(100_000)}, fmt=plistlib.FMT_BINARY),
    "XML nested 256 deep": lambda: xml(b"<array>" * 256 + b"</array>" * 256),
    "binary nested 256 deep": lambda: binary([b"\xa1" + reference(n + 1) for n in range(255)] + [b"\xa0"]),
}
EITHER_WAY = {
    "XML with a million tiny elements": lambda: xml(b"<array>" + b"<true/>" * MILLION + b"</array>"),
    "XML with a million empty texts": lambda: xml(b"<array>" + b"<string/>" * MILLION + b"</array>"),
    "XML with a million entries": lambda: xml(b"<dict>" + b"<key>k</key><true/>" * MILLION + b"</dict>"),
    "XML with a text of 40 MB": lambda: xml(b"<string>" + b"a" * 40 * MILLION + b"</string>"),
    "XML with a text of 15 million references": lambda: xml(b"<string>" + b"&lt;" * 8 * MILLION + b"</string>"),
    "XML with a text in a million pieces": lambda: xml(b"<string>" + b"a<!---->" * 4 * MILLION + b"</string>"),
    "XML with a text of ampersands in sections": lambda: xml(b"<string><![CDATA[" + b"&" * 12 * MILLION + b"]]></string>"),
    "XML with data of 40 MB": lambda: xml(b"<data>" + b"AAAA" * 10 * MILLION + b"</data>"),
    "XML with a million pieces of data": lambda: xml(b"<array>" + b"<data>AAAA</data>" * MILLION + b"</array>"),
    "XML with a million dates":
        lambda: xml(b"<array>" + b"<date>2024-01-01T00:00:00Z</date>" * MILLION + b"</array>"),
    "XML with a million arrays": lambda: xml(b"<array>" + b"<array/>" * MILLION + b"</array>"),
    "XML with 200 thousand keys":
        lambda: xml(b"<dict>" + b"".join(b"<key>%d</key><true/>" % n for n in range(200_000)) + b"</dict>"),
    "XML with a million comments": lambda: xml(b"<array>" + b"<!-- -->" * 4 * MILLION + b"</array>"),
    "XML full of blanks": lambda: xml(b"<array>" + b" " * 50 * MILLION + b"</array>"),
    "binary with a million tiny elements":
        lambda: binary([counted(0xA, MILLION) + reference(1) * MILLION, b"\x09"]),
    "binary with a text of 40 MB": lambda: binary([counted(5, 40 * MILLION) + b"a" * 40 * MILLION]),
    "binary with data of 40 MB": lambda: binary([counted(4, 40 * MILLION) + b"a" * 40 * MILLION]),
    "binary with 60 thousand dictionaries":
        lambda: binary([counted(0xA, 60_000) + b"".join(reference(n + 2) for n in range(60_000)), b"\x51k"]
                       + [b"\xd1" + reference(1) * 2] * 60_000),
    "binary with a dictionary in 60 thousand places":
        lambda: binary([counted(0xA, 60_000) + reference(1) * 60_000, b"\xd1" + reference(2) * 2, b"\x51k"]),
    "binary of dictionaries within dictionaries":
        lambda: binary([counted(0xA, 400) + reference(1) * 400, counted(0xD, 400) + reference(2) * 400 + reference(3) * 400,
                        b"\x51k", b"\xa0"]),
}


class HostilePropertyLists(unittest.TestCase):
    """Each document has a reader of its own, so that its peak is the document's alone."""

    def assert_bounded(self, name, make_document):
        """Returns whether the reader accepted the document."""
        document = make_document()
        with Probe() as probe:
            self.assertTrue(probe.accepts(plistlib.dumps("small")))
            before = probe.peak_memory()
            is_accepted = probe.accepts(document)
            grown = probe.peak_memory() - before
        self.assertLess(grown, MOST_MEMORY, f"{name}: {grown / MEBIBYTE:.1f} MiB")
        return is_accepted

    def test_hostile_documents_are_refused_within_64_mebibytes(self):
        for name, make_document in HOSTILE.items():
            with self.subTest(name):
                self.assertFalse(self.assert_bounded(name, make_document))

    def test_large_documents_are_read_within_64_mebibytes(self):
        for name, make_document in LARGE.items():
            with self.subTest(name):
                self.assertTrue(self.assert_bounded(name, make_document))

    def test_documents_at_the_limit_are_read_or_refused_within_64_mebibytes(self):
        for name, make_document in EITHER_WAY.items():
            with self.subTest(name):
                self.assert_bounded(name, make_document)
