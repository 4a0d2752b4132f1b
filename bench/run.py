"""Runs the benchmarks of a build folder and writes its bench/report.md.

    python3 bench/run.py BUILD_FOLDER REPORT

Every figure is a median over many runs in which the sides take turns, since machines are shared and noisy. It is meant
to be the first process of a process table of its own, where no core runs and the number of processes is known.
"""

import contextlib
import json
import os
import pathlib
import plistlib
import random
import shutil
import statistics
import subprocess
import sys
import tempfile
import unittest
import zipfile

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "tests/support"))
from keyring import Session  # noqa: E402

PAIRS = 100
NEIGHBOURS = 100  # idle processes beside the start, as on a quiet desktop
STARTERS = ("floor", "ours")  # the programs that start a core
UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}

# What must hold: a row's name, the side that ours is measured against (the floor, the program's peer, or another peer by
# its name), and the most that the ratio may be. A number of nanoseconds stands where the target is one, None where there
# is none.
IN_PROCESS = {
    "bench_log": [
        ("log line, constant text", "constant line", "peer", 0.6),
        ("log line with arguments", "line with arguments", "peer", 1.0),
        ("log call below the threshold", "unwanted line", "ns", 3),
    ],
    "bench_property_list": [
        ("property list, XML, 20 items", "XML of 20 items/20", "peer", 1.0),
        ("property list, XML, 10,000 items", "XML of 10,000 items/10000", "peer", 1.0),
        ("property list, binary, 20 items", "binary of 20 items/20", "peer", 1.0),
        ("property list, binary, 10,000 items", "binary of 10,000 items/10000", "peer", 1.0),
    ],
    "bench_bundle_search": [("bundle search, 300 applications in 3,000 folders", "bundle search", "peer", 1.1)],
    "bench_condition": [("condition lock, to another thread and back", "condition", "peer", 1.15)],
    "bench_evaluation": [
        ("evaluate 10 components", "components/10", "floor", 2.5),
        ("evaluate 100 components", "components/100", "floor", 2.5),
        ("evaluate 1,000 components", "components/1000", "floor", 2.5),
        ("evaluate 10,000 components", "components/10000", "floor", 2.5),
        ("evaluate 10 tools, which are run", "tools/10", "floor", 1.2),
    ],
    "bench_header": [
        ("one drawing of the header, own brand", "header/1", "floor", None),
        ("one drawing of the header, another brand", "header/7", "floor", None),
    ],
    "bench_signature": [
        ("verify a signature over 1 KB", "verify/1024", "peer", 0.9),
        ("verify a signature over 1 MB", "verify/1048576", "peer", 0.9),
        ("verify a signature over 256 MB", "verify/268435456", "peer", 0.9),
    ],
    "bench_json": [
        ("JSON, encode 5 members", "JSON encode/5", "peer", 0.5),
        ("JSON, encode 10,000 members", "JSON encode/10000", "peer", 0.4),
        ("JSON, encode 100,000 members", "JSON encode/100000", "peer", None),
        ("JSON, decode 5 members", "JSON decode/5", "peer", 0.5),
        ("JSON, decode 10,000 members", "JSON decode/10000", "peer", 0.4),
        ("JSON, decode 100,000 members", "JSON decode/100000", "peer", None),
        ("JSON, encode 5 members", "JSON encode/5", "RapidJSON", None),
        ("JSON, encode 10,000 members", "JSON encode/10000", "RapidJSON", 2.0),
        ("JSON, decode 5 members, no dictionary there", "JSON decode/5", "QJsonObject", None),
        ("JSON, decode 10,000 members, no dictionary there", "JSON decode/10000", "QJsonObject", None),
        ("JSON, decode 5 members, no dictionary there", "JSON decode/5", "RapidJSON", 2.0),
        ("JSON, decode 10,000 members, no dictionary there", "JSON decode/10000", "RapidJSON", 2.0),
    ],
    "bench_task_runner": [
        ("task runner, a program that only ends", "short run", "floor", 1.5),
        ("task runner, 100 MB of output", "100 MB", "floor", 1.5),
    ],
    "bench_users": [
        ("get a setting of one of 10,000 users", "get/10000", "ns", 2000),
        ("set a setting of one of 1,000 users", "set/1000", "floor", None),
        ("set a setting of one of 10,000 users", "set/10000", "floor", None),
        ("rename one of 10,000 users", "rename/10000", "floor", None),
    ],
}
PEERS = {"bench_log": "spdlog", "bench_property_list": "libplist", "bench_bundle_search": "fts",
         "bench_condition": "std::condition_variable", "bench_evaluation": "", "bench_header": "", "bench_task_runner": "",
         "bench_users": "", "bench_signature": "the openssl program", "bench_json": "QJsonDocument"}
