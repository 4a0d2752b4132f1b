"""The components that are installed outside the bundle: the tools that install them, and payloads to try them with."""

import gzip
import os
import plistlib
import stat
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from machine import APP, RESOURCES, start

TOOLS = Path("/Library/Application Support/Quillmark")
UPDATE_TOOL = TOOLS / "updateqm"
OVERLAY_TOOL = TOOLS / "finderoverlaytool"
FILE_SYSTEM = Path("/Library/Filesystems/QuillmarkFS.fs")
FRAMEWORK = Path("/Library/Frameworks/QuillmarkRuntime.framework")
PLUGIN = Path("/Library/Contextual Menu Items/QuillmarkCM.plugin")
OVERLAY = TOOLS / "QuillmarkOverlay.bundle"
LOCK = Path("/run/quillmark-updateqm.lock")  # the update tool's: one run at a time
VENDOR_KEY = Path("/run/vendor-key.pem")
RELEASE = b"1.14.4.1303"
OLDER, NEWER = "1.14.3.1303", "1.14.5.1303"

# Exit statuses of the update tool.
WRONG_COMMAND_LINE, NOT_ADMINISTRATOR, UNREADABLE_PAYLOAD, WRONG_SIGNATURE, WRONG_PAYLOAD = 64, 65, 66, 67, 68
OLD_PAYLOAD, WRONG_PLACE, UNSAFE_PLACE, DAMAGED_PAYLOAD, CANNOT_WRITE, BUSY = 69, 70, 71, 72, 73, 74


def resource(name):
    return RESOURCES / name


def signed(name):
    """\\returns the resource and its signature."""
    return resource(name), resource(f"{name}.sig")


def sign(path, key=VENDOR_KEY):
    """Signs a file, in the vendor's place unless another key is given, and lets everybody read it. \\returns the signature's
    path."""
    path.chmod(path.stat().st_mode | 0o444)
    signature = Path(f"{path}.sig")
    subprocess.run(["openssl", "dgst", "-sha1", "-sign", key, "-out", signature, path], check=True)
    return signature


def foreign_key():
    """Somebody else's private key."""
    key = Path("/tmp/foreign.pem")
    if not key.exists():
        subprocess.run(["openssl", "genrsa", "-out", key, "2048"], check=True, capture_output=True)
    return key


def make_package(path, tree, location="/Library/Filesystems", description=None, contents=None):
    """A flat package of what is in the folder `tree`, or of ready contents, signed by the vendor."""
    parts = Path("/tmp/package-parts")
    parts.mkdir(exist_ok=True)
    (parts / "PackageInfo").write_text(description if description is not None else
                                       f'<pkg-info install-location="{location}" identifier="x" version="1"/>')
    if contents is None:
        subprocess.run(["bsdtar", "--format=odc", "--gzip", "-cf", parts / "Payload", "-C", tree, "."], check=True)
    else:
        (parts / "Payload").write_bytes(contents)
    subprocess.run(["bsdtar", "--format=xar", "-cf", path, "-C", parts, "PackageInfo", "Payload"], check=True)
    sign(path)
    return path


def archive_with(name):
    """The contents of a package that is one file of that name, which packers would not write."""
    def member(name, mode, contents):
        fields = (1, 1, mode, 0, 0, 1, 0)
        path = name.encode() + b"\0"
        return ("070707" + "".join(f"{field:06o}" for field in fields) + f"{0:011o}{len(path):06o}{len(contents):011o}"
                ).encode() + path + contents
    return gzip.compress(member(name, 0o100644, b"x") + member("TRAILER!!!", 0, b""))


def make_bundle(folder, name, version="1.14.4", build="1303"):
    """A small bundle in a folder of its own. \\returns that folder."""
    information = folder / name / "Contents/Info.plist"
    information.parent.mkdir(parents=True)
    information.write_bytes(plistlib.dumps({"CFBundleShortVersionString": version, "CFBundleVersion": build}))
    return folder


def of_release(name, version, folder):
    """The tool as another release has it, signed by the vendor. \\returns it and its signature."""
    tool = folder / name
    contents = resource(name).read_bytes()
    tool.write_bytes(contents.replace(RELEASE, version.encode()))
    tool.chmod(0o755)
    return tool, sign(tool)


def fingerprint(folder=Path("/Library")):
    """Everything below the folder: kind, owner, mode and contents by path."""
    found = {}
    for path in sorted(folder.rglob("*")):
        status = path.lstat()
        if path.is_symlink():
            contents = os.readlink(path)
        else:
            contents = path.read_bytes() if path.is_file() else None
        found[str(path)] = (stat.filemode(status.st_mode), status.st_uid, status.st_gid, contents)
    return found


class UpdateToolTest(unittest.TestCase):
    """Runs the update tool as the ordinary user, and as root to prepare things."""

    maxDiff = 2000

    def run_tool(self, *arguments, program=UPDATE_TOOL, **options):
        """\\returns the exit status and the standard error."""
        process = start(program, *arguments, **options)
        self.output, err = process.communicate(timeout=60)
        return process.returncode, err

    def assert_done(self, *arguments, **options):
        self.assertEqual(self.run_tool(*arguments, **options), (0, ""))

    def assert_refused(self, status, *arguments, words=(), **options):
        """The tool says why in one line, and everything is as it was."""
        before = fingerprint()
        result, err = self.run_tool(*arguments, **options)
        self.assertEqual(result, status, err)
        self.assertRegex(err, r"\Aupdateqm: [^\n]+\n\Z")
        for word in words:
            self.assertIn(str(word), err)
        after = fingerprint()
        self.assertEqual(before.keys(), after.keys())
        self.assertEqual({path for path in before if before[path] != after[path]}, set())

    def assert_refused_to_root(self, status, *command, folder=Path("/Library")):
        """The administrator's own command changes nothing in the folder either."""
        before = fingerprint(folder)
        result = subprocess.run(command, capture_output=True, text=True)
        self.assertEqual((result.returncode, fingerprint(folder)), (status, before), result.stderr)

    def assert_is_tool(self, path, mode):
        status = path.lstat()
        self.assertEqual((stat.S_IFMT(status.st_mode), stat.S_IMODE(status.st_mode), status.st_uid, status.st_gid),
                         (stat.S_IFREG, mode, 0, 0))
        self.assertEqual(path.read_bytes(), resource(path.name).read_bytes())
        self.assertEqual(Path(f"{path}.sig").read_bytes(), resource(f"{path.name}.sig").read_bytes())


class AttackTest(UpdateToolTest):
    """`self.folder` is one for what a test prepares; everybody may look into it."""

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp())
        self.folder.chmod(0o755)

    def copy_of(self, name):
        """A resource that can be tampered with. \\returns it and its signature."""
        for file in (name, f"{name}.sig"):
            shutil.copy(resource(file), self.folder / file)
        return self.folder / name, self.folder / f"{name}.sig"

    def client_package(self, build="1400", name=APP.name, version="1.14.4"):
        """The whole client of that build. \\returns the package and its signature."""
        tree = make_bundle(self.folder / "client", name, version, build)
        package = make_package(self.folder / "client.pkg", tree, "/Applications")
        return package, sign(package)
