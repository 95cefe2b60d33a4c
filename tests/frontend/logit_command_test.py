"""`korven logit` from outside: its tables against glm(), its files, and each refusal.

    logit_command_test.py <korven> <top of the checkout>
"""

import csv
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree
from pathlib import Path

KORVEN = Path(sys.argv[1]).resolve()
TOP = Path(sys.argv[2]).resolve()
DATA = TOP / "examples" / "data"

SETTLED = 2e-7  # relative; the engine's search ends within 1e-7 standard errors of the maximum
TOLERANCE = {"moore": 1e-6}  # multinom's own search
NUMBER = re.compile(r"-?[0-9.]+(e[-+][0-9]+)?")

BIRTHWT = [DATA / "birthwt.csv", "--response", "low", "--terms", "age lwt race smoke",
           "--qualitative", "race", "--qualitative", "smoke", "--classify", "0.4", "--alpha", "0.1"]
SELECTED = [DATA / "birthwt.csv", "--response", "low", "--terms", "age lwt race smoke ptl ht ui", "--qualitative",
            "race", "--selection"]
MOORE = [DATA / "moore.csv", "--response", "fcategory", "--terms", "conformity partner.status"]
MENARCHE = [DATA / "menarche.csv", "--response", "Menarche", "--trials", "Total", "--terms", "Age", "--dose",
            "--alpha", "0.1"]


def run(*arguments):
    return subprocess.run([KORVEN, "logit", *map(str, arguments)], capture_output=True, text=True, timeout=60)


def read_table(path):
    with open(path, newline="", encoding="utf-8") as file:
        head, *rows = csv.reader(file)
    if head[1] == "Parameter":  # of a category
        head, rows = head[1:], [[f"{row[0]}:{row[1]}", *row[2:]] for row in rows]
    cells = {}
    for row in rows:
        label = f"{row[0]} again" if (row[0], head[1]) in cells else row[0]
        cells.update({(label, name): cell for name, cell in zip(head[1:], row[1:])})
    return cells