START = ("start to core launch, nothing to repair, 1 tool", "floor", 1.05)
START_TOOLS = ("start to core launch, nothing to repair, 3 tools", "floor", 1.05)
START_CROWDED = ("the same, with three times the number of running processes", "floor", 1.05)
START_ALONE = ("start to core launch, less the questions to the process table", "floor", 1.8)
WINDOW = ("start to check window shown, a component missing", "floor", 1.5)
MEMORY = ("peak memory, nothing to repair", "floor", 1.4)


def duration(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def kilobytes(amount):
    return f"{amount / 1024:.1f} MiB"


class Report:
    def __init__(self):
        self.rows = []

    def add(self, path, sides, against, limit, form=duration, peer_name=""):
        """sides: the figures of "floor", "peer" and "ours"."""
        if against == "ns":
            ratio, target, is_met = "–", f"≤ {limit} ns", sides["ours"] <= limit
        else:
            factor = sides["ours"] / sides[against]
            ratio, target, is_met = f"{factor:.2f} × {against}", f"≤ {limit} × {against}", factor <= limit
        target += ", met" if is_met else ", missed"
        cells = [form(sides[side]) if side in sides else "–" for side in ("floor", "peer", "ours")]
        if "peer" in sides:
            cells[1] += f" ({peer_name})"
        self.rows.append([path, *cells, ratio, target])

    def add_without_target(self, path, floor, ours, form=duration):
        self.rows.append([path, form(floor), "–", form(ours), f"{ours / floor:.2f} × floor", "–"])

    def add_peer_without_target(self, path, peer, peer_name, ours):
        self.rows.append([path, "–", f"{duration(peer)} ({peer_name})", duration(ours), f"{ours / peer:.2f} × peer", "–"])

    def add_missing(self, path, reason):
        self.rows.append([path, "–", "–", "–", "–", reason])

    def text(self):
        lines = [["path", "floor", "peer", "ours", "ratio", "target"], ["---"] * 6, *self.rows]
        return "".join(f"| {' | '.join(cells)} |\n" for cells in lines)


def medians(program, environment=None):
    """The median time of every benchmark of the program, in nanoseconds. Their repetitions take turns."""
    with tempfile.NamedTemporaryFile(suffix=".json") as results:
        subprocess.run([program, "--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=15",
                        "--benchmark_min_time=0.05", f"--benchmark_out={results.name}"],
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True, env=environment)
        benchmarks = json.load(results)["benchmarks"]
    times = {}
    for run in benchmarks:
        if run.get("run_type") == "iteration" and not run.get("error_occurred"):
            # A fixed number of runs becomes part of the name.
            name = run["run_name"].partition("/iterations:")[0]
            # What waits for others is measured by the clock on the wall.
            subject = name.removesuffix("/real_time")
            time = run["real_time" if "/real_time" in run["run_name"] else "cpu_time"]
            times.setdefault(subject, []).append(time * UNITS[run["time_unit"]])
    return {name: statistics.median(runs) for name, runs in times.items()}


def side_of(times, name, side):
    """The side stands before the argument: "XML of 20 items/ours/20"."""
    subject, _, argument = name.partition("/")
    return times.get(f"{subject}/{side}" + (f"/{argument}" if argument else ""))


def measure_in_process(folder, report):
    for program, rows in IN_PROCESS.items():
        print(f"bench: {program}", flush=True)
        times = medians(folder / "bench" / program)
        for path, name, against, limit in rows:
            sides = {side: side_of(times, name, side) for side in {"floor", "peer", "ours", against}}
            sides = {side: time for side, time in sides.items() if time is not None}
            if limit is None and sides.keys() >= {"floor", "ours"}:
                report.add_without_target(path, sides["floor"], sides["ours"])
            elif limit is None and sides.keys() >= {against, "ours"}:
                peer_name = PEERS[program] if against == "peer" else against
                report.add_peer_without_target(path, sides[against], peer_name, sides["ours"])
            elif "ours" in sides and (against == "ns" or against in sides):
                report.add(path, sides, against, limit, peer_name=PEERS[program])
            else:
                report.add_missing(path, "no result")


def measure_keychain(folder, report, scratch):
    print("bench: bench_keychain", flush=True)
    owner = unittest.TestCase()  # of what is started
    try:
        session = Session(owner, scratch)
        session.start_keyring()
        times = medians(folder / "bench/bench_keychain", session.environment)
    finally:
        owner.doCleanups()
    peer, ours = (side_of(times, "keychain read", side) for side in ("peer", "ours"))
    report.add_peer_without_target("read one secret from the keyring", peer, "libsecret", ours)


class Processes:
    """Whole programs, each in a home folder of its own on the memory disk."""

    def __init__(self, folder, scratch):
        self.bench = folder / "bench"
        self.scratch = scratch
        self.bundle = scratch / "Applications/Quillmark.app"  # where it offers no move
        shutil.copytree(folder / "Quillmark.app", self.bundle, symlinks=True)
        # Every side asks the process table with the same programs: those that the launcher brings.
        self.path = f"{self.bundle}/Contents/Helpers:{os.environ['PATH']}"
        core = self.bundle / "Contents/Resources/QuillmarkCore.app/Contents/MacOS/QuillmarkCore"
        shutil.copy(self.bench / "bench_core_that_ends", core)
        # Tools of the catalogue that are in order; they belong to root, for that is who measures.
        self.tools = [scratch / f"tool{number}" for number in range(3)]
        for tool in self.tools:
            shutil.copy(self.bundle / "Contents/Resources/finderoverlaytool", tool)
            tool.chmod(0o755)

    def require_tools(self, count):
        """Gives the bundle a catalogue of so many tools. \returns them."""
        items = [{"Type": "QMTool", "Name": tool.name, "InstallPath": str(tool)} for tool in self.tools[:count]]
        (self.bundle / "Contents/Resources/RequiredItems.plist").write_bytes(plistlib.dumps({"RequiredItems": items}))
        return self.tools[:count]

    def once(self, name, command):
        """Nanoseconds and kilobytes of one run. What has the bundle to start a core from must have started one."""
        home = self.scratch / name
        home.mkdir(exist_ok=True)
        environment = {"HOME": str(home), "PATH": self.path, "LANG": "en_US.UTF-8"}
        answer = subprocess.run([self.bench / "bench_measure", *command], env=environment, cwd=home, check=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        time, size, cores = map(int, answer.stdout.split())
        wanted = 1 if name in STARTERS else 0
        if cores != wanted:
            told = answer.stderr.strip() or "it told nothing"
            sys.exit(f'bench: a run of "{name}" started {cores} cores, not {wanted}: {told}')
        return time, size

    @contextlib.contextmanager
    def neighbours(self, count):
        """So many idle processes."""
        with contextlib.ExitStack() as stack:
            for _ in range(count):
                process = stack.enter_context(subprocess.Popen(["sleep", "infinity"]))
                stack.callback(process.kill)
            yield

    def alternate(self, neighbours, commands):
        """The medians of each command's time and size, beside so many idle processes; the commands take turns."""
        runs = {name: [] for name in commands}
        with self.neighbours(neighbours):
            for _ in range(PAIRS):
                for name, command in commands.items():
                    runs[name].append(self.once(name, command))
        return {name: tuple(map(statistics.median, zip(*results))) for name, results in runs.items()}

    def measure(self, report):
        print("bench: the launcher", flush=True)
        ours = [self.bundle / "Contents/MacOS/Quillmark"]
        for row, tools, neighbours in ((START, 1, NEIGHBOURS), (START_TOOLS, 3, NEIGHBOURS),
                                       (START_CROWDED, 3, 3 * NEIGHBOURS)):
            floor = [self.bench / "bench_start_floor", self.bundle, *self.require_tools(tools)]
            figures = self.alternate(neighbours, {"floor": floor, "ours": ours})
            report.add(row[0], {side: figures[side][0] for side in STARTERS}, row[1], row[2])
        # Without neighbours, for a small figure can't be told from the difference of two large ones.
        self.require_tools(0)
        starters = {"floor": [self.bench / "bench_start_floor", self.bundle], "ours": ours}
        figures = self.alternate(0, starters | {"pipelines": [self.bench / "bench_start_floor"],
                                                "bare": [self.bench / "bench_bare_cpp"],
                                                "nothing": [self.bench / "bench_core_that_ends"]})
        # What asks has a start and an end of its own, which the others need as well.
        pipelines = figures["pipelines"][0] - figures["nothing"][0]
        floor, ours = figures["floor"][0] - pipelines, figures["ours"][0] - pipelines
        report.add(START_ALONE[0], {"floor": floor, "ours": ours}, START_ALONE[1], START_ALONE[2])
        report.add(MEMORY[0], {"floor": figures["bare"][1], "ours": figures["ours"][1]}, MEMORY[1], MEMORY[2], kilobytes)


class Windows:
    """Programs that show a window, on a display of their own; beside them the questions that the launcher has to ask."""

    ROUNDS = 40

    def __init__(self, processes):
        self.processes = processes
        self.floor = processes.bench / "bench_start_floor"
        self.bare = processes.bench / "bench_bare_qt_widgets"
        self.seen = processes.bench / "bench_window_shown"

    def shown(self, program, display):
        """Nanoseconds and kilobytes until a window is there."""
        home = self.processes.scratch / "windows"
        home.mkdir(mode=0o700, exist_ok=True)
        environment = {"HOME": str(home), "XDG_RUNTIME_DIR": str(home), "PATH": self.processes.path,
                       "LANG": "en_US.UTF-8", "DISPLAY": display, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}
        answer = subprocess.run([self.seen, program], env=environment, cwd=home, check=True, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, text=True)
        return tuple(map(int, answer.stdout.split()))

    def measure(self, report):
        print("bench: the check window", flush=True)
        processes = self.processes
        launcher = processes.bundle / "Contents/MacOS/Quillmark"
        tool = processes.require_tools(1)[0]
        runs = {name: [] for name in ("floor", "peer", "ours", "bare")}
        reading, writing = os.pipe()
        with subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1024x768x24", "-nolisten", "tcp",
                               "-noreset"], pass_fds=[writing], stderr=subprocess.DEVNULL) as server:
            os.close(writing)
            with os.fdopen(reading) as number:
                display = ":" + number.readline().strip()
            with processes.neighbours(NEIGHBOURS):
                for _ in range(self.ROUNDS):
                    # What a look at the path alone can't tell is found out by the evaluation, after the questions.
                    tool.chmod(0o700)
                    runs["peer"].append(self.shown(launcher, display))
                    tool.rename(tool.with_suffix(".away"))
                    runs["ours"].append(self.shown(launcher, display))
                    tool.with_suffix(".away").rename(tool)
                    tool.chmod(0o755)
                    runs["floor"].append(processes.once("floor", [self.floor, processes.bundle, tool]))
                    runs["bare"].append(self.shown(self.bare, display))
            server.kill()
        figures = {name: tuple(map(statistics.median, zip(*results))) for name, results in runs.items()}
        report.add(WINDOW[0], {side: figures[side][0] for side in ("floor", "peer", "ours")}, WINDOW[1], WINDOW[2],
                   peer_name="the window after the checks")
        report.add_without_target("the same, beside an empty Qt window without any check", figures["bare"][0],
                                  figures["ours"][0])
        report.add_without_target("peak memory until the check window is shown, beside an empty Qt window",
                                  figures["bare"][1], figures["ours"][1], kilobytes)


