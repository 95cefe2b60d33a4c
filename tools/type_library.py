#!/usr/bin/env python3
"""Makes the type library of the Windows DLL out of korvenrg.h, the one list of the doors.

    type_library.py idl <version> <out.idl>     the library's source: one entry for each door
    type_library.py repair <in.tlb> <out.tlb>   mends what the IDL compiler writes wrongly, and drops its time stamps
    type_library.py expected <out.inc>          what a test should read back, as a C++ table
    type_library.py check <objdump> <dll>       fails unless the DLL exports exactly the doors of the header
"""

import re
import struct
import subprocess
import sys
import uuid
from pathlib import Path

import door_header

LIBRARY_ID = "5b0a9c1e-3f57-4d0b-9d7e-2a6c41f08e11"
MODULE_ID = "c2f4e8a6-71d3-4b95-8a1c-6e0d93b7f522"
IDL_TYPES = {"double": "double", "int": "long", "VARIANT_BOOL": "VARIANT_BOOL", "BSTR": "BSTR", "void": "void"}
VARIANT_TYPES = {"double": "VT_R8", "int": "VT_I4", "VARIANT_BOOL": "VT_BOOL", "BSTR": "VT_BSTR", "void": "VT_VOID"}
IDL_FLAGS = {"in": "in", "out": "out", "inout": "in, out"}
NATIVE_EXPORTS = door_header.ROOT / "tests" / "exports" / "native_exports.txt"


def base_and_stars(c_type):
    base = c_type.replace("*", "").replace("const", "").strip()
    return base, c_type.count("*")


def first_sentence(comment):
    return re.split(r"(?<=\.)\s", " ".join(comment.split()))[0].replace('"', "'")


# ---- the library's source ----

def idl_parameter(door, parameter):
    base, stars = base_and_stars(parameter.type)
    if base not in IDL_TYPES or parameter.direction not in IDL_FLAGS:
        sys.exit(f"{door.name}: no automation type for {parameter.type} {parameter.name} [{parameter.direction}]")
    return f"[{IDL_FLAGS[parameter.direction]}] {IDL_TYPES[base]} {'*' * stars}{parameter.name}"


def idl_door(door):
    parameters = ",\n            ".join(idl_parameter(door, p) for p in door.parameters) or "void"
    return (f'        [entry("{door.name}"), helpstring("{first_sentence(door.comment)}")]\n'
            f"        {IDL_TYPES[door.result]} __stdcall {door.name}(\n            {parameters});\n")


def write_idl(version, target):
    doors = "\n".join(idl_door(door) for door in door_header.read_doors())
    Path(target).write_text(
        'import "automation_types.idl";\n\n'
        f'[uuid({LIBRARY_ID}), version({version}), helpstring("KORVENRG statistical modelling engine")]\n'
        "library KORVENRG\n{\n"
        f'    [uuid({MODULE_ID}), dllname("korvenrg.dll"), helpstring("The flat doors")]\n'
        f"    module Doors\n    {{\n{doors}    }};\n}};\n", encoding="utf-8")


# ---- repair of the compiled library ----

