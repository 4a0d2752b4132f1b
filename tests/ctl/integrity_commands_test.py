"""Signatures and archives, beside other programs that make and read them."""

import os
import pty
import re
import subprocess
import zipfile
from pathlib import Path

from tool import TOOL, ToolTest


def run(*command, cwd=None, **options):
    return subprocess.run([str(word) for word in command], cwd=cwd, check=True, capture_output=True, timeout=60, **options)


class IntegrityTest(ToolTest):
    def path(self, name):
        return self.home / name

    def answer(self, *arguments, given=b"", **options):
        """Status, standard output and standard error of the tool that reads `given`."""
        done = self.call(*arguments, input=given, **options)
        return done.returncode, done.stdout, done.stderr


class Signatures(IntegrityTest):
    def setUp(self):
        super().setUp()
        self.key, self.public = self.path("private.pem"), self.path("public.pem")
        self.file = self.write_file("file", b"data\0\n")
        self.make_key(self.key, self.public)

    def make_key(self, private, public, bits=1024):
        run("openssl", "genrsa", "-out", private, str(bits))
        run("openssl", "rsa", "-in", private, "-pubout", "-out", public)

    def sign(self, file=None, key=None):
        signature = self.path("signature")
        self.assertEqual(self.run_tool("sign", "--key", key or self.key, file or self.file, "--output", signature).stdout, "")
        return signature

    def verify(self, signature, status=0, file=None, key=None):
        done = self.run_tool("verify", "--key", key or self.public, "--signature", signature, file or self.file, status=status)
        self.assertEqual(done.stdout + done.stderr, "")

    def test_of_ours_are_verified_by_openssl_with_keys_of_each_size(self):
        for bits in (1024, 2048, 4096):
            self.make_key(self.key, self.public, bits)
            signature = self.sign()
            self.assertEqual(len(signature.read_bytes()), bits // 8)
            run("openssl", "dgst", "-sha1", "-verify", self.public, "-signature", signature, self.file)
            self.verify(signature)

    def test_of_openssl_are_verified_by_us_and_are_the_same(self):
        for size in (1, 1000, 3_000_000):
            self.file.write_bytes(os.urandom(size))
            run("openssl", "dgst", "-sha1", "-sign", self.key, "-out", self.path("theirs"), self.file)
            self.verify(self.path("theirs"))
            self.assertEqual(self.sign().read_bytes(), self.path("theirs").read_bytes())

    def test_with_another_digest_are_not_verified(self):
        for digest in ("-sha256", "-md5", "-sha512"):
            run("openssl", "dgst", digest, "-sign", self.key, "-out", self.path("theirs"), self.file)
            self.verify(self.path("theirs"), status=1)

    def test_are_made_with_both_forms_of_keys(self):
        traditional = self.path("traditional.pem")
        run("openssl", "rsa", "-in", self.key, "-traditional", "-out", traditional)
        self.assertIn(b"BEGIN RSA PRIVATE KEY", traditional.read_bytes())
        self.assertEqual(self.sign().read_bytes(), self.sign(key=traditional).read_bytes())

    def test_that_are_wrong_are_status_1_without_a_word(self):
        signature = self.sign()
        right = signature.read_bytes()
        other_key, other_public = self.path("other.pem"), self.path("other-public.pem")
        self.make_key(other_key, other_public)
        self.verify(signature, status=1, key=other_public)
        self.verify(signature, status=1, file=self.write_file("other", b"other data"))
        self.verify(signature, status=1, file=self.write_file("empty", b""))
        self.verify(signature, status=1, file=signature)
        for wrong in (b"", right[:-1], bytes(len(right)), run("openssl", "base64", "-in", signature).stdout):
            self.verify(self.write_file("wrong", wrong), status=1)

    def test_are_not_verified_with_a_key_of_another_form(self):
        run("openssl", "rsa", "-in", self.key, "-RSAPublicKey_out", "-out", self.path("rsa.pem"))
        run("openssl", "rsa", "-in", self.key, "-pubout", "-outform", "DER", "-out", self.path("der"))
        run("openssl", "genpkey", "-algorithm", "EC", "-pkeyopt", "ec_paramgen_curve:P-256", "-out", self.path("ec.pem"))
        run("openssl", "pkey", "-in", self.path("ec.pem"), "-pubout", "-out", self.path("ec-public.pem"))
        signature = self.sign()
        for key in ("rsa.pem", "der", "ec-public.pem", "private.pem", "file", "signature"):
            self.verify(signature, status=1, key=self.path(key))

    def test_that_do_not_match_are_one_line_of_the_log_when_it_is_asked_for(self):
        signature = self.sign()
        _, _, told = self.answer("--log-level", "verbose", "verify", "--key", self.public, "--signature", signature, self.file)
        self.assertRegex(told.decode(), r"\A[^\n]*\(vrb\)[^\n]* Signature verified\n\Z")
        status, _, told = self.answer("--log-level", "error", "verify", "--key", self.public, "--signature", signature, signature)
        self.assertEqual(status, 1)
        self.assertRegex(told.decode(), r"\A[^\n]*\(ERR\)[^\n]* Signature verify failed \(error \d+, error:[^\n]*\)\n\Z")
        status, _, told = self.answer("--log-level", "verbose", "verify", "--key", self.file, "--signature", signature, self.file)
        self.assertEqual((status, told), (1, b""))

    def test_that_are_made_are_told_in_the_log_when_it_is_asked_for(self):
        _, _, told = self.answer("--log-level", "verbose", "sign", "--key", self.key, self.file, "--output", self.path("s"))
        self.assertEqual(re.search(r'Generated signature "<([0-9a-f ]+)>"', told.decode())[1].replace(" ", ""),
                         self.path("s").read_bytes().hex())

    def test_are_read_from_and_written_to_standard_streams(self):
        signature = self.sign()
        status, made, told = self.answer("sign", "--key", self.key, "-", "--output", "-", given=b"data\0\n")
        self.assertEqual((status, made, told), (0, signature.read_bytes(), b""))
        verify = ["verify", "--key", self.public, "--signature", signature, self.file]
        for place, given in ((2, self.public), (4, signature), (5, self.file)):
            arguments = verify[:place] + ["-"] + verify[place + 1:]
            self.assertEqual(self.answer(*arguments, given=given.read_bytes()), (0, b"", b""))
            self.assertEqual(self.answer(*arguments, given=b"x")[0], 1)
        with open(self.file, "rb") as half_read:
            half_read.seek(3)
            done = subprocess.run([TOOL, *verify[:5], "-"], stdin=half_read, timeout=60)
            self.assertEqual(done.returncode, 1)

    def test_a_named_pipe_is_read_to_its_end(self):
        signature, pipe = self.sign(), self.path("pipe")
        os.mkfifo(pipe)
        with subprocess.Popen([TOOL, "verify", "--key", self.public, "--signature", signature, pipe]) as tool:
            pipe.write_bytes(self.file.read_bytes())
            self.assertEqual(tool.wait(60), 0)

    def test_only_one_file_can_be_standard_input(self):
        for arguments in (["sign", "--key", "-", "-", "--output", "x"], ["verify", "--key", "-", "--signature", "-", "x"],
                          ["verify", "--key", "x", "--signature", "-", "-"]):
            self.assertIn("standard input", self.failure(*arguments, status=2))

    def test_options_that_are_missing_are_status_2(self):
        for arguments in (["sign", "x"], ["sign", "--key", "x", "y"], ["verify", "x"], ["verify", "--key", "x", "y"], ["unzip"],
                          ["verify", "--key", "x", "--signature", "y"], ["unzip", "a", "b"]):
            self.failure(*arguments, status=2)

    def test_a_file_that_cannot_be_read_is_named(self):
        signature, missing = self.sign(), self.path("missing")
        for arguments in (["verify", "--key", missing, "--signature", signature, self.file],
                          ["verify", "--key", self.public, "--signature", missing, self.file],
                          ["verify", "--key", self.public, "--signature", signature, missing],
                          ["sign", "--key", missing, self.file, "--output", self.path("s")],
                          ["sign", "--key", self.key, missing, "--output", self.path("s")]):
            self.assertEqual(self.failure(*arguments), f"quillmarkctl: {missing}: No such file or directory\n")
        self.assertIn(str(self.home), self.failure("verify", "--key", self.public, "--signature", signature, self.home))
        self.assertFalse(self.path("s").exists())

    def test_a_key_that_makes_none_is_named(self):
        run("openssl", "rsa", "-in", self.key, "-aes128", "-passout", "pass:secret", "-out", self.path("secret.pem"))
        run("openssl", "rsa", "-in", self.key, "-aes128", "-traditional", "-passout", "pass:secret", "-out", self.path("old.pem"))
        run("openssl", "genpkey", "-algorithm", "EC", "-pkeyopt", "ec_paramgen_curve:P-256", "-out", self.path("ec.pem"))
        for key in ("public.pem", "secret.pem", "old.pem", "ec.pem", "file"):
            told = self.failure("sign", "--key", self.path(key), self.file, "--output", self.path("s"))
            self.assertIn(str(self.path(key)), told)
        self.assertFalse(self.path("s").exists())

    def test_nobody_is_asked_for_a_pass_phrase_even_on_a_terminal(self):
        for options in ([], ["-traditional"]):
            run("openssl", "rsa", "-in", self.key, "-aes128", *options, "-passout", "pass:secret", "-out", self.path("secret.pem"))
            process, terminal = pty.fork()
            if process == 0:
                os.execv(TOOL, [TOOL, "sign", "--key", self.path("secret.pem"), self.file, "--output", self.path("s")])
            shown = b""
            try:
                while piece := os.read(terminal, 1000):
                    shown += piece
            except OSError:
                pass  # the other side of the terminal is closed
            os.close(terminal)
            self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(process, 0)[1]), 3)
            self.assertRegex(shown, rb"\Aquillmarkctl: [^\n]*secret.pem: [^\n]*\n\Z")

    def test_of_nothing_are_not_made(self):
        empty = self.write_file("empty", b"")
        self.assertIn("empty", self.failure("sign", "--key", self.key, empty, "--output", self.path("s")))

    def test_a_signature_that_cannot_be_written_is_named(self):
        for place in (self.path("no/such/folder"), "/dev/full"):
            self.assertIn(str(place), self.failure("sign", "--key", self.key, self.file, "--output", place))

    def test_a_file_that_is_shortened_meanwhile_is_named(self):
        signature = self.sign()
        with open(self.file, "r+b") as large:
            large.truncate(1 << 31)
            tool = subprocess.Popen([TOOL, "verify", "--key", self.public, "--signature", signature, self.file],
                                    stderr=subprocess.PIPE, text=True)
            # The digest takes seconds; it has begun once the file is mapped.
            while str(self.file) not in Path(f"/proc/{tool.pid}/maps").read_text():
                self.assertIsNone(tool.poll())
            large.truncate(1)
        _, told = tool.communicate(timeout=60)
        self.assertEqual((tool.returncode, told), (3, f"quillmarkctl: {self.file}: was shortened while it was read\n"))


