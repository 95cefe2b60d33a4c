"""The korven command from outside: its tables against lm(), its counting of rows, and each refusal.

    command_test.py <korven> <top of the checkout>
"""

import csv
import itertools
import math
import os
import shutil
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

    def tables(self, *arguments, more=()):
        """Runs with --out and reads what it wrote: FILES and more."""
        files = [*FILES, *more]
        out = self.folder / "out"
        done = run(*arguments, "--out", out)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(sorted(os.listdir(out)), sorted(files))
        found = {name[:-4]: read_table(out / name) for name in files}
        shutil.rmtree(out)
        return found, done.stdout


def reference_values(means):
    """The cases of means, whose rows are cells with their variables in order, or the others."""
    values = {}
    with open(TOP / "tests" / "reference" / "frontend_values.csv", newline="", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            if row["case"].startswith("means ") != means:
                continue
            cells = values.setdefault(row["case"], {}).setdefault(row["table"], {})
            label = str if means else same_parameter
            cells[label(row["row"]), label(row["column"])] = float(row["value"])
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
        "moore held out": ["anova", DATA / "moore.csv", "--response", "conformity", "--constraint", "sum",
                           "--terms", "partner.status fcategory partner.status*fcategory",
                           "--validate", ",".join(map(str, range(3, 46, 3))), "--predict", DATA / "moore.csv"],
    }

    def test_tables(self):
        references = reference_values(means=False)
        self.assertEqual(set(references), set(self.COMMANDS))
        for case, command in self.COMMANDS.items():
            more = sorted({f"{name}.csv" for name in references[case]} - set(FILES))
            tables, _ = self.tables(*command, "--type", "3,1,2", more=more)
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
                if name in ("parameters", "standardised", "covariance", "type1", "type3"):
                    self.assertEqual({row for row, _ in shown}, {row for row, _ in cells}, (case, name))


CHICKS = ["anova", DATA / "chickwts.csv", "--response", "weight", "--terms", "feed", "--means", "feed"]
CELLS = ["anova", DATA / "moore.csv", "--response", "conformity",
         "--terms", "partner.status fcategory partner.status*fcategory"]
REGIONS = ["anova", DATA / "states.csv", "--response", "Murder", "--covariate", "Income", "--terms", "Income region",
           "--weights", "Population"]