class CompiledLibrary:
    """The parts of an MSFT type library file that the repair touches.

    The file has a header, the offsets of its type records, a directory of 15 segments (offset and length in 16 bytes
    each), then the segments. The record of a module points at its members: a length, the function records, then the ids,
    the name offsets and the record offsets of all members.
    """

    HEADER = 0x54
    DIRECTORY_ENTRY = 16
    SEGMENTS = 15
    TYPE_RECORDS, GUIDS, NAMES, STRINGS, CUSTOM_DATA, CUSTOM_GUIDS = 0, 5, 7, 8, 11, 12
    KIND_MODULE = 2
    ENTRY_IS_ORDINAL = 0x2000
    BUILD_TIME = uuid.UUID("de77ba63-517c-11d1-a2da-0000f8773ce9").bytes_le

    def __init__(self, data):
        self.data = bytearray(data)
        if self.data[:4] != b"MSFT":
            sys.exit("not a compiled type library")
        self.type_count = self.word(0x20)
        self.type_offsets = self.HEADER + (4 if self.word(0x14) & 0x100 else 0)
        self.directory = self.type_offsets + 4 * self.type_count

    def word(self, offset):
        return struct.unpack_from("<I", self.data, offset)[0]

    def set_word(self, offset, value):
        struct.pack_into("<I", self.data, offset, value)

    def segment(self, index):
        entry = self.directory + self.DIRECTORY_ENTRY * index
        return self.word(entry), self.word(entry + 4)

    def type_records(self):
        for index in range(self.type_count):
            yield self.segment(self.TYPE_RECORDS)[0] + self.word(self.type_offsets + 4 * index)

    def module_functions(self):
        """Name and record offset of each function of each module."""
        for record in self.type_records():
            if self.word(record) & 0xF != self.KIND_MODULE:
                continue
            members = self.word(record + 4)
            functions, variables = struct.unpack_from("<HH", self.data, record + 0x18)
            count = functions + variables
            lists = members + 4 + self.word(members)  # the ids; the names; the record offsets
            for index in range(functions):
                name = self.segment(self.NAMES)[0] + self.word(lists + 4 * (count + index))
                text = bytes(self.data[name + 12:name + 12 + self.data[name + 8]])
                yield text, members + 4 + self.word(lists + 4 * (2 * count + index))

    def point_entries_at_names(self):
        """The IDL compiler stores garbage for a named entry: each function gets its own name in the string segment."""
        start, length = self.segment(self.STRINGS)
        strings = bytearray()
        for name, record in list(self.module_functions()):
            self.set_word(record + 16, self.word(record + 16) & ~self.ENTRY_IS_ORDINAL)
            self.set_word(record + 32, length + len(strings))
            text = struct.pack("<H", len(name)) + name
            strings += text.ljust(max(8, (len(text) + 3) // 4 * 4), b"W")
        self.grow_strings(start + length, strings)

    def grow_strings(self, end, strings):
        growth = len(strings)
        for record in self.type_records():
            members = self.word(record + 4)
            if members != 0xFFFFFFFF and members >= end:
                self.set_word(record + 4, members + growth)
        for index in range(self.SEGMENTS):
            entry = self.directory + self.DIRECTORY_ENTRY * index
            offset = self.word(entry)
            if index == self.STRINGS:
                self.set_word(entry + 4, self.word(entry + 4) + growth)
            elif offset != 0xFFFFFFFF and offset >= end:
                if index == self.TYPE_RECORDS:
                    sys.exit("the type records stand behind the strings: an unknown order of segments")
                self.set_word(entry, offset + growth)
        self.data[end:end] = strings

    def blank_time_stamps(self):
        stamp = re.search(rb"Created by WIDL version [^\n]*\n", self.data)
        if stamp:
            text = b"Created by WIDL".ljust(len(stamp[0]) - 1) + b"\n"
            self.data[stamp.start():stamp.end()] = text
        guids = self.segment(self.GUIDS)[0]
        values = self.segment(self.CUSTOM_DATA)[0]
        start, length = self.segment(self.CUSTOM_GUIDS)
        for entry in range(start, start + length, 12):
            guid = guids + self.word(entry)
            if bytes(self.data[guid:guid + 16]) == self.BUILD_TIME:
                self.set_word(values + self.word(entry + 4) + 2, 0)


def repair(source, target):
    library = CompiledLibrary(Path(source).read_bytes())
    library.point_entries_at_names()
    library.blank_time_stamps()
    Path(target).write_bytes(library.data)


# ---- what tests and the build compare with ----

def write_expected(target):
    """One row for each door: name, result, and for each parameter its name, base type, indirections and flags."""
    lines = []
    for door in door_header.read_doors():
        rows = []
        for parameter in door.parameters:
            base, stars = base_and_stars(parameter.type)
            flags = " | ".join(f"PARAMFLAG_F{word.strip().upper()}" for word in IDL_FLAGS[parameter.direction].split(","))
            rows.append(f'{{L"{parameter.name}", {VARIANT_TYPES[base]}, {stars}, {flags}}}')
        lines.append(f'{{L"{door.name}", "{door.name}", {VARIANT_TYPES[door.result]}, {{{", ".join(rows)}}}}},')
    Path(target).write_text("\n".join(lines) + "\n", encoding="utf-8")


def plain_native_names():
    lines = NATIVE_EXPORTS.read_text(encoding="utf-8").splitlines()
    return {line for line in lines if re.fullmatch(r"\w+", line)}


def check_exports(objdump, dll):
    listing = subprocess.run([objdump, "-p", dll], check=True, capture_output=True, text=True).stdout
    table = listing.split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
    exported = {line.split()[-1] for line in table.splitlines()[1:] if line.strip()}
    undecorated = {name for name in exported if not name.startswith("_Z")}
    doors = {door.name for door in door_header.read_doors()}
    for name in sorted(doors - undecorated):
        print(f"{name} is in the header and not exported", file=sys.stderr)
    for name in sorted(undecorated - doors - plain_native_names()):
        print(f"{name} is exported and not in the header", file=sys.stderr)
    return doors <= undecorated <= doors | plain_native_names()


def main(command, *arguments):
    if command == "idl":
        write_idl(*arguments)
    elif command == "repair":
        repair(*arguments)
    elif command == "expected":
        write_expected(*arguments)
    elif command == "check":
        sys.exit(0 if check_exports(*arguments) else 1)
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    sys.dont_write_bytecode = True
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
