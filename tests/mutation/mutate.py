#!/usr/bin/env python3
"""Measures how well the tests guard the product: makes one small change at a time in a copy of the sources, builds
the copy, runs the tests of the changed room (a part of the sources), and counts the changes that the tests notice.

Prints a line per change, then for each room how many changes were noticed. A change that does not compile does not
count. Survivors that equivalent.txt lists with a reason do not count either; any other survivor makes the run fail, and
so does a change that is listed but noticed. The order depends only on the path and the text of each change, so the same
sources always give the same selection.
"""

import argparse
import fcntl
import hashlib
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # no __pycache__ among the sources

from changes import changes_of_text
from rooms import ROOMS, room_of

ROOT = Path(__file__).resolve().parents[2]
COPY = ROOT / "build" / "mutate"
# Each command runs in its own PID namespace: a changed program may signal processes that it must not, or leave some
# running. All of them end with this program.
APART = ["setpriv", "--pdeathsig", "KILL", "unshare", "--pid", "--fork", "--kill-child", "--mount-proc"]
if os.getuid() != 0:
    APART += ["--map-current-user"]
APART += ["sh", "-c", '"$@"; exit $?', "sh"]  # reaps zombies: hundreds of them slow every test


def run(*command):
    return subprocess.run(
        [*APART, *command], cwd=COPY, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
    ).returncode


def sources_of(paths):
    for path in paths:
        files = [ROOT / path] if (ROOT / path).is_file() else sorted((ROOT / path).rglob("*"))
        yield from (str(file.relative_to(ROOT)) for file in files if file.suffix in (".cpp", ".h"))


def without_line_number(name):
    return re.sub(r":\d+:", ":", name, count=1)


def changes_of(paths):
    """Triples of a name, the path and the changed text, in an order that looks random but is always the same."""
    changes = [
        (f"{path}:{description}", path, text)
        for path in sources_of(paths)
        for description, text in changes_of_text((ROOT / path).read_text(), path.endswith(".h"))
    ]
    return sorted(changes, key=lambda change: hashlib.sha256(without_line_number(change[0]).encode()).digest())


def update_copy():
    """Copies only the files that differ, so that an earlier build can be reused."""
    command = ["git", "ls-files", "--cached", "--others", "--exclude-standard"]
    listed = subprocess.run(command, cwd=ROOT, check=True, capture_output=True, text=True).stdout.splitlines()
    for path in COPY.glob("**/*"):
        name = str(path.relative_to(COPY))
        if not name.startswith("build/") and path.is_file() and not (name in listed and (ROOT / name).is_file()):
            path.unlink()
    for name in listed:
        source, target = ROOT / name, COPY / name
        if source.is_file() and not (target.is_file() and target.read_bytes() == source.read_bytes()):
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)


def only(tests):
    return "-R", f"^({'|'.join(re.escape(test) for test in tests)})$"


def beside(path, folder, pattern):
    """A pattern for those of the tests that are in files, or in folders, that have the name of the changed file or of a
    folder above it: these notice most changes. Empty if there are none."""
    names = {*Path(path).parts[1:-1], Path(path).stem}
    cases = []
    for file in sorted((ROOT / "tests" / folder).rglob("*_test.cpp")):
        place = file.relative_to(ROOT / "tests" / folder)
        if names & {*place.parts[:-1], file.stem.removesuffix("_test")}:
            cases += re.findall(r"^TEST(?:_[FP])?\((\w+), (\w+)\)", file.read_text(), re.MULTILINE)
    found = [f"{suite}.{case}" for suite, case in cases]
    return "|".join(re.escape(name) for name in found if re.search(pattern, name))


class DoesNotCompile(Exception):
    pass


class Tests:
    """The tests of a room. Those that failed recently run first, because many changes make the same tests fail."""

    def __init__(self, room):
        self.room = room
        self.recent = []

    def build(self, folder):
        folders = [*self.room.sources, f"tests/{folder}"]
        targets = [f"{folder}/all" for folder in folders if (COPY / folder / "CMakeLists.txt").exists()]
        if run("cmake", "--build", "build", "--target", *targets):
            raise DoesNotCompile

    def failed(self, folder, *selection):
        """Names of tests that failed; an empty one if ctest itself did, as where a changed program ends it."""
        directory = COPY / "build" / "tests" / folder
        logs = directory / "Testing" / "Temporary"
        log = logs / "LastTestsFailed.log"
        log.unlink(missing_ok=True)
        (logs / "CTestCostData.txt").unlink(missing_ok=True)  # by which the slowest tests would start first
        options = ["-j8", "--no-tests=error", "--timeout", "30"]
        if not run("ctest", "--test-dir", str(directory), *options, *selection):
            return []
        return [line.split(":", 1)[1] for line in log.read_text().splitlines()] if log.exists() else [""]

    def selections(self, path):
        """Folders, and which of their tests to run. Each folder is built when its turn comes."""
        for folder, pattern in self.room.tests:
            self.build(folder)
            if recent := [test for place, test in self.recent if place == folder]:
                yield folder, only(recent)
            if likely := beside(path, folder, pattern):
                yield folder, ("-R", likely, "-E", self.room.without, "--no-tests=ignore")
            yield folder, ("-R", pattern, "-E", self.room.without)

    def first_failure(self, path=""):
        """A test that fails, and fails again alone. A test that fails only once may just have been slow; then all run
        again, because it may have kept later tests from running."""
        for folder, selection in self.selections(path):
            for until in (["--stop-on-failure"], []):
                failed = self.failed(folder, *until, *selection)
                for test in failed:
                    if self.failed(folder, *(only([test]) if test else selection)):
                        self.recent = [(folder, test), *(known for known in self.recent if known[1] != test)][:8]
                        return test or "ctest itself"
                if not failed:
                    break
        return None