class Means(InFolder):
    """Category means, LS means and their comparisons."""

    COMMANDS = {
        **{f"means chickwts {name}": [*CHICKS, "--compare", name]
           for name in ("tukey", "lsd", "bonferroni", "sidak", "snk", "games-howell", "bh")},
        **{f"means chickwts control {tail}": [*CHICKS, "--control", "casein", "--tail", tail, "--alpha", "0.1"]
           for tail in ("two", "lower", "upper")},
        "means moore rows": [*CELLS, "--means", "fcategory", "--compare", "lsd"],
        "means moore": [*CELLS, "--lsmeans", "fcategory", "--compare", "tukey"],
        "means moore cells": [*CELLS, "--lsmeans", "fcategory*partner.status", "--compare", "bonferroni",
                              "--alpha", "0.01"],
        "means states": [*REGIONS, "--lsmeans", "region", "--compare", "bh"],
        "means states rows": [*REGIONS, "--means", "region", "--compare", "sidak"],
    }
    # The engine's studentized range is a fixed quadrature; R's law of Dunnett's test is a simulation of many points.
    RANGE = {"Critical value": 5e-4, "Pr > |t|": 5e-3, "p-value": 1e-3}
    BY_RANGE = ("tukey", "snk", "games-howell", "moore", "two", "lower", "upper")

    @staticmethod
    def own_tables(command):
        """The tables of means that a command writes."""
        kinds = {option[2:] for option in command if option in ("--means", "--lsmeans")}
        parts = [""] + [part for option, part in (("--compare", "_contrasts"), ("--control", "_control")) if option in command]
        return [f"{kind}{part}.csv" for kind in kinds for part in parts]

    def means(self, *command):
        own = self.own_tables(command)
        tables, printed = self.tables(*command, "--type", "1", more=[*own, "type1.csv"])
        return {name[:-4]: tables[name[:-4]] for name in own}, printed

    def assert_letters(self, tables, kind):
        """Two categories share a letter exactly when their difference is not significant; the largest mean has an A."""
        letters = {row: cell for (row, column), cell in tables[kind].items() if column == "Groups"}
        rows = list(letters)
        self.assertIn("A", letters[rows[0]])
        pairs = {frozenset(row.split(" - ")): cell == "significant"
                 for (row, column), cell in tables[f"{kind}_contrasts"].items() if column == "Note"}
        self.assertEqual(len(pairs), len(rows) * (len(rows) - 1) // 2)
        for pair, significant in pairs.items():
            a, b = pair
            self.assertEqual(not set(letters[a]) & set(letters[b]), significant, (pair, letters))

    def test_tables(self):
        references = reference_values(means=True)
        self.assertEqual(set(references), set(self.COMMANDS))
        for case, command in self.COMMANDS.items():
            tables, _ = self.means(*command)
            by_range = self.RANGE if case.split()[-1] in self.BY_RANGE else {}
            for name, cells in references[case].items():
                shown = {key: cell for key, cell in tables[name].items() if cell and key[1] not in ("Note", "Groups")}
                if not name.endswith("_control"):
                    self.assertEqual(set(shown), set(cells), (case, name))
                for (row, column), expected in cells.items():
                    with self.subTest(case=case, table=name, row=row, column=column):
                        tolerance = by_range.get(column, ROUNDOFF)
                        found = float(shown[row, column])
                        self.assertTrue(math.isclose(found, expected, rel_tol=tolerance, abs_tol=1e-6 if by_range else 0.0),
                                        f"{found} instead of {expected}")
            if "--compare" in command:
                self.assert_letters(tables, "lsmeans" if "--lsmeans" in command else "means")

    def test_constraints_do_not_change_them(self):
        for terms in ("partner.status fcategory", "partner.status fcategory partner.status*fcategory"):
            for constraint in ("last", "sum", "weighted"):
                command = [*CELLS[:-1], terms, "--means", "fcategory", "--lsmeans", "partner.status", "--compare", "lsd"]
                first, _ = self.means(*command)
                other, _ = self.means(*command, "--constraint", constraint)
                for name, cells in first.items():
                    for key, cell in cells.items():
                        with self.subTest(terms=terms, constraint=constraint, table=name, cell=key):
                            if key[1] in ("Note", "Groups"):
                                self.assertEqual(other[name][key], cell)
                            else:
                                self.assertTrue(math.isclose(float(other[name][key]), float(cell), rel_tol=ROUNDOFF))

    def test_every_procedure_groups_by_its_verdicts(self):
        for procedure in ("tukey", "lsd", "bonferroni", "sidak", "snk", "duncan", "regwq", "games-howell", "tamhane",
                          "dunnett-c", "bh"):
            with self.subTest(procedure):
                self.assert_letters(self.means(*CHICKS, "--compare", procedure)[0], "means")

    def test_where_no_letters_fit(self):
        # Games-Howell has nothing to compare two groups with that do not vary.
        rows = "".join(f"{value},{group}\n" for group, values in (("a", (1, 1)), ("b", (1.5, 1.5)), ("c", (4, 6)))
                       for value in values)
        data = self.write("y,g\n" + rows)
        command = ["anova", data, "--response", "y", "--terms", "g", "--means", "g", "--compare"]
        tables, printed = self.means(*command, "games-howell")
        self.assertEqual(tables["means_contrasts"]["a - b", "Note"], "not tested")
        self.assertNotIn(("a", "Groups"), tables["means"])
        self.assertIn("no letter groups fit", printed)
        self.assertIn("a letter in common", self.means(*command, "tukey")[1])
        # q stands for l: the difference of q and p has no variance, and the test is repeated with a common one.
        data = self.write("y,a,b\n1,k,p\n3,k,p\n8,k,r\n9,k,r\n5,l,q\n7,l,q\n6,l,q\n")
        for procedure in ("bh", "lsd"):
            tables, printed = self.means("anova", data, "--response", "y", "--terms", "a b", "--lsmeans", "b",
                                         "--compare", procedure)
            self.assertIn("one variance from the harmonic mean", printed)
        mse = (2 + 0.5 + 2) / 4
        self.assertAlmostEqual(float(tables["lsmeans_contrasts"]["p - r", "Standard error"]),
                               math.sqrt(2 * mse / (3 / (1 / 2 + 1 / 2 + 1 / 3))))
        self.assertEqual(tables["lsmeans"]["p", "Groups"], tables["lsmeans"]["q", "Groups"])

    def test_empty_cells(self):
        data = self.write("y,a,b\n1,k,p\n2,k,p\n4,k,q\n5,k,q\n3,l,p\n5,l,p\n6,m,p\n5,m,q\n9,m,q\n")
        command = ["anova", data, "--response", "y", "--terms", "a b a*b"]
        tables, _ = self.means(*command, "--means", "a*b", "--lsmeans", "a", "--compare", "lsd")
        self.assertEqual(tables["means"]["l*q", "Note"], "no rows")
        self.assertAlmostEqual(float(tables["means"]["l*p", "Mean"]), 4.0)
        self.assertEqual(sum(column == "Note" for _, column in tables["means_contrasts"]), 10)
        self.assertEqual(tables["lsmeans"]["l", "Note"], "not estimable: an empty cell")
        self.assertEqual(tables["lsmeans"]["l", "Mean"], "")
        self.assertAlmostEqual(float(tables["lsmeans"]["m", "Mean"]), 6.5)
        self.assertEqual({row for row, _ in tables["lsmeans_contrasts"]}, {"k - m"})
        self.assert_letters({name: {key: cell for key, cell in cells.items() if key[0] not in ("l", "l*q")}
                             for name, cells in tables.items()}, "means")
        done = run(*command, "--lsmeans", "a", "--control", "l")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("--control: 'l' is no category with a mean of 'a'", done.stderr)

    def test_an_interaction_without_a_main_effect(self):
        tables, _ = self.tables("anova", DATA / "warpbreaks.csv", "--response", "breaks", "--terms", "wool wool*tension",
                                "--lsmeans", "wool", "--type", "1", more=["lsmeans.csv", "type1.csv"])
        value = {row: float(cell) for (row, column), cell in tables["parameters"].items() if column == "Value"}
        cells = sum(value[f"wool-B*tension-{tension}"] for tension in "HLM") / 3
        self.assertAlmostEqual(float(tables["lsmeans"]["B", "Mean"]), value["Intercept"] + value["wool-B"] + cells)

    def test_a_term_that_a_selection_leaves_out(self):
        command = ["anova", DATA / "moore.csv", "--response", "conformity", "--terms", "partner.status fcategory",
                   "--lsmeans", "fcategory", "--lsmeans", "partner.status"]
        for selection in ("backward", "best"):
            done = run(*command, "--selection", selection)
            self.assertIn("Least-squares means of fcategory: not in the model", done.stdout)
            alone = run(*command[:5], "partner.status", "--lsmeans", "partner.status")
            title = "Least-squares means of partner.status"
            self.assertIn(title, done.stdout)
            self.assertEqual(done.stdout.split(title)[1], alone.stdout.split(title)[1])


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


class Selecting(InFolder):
    STATES = ["regress", DATA / "states.csv", "--response", "Murder"]
    TERMS = ["Illiteracy", "Frost", "Income", "region"]

    def select(self, *arguments, terms=TERMS):
        tables, printed = self.tables(*self.STATES, "--terms", " ".join(terms), "--selection", *arguments,
                                      more=["models.csv"])
        return tables, list(dict.fromkeys(row for row, _ in tables["models"])), printed

    def assert_fit_of(self, tables, terms, constraint):
        """All cells are those of a fit of the terms alone; the other terms are said to be out."""
        alone, _ = self.tables(*self.STATES, "--terms", terms, "--constraint", constraint)
        for (row, column), cell in alone["parameters"].items():
            found = tables["parameters"][row, column]
            if column == "Note" or "" in (cell, found):
                self.assertEqual(found, cell, (row, column))
            else:
                self.assertTrue(math.isclose(float(found), float(cell), rel_tol=ROUNDOFF), (row, column))
        for row in {row for row, _ in tables["parameters"]} - {row for row, _ in alone["parameters"]}:
            self.assertEqual(tables["parameters"][row, "Note"], "not in the model")

    def test_best_of_all_subsets(self):
        errors = {}
        for size in range(1, 5):
            for terms in itertools.combinations(self.TERMS, size):
                alone, _ = self.tables(*self.STATES, "--terms", " ".join(terms))
                errors[terms] = float(alone["anova"]["Error", "Sum of squares"])
        for constraint in ("first", "last", "sum", "weighted"):
            tables, sizes, printed = self.select("best", "--constraint", constraint)
            self.assertEqual(sizes, ["1 term", "2 terms", "3 terms", "4 terms"])
            for size, label in enumerate(sizes, 1):
                best = min((terms for terms in errors if len(terms) == size), key=errors.get)
                self.assertEqual(tables["models"][label, "Terms in the model"], " ".join(best))
                self.assertAlmostEqual(float(tables["models"][label, "SSE"]), errors[best], delta=1e-9 * errors[best])
            notes = [tables["models"][label, "Note"] for label in sizes]
            self.assertEqual(notes, ["", "", "best", ""])
            self.assert_fit_of(tables, "Illiteracy Income region", constraint)
            self.assertEqual(tables["fit"]["Mallows' Cp", "Value"], tables["models"]["3 terms", "Cp"])
            self.assertIn("Selection: best subsets by adjusted R squared", printed)

    def test_criteria_and_sizes(self):
        """The chosen rows follow from the statistics that the table shows."""
        for criterion, head in (("mse", "MSE"), ("aic", "AIC"), ("sbc", "SBC"), ("pc", "PC"), ("cp", "Cp")):
            tables, sizes, _ = self.select("best", "--criterion", criterion)
            def value(label):
                shown = float(tables["models"][label, head])
                if criterion != "cp":
                    return shown
                distance = abs(shown - float(tables["models"][label, "Columns"]) - 1)
                return distance if distance > 1e-12 else math.inf  # all terms
            self.assertEqual([tables["models"][label, "Note"] for label in sizes],
                             ["best" if label == min(sizes, key=value) else "" for label in sizes], criterion)
        tables, sizes, _ = self.select("best", "--min-vars", "1", "--max-vars", "2")
        self.assertEqual((sizes, tables["models"]["2 terms", "Note"]), (["1 term", "2 terms"], "best"))
        _, sizes, _ = self.select("best", "--min-vars", "3")
        self.assertEqual(sizes, ["3 terms", "4 terms"])

    def test_steps(self):
        for arguments, steps, constraint in (
                (["stepwise"], ["+ Illiteracy", "+ region"], "first"),
                (["forward", "--enter", "0.2"], ["+ Illiteracy", "+ region", "+ Income"], "sum"),
                (["forward", "--enter", "0.0001"], ["+ Illiteracy"], "last"),
                (["backward"], ["all terms", "- Frost", "- Income"], "weighted"),
                (["backward", "--remove", "0.5"], ["all terms", "- Frost"], "first")):
            with self.subTest(arguments=arguments):
                tables, shown, _ = self.select(*arguments, "--constraint", constraint)
                self.assertEqual(shown, steps)
                terms = tables["models"][steps[-1], "Terms in the model"]
                self.assert_fit_of(tables, terms, constraint)
                self.assertTrue(math.isclose(float(tables["models"][steps[-1], "Cp"]),
                                             float(tables["fit"]["Mallows' Cp", "Value"]), rel_tol=ROUNDOFF))

    def test_nothing_left(self):
        """A term that explains nothing at all does not enter, though it would be the first."""
        data = self.write("y,x,g\n1,2,a\n2,1,b\n3,0,a\n4,1,b\n5,2,a\n")
        for method in ("forward", "stepwise"):
            tables, printed = self.tables("anova", data, "--response", "y", "--terms", "g x", "--covariate", "x",
                                          "--selection", method, "--lsmeans", "g", "--type", "1,2,3",
                                          more=["models.csv", "lsmeans.csv", "type1.csv", "type2.csv", "type3.csv"])
            self.assertIn("Selection of variables: none enters", printed)
            self.assertEqual((tables["models"], tables["lsmeans"]), ({}, {}))
            self.assertEqual([tables["anova"]["Model", column] for column in ("DF", "Mean square", "F", "Pr > F")],
                             ["0", "", "", ""])
            for name in ("type1", "type2", "type3"):
                self.assertEqual(tables[name]["g", "Note"], "not in the model")

    def test_more_steps_than_terms(self):
        """A step beyond the number of terms has no Cp; 0 would be a value."""
        data = self.write("y,a,b,c\n2.2,1,1,1\n7.2,2,5,7\n6.7,3,4,6\n10.8,4,7,12\n10.7,5,6,11\n6.9,6,1,5\n"
                          "12.7,7,6,14\n15.1,8,7,17\n")
        tables, _ = self.tables("regress", data, "--response", "y", "--terms", "a b c", "--selection", "stepwise",
                                "--enter", "0.9", "--remove", "0.05", more=["models.csv"])
        steps = [(row, cell != "") for (row, column), cell in tables["models"].items() if column == "Cp"]
        self.assertEqual(steps, [("+ c", True), ("+ a", True), ("+ b", True), ("- c", False)])

    def test_type_tables_of_what_is_left(self):
        alone, _ = self.tables(*self.STATES, "--terms", "Illiteracy Income region", "--type", "1,2,3",
                               more=["type1.csv", "type2.csv", "type3.csv"])
        for arguments in (["best"], ["backward", "--remove", "0.5"]):
            for constraint in ("first", "sum"):
                tables, _ = self.tables(*self.STATES, "--terms", " ".join(self.TERMS), "--type", "1,2,3",
                                        "--selection", *arguments, "--constraint", constraint,
                                        more=["models.csv", "type1.csv", "type2.csv", "type3.csv"])
                for name in ("type1", "type2", "type3"):
                    self.assertEqual(tables[name]["Frost", "Note"], "not in the model")
                    self.assertEqual(tables[name]["Frost", "DF"], "0")
                    for (row, column), cell in alone[name].items():
                        if column != "Note":
                            self.assertTrue(math.isclose(float(tables[name][row, column]), float(cell),
                                                         rel_tol=1e-8), (name, row, column))


class Testing(InFolder):
    def test_which_tables_stand_by_default(self):
        data = DATA / "moore.csv"
        for arguments, more in (
                (["anova", "--terms", "fcategory"], []),
                (["anova", "--terms", "partner.status fcategory"], ["type3.csv"]),
                (["anova", "--terms", "partner.status fcategory", "--intercept", "10"], []),
                (["anova", "--terms", "partner.status fcategory", "--type", "2"], ["type2.csv"]),
                (["regress", "--terms", "partner.status fscore"], [])):
            self.tables(arguments[0], data, "--response", "conformity", *arguments[1:], more=more)

    def test_notes_where_the_test_is_another_one(self):
        moore = [DATA / "moore.csv", "--response", "conformity", "--covariate", "fscore"]
        tables, _ = self.tables("anova", *moore, "--terms", "fscore partner.status fscore*partner.status",
                                "--type", "2", more=["type2.csv"])
        self.assertEqual(tables["type2"]["partner.status", "Note"], "given fscore*partner.status too")
        self.assertEqual(tables["type2"]["fscore", "Note"], "")
        lonely = ["anova", DATA / "warpbreaks.csv", "--response", "breaks", "--terms", "wool*tension", "--type", "3"]
        tables, _ = self.tables(*lonely, "--constraint", "sum", more=["type3.csv"])
        self.assertEqual(tables["type3"]["wool*tension", "F"], "")
        self.assertIn("not defined", tables["type3"]["wool*tension", "Note"])
        tables, _ = self.tables(*lonely, more=["type3.csv"])
        self.assertEqual(tables["type3"]["wool*tension", "DF"], "2")


class Predicting(InFolder):
    def test_rows_outside_the_fit_change_nothing_in_it(self):
        rows = SMALL.split("\n")
        held = self.write("\n".join([*rows[:3], "9,9,b,1", ",1,a,1", "2,3,c,1", *rows[3:]]), "held.csv")
        new = self.write("g,x\nb,3\nz,3\na,NA\na,1.5\n", "new.csv")
        expected, _ = self.tables("regress", self.write(SMALL), "--response", "y", "--terms", "x g", "--weights", "w")
        tables, printed = self.tables("regress", held, "--response", "y", "--terms", "x g", "--weights", "w",
                                      "--validate", "3-4,5", "--predict", new,
                                      more=["validation.csv", "predictions.csv"])
        for name in ("anova", "parameters", "covariance"):
            self.assertEqual(tables[name], expected[name])
        self.assertIn("held.csv: 5 observations used, 0 rows dropped", printed)
        self.assertIn("Validation: 1 row used, 1 dropped for missing cells, 1 for unknown categories", printed)
        self.assertIn("Prediction: 2 rows used, 1 dropped for missing cells, 1 for unknown categories", printed)
        value = {row: float(expected["parameters"][row, "Value"]) for row in ("Intercept", "x", "g-b")}
        at = lambda x, b: value["Intercept"] + x * value["x"] + b * value["g-b"]
        self.assertAlmostEqual(float(tables["predictions"]["1", "Prediction"]), at(3, 1), delta=1e-12)
        self.assertAlmostEqual(float(tables["predictions"]["4", "Prediction"]), at(1.5, 0), delta=1e-12)
        self.assertAlmostEqual(float(tables["validation"]["3", "Residual"]), 9 - at(9, 1), delta=1e-12)
        self.assertEqual(float(tables["validation"]["3", "Weight"]), 1)

    def test_numbers_as_categories_match_by_value(self):
        data = self.write("y,d\n1,10\n2,9\n4,9.0\n3,100\n5,100\n6,10\n")
        new = self.write("d\n1e2\n9\nten\n", "new.csv")
        tables, printed = self.tables("anova", data, "--response", "y", "--terms", "d", "--predict", new,
                                      more=["predictions.csv"])
        self.assertAlmostEqual(float(tables["predictions"]["1", "Prediction"]), 4, delta=1e-12)
        self.assertAlmostEqual(float(tables["predictions"]["2", "Prediction"]), 3, delta=1e-12)
        self.assertIn("2 rows used, 0 dropped for missing cells, 1 for unknown", printed)


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

    def test_numbers_that_are_none_leave_their_cell_empty(self):
        """Some studentised residuals of so few rows are roots of negative numbers."""
        data = self.write('y,x,"a\nb"\n1,1,p\n3,2,"q\nr"\n4,4,p\n')
        tables, printed = self.tables("regress", data, "--response", "y", "--terms", "x", "--intercept", "0")
        self.assertEqual(tables["cases"]["3", "Studentised residual"], "")
        tables, printed = self.tables("regress", data, "--response", "y", "--terms", '"a\nb"', "--cases")
        self.assertRegex(printed, r"(?m)^Linear regression of y on a b$")
        self.assertRegex(printed, r"(?m)^  a b-q r +0\.5 ")
        self.assertNotRegex(printed, r"\bnan\b|\binf\b")
        self.assertIn(("a\nb-q\nr", "Value"), tables["parameters"])

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
                ("y,x\n1e300,1\n2e300,2\n3,4\n", "the numbers of 'y' are too large to compute with: up to 2e+300"),
                ("y,x\n1,1e-300\n2,2e-300\n3,4e-300\n", "the numbers of 'x' are too small"),
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
        gap = self.write("y,x\n1,1\n2,2\n3,\n5,4\n", "gap.csv")
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
                (data, [*self.MODEL, "--validate", "3-x"], "--validate: '3-x' is no list of data rows"),
                (data, [*self.MODEL, "--validate", "1,"], "'1,' is no list"),
                (data, [*self.MODEL, "--validate", "0"], "'0' is no list"),
                (data, [*self.MODEL, "--validate", "3-2"], "3-2 runs backwards"),
                (data, [*self.MODEL, "--validate", "2,6"], "there is no data row 6, the last is 5"),
                (data, [*self.MODEL, "--validate", "1-5"], "no rows left"),
                (gap, [*self.MODEL, "--validate", "3"], "--validate: none of the rows is usable: 1 with a missing cell"),
                (negative, [*self.MODEL, "--weights", "w", "--validate", "2"], "weights 'w' must not be negative"),
                (data, [*self.MODEL, "--predict", self.folder / "none.csv"], "--predict: cannot open"),
                (data, [*self.MODEL, "--predict", self.write("z\n1\n", "z.csv")], "--predict: there is no column"),
                (data, [*self.MODEL, "--predict", self.write("x\nb\n", "b.csv")], "--predict: column 'x' must be"),
                (data, [*self.MODEL, "--predict", self.write("x\nNA\n", "n.csv")], "none of the rows is usable"),
                (data, [*self.MODEL, "--predict", self.write("x\n1e300\n", "h.csv")], "numbers of 'x' are too large"),
                (data, ["--response", "y", "--terms", "x*x*x*x", "--weights", "a\nb"], "no column named 'a b'"),
                (product, ["--response", "y", "--terms", "x " + "*".join(["z"] * 120)], "are too large"),
                (data, [*self.MODEL, "--selection", "best", "--min-vars", "2"], "--min-vars 2 is more than"),
                (data, [*self.MODEL, "--selection", "best", "--criterion", "cp"], "no subset of --min-vars"),
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
                (["regress", data, *self.MODEL, "--tolerance", "nan"], "--tolerance: nan is not between 0 and 1"),
                (["regress", data, *self.MODEL, "--intercept", "nan"], "--intercept"),
                (["regress", data, *self.MODEL, "--intercept", "1e308"], "--intercept: 1e308 is too large"),
                (["regress", data, *self.MODEL, "--weights", ""], "--weights: is empty"),
                (["regress", data, *self.MODEL, "--validate", ""], "--validate: is empty"),
                (["regress", data, *self.MODEL, "--predict="], "--predict"),
                (["regress", data, *self.MODEL, "--out", ""], "--out: is empty"),
                (["regress", data, *self.MODEL, "--alpha", "0.1", "--alpha", "0.2"], "--alpha"),
                (["regress", data, *self.MODEL, "--line\nend"], "--line end"),
                (["regress", data, *self.MODEL, "--covariate", "x"], "--covariate"),
                (["regress", data, *self.MODEL, "--selection", "all"], "--selection"),
                (["regress", data, *self.MODEL, "--criterion", "aic"], "--criterion: belongs to --selection best"),
                (["regress", data, *self.MODEL, "--selection", "stepwise", "--min-vars", "1"],
                 "--min-vars: belongs to --selection best"),
                (["regress", data, *self.MODEL, "--selection", "forward", "--max-vars", "1"], "--max-vars: belongs"),
                (["regress", data, *self.MODEL, "--selection", "backward", "--enter", "0.1"],
                 "--enter: belongs to --selection stepwise or forward"),
                (["regress", data, *self.MODEL, "--selection", "forward", "--remove", "0.1"],
                 "--remove: belongs to --selection stepwise or backward"),
                (["regress", data, *self.MODEL, "--selection", "best", "--min-vars", "3", "--max-vars", "2"],
                 "--max-vars: is below --min-vars"),
                (["regress", data, *self.MODEL, "--selection", "best", "--min-vars", "0"], "--min-vars"),
                (["regress", data, *self.MODEL, "--selection", "stepwise", "--enter", "0"], "--enter"),
                (["regress", data, *self.MODEL, "--means", "x"], "--means"),
                (["anova", data, *self.MODEL, "--compare", "lsd"], "--compare: belongs to --means or --lsmeans"),
                (["anova", data, *self.MODEL, "--control", "1"], "--control: belongs to --means or --lsmeans"),
                (["anova", data, *self.MODEL, "--means", "x", "--tail", "upper"], "--tail: belongs to --control"),
                (["anova", data, *self.MODEL, "--means", "x", "--compare", "scheffe"], "--compare"),
                (["anova", data, *self.MODEL, "--lsmeans", "x", "--compare", "tamhane"], "compare --means alone"),
                (["anova", data, *self.MODEL, "--means", "x", "--compare", "dunnett-c", "--weights", "w"],
                 "know no --weights"),
                (["regress", data, *self.MODEL, "--type", "4"], "--type"),
                (["regress", data, *self.MODEL, "--type", "1,"], "--type"),
                (["regress", data, *self.MODEL, "--type", "1,2", "--intercept", "0"], "need an intercept"),
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
