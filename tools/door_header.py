"""Reads src/exports/korvenrg.h: the doors, their comments and their parameters.

The header is the one list of doors. Its export test and the reference pages both read it through this module.
"""

import re
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
HEADER = ROOT / "src" / "exports" / "korvenrg.h"
PLATFORM_HEADER = ROOT / "src" / "core" / "platform.h"

SECTION = re.compile(r"/\* ---- (?P<section>.+?) ---- \*/")
DOOR = re.compile(
    r"/\*\*(?P<comment>(?:(?!\*/).)*?)\*/\s*"
    r"KORVENRG_API\s+(?P<result>[\w\s*]+?)\s*\b(?P<name>\w+)\s*\((?P<parameters>(?:/\*.*?\*/|[^()])*)\)\s*;",
    re.DOTALL,
)
PARAMETER = re.compile(
    r"(?P<type>[A-Za-z_][\w\s]*?[\s*]+)(?P<name>\w+)\s*,?\s*(?:/\*\*<(?P<comment>.*?)\*/)?\s*,?\s*(?=[A-Za-z_]|$)",
    re.DOTALL,
)
DIRECTION = re.compile(r"\[(?P<direction>in|out|inout)(?:;\s*(?P<shape>[^\]]*))?\]\s*(?P<meaning>.*)", re.DOTALL)


@dataclass
class Parameter:
    name: str
    type: str
    direction: str  # in, out, inout; empty when the comment does not say
    shape: str  # empty for a scalar
    meaning: str


@dataclass
class Door:
    name: str
    result: str
    section: str
    comment: str  # without the comment marks, indentation kept
    parameters: list = field(default_factory=list)


def one_line(text):
    return " ".join(text.split())


def plain_comment(text):
    lines = [re.sub(r"^ ?\* ?", "", line.lstrip()) for line in text.strip("\n").splitlines()]
    return "\n".join(line.rstrip() for line in lines).strip("\n")


def read_parameter(match):
    comment = one_line(match["comment"] or "")
    found = DIRECTION.fullmatch(comment)
    return Parameter(
        name=match["name"],
        type=re.sub(r"\s*\*", "*", one_line(match["type"])),
        direction=found["direction"] if found else "",
        shape=(found["shape"] or "").strip() if found else "",
        meaning=found["meaning"] if found else comment,
    )


def read_doors(path=HEADER):
    text = path.read_text(encoding="utf-8")
    sections = [(match.start(), match["section"]) for match in SECTION.finditer(text)]
    doors = []
    for match in DOOR.finditer(text):
        section = next((name for start, name in reversed(sections) if start < match.start()), "")
        door = Door(match["name"], re.sub(r"\s*\*", "*", one_line(match["result"])), section,
                    plain_comment(match["comment"]))
        if match["parameters"].strip() != "void":
            door.parameters = [read_parameter(p) for p in PARAMETER.finditer(match["parameters"].strip())]
        doors.append(door)
    return doors


def exported_names(path):
    """Names behind KORVENRG_API in a header, whether the declaration is documented or not."""
    text = re.sub(r"/\*.*?\*/", "", path.read_text(encoding="utf-8"), flags=re.DOTALL)
    return re.findall(r"^KORVENRG_API[\w\s*]*?\b(\w+)\s*\(", text, flags=re.MULTILINE)