class Logit(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)

    def tables(self, *arguments):
        out = self.folder / "out"
        done = run(*arguments, "--out", out)
        self.assertEqual(done.returncode, 0, done.stderr)
        return {path.stem: read_table(path) for path in out.iterdir()}, done.stdout

    def write(self, text):
        path = self.folder / "data.csv"
        path.write_text(text, encoding="utf-8")
        return path

    def test_tables_agree_with_r(self):
        requests = {"birthwt": BIRTHWT, "menarche": MENARCHE, "best": [*SELECTED, "best"],
                    "stepwise": [*SELECTED, "stepwise", "--enter", "0.25", "--remove", "0.12"],
                    "moore": [*MOORE, "--reference", "medium", "--alpha", "0.1"]}
        found = {case: self.tables(*request)[0] for case, request in requests.items()}
        with open(TOP / "tests" / "reference" / "frontend_logit_values.csv", newline="", encoding="utf-8") as file:
            values = list(csv.DictReader(file))
        self.assertGreater(len(values), 200)
        for row in values:
            with self.subTest(**row):
                cell = found[row["case"]][row["table"]][row["row"], row["column"]]
                if not NUMBER.fullmatch(row["value"]):
                    self.assertEqual(cell, row["value"])
                    continue
                got, want = float(cell), float(row["value"])
                scale = 1.0 if row["column"].startswith("Lower") else abs(want)
                self.assertLessEqual(abs(got - want), TOLERANCE.get(row["case"], SETTLED) * scale)

    def test_curve_and_drawing(self):
        roc, plot = self.folder / "roc.csv", self.folder / "roc.svg"
        done = run(*BIRTHWT, "--roc", roc, "--plot", plot)
        self.assertEqual(done.returncode, 0, done.stderr)
        points = read_table(roc)
        self.assertEqual(float(points["1", "Sensitivity"]), 1.0)
        self.assertAlmostEqual(float(points["190", "False-positive rate"]), 0.0, places=12)
        area = sum((float(points[str(i), "False-positive rate"]) - float(points[str(i + 1), "False-positive rate"]))
                   * float(points[str(i + 1), "Sensitivity"]) for i in range(1, 190))
        self.assertIn(f"area under the ROC curve {area:.6g}", done.stdout)
        drawing = xml.etree.ElementTree.parse(plot).getroot()
        texts = [element.text for element in drawing.iter("{http://www.w3.org/2000/svg}text")]
        self.assertIn(f"area {area:.4f}", texts)
        curve = drawing.find("{http://www.w3.org/2000/svg}polyline").get("points").split()
        self.assertEqual(len(curve), 190)
        self.assertEqual((curve[0], curve[-1]), ("360.00,40.00", "60.00,340.00"))

    def test_options_reach_the_fit(self):
        plain = self.tables(*MENARCHE)[0]["parameters"]
        for options, same in ((["--firth"], False), (["--link", "probit"], False), (["--mortality", "0.02"], False),
                              (["--profile"], True)):
            with self.subTest(options=options):
                other, report = self.tables(*MENARCHE, *options)
                value = other["parameters"]["Age", "Value"]
                self.assertEqual(value == plain["Age", "Value"], same)
                self.assertEqual(("Age", "Odds ratio") in other["parameters"], options[0] != "--link")
                self.assertEqual(("Age", "Profile lower 90%") in other["parameters"], same)
                self.assertEqual(("Mortality", "Value") in other["parameters"], options[0] == "--mortality")
                self.assertIn("Link: probit" if options[0] == "--link" else "Link: logit", report)

    def test_selections(self):
        last = {"forward": "+ lwt", "backward": "- ptl", "backward-stepwise": "- ptl"}
        for name, label in last.items():
            with self.subTest(selection=name):
                tables, report = self.tables(*SELECTED, name)
                models = tables["models"]
                self.assertEqual(list(models)[-1][0], label)
                self.assertEqual("all terms" in {row for row, _ in models}, name != "forward")
                self.assertAlmostEqual(float(models[label, "AIC"]), float(tables["fit"]["AIC", "Fitted"]), places=9)
                self.assertEqual(models[label, "Removal chi-square"] == "", name == "forward")
        for criterion, test in (("lr", "LR"), ("wald", "Wald")):
            tables, report = self.tables(*SELECTED, "backward", "--criterion", criterion, "--remove", "0.02",
                                         "--constraint", "sum", "--profile")
            p = float(tables["models"][list(tables["models"])[-1][0], "Pr > removal chi-square"])
            kept = {term: float(cell) for (term, name), cell in tables["type3"].items()
                    if name == f"Pr > {test}" and cell}
            self.assertAlmostEqual(max(kept.values()), p, places=8)
            self.assertLess(len(kept), 7)
            for (label, name), cell in tables["parameters"].items():
                term = label.partition("-")[0]
                if name == "Note" and term not in kept and label != "Intercept":
                    self.assertEqual(cell, "not in the model")
                    self.assertEqual(tables["parameters"][label, "Odds ratio"], "")
        tables, report = self.tables(*SELECTED, "best", "--criterion", "sbc", "--min-vars", "0", "--max-vars", "2")
        self.assertEqual([row for row, name in tables["models"] if name == "Note"], ["0 terms", "1 term", "2 terms"])
        self.assertEqual(tables["models"]["0 terms", "Note"], "best")
        self.assertEqual(tables["type3"]["age", "Note"], "not in the model")
        tables, report = self.tables(*SELECTED, "best", "--criterion", "lr", "--min-vars", "0", "--max-vars", "1")
        self.assertEqual(tables["models"]["0 terms", "AIC"], "")
        steps = self.tables(*MENARCHE[:-3], "--alpha", "0.1", "--selection", "forward", "--mortality", "estimate")[0]
        self.assertEqual(steps["models"]["+ Age", "Pr > score"], "")
        self.assertIn("none enters", run(*SELECTED, "forward", "--enter", "0.0001").stdout)

    def test_too_many_subsets(self):
        names = [f"v{i}" for i in range(17)]
        rows = [",".join([str(i % 2), *(str((i * (j + 3)) % 11) for j in range(17))]) for i in range(60)]
        data = self.write("\n".join([",".join(["y", *names]), *rows]))
        request = [data, "--response", "y", "--terms", " ".join(names), "--selection", "best"]
        self.assertIn("would fit 131071 models, more than 100000", run(*request).stderr)
        self.assertEqual(run(*request, "--max-vars", "2").returncode, 0)

    def test_responses_of_categories(self):
        data = self.write("y,n,x\nno,1,1\nyes,3,2\nno,1,4\nyes,3,3\nyes,3,5\nno,1,6\n")
        model = {}
        for name, arguments in {"text": ["y"], "turned": ["y", "--reference", "yes"],
                                "numbers": ["n", "--multinomial", "--reference", "1.0"]}.items():
            tables, report = self.tables(data, "--response", *arguments, "--terms", "x")
            model[name] = float(tables["parameters"]["x", "Value"])
            event, other = {"text": ("yes", "no"), "turned": ("no", "yes"), "numbers": ("3", "1")}[name]
            self.assertIn(f"Response: category {event} against {other}\n", report)
            self.assertIn((other, f"Predicted {event}"), tables["classification"])
            self.assertNotIn("type3", tables)
        self.assertEqual(model["text"], model["numbers"])
        self.assertAlmostEqual(model["text"], -model["turned"], places=9)
        self.assertIn("categories high, low against medium", run(*MOORE, "--reference", "medium").stdout)
        report = run(*MOORE[:-1], "fscore").stdout
        self.assertIn("Response: categories low, medium against high", report)
        self.assertIn("the categories may be separated", report)
        self.assertNotIn("may be separated", run(*MOORE).stdout)

    def test_separated_category(self):
        data = self.write("y,g\n0,a\n0,a\n0,a\n1,b\n0,b\n1,b\n0,b\n1,c\n0,c\n1,c\n")
        done = run(data, "--response", "y", "--terms", "g")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("Firth's penalised likelihood", done.stdout)

    def test_as_many_successes_in_every_row(self):
        data = self.write("s,n,d\n3,10,1\n3,20,2\n3,30,3\n3,9,0.5\n3,15,1.2\n")
        parameters = self.tables(data, "--response", "s", "--trials", "n", "--terms", "d")[0]["parameters"]
        for row, value, error in (("Intercept", -0.452805016547934, 0.616331927088531),  # glm()
                                  ("d", -0.604256109537826, 0.334805571556775)):
            self.assertAlmostEqual(float(parameters[row, "Value"]), value, places=9)
            self.assertAlmostEqual(float(parameters[row, "Standard error"]), error, places=7)

    def test_cells_without_a_value(self):
        flat = self.write("s,n,d\n5,10,1\n5,10,2\n5,10,3\n")
        doses = self.tables(flat, "--response", "s", "--trials", "n", "--terms", "d", "--dose")[0]["doses"]
        self.assertEqual({doses[row, "Dose"] for row, _ in doses}, {""})  # of a slope of 0
        same = self.write("s,n,d\n5,10,1\n6,10,1\n7,10,1\n")
        tables, report = self.tables(same, "--response", "s", "--trials", "n", "--terms", "d", "--dose")
        self.assertEqual(tables["doses"], {})
        self.assertIn("(Fieller's bounds): the term is not in the model", report)
        fit = self.tables(*SELECTED, "forward", "--enter", "0.0001")[0]["tests"]
        self.assertEqual(fit["Fit (Hosmer-Lemeshow)", "DF"], "0")
        self.assertEqual(fit["Fit (Hosmer-Lemeshow)", "Pr > chi-square"], "")

    def test_refusals(self):
        small = self.write("y,s,n,x\n0,1,2,1\n1,3,2,2\n2,0,1,4\n1,1,1,3\n")
        cases = [(["--response", "y", "--terms", "x"], 1, "must be 0 or 1"),
                 (["--response", "s", "--trials", "n", "--terms", "x"], 1, "holds 3 of 2"),
                 ([*BIRTHWT[1:], "--dose"], 1, None),
                 (["--response", "y", "--terms", "x", "--link", "cauchit"], 2, "--link"),
                 (["--response", "y", "--terms", "x", "--trials", ""], 2, "--trials: is empty"),
                 (["--response", "y", "--terms", "x", "--roc", ""], 2, "--roc: is empty"),
                 (["--response", "y", "--terms", "x", "--tolerance", "nan"], 2, "--tolerance"),
                 (["--response", "y", "--terms", "x", "--mortality", "1"], 2, "neither estimate nor a share"),
                 (["--response", "y", "--terms", "x", "--weights", "n"], 2, "--weights"),
                 (["--response", "y", "--terms", "x", "--reference", "1"], 1, "--reference belongs to a text"),
                 (["--response", "s", "--terms", "x", "--multinomial", "--reference", "2"], 1, "'2' is no category"),
                 (["--response", "s", "--terms", "x", "--multinomial", "--trials", "n"], 1, "--trials takes"),
                 (["--response", "s", "--terms", "y", "--multinomial", "--qualitative", "y"], 1, "has no row in one"),
                 (["--response", "s", "--terms", "x", "--multinomial", "--selection", "best", "--min-vars", "2"], 1,
                  "--min-vars 2 is"),
                 (["--response", "y", "--terms", "x", "--selection", "forward", "--criterion", "lr"], 2, "--criterion"),
                 (["--response", "y", "--terms", "x", "--selection", "backward", "--criterion", "aic"], 2, "lr or wald"),
                 (["--response", "y", "--terms", "x", "--enter", "0.1"], 2, "--enter: belongs to --selection"),
                 (["--response", "y", "--terms", "x", "--selection", "best", "--remove", "0.1"], 2, "--remove"),
                 (["--response", "y", "--terms", "x", "--selection", "best", "--dose"], 2, "--dose")]
        cases += [(["--response", "s", "--terms", "x", "--multinomial", *extra], 1,
                   f"{extra[0]} takes a response of two categories: this one has 3")
                  for extra in (["--profile"], ["--firth"], ["--roc", "r.csv"], ["--plot", "r.svg"], ["--dose"],
                                ["--classify", "0.5"], ["--link", "probit"], ["--mortality", "0.1"])]
        for arguments, code, text in cases:
            with self.subTest(arguments=arguments):
                done = run(small if text else BIRTHWT[0], *arguments)
                self.assertEqual(done.returncode, code)
                self.assertIn(text or "--dose takes a model of one numeric term", done.stderr)
                self.assertEqual(done.stdout, "")
                self.assertEqual(done.stderr.count("\n"), 1)
        done = run(*BIRTHWT, "--plot", self.folder / "none" / "roc.svg")
        self.assertEqual(done.returncode, 1)
        self.assertIn("cannot write", done.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
