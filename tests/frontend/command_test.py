"""The korven command from outside: its tables against lm(), its counting of rows, and each refusal.

    command_test.py <korven> <top of the checkout>
"""

import csv
import math
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

KORVEN = Path(sys.argv[1]).resolve()
TOP = Path(sys.argv[2]).resolve()
DATA = TOP / "examples" / "data"
FILES = ["fit.csv", "anova.csv", "parameters.csv", "standardised.csv", "covariance.csv", "cases.csv"]

ROUNDOFF = 1e-9  # relative; lm() works by QR, the engine by sweeping
COLLINEAR = 1e-7  # Longley: the condition number of the correlations, 1e4 and more, times the rounding of both sides
NEAR_ZERO = 1e-11  # absolute, on the scale of the column's largest value

SMALL = "y,x,g,w\n1,1,a,1\n3,2,a,2\n2,3,b,0\n5,5,b,1\n4,4,b,1\n"


def run(*arguments):
    return subprocess.run([KORVEN, *map(str, arguments)], capture_output=True, text=True, timeout=60)


def read_table(path):
    """Cells by (row label, column head)."""
    with open(path, newline="", encoding="utf-8") as file:
        head, *rows = csv.reader(file)
    return {(row[0], name): cell for row in rows for name, cell in zip(head[1:], row[1:])}


def same_parameter(label):
    """Labels of interactions compare by their parts, whatever the order."""
    return "*".join(sorted(label.split("*")))


class InFolder(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)

    def write(self, content, name="data.csv"):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def tables(self, *arguments):
        """Runs with --out and reads what it wrote."""
        out = self.folder / "out"
        done = run(*arguments, "--out", out)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(sorted(os.listdir(out)), sorted(FILES))
        return {name[:-4]: read_table(out / name) for name in FILES}, done.stdout


