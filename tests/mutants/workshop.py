"""A copy of the project in which changes are tried: built by a preset of its own, with tests that are run as CTest would.

The copy lies below build/ and is brought up to date when it is opened; the project's own files are only read.
"""
import dataclasses
import fnmatch
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import time

from nearby import Transcripts

LEFT_OUT = {"build", ".git", ".cache", "__pycache__", "findings-*"}
LEAST_PATIENCE = 10  # seconds
PATIENCE = 8  # times as long as the unchanged program took
UNCHANGED_PATIENCE = 1800  # seconds
BUILD_PATIENCE = 1800  # seconds
MEMORY = 8 << 30
FILE = 2 << 30
RUNNING = set()  # processes that were started and not waited for yet
SUITE = re.compile(r"^\s*(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+)\s*,", re.MULTILINE)
INSTANCES = re.compile(r"^\s*INSTANTIATE_TEST_SUITE_P\(\s*\w+\s*,\s*(\w+)", re.MULTILINE)


@dataclasses.dataclass(frozen=True)
class Test:
    """One command; of a test program the cases of one folder, or all of them."""

    name: str
    folder: str = ""

    def __str__(self):
        return f"{self.name} ({self.folder})" if self.folder else self.name


def files_below(root):
    for path in sorted(root.iterdir()):
        if any(fnmatch.fnmatch(path.name, pattern) for pattern in LEFT_OUT):
            continue
        if path.is_dir() and not path.is_symlink():
            yield from files_below(path)
        else:
            yield path


def bring_up_to_date(root, copy):
    """Files that are the same keep their time, so that nothing is built in vain."""
    wanted = set()
    for path in files_below(root):
        target = copy / path.relative_to(root)
        wanted.add(target)
        if target.is_file() and target.read_bytes() == path.read_bytes():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(path, target)
    for path in list(files_below(copy)) if copy.is_dir() else []:
        if path not in wanted:
            path.unlink()


def bounded():
    """A changed loop may ask for all there is."""
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE, FILE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def end_what_runs():
    """For whoever is stopped: what was started would go on, perhaps for ever."""
    for process in list(RUNNING):
        os.killpg(process, signal.SIGKILL)


def status_of(command, folder, environment, patience, log):
    """The command's exit status; none when it took longer than that. Ends what it started with it."""
    with open(log, "ab") as output:
        process = subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=bounded)
    RUNNING.add(process.pid)
    until = time.monotonic() + patience
    ended = None
    # Looked at without being taken, so that its number stays its own until its session is ended, too.
    while ended is None and time.monotonic() < until:
        time.sleep(0.01)
        ended = os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOHANG | os.WNOWAIT)
    os.killpg(process.pid, signal.SIGKILL)
    RUNNING.discard(process.pid)
    status = process.wait()
    return status if ended else None


class Workshop:
    def __init__(self, root, number):
        self.root = pathlib.Path(root)
        self.home = self.root / "build" / "mutants" / str(number)
        self.copy = self.home / "project"
        self.build = self.copy / "build" / "mutants"
        self.scratch = self.home / "scratch"
        self.log = self.home / "log"
        self.tests = {}
        self.normal = {}  # seconds that a test took on what is unchanged
        self.learned = set()  # the stages whose tests are in there
        self.home.mkdir(parents=True, exist_ok=True)
        self.log.write_bytes(b"")
        bring_up_to_date(self.root, self.copy)
        self._run(["cmake", "--preset", "mutants"], self.copy)

    def write(self, file, text):
        """What is the same keeps its time."""
        path = self.copy / file
        if path.read_text(encoding="utf-8") != text:
            path.write_text(text, encoding="utf-8")

    def builds(self, stage):
        """Whether what the stage needs can be built."""
        targets = ["orlocal", "Orlocal"] if isinstance(stage, Transcripts) else [name.partition(":")[0] for name in stage.names]
        command = ["cmake", "--build", str(self.build), "--target", *targets, "--", "--quiet"]
        return status_of(command, self.copy, dict(os.environ), BUILD_PATIENCE, self.log) == 0

    def tests_of(self, stage):
        if isinstance(stage, Transcripts):
            top = self.copy / "tests" / "transcripts"
            files = [path.relative_to(top).with_suffix("") for pattern in stage.patterns for path in sorted(top.glob(pattern))]
            return [Test("transcript_" + "_".join(file.parts)) for file in files]
        return [Test(name, folder) for name, _, folder in (name.partition(":") for name in stage.names)]

    def learn(self, stage):
        """Builds what the stage needs of the unchanged project, and notes how long its tests take; once."""
        if stage in self.learned:
            return
        if not self.builds(stage):
            raise RuntimeError(f"the unchanged project does not build; see {self.log}")
        # CTest knows the commands of what is built alone.
        listed = subprocess.run(["ctest", "--show-only=json-v1"], cwd=self.build, check=True, capture_output=True)
        self.tests = {test["name"]: test for test in json.loads(listed.stdout)["tests"]}
        for test in self.tests_of(stage):
            begun = time.monotonic()
            if self._status(test, UNCHANGED_PATIENCE) != 0:
                raise RuntimeError(f"{test} fails unchanged; see {self.log}")
            self.normal[test] = time.monotonic() - begun
        self.learned.add(stage)

    def first_to_notice(self, stage):
        """The first test of the stage that fails or does not end; none when all pass."""
        for test in self.tests_of(stage):
            status = self._status(test, max(LEAST_PATIENCE, PATIENCE * self.normal[test]))
            if status != 0:
                return f"{test}, which did not end" if status is None else str(test)
        return None

    def _cases_in(self, folder):
        """The filter for the suites that the sources of a folder have."""
        suites = set()
        for path in sorted((self.copy / folder).rglob("*.cpp")):
            text = path.read_text(encoding="utf-8")
            suites |= {suite + ".*" for suite in SUITE.findall(text)} | {f"*/{suite}.*" for suite in INSTANCES.findall(text)}
        return ":".join(sorted(suites))

    def _status(self, test, patience):
        known = self.tests[test.name]
        properties = {entry["name"]: entry["value"] for entry in known.get("properties", [])}
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir()
        environment = {**os.environ, "HOME": str(self.scratch), "GTEST_FAIL_FAST": "1"}
        # Transcripts show lines that are as long as the usual folder makes them.
        if not test.name.startswith("transcript_"):
            environment["TMPDIR"] = str(self.scratch)
        environment |= dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", []))
        if test.folder:
            environment["GTEST_FILTER"] = self._cases_in(test.folder)
        return status_of(known["command"], properties.get("WORKING_DIRECTORY", self.build), environment, patience, self.log)

    def _run(self, command, folder):
        with open(self.log, "ab") as output:
            if subprocess.run(command, cwd=folder, stdout=output, stderr=subprocess.STDOUT, check=False).returncode != 0:
                raise RuntimeError(f"{command[0]} failed; see {self.log}")
