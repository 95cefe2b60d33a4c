"""`korven logit` from outside: its tables against glm(), its files, and each refusal.

    logit_command_test.py <korven> <top of the checkout>
"""

import csv
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

BIRTHWT = [DATA / "birthwt.csv", "--response", "low", "--terms", "age lwt race smoke",
           "--qualitative", "race", "--qualitative", "smoke", "--classify", "0.4", "--alpha", "0.1"]
MENARCHE = [DATA / "menarche.csv", "--response", "Menarche", "--trials", "Total", "--terms", "Age", "--dose",
            "--alpha", "0.1"]


def run(*arguments):
    return subprocess.run([KORVEN, "logit", *map(str, arguments)], capture_output=True, text=True, timeout=60)


def read_table(path):
    with open(path, newline="", encoding="utf-8") as file:
        head, *rows = csv.reader(file)
    return {(row[0], name): cell for row in rows for name, cell in zip(head[1:], row[1:])}


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

    def test_tables_agree_with_glm(self):
        found = {"birthwt": self.tables(*BIRTHWT)[0], "menarche": self.tables(*MENARCHE)[0]}
        with open(TOP / "tests" / "reference" / "frontend_logit_values.csv", newline="", encoding="utf-8") as file:
            values = list(csv.DictReader(file))
        self.assertGreater(len(values), 40)
        for row in values:
            with self.subTest(**row):
                got = float(found[row["case"]][row["table"]][row["row"], row["column"]])
                want = float(row["value"])
                scale = 1.0 if row["column"].startswith("Lower") else abs(want)
                self.assertLessEqual(abs(got - want), SETTLED * scale)

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

    def test_separated_category(self):
        data = self.write("y,g\n0,a\n0,a\n0,a\n1,b\n0,b\n1,b\n0,b\n1,c\n0,c\n1,c\n")
        done = run(data, "--response", "y", "--terms", "g")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("Firth's penalised likelihood", done.stdout)

    def test_refusals(self):
        small = self.write("y,s,n,x\n0,1,2,1\n1,3,2,2\n2,0,1,4\n1,1,1,3\n")
        cases = [(["--response", "y", "--terms", "x"], 1, "must be 0 or 1"),
                 (["--response", "s", "--trials", "n", "--terms", "x"], 1, "holds 3 of 2"),
                 ([*BIRTHWT[1:], "--dose"], 1, None),
                 (["--response", "y", "--terms", "x", "--link", "cauchit"], 2, "--link"),
                 (["--response", "y", "--terms", "x", "--mortality", "1"], 2, "neither estimate nor a share"),
                 (["--response", "y", "--terms", "x", "--weights", "n"], 2, "--weights")]
        for arguments, code, text in cases:
            with self.subTest(arguments=arguments):
                done = run(small if text else BIRTHWT[0], *arguments)
                self.assertEqual(done.returncode, code)
                self.assertIn(text or "--dose takes a model of one numeric term", done.stderr)
                self.assertEqual(done.stdout, "")
        done = run(*BIRTHWT, "--plot", self.folder / "none" / "roc.svg")
        self.assertEqual(done.returncode, 1)
        self.assertIn("cannot write", done.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
