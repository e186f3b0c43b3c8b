#!/usr/bin/env python3
"""Holds the exception edges that the tests never take against those that are listed with a reason.

usage: exception_edges.py COVERAGE.json

COVERAGE.json is what `gcovr --json` writes, throw branches included. The coverage figure leaves out
the edges that only an exception takes, so that none of them is left out unseen: a line with such an
edge that was never taken must stand in exception_edges.txt, and whatever stands there must be one.
"""

import json
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]


def untaken_edges(coverage):
    for source in json.loads(Path(coverage).read_text())["files"]:
        lines = (ROOT / source["file"]).read_text().splitlines()
        for line in source["lines"]:
            if any(branch.get("throw") and not branch["count"] for branch in line["branches"]):
                yield f"{source['file']}: {lines[line['line_number'] - 1].strip()}"


def listed_edges():
    lines = (HERE / "exception_edges.txt").read_text().splitlines()
    return [line for line in lines if line.startswith(("aggregator/", "providers/", "settings/"))]


def main():
    untaken, listed = set(untaken_edges(sys.argv[1])), set(listed_edges())
    for edge in sorted(untaken - listed):
        print(f"never taken, not listed: {edge}")
    for edge in sorted(listed - untaken):
        print(f"listed, but no such edge: {edge}")
    print(f"exception edges never taken: {len(untaken)} lines, {len(untaken & listed)} of them listed")
    sys.exit(untaken != listed)


if __name__ == "__main__":
    main()