class Archives:
    """Whole programs that unpack an archive beside itself; what they leave is removed before the next one's turn."""

    ROUNDS = 15

    def __init__(self, folder, scratch):
        self.scratch = scratch
        self.measure_program = folder / "bench/bench_measure"
        self.floor = folder / "bench/bench_inflate_floor"
        self.tool = folder / "Quillmark.app/Contents/MacOS/quillmarkctl"
        numbers = random.Random(1)
        self.words = [bytes(numbers.choices(range(97, 123), k=numbers.randint(2, 9))) for _ in range(3000)]
        self.numbers = numbers

    def text(self, length):
        return b" ".join(self.numbers.choices(self.words, k=length // 3))[:length]

    def large(self, writer):
        block = self.text(1 << 20) + self.numbers.randbytes(1 << 19)
        writer.writestr("large", (block * 140)[:200 << 20])

    def small(self, writer):
        for folder in range(50):
            writer.writestr(f"folder{folder}/", b"")
            for number in range(100):
                writer.writestr(f"folder{folder}/file{number}", self.text(self.numbers.randint(200, 6000)))

    def once(self, place, command):
        for path in place.iterdir():
            if path.is_dir():
                shutil.rmtree(path)
            elif path.name != "archive.zip":
                path.unlink()
        answer = subprocess.run([self.measure_program, *command], cwd=place, check=True, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        return int(answer.stdout.split()[0])

    def measure(self, report):
        print("bench: archives", flush=True)
        for what, fill, limits in (("one file of 200 MB", self.large, {"bsdtar": 1.2}),
                                   ("5,000 small files", self.small, {"bsdtar": 0.7, "unzip": 0.65})):
            place = self.scratch / "archive"
            place.mkdir()
            with zipfile.ZipFile(place / "archive.zip", "w", zipfile.ZIP_DEFLATED) as writer:
                fill(writer)
            commands = {"floor": [self.floor, "archive.zip"], "ours": [self.tool, "unzip", "archive.zip"],
                        "bsdtar": [shutil.which("bsdtar"), "-xf", "archive.zip"],
                        "unzip": [shutil.which("unzip"), "-oq", "archive.zip"]}
            runs = {name: [] for name in commands}
            for _ in range(self.ROUNDS):
                for name, command in commands.items():
                    runs[name].append(self.once(place, command))
            times = {name: statistics.median(results) for name, results in runs.items()}
            for peer, limit in limits.items():
                report.add(f"unpack {what}", {"floor": times["floor"], "peer": times[peer], "ours": times["ours"]}, "peer",
                           limit, peer_name=peer)
            shutil.rmtree(place)


class Copies:
    """Whole programs that copy a large bundle beside itself; each copy is removed before the next one's turn."""

    ROUNDS = 9
    FILES, SIZE = 10_000, 500 << 20
    LARGE = 20  # files that hold half of the bytes; the sizes of the others differ widely, as in any bundle

    def __init__(self, folder, scratch):
        self.bundle, self.copy = scratch / "Large.app", scratch / "Copy.app"
        self.programs = {"peer": [shutil.which("cp"), "-pR"], "ours": [folder / "bench/bench_copy_item"]}
        self.measure_program = folder / "bench/bench_measure"

    def fill(self):
        numbers = random.Random(1)
        shares = [numbers.lognormvariate(0, 1.5) for _ in range(self.FILES - self.LARGE)]
        sizes = [int(share / sum(shares) * self.SIZE / 2) for share in shares]
        contents = numbers.randbytes(self.SIZE // 2 // self.LARGE)
        for number, size in enumerate(sizes + [len(contents)] * self.LARGE):
            place = self.bundle / f"Contents/Resources/{number % 40}/{number % 200}"
            place.mkdir(parents=True, exist_ok=True)
            (place / str(number)).write_bytes(contents[:size])

    def once(self, program):
        answer = subprocess.run([self.measure_program, *self.programs[program], self.bundle, self.copy], check=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)
        shutil.rmtree(self.copy)
        return int(answer.stdout.split()[0])

    def measure(self, report):
        print("bench: copies", flush=True)
        self.fill()
        runs = {program: [] for program in self.programs}
        for _ in range(self.ROUNDS):
            for program, times in runs.items():
                times.append(self.once(program))
        shutil.rmtree(self.bundle)
        report.add("copy a bundle of 500 MB and 10,000 files", {name: statistics.median(times) for name, times in runs.items()},
                   "peer", 1.1, peer_name="cp -pR")


def main(folder, report_file):
    report = Report()
    # The memory disk, where there is one: the disk's own time is nobody's subject here.
    memory_disk = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="quillmark-bench-", dir=memory_disk) as scratch:
        os.environ["TMPDIR"] = scratch
        tempfile.tempdir = None
        processes = Processes(folder, pathlib.Path(scratch))
        processes.measure(report)
        Windows(processes).measure(report)
        Archives(folder, pathlib.Path(scratch)).measure(report)
        Copies(folder, pathlib.Path(scratch)).measure(report)
        measure_in_process(folder, report)
        measure_keychain(folder, report, pathlib.Path(scratch))
    report_file.parent.mkdir(parents=True, exist_ok=True)
    report_file.write_text(report.text(), encoding="utf-8")
    print(report.text(), end="")


main(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]))
