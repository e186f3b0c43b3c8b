#!/usr/bin/python3
"""compile_flags.py SOURCE BUILD FLAG...: fails unless BUILD compiles every source of what is installed with all
the flags. A flag that begins with "!" must be absent."""
import json
import pathlib
import shlex
import sys

ROOMS = {"aggregator", "helpers", "plugins", "providers", "settings", "tools"}


def is_kept(flag, arguments):
    return flag[1:] not in arguments if flag.startswith("!") else flag in arguments


source, build, flags = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3:]
seen = set()
breaches = []
for command in json.loads((build / "compile_commands.json").read_text()):
    file = pathlib.Path(command["file"])
    if not file.is_relative_to(source) or file.relative_to(source).parts[0] not in ROOMS:
        continue
    seen.add(file.relative_to(source).parts[0])
    arguments = shlex.split(command["command"])
    breaches += [f"{file}: {flag}" for flag in flags if not is_kept(flag, arguments)]
breaches += [f"{room}: no source is compiled" for room in ROOMS - seen]
sys.exit("\n".join(breaches) or 0)
