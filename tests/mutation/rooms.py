"""The rooms (parts of the sources), and the tests that guard each of them."""

from typing import NamedTuple


class Room(NamedTuple):
    """Folders of sources, and the tests to run for each change: a folder of tests and a pattern of their names.
    Those that notice most changes come first."""

    sources: list[str]
    tests: list[tuple[str, str]]
    without: str = "^$"  # tests that are too slow for what they find


ROOMS = {
    "library": Room(
        ["aggregator", "providers", "settings"],
        [
            *((folder, ".") for folder in ("aggregator", "settings", "providers", "unload", "process", "faults")),
            ("model", "RandomSequences"),
            ("costs", "Allocat"),
        ],
    ),
    "include": Room(
        ["include/rngaggregator"],
        [("headers", "."), ("session", "."), ("quality", "Verdict"), ("combine", "."), ("abi", "InC|BothLanguages|Slots")],
    ),
    "plugins/unixdev": Room(["plugins/unixdev"], [("unixdev", ".")]),
    "plugins/interactive": Room(
        ["plugins/interactive"], [("interactive", "^Interactive|StartHelper|^Display"), ("interactive", ".")]
    ),
    "plugins/token": Room(["plugins/token"], [("token", ".")]),
    "helpers/gathering": Room(
        ["helpers/gathering"], [("gathering", "."), ("interactive", "^Interactive|ForkingHost|TerminalDraw")]
    ),
    "helpers/session": Room(
        ["helpers/session"], [("interactive", "Session|SystemBytes|RemoteDisplay"), ("interactive", ".")]
    ),
    "helpers/tty": Room(
        ["helpers/tty"],
        [
            ("interactive", "^Keys|^Network|^Record|TerminalDraw"),
            (
                "interactive",
                "Terminal|Job|Pipeline|CopiedHost|ForkingHost|Draws|HugeDraw|DrawAfter|DrawWithout|RemoteDraw|ByForce|"
                "Background|Keyboard|InstalledInTree",
            ),
        ],
    ),
    "helpers/x11": Room(["helpers/x11"], [("interactive", "X11|Display|InstalledInTree")]),
    "helpers/qt": Room(["helpers/qt"], [("interactive", "Qt|Display|InstalledInTree")]),
    "quality": Room(
        ["quality"],
        [("quality", "."), ("rngctl", "RngctlTest|TestReport|Restarts|KnownBlocks")],
        "EndAfterHalfAMinute|OneThatHangs|BadEnd",
    ),
    "combine": Room(["combine"], [("combine", "."), ("rngctl", "ReadRecord|Combined"), ("threads", "Combined")]),
    "openssl": Room(["openssl"], [("openssl", "."), ("rngctl/openssl", ".")]),
    "tools/rngctl/check": Room(
        ["tools/rngctl/check"],
        [
            ("rngctl", "EachRuleHas|^Looks|CheckLook|Losses|ProcessSnapshot|Slowness|SipHash|CheckWrongUsage"),
            ("rngctl", "CheckBreach"),
            ("rngctl", "Check"),
        ],
        "CheckLoadCycles|DrawsOfSeconds|WhatTakesTime",
    ),
    "tools/rngctl/doctor": Room(
        ["tools/rngctl/doctor"],
        [
            ("rngctl", "Doctor|DescribeSlowness|IgnoredDefault|Storing|WalkTo|Writers|Permission"),
            ("rngctl/situations", "."),
        ],
        "^HarmlessFakePlugin",
    ),
    "tools/rngctl": Room(
        ["tools/rngctl"],
        [("rngctl", ".")],
        "Situations|CheckLoadCycles|EndAfterHalfAMinute|OneThatHangs|16BitsOfSeed|DrawsOfSeconds|WhatTakesTime|"
        "ThreadsThatAreJoined",
    ),
}


def room_of(path):
    """The room with the longest folder that contains the path; empty if there is none."""
    folders = [(folder, name) for name, room in ROOMS.items() for folder in room.sources]
    above = [(len(folder), name) for folder, name in folders if f"{path}/".startswith(f"{folder}/")]
    return max(above, default=(0, ""))[1]
