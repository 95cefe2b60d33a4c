"""The header, the door list and the symbols of the shared library agree.

    door_list_test.py <libkorvenrg.so> [<nm>]
"""

import json
import re
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tools"))
import door_header  # noqa: E402

LIBRARY = Path(sys.argv[1]) if len(sys.argv) > 1 else None
NM = sys.argv[2] if len(sys.argv) > 2 else "nm"
NATIVE_EXPORTS = Path(__file__).with_name("native_exports.txt")
WIDE_STRING = re.compile(r"std::\w+::basic_string<wchar_t, std::char_traits<wchar_t>, std::allocator<wchar_t> >")
C_TYPE = {"bool": "VARIANT_BOOL", "bool*": "VARIANT_BOOL*"}


def exported_symbols():
    """What the library defines for its clients: plain names, and demangled signatures of decorated ones."""
    output = subprocess.run([NM, "-D", "--demangle", "--defined-only", str(LIBRARY)],
                            check=True, capture_output=True, text=True).stdout
    symbols = set()
    for line in output.splitlines():
        kind, name = line.split(maxsplit=2)[1:]
        if kind != "A":  # the version nodes themselves
            symbols.add(WIDE_STRING.sub("std::wstring", name.split("@")[0]))
    return symbols


def native_exports():
    lines = NATIVE_EXPORTS.read_text(encoding="utf-8").splitlines()
    return {line.strip() for line in lines if line.strip() and not line.startswith("#")}


def test_texts():
    for path in sorted((ROOT / "tests").rglob("*")):
        if path.suffix in {".c", ".cpp", ".h"}:
            text = path.read_text(encoding="utf-8")
            yield re.sub(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"", "", text, flags=re.DOTALL)


class HeaderAgainstDoorList(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        listed = json.loads((ROOT / "src" / "exports" / "doors.json").read_text(encoding="utf-8"))["doors"]
        cls.listed = {door["name"]: door for door in listed}
        cls.order = [door["name"] for door in listed]
        cls.doors = door_header.read_doors()

    def test_every_declaration_is_documented_and_in_the_order_of_the_list(self):
        names = [door.name for door in self.doors]
        self.assertEqual(names, door_header.exported_names(door_header.HEADER))
        self.assertEqual(names, [name for name in self.order if name in names])
        self.assertGreater(len(names), 0)

    def test_results_and_parameters(self):
        for door in self.doors:
            listed = self.listed[door.name]
            with self.subTest(door=door.name):
                self.assertEqual(door.result, C_TYPE.get(listed["returns"], listed["returns"]))
                self.assertEqual([(p.name, p.type) for p in door.parameters],
                                 [(name, C_TYPE.get(kind, kind)) for name, kind, _, _ in listed["params"]])
                for parameter, (name, kind, direction, shape) in zip(door.parameters, listed["params"]):
                    with self.subTest(parameter=name):
                        self.assertEqual(parameter.direction, direction)
                        self.assertEqual(parameter.shape, shape if kind.endswith("*") else "")
                        self.assertTrue(parameter.meaning, "has no text after [direction; shape]")

    def test_every_door_says_what_it_returns(self):
        for door in self.doors:
            with self.subTest(door=door.name):
                if door.result != "void":
                    self.assertRegex(door.comment, r"\bReturns\b")

    def test_every_door_is_called_by_a_test(self):
        texts = list(test_texts())
        for door in self.doors:
            call = re.compile(rf"\b{door.name}\b")
            with self.subTest(door=door.name):
                self.assertTrue(any(call.search(text) for text in texts), "no file below tests/ calls it")


@unittest.skipIf(LIBRARY is None, "no library given")
class LibrarySymbols(unittest.TestCase):
    maxDiff = None

    def test_exports_are_the_doors_the_platform_functions_and_the_listed_native_names(self):
        declared = door_header.exported_names(door_header.HEADER)
        declared += door_header.exported_names(door_header.PLATFORM_HEADER)
        self.assertEqual(exported_symbols(), set(declared) | native_exports())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