def try_change(tests, name, path, text, equivalents):
    target = COPY / path
    original = target.read_text()
    target.write_text(text)
    try:
        noticed = tests.first_failure(path)
        if without_line_number(name) in equivalents:
            return f"LISTED, but noticed by {noticed}" if noticed else "equivalent"
        return f"noticed by {noticed}" if noticed else "SURVIVED"
    except DoesNotCompile:
        return "does not compile"
    finally:
        target.write_text(original)


def require_success(name, tests):
    try:
        if failure := tests.first_failure():
            sys.exit(f"{name}: the unchanged sources fail {failure}.")
    except DoesNotCompile:
        sys.exit(f"{name}: the unchanged sources cannot be built.")


def try_room(name, changes, count, equivalents):
    tests = Tests(ROOMS[name])
    require_success(name, tests)
    verdicts = []
    for change, path, text in changes:
        if len([verdict for verdict, _ in verdicts if verdict != "does not compile"]) == count:
            break
        verdict = try_change(tests, change, path, text, equivalents)
        verdicts.append((verdict, change))
        print(f"{verdict}: {change}", flush=True)
    require_success(name, tests)  # a changed program may have left something that makes all tests fail
    return verdicts


def print_scores(results):
    print(f"\n{'room':20} {'noticed':>12} {'equivalent':>10} {'survived':>8}")
    for room, verdicts in results.items():
        noticed = sum(verdict.startswith("noticed") for verdict, _ in verdicts)
        equivalent = sum(verdict == "equivalent" for verdict, _ in verdicts)
        survived = sum(verdict == "SURVIVED" for verdict, _ in verdicts)
        print(f"{room:20} {noticed:5} of {noticed + survived:3} {equivalent:10} {survived:8}")


def read_equivalents():
    """A stale entry would excuse a later change with the same text, so it ends the run."""
    lines = (Path(__file__).parent / "equivalent.txt").read_text().splitlines()
    equivalents = {line for line in lines if " -> " in line}
    folders = [folder for room in ROOMS.values() for folder in room.sources]
    names = {without_line_number(name) for name, _, _ in changes_of(folders)}
    if stale := sorted(equivalents - names):
        sys.exit("\n".join(["equivalent.txt lists changes that no longer exist:", *stale]))
    return equivalents


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument(
        "--count", type=int, default=100, help="how many changes to make in each room (default: 100); 0 means all"
    )
    parser.add_argument("--list", action="store_true", help="print all changes and make none")
    parser.add_argument(
        "paths", nargs="*", metavar="ROOM", help=f"a room: {', '.join(ROOMS)}; or a path in one (default: all rooms)"
    )
    options = parser.parse_args()

    chosen = {}
    for path in options.paths or ROOMS:
        room = path if path in ROOMS else room_of(path)
        if not room or not list(sources_of([path] if path not in ROOMS else ROOMS[path].sources)):
            parser.error(f"{path} is neither a room nor a path with sources in one.")
        chosen.setdefault(room, []).extend(ROOMS[path].sources if path in ROOMS else [path])
    changes = {
        room: [change for change in changes_of(paths) if room_of(change[1]) == room] for room, paths in chosen.items()
    }
    if options.list:
        for room in changes:
            print(*(name for name, _, _ in changes[room]), sep="\n")
        return

    equivalents = read_equivalents()
    COPY.mkdir(parents=True, exist_ok=True)
    lock = open(COPY.with_suffix(".lock"), "w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit(f"Another run is using {COPY}.")
    if run("true"):
        sys.exit("No process can be started in a PID namespace of its own.")
    update_copy()
    variables = [
        "CMAKE_UNITY_BUILD=OFF",  # one source changes at a time
        "CMAKE_LINK_DEPENDS_NO_SHARED=ON",
        "CMAKE_COMPILE_WARNING_AS_ERROR=OFF",  # a change that only causes a warning counts as well
        "CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",  # a program that crashes at once is built, and fails
    ]
    if run("cmake", "--preset", "test", "-B", "build", *(f"-D{variable}" for variable in variables)):
        sys.exit("The copy cannot be configured.")
    results = {room: try_room(room, changes[room], options.count or None, equivalents) for room in changes}
    print_scores(results)
    if any(verdict.startswith(("SURVIVED", "LISTED")) for verdicts in results.values() for verdict, _ in verdicts):
        sys.exit(1)


if __name__ == "__main__":
    try:
        main()
    except KeyboardInterrupt:
        sys.exit("Interrupted.")