def reference_values():
    values = {}
    with open(TOP / "tests" / "reference" / "frontend_values.csv", newline="", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            cells = values.setdefault(row["case"], {}).setdefault(row["table"], {})
            cells[same_parameter(row["row"]), same_parameter(row["column"])] = float(row["value"])
    return values


class AgainstR(InFolder):
    MOORE = ["anova", DATA / "moore.csv", "--response", "conformity", "--terms", "partner.status fcategory"]
    WARP = ["anova", DATA / "warpbreaks.csv", "--response", "breaks", "--terms", "wool tension wool*tension"]
    STATES = ["regress", DATA / "states.csv"]
    COMMANDS = {
        "moore first": MOORE,
        "moore last": [*MOORE, "--constraint", "last"],
        "moore sum": [*MOORE, "--constraint", "sum"],
        "moore weighted": [*MOORE, "--constraint", "weighted"],
        "moore slopes": ["anova", DATA / "moore.csv", "--response", "conformity", "--covariate", "fscore",
                         "--terms", "fscore partner.status fscore*partner.status"],
        "plantgrowth": ["anova", DATA / "plantgrowth.csv", "--response", "weight", "--terms", "group"],
        "longley": ["regress", DATA / "longley.csv", "--response", "Employed",
                    "--terms", "GNP.deflator GNP Unemployed Armed.Forces Population Year"],
        "warpbreaks cells": [*WARP, "--alpha", "0.01"],
        "warpbreaks last": [*WARP, "--constraint", "last"],
        "warpbreaks sum": [*WARP, "--constraint", "sum"],
        "moore cells weighted": ["anova", DATA / "moore.csv", "--response", "conformity",
                                 "--terms", "partner.status fcategory partner.status*fcategory",
                                 "--constraint", "weighted"],
        "moore slopes sum": ["anova", DATA / "moore.csv", "--response", "conformity", "--covariate", "fscore",
                             "--terms", "fscore partner.status fscore*partner.status", "--constraint", "sum"],
        "states weighted": [*STATES, "--response", "Income", "--terms", "Illiteracy Murder",
                            "--weights", "Population"],
        "states product": [*STATES, "--response", "Murder", "--terms", "Illiteracy Frost Illiteracy*Frost"],
    }

    def test_tables(self):
        references = reference_values()
        self.assertEqual(set(references), set(self.COMMANDS))
        for case, command in self.COMMANDS.items():
            tables, _ = self.tables(*command)
            tolerance = COLLINEAR if case == "longley" else ROUNDOFF
            for name, cells in references[case].items():
                shown = {(same_parameter(r), same_parameter(c)): v for (r, c), v in tables[name].items()}
                scale = {}
                for (_, column), value in cells.items():
                    scale[column] = max(scale.get(column, 0.0), abs(value))
                for (row, column), expected in cells.items():
                    with self.subTest(case=case, table=name, row=row, column=column):
                        self.assertTrue(math.isclose(float(shown[row, column]), expected, rel_tol=tolerance,
                                                     abs_tol=NEAR_ZERO * scale[column]),
                                        f"{shown[row, column]} instead of {expected}")
                if name in ("parameters", "standardised", "covariance"):
                    self.assertEqual({row for row, _ in shown}, {row for row, _ in cells}, (case, name))


class Reading(InFolder):
    def test_spellings_of_the_same_data(self):
        plain = self.write(SMALL, "plain.csv")
        expected, _ = self.tables("regress", plain, "--response", "y", "--terms", "x g")
        spellings = {
            "byte order mark, CRLF": "\ufeff" + SMALL.replace("\n", "\r\n"),
            "no last line end": SMALL.rstrip("\n"),
            "quotes": SMALL.replace("a", '"a"').replace("y,x", '"y","x"'),
            "plus signs, exponents": SMALL.replace("\n3,2", "\n+3.0,20e-1"),
            "spaces": SMALL.replace(",", " , "),
        }
        for spelling, content in spellings.items():
            with self.subTest(spelling):
                tables, _ = self.tables("regress", self.write(content), "--response", "y", "--terms", "x g")
                self.assertEqual(tables, expected)

    def test_names_and_categories_outside_ascii(self):
        content = 'y,"Größe, cm","a ""b"" c"\n1,1,é\n2,3,𝛼\n4,2,é\n3,5,z\n7,6,z\n'
        tables, _ = self.tables("regress", self.write(content), "--response", "y",
                                "--terms", '"Größe, cm" "a ""b"" c"')
        rows = list(dict.fromkeys(row for row, _ in tables["parameters"]))
        self.assertEqual(rows, ["Intercept", "Größe, cm", 'a "b" c-z', 'a "b" c-é', 'a "b" c-𝛼'])

    def test_rows_with_missing_cells_are_dropped_and_counted(self):
        missing = 'y,x,unused\n1,1,\n2,NA,1\n3,2,1\nnan,3,1\n2,"",1\n5,.,1\n4,4,NA\n9,5,1\n'
        complete = "y,x\n1,1\n3,2\n4,4\n9,5\n"
        tables, printed = self.tables("regress", self.write(missing), "--response", "y", "--terms", "x")
        self.assertIn("4 observations used, 4 rows dropped for missing cells", printed)
        self.assertEqual(list(dict.fromkeys(row for row, _ in tables["cases"])), ["1", "3", "7", "8"])
        without, printed = self.tables("regress", self.write(complete), "--response", "y", "--terms", "x")
        self.assertIn("4 observations used, 0 rows dropped", printed)
        for name in ("fit", "anova", "parameters", "covariance"):
            self.assertEqual(tables[name], without[name])

    def test_numbers_as_categories_stand_in_numeric_order(self):
        data = self.write("y,d\n1,10\n2,9\n4,9.0\n3,100\n5,100\n6,10\n")
        command = ["--response", "y", "--terms", "d"]
        tables, _ = self.tables("anova", data, *command)
        rows = list(dict.fromkeys(row for row, _ in tables["parameters"]))
        self.assertEqual(rows, ["Intercept", "d-9", "d-10", "d-100"])
        self.assertEqual(self.tables("regress", data, *command, "--qualitative", "d")[0], tables)
        slope, _ = self.tables("regress", data, *command)
        self.assertEqual({row for row, _ in slope["parameters"]}, {"Intercept", "d"})
        self.assertEqual(self.tables("anova", data, *command, "--covariate", "d")[0], slope)


class Reporting(InFolder):
    def test_columns_that_cannot_enter(self):
        data = self.write("y,x,twice,five\n1,1,2,5\n3,2,4,5\n2,3,6,5\n5,5,10,5\n")
        tables, printed = self.tables("regress", data, "--response", "y", "--terms", "five x twice")
        parameters = tables["parameters"]
        self.assertEqual(parameters["five", "Note"], "constant, left out")
        self.assertEqual(parameters["twice", "Note"], "aliased with columns above, left out")
        self.assertEqual(parameters["twice", "t"], "")
        self.assertEqual(float(tables["anova"]["Model", "DF"]), 1)
        self.assertRegex(printed, r"twice +0 +0 +\. +\. +\. +\. +aliased")

    def test_given_intercept(self):
        """Least squares through (0, 2): b = sum x(y - 2) / sum x^2 = 24 / 55."""
        tables, printed = self.tables("regress", self.write(SMALL), "--response", "y", "--terms", "x",
                                      "--intercept", "2")
        self.assertAlmostEqual(float(tables["parameters"]["x", "Value"]), 24 / 55, delta=1e-14)
        self.assertEqual(tables["parameters"]["Intercept", "Value"], "2")
        self.assertEqual(tables["parameters"]["Intercept", "Standard error"], "")
        self.assertIn("Intercept: given as 2", printed)

    def test_a_weight_of_zero_keeps_its_row(self):
        tables, printed = self.tables("regress", self.write(SMALL), "--response", "y", "--terms", "x",
                                      "--weights", "w")
        self.assertIn("1 of weight 0", printed)
        self.assertNotEqual(tables["cases"]["3", "Prediction"], "")
        self.assertEqual(float(tables["fit"]["Error DF", "Value"]), 3)

    def test_tolerance_decides_which_columns_enter(self):
        command = ["regress", DATA / "longley.csv", "--response", "Employed", "--terms", "GNP.deflator GNP Year"]
        all_columns, _ = self.tables(*command)
        self.assertEqual(float(all_columns["anova"]["Model", "DF"]), 3)
        strict, _ = self.tables(*command, "--tolerance", "0.05")
        self.assertEqual(float(strict["anova"]["Model", "DF"]), 1)

    def test_printed_report(self):
        printed = run(*AgainstR.COMMANDS["plantgrowth"]).stdout
        for line in (r"Analysis of variance of weight on group",
                     r"plantgrowth\.csv: 30 observations used, 0 rows dropped",
                     r"Model +2 +3\.76634 +1\.88317 +4\.84609 +0\.0159",
                     r"Corrected total +29 +14\.2584 +\. +\. +\.",
                     r"Intercept +5\.032 .* < 0\.0001",
                     r"group-ctrl +0 +0 +\. +\. +\. +\. +reference level"):
            self.assertRegex(printed, line)
        self.assertNotIn("Cook", printed)
        self.assertIn("Cook", run(*AgainstR.COMMANDS["plantgrowth"], "--cases").stdout)


class Refusals(InFolder):
    MODEL = ["--response", "y", "--terms", "x"]

    def assert_refused(self, done, code, fragment):
        self.assertEqual(done.returncode, code, done.stderr)
        self.assertEqual(done.stdout, "")
        self.assertTrue(done.stderr.startswith("korven: "), done.stderr)
        self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
        self.assertIn(fragment, done.stderr)

    def test_files(self):
        wide = "y,x,g\n1,1,a\n2,2,b\n3,4,a\n"
        for content, fragment in (
                ("", "is empty"),
                ("\n\n", "is empty"),
                ("y,x\n", "no data rows"),
                ("y,x,y\n1,2,3\n", "two columns are named 'y'"),
                ("y,x\n1,2\n3\n", "data row 2 has 1 cells, the header has 2"),
                ("y,x\n1,2,3\n", "data row 1 has 3 cells"),
                ('y,x\n1,2\n3,"4\n', "quote"),
                ('y,x\n1,2\n3,4"5\n', "quote"),
                ("y,x\n1,2\n3,\xe9\n".encode("latin-1"), "not UTF-8"),
                ("y,x\n1,2\n3,4\n".encode("utf-16"), "not UTF-8"),
                (b"y,x\n1,\xed\xa0\x80\n", "not UTF-8"),
                ("y,x\n1,\nNA,2\n", "no rows left: all 2"),
                ("y,x\n1,2\ntwo,3\n", "column 'y' must be numeric: data row 2 holds 'two'"),
                ("y,x\n1,2\n1e999,3\n", "data row 2 holds '1e999'"),
                ("y,x\n1,2\n2,3\n3,4b\n", "column 'x' must be numeric: data row 3 holds '4b'"),
                ("y,x\n1,2\n1,3\n", "response 'y' is 1 in every row"),
                ("y,x\n1,2\n2,2\n", "no column can enter"),
                ("y,x\n1,a\n2,a\n", "'x' has only one category, 'a'"),
        ):
            with self.subTest(content=content):
                self.assert_refused(run("regress", self.write(content), *self.MODEL), 1, fragment)
        self.assert_refused(run("regress", self.folder / "none.csv", *self.MODEL), 1, "cannot open")
        self.assert_refused(run("regress", self.folder, *self.MODEL), 1, "is a folder")
        self.assert_refused(run("anova", self.write(wide), "--response", "y", "--terms", "g", "--covariate", "g"),
                            1, "column 'g' must be numeric: data row 1 holds 'a'")

    def test_requests(self):
        data = self.write(SMALL)
        negative = self.write("y,x,w\n1,1,1\n2,2,-0.5\n3,5,0\n", "negative.csv")
        zero = self.write("y,x,w\n1,1,0\n2,2,0\n", "zero.csv")
        product = self.write("y,x,z,c,g\n1,1,4,1,a\n2,2,2,1,b\n5,4,1,1,a\n3,8,0.5,1,b\n", "product.csv")
        for file, arguments, fragment in (
                (data, ["--response", "Y", "--terms", "x"], "no column named 'Y'"),
                (data, ["--response", "y", "--terms", "x h"], "no column named 'h'"),
                (data, ["--response", "y", "--terms", "x", "--weights", "v"], "no column named 'v'"),
                (data, ["--response", "y", "--terms", "x g x"], "names 'x' twice"),
                (data, ["--response", "y", "--terms", "x*g g*x"], "names 'g*x' twice"),
                (data, ["--response", "y", "--terms", "x g*g"], "'g' stands twice in 'g*g'"),
                (data, ["--response", "y", "--terms", "x *"], "'*' needs a name on either side"),
                (data, ["--response", "y", "--terms", "x * * g"], "'*' needs a name on either side"),
                (data, ["--response", "y", "--terms", '"x'], "quote is not closed"),
                (data, ["--response", "y", "--terms", " "], "names no column"),
                (data, ["--response", "y", "--terms", "x y"], "response 'y' is also a term"),
                (data, ["--response", "y", "--terms", "x", "--qualitative", "g"], "'g' is in no term"),
                (data, ["--response", "g", "--terms", "x"], "column 'g' must be numeric"),
                (data, ["--response", "y", "--terms", "x", "--weights", "g"], "column 'g' must be numeric"),
                (negative, ["--response", "y", "--terms", "x", "--weights", "w"], "data row 2 holds -0.5"),
                (zero, ["--response", "y", "--terms", "x", "--weights", "w"], "all weights 'w' are zero"),
                (product, ["--response", "y", "--terms", "g x*z"], "'x*z' has the same value in every row"),
        ):
            with self.subTest(arguments=arguments):
                out = self.folder / "out"
                self.assert_refused(run("regress", file, *arguments, "--out", out), 1, fragment)
                self.assertFalse(out.exists())

    def test_command_lines(self):
        data = self.write(SMALL)
        for arguments, fragment in (
                ([], "subcommand"),
                (["regress", data, "--response", "y"], "--terms"),
                (["regress", "--response", "y", "--terms", "x"], "data"),
                (["regress", data, *self.MODEL, "--constraint", "none"], "--constraint"),
                (["regress", data, *self.MODEL, "--alpha", "1"], "--alpha"),
                (["regress", data, *self.MODEL, "--alpha", "5%"], "--alpha"),
                (["regress", data, *self.MODEL, "--tolerance", "-1"], "--tolerance"),
                (["regress", data, *self.MODEL, "--intercept", "nan"], "--intercept"),
                (["regress", data, *self.MODEL, "--covariate", "x"], "--covariate"),
        ):
            with self.subTest(arguments=arguments):
                self.assert_refused(run(*arguments), 2, fragment)

    def test_more_columns_than_the_doors_count(self):
        rows = "".join(f"{i % 7},{i},{i},{i}\n" for i in range(1300))
        data = self.write("y,a,b,c\n" + rows)
        self.assert_refused(run("anova", data, "--response", "y", "--terms", "a*b*c"), 1, "model is too large")

    def test_folders_that_cannot_be_written(self):
        data = self.write(SMALL)
        file = self.write("", "file")
        self.assert_refused(run("regress", data, *self.MODEL, "--out", file), 1, "cannot write into the folder")
        self.assert_refused(run("regress", data, *self.MODEL, "--out", file / "below"), 1, "cannot write")

        blocked = self.folder / "blocked"  # one of six names is taken by a folder: no other file may appear
        (blocked / "covariance.csv").mkdir(parents=True)
        (blocked / "fit.csv").write_text("older result")
        self.assert_refused(run("regress", data, *self.MODEL, "--out", blocked), 1, "cannot write")
        self.assertEqual(sorted(os.listdir(blocked)), ["covariance.csv", "fit.csv"])
        self.assertEqual((blocked / "fit.csv").read_text(), "older result")

    @unittest.skipUnless(os.path.exists("/dev/full"), "needs /dev/full")
    def test_full_standard_output(self):
        with open("/dev/full", "w") as full:
            done = subprocess.run([KORVEN, "regress", self.write(SMALL), *self.MODEL], stdout=full,
                                  stderr=subprocess.PIPE, text=True, timeout=60)
        self.assertEqual((done.returncode, done.stderr), (1, "korven: cannot write the report\n"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
