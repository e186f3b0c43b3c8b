#!/usr/bin/env python3
"""Measures how well the tests guard the library: makes one small change at a time in a copy of the
sources, builds it, runs the tests, and counts the changes that they notice.

usage: mutate.py [--sample N] [--list] [FILE...]

Prints a line per change and at the end `killed K of M`. A change that does not compile does not count.
Survivors that are equal in behaviour stand in equivalent.txt with the reason and do not count either;
any other survivor makes the run fail.
"""

import argparse
import os
import random
import re
import shutil
import signal
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
COPY = ROOT / "build" / "mutate"
ROOMS = ("aggregator", "providers", "settings")
TEST_SECONDS = 120
# What does not depend on a line of code, or would take longer than it is worth here.
SLOW = (
    "^(Binary|Kit|PublicHeader|IncludeDirections|ManualPage|Link|Rngctl|Doctor|Check|Encode|LibraryFile"
    "|Messages|Channel|LoaderError|SearchOrder|TerminalText|Fake(Plugins|Libraries))"
    "|/(Rngctl|CheckBreach|Doctor)|Cost|LongerProfile"
    "|RandomSequences|ModelRun|RandomSteps|fuzz_idle|ModelWithAMistake|StartAndStop|LoadAndUnload"
)

# A pattern and what each match becomes.
OPERATORS = [
    (r"==", "!="),
    (r"!=", "=="),
    (r"&&", "||"),
    (r"\|\|", "&&"),
    (r"(?<=\w) < (?=\w)", " <= "),
    (r"(?<=\w) > (?=\d)", " >= "),
    (r"(?<=\w) > (?=\w)", " < "),
    (r"(?<=\)) \+ (?=\d)", " - "),
    (r"(?<=\w) - (?=\d)", " + "),
    (r"\+\+(?=\w)", "--"),
    (r"--(?=\w)", "++"),
    (r"(?<=[(\s])!(?=\w)", ""),
    (r"\btrue\b", "false"),
    (r"\bfalse\b", "true"),
    (r"(?<![\w.\"])(\d+)(?![\w\".])", lambda m: str(int(m[1], 8 if m[1][0] == "0" else 10) + 1)),
    (r"RTLD_LAZY \| RTLD_GLOBAL", "RTLD_LAZY"),
    (r" \| RTLD_NODELETE", ""),
    (r"\bRTLD_LAZY\b", "RTLD_NOW"),
    (r"\bstrncasecmp\b", "strncmp"),
    (r"std::strncmp", "::strncasecmp"),
    (r"\bstrrchr\b", "strchr"),
    (r" & mask", " | mask"),
    (r"\bcontinue;", "break;"),
    (r"std::exchange\((\w+), nullptr\)", r"\1"),
    (r'"([^"]+)"', lambda m: '"' + m[1][:-1] + '~"'),
]


def changes_of_line(line):
    code = re.split(r"\s*//", line)[0]
    for pattern, replacement in OPERATORS:
        for match in re.finditer(pattern, code):
            new = replacement(match) if callable(replacement) else match.expand(replacement)
            yield line[: match.start()] + new + line[match.end() :]
    statement = code.strip()
    if re.fullmatch(r"[^{}]*\(.*\);", statement) and not re.match(r"(const|auto|char|void\*|return)\b", statement):
        yield re.sub(r"\S.*", ";", code)  # a call removed
    guarded = re.fullmatch(r"(\s*)if \(.*\) (return|throw|continue|break).*;", code)
    if guarded:
        yield guarded[1] + ";"  # an early way out removed


def is_statement(line):
    return bool(re.fullmatch(r"\s+[^{}/#]*;", line)) and "case" not in line


def changes_of_file(path):
    """Pairs of a description and the changed lines."""
    lines = path.read_text().splitlines()
    depth = 0
    for index, line in enumerate(lines):
        is_code = not line.lstrip().startswith(("//", "#")) and line.strip()
        if is_code:
            for changed in changes_of_line(line):
                if changed != line:
                    yield index, line, changed, lines[:index] + [changed] + lines[index + 1 :]
            following = lines[index + 1] if index + 1 < len(lines) else ""
            if depth > 0 and is_statement(line) and is_statement(following):
                swapped = lines[:index] + [following, line] + lines[index + 2 :]
                yield index, line, "swapped with the next line", swapped
        depth += line.count("{") - line.count("}")


def all_changes(files):
    for path in files:
        for index, line, changed, lines in changes_of_file(ROOT / path):
            name = f"{path}:{index + 1}: {line.strip()} -> {changed.strip()}"
            yield name, path, "\n".join(lines) + "\n"


def run(command, seconds):
    process = subprocess.Popen(
        command, cwd=COPY, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True
    )
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return 1


def build():
    return run(["cmake", "--build", "build"], 600)


def run_tests():
    return run(
        ["ctest", "--test-dir", "build", "-j2", "--stop-on-failure", "--no-tests=error", "--timeout", "20", "-E", SLOW],
        TEST_SECONDS,
    )


def prepare():
    shutil.rmtree(COPY, ignore_errors=True)
    shutil.copytree(ROOT, COPY, ignore=shutil.ignore_patterns("build*", ".git"))
    configure = ["cmake", "-S", ".", "-B", "build", "-G", "Ninja", f"-DCMAKE_INSTALL_PREFIX={COPY}/build/tree"]
    if run(configure, 120) or build() or run_tests():
        sys.exit("The unchanged sources do not pass their tests.")


def read_equivalents():
    lines = (Path(__file__).parent / "equivalent.txt").read_text().splitlines()
    return {line for line in lines if " -> " in line}


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--sample", type=int, help="try only N changes, chosen by a fixed seed")
    parser.add_argument("--list", action="store_true", help="print the changes and stop")
    parser.add_argument("files", nargs="*", help="sources; without any, all of the library")
    options = parser.parse_args()

    files = options.files or sorted(str(p.relative_to(ROOT)) for r in ROOMS for p in (ROOT / r).glob("*.cpp"))
    changes = list(all_changes(files))
    if options.sample:
        changes = random.Random(1).sample(changes, min(options.sample, len(changes)))
    if options.list:
        print("\n".join(name for name, _, _ in changes))
        return

    prepare()
    equivalents = read_equivalents()
    killed = made = 0
    survivors = []
    for name, path, text in changes:
        target = COPY / path
        original = target.read_text()
        target.write_text(text)
        if build():
            verdict = "does not compile"
        elif run_tests():
            verdict = "killed"
        elif re.sub(r":\d+:", ":", name, count=1) in equivalents:
            verdict = "equivalent"
        else:
            verdict = "SURVIVED"
            survivors.append(name)
        target.write_text(original)
        killed += verdict == "killed"
        made += verdict in ("killed", "SURVIVED")
        print(f"{verdict}: {name}", flush=True)
    print(f"killed {killed} of {made}")
    if survivors:
        sys.exit("Survivors:\n" + "\n".join(survivors))


if __name__ == "__main__":
    main()