class Archives(IntegrityTest):
    FILES = {"one.txt": b"1", "folder/two.txt": b"2" * 10000, "folder/inner/three": os.urandom(20000), "empty": b"",
             "Grüße 日本.txt": "ü".encode()}

    def setUp(self):
        super().setUp()
        self.archive = self.home / "in" / "archive.zip"
        self.archive.parent.mkdir()

    def tree(self, folder=None):
        folder = folder or self.archive.parent
        return {str(path.relative_to(folder)): path.read_bytes() for path in folder.rglob("*")
                if path.is_file() and path != self.archive}

    def make_files(self):
        source = self.home / "source"
        for name, contents in self.FILES.items():
            self.write_file(source / name, contents)
        (source / "no files").mkdir()
        return source

    def assert_extracted(self):
        self.assertEqual(self.plain("unzip", self.archive), "0")
        self.assertEqual(self.tree(), self.FILES)
        self.assertTrue((self.archive.parent / "no files").is_dir())

    def test_of_zip_are_extracted_beside_themselves(self):
        run("zip", "-qr", self.archive, ".", cwd=self.make_files())
        self.assert_extracted()

    def test_of_zip_without_compression_are_extracted(self):
        run("zip", "-qr0", self.archive, ".", cwd=self.make_files())
        self.assert_extracted()

    def test_of_zip_with_long_numbers_are_extracted(self):
        run("zip", "-qr", "-fz", self.archive, ".", cwd=self.make_files())
        self.assert_extracted()

    def test_of_bsdtar_are_extracted(self):
        run("bsdtar", "--format", "zip", "-cf", self.archive, "-C", self.make_files(), ".")
        self.assert_extracted()

    def test_of_python_are_extracted(self):
        source = self.make_files()
        with zipfile.ZipFile(self.archive, "w", zipfile.ZIP_DEFLATED) as writer:
            for path in sorted(source.rglob("*")):
                writer.write(path, path.relative_to(source))
        self.assert_extracted()

    def test_written_as_a_stream_are_extracted(self):
        with open(self.archive, "wb") as stream:
            subprocess.run(["sh", "-c", "zip -qr - . | cat"], cwd=self.make_files(), stdout=stream, check=True, timeout=60)
        self.assert_extracted()

    def test_named_without_a_folder_are_extracted_in_the_current_one(self):
        run("zip", "-qr", self.archive, ".", cwd=self.make_files())
        self.assertEqual(self.answer("unzip", "archive.zip", cwd=self.archive.parent), (0, b"0\n", b""))
        self.assertEqual(self.tree(), self.FILES)

    def test_with_methods_that_are_too_new_end_there_and_are_deliberately_status_0(self):
        with zipfile.ZipFile(self.archive, "w") as writer:
            writer.writestr("first", b"1")
            writer.writestr(zipfile.ZipInfo("second"), b"2" * 1000, zipfile.ZIP_LZMA)
            writer.writestr("third", b"3")
        self.assertEqual(self.plain("unzip", self.archive), "0")
        self.assertEqual(self.tree(), {"first": b"1"})

    def test_with_a_pass_phrase_are_not_decrypted(self):
        run("zip", "-qr", "-P", "secret", self.archive, "folder", cwd=self.make_files())
        self.assertEqual(self.plain("unzip", self.archive), "0")
        for name, contents in self.tree().items():
            self.assertNotEqual(contents, self.FILES[name])

    def test_links_in_archives_become_files(self):
        os.symlink("../outside", self.home / "link")
        run("zip", "-qy", self.archive, "link", cwd=self.home)
        self.assertEqual(self.plain("unzip", self.archive), "0")
        self.assertEqual(self.tree(), {"link": b"../outside"})
        self.assertFalse((self.archive.parent / "link").is_symlink())

    def test_that_would_leave_their_folder_are_stopped(self):
        outside = self.write_file("outside/file", b"untouched")
        os.symlink("../outside", self.archive.parent / "way")
        before = self.tree(self.home)
        for name in ("../outside/file", "../new", str(outside), "way/file", "way/new", "way", "a/../../new", "..\\new", "C:\\new"):
            with zipfile.ZipFile(self.archive, "w") as writer:
                writer.writestr(zipfile.ZipInfo(name), b"hostile")
                writer.writestr("after", b"x")
            self.assertEqual(self.plain("unzip", self.archive), "0")
            self.archive.unlink()
            self.assertEqual(self.tree(self.home), before, name)

    def test_with_files_before_their_folders_deliberately_get_folders_in_their_place(self):
        with zipfile.ZipFile(self.archive, "w") as writer:
            writer.writestr("folder/file", b"lost")
        self.assertEqual(self.plain("unzip", self.archive), "0")
        self.assertTrue((self.archive.parent / "folder/file").is_dir())

    def test_that_are_none_tell_their_status_and_are_named(self):
        not_one = self.write_file("in/text", b"text")
        for path, why in ((self.home / "missing", "No such file or directory"), (not_one, "is no ZIP archive"),
                          (self.archive.parent, "file to open is a directory")):
            status, printed, told = self.answer("unzip", path)
            self.assertEqual((status, printed, told.decode()), (3, b"-102\n", f"quillmarkctl: {path}: {why}\n"))

    def test_standard_input_lies_in_no_folder(self):
        self.assertIn("standard input", self.failure("unzip", "-"))

    def test_a_disk_that_is_full_ends_the_walk_and_is_deliberately_status_0(self):
        with zipfile.ZipFile(self.archive, "w", zipfile.ZIP_DEFLATED) as writer:
            writer.writestr("large", bytes(1 << 20))
            writer.writestr("after", b"x")
        disk = self.home / "disk"
        disk.mkdir()
        script = 'mount -t tmpfs -o size=128k none "$1" && cp "$2" "$1" && "$3" unzip "$1/archive.zip" && ls "$1"'
        command = ["unshare", "--mount", "--map-root-user", "sh", "-c", script, "sh", disk, self.archive, TOOL]
        done = subprocess.run(command, capture_output=True, text=True, timeout=60)
        if "unshare" in done.stderr or "mount" in done.stderr:
            print("no disk of its own can be made here:", done.stderr, flush=True)
            os._exit(77)  # counts as skipped; every test is a process of its own
        self.assertEqual(done.stdout, "0\narchive.zip\nlarge\n", done.stderr)
