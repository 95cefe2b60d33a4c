"""Writes longley_exact.txt: the least squares fit of the Longley data by exact rational arithmetic.

    python3 tests/reference/longley_exact.py

Data: J. W. Longley (1967), "An appraisal of least squares programs for the electronic computer from the point of view
of the user", JASA 62; the data set Longley of the NIST Statistical Reference Datasets. The certified values of that
collection stand below; the script stops when the exact solution does not round to them.
"""
import pathlib
from decimal import Decimal, getcontext
from fractions import Fraction

getcontext().prec = 60

ROWS = """60323 83.0 234289 2356 1590 107608 1947
61122 88.5 259426 2325 1456 108632 1948
60171 88.2 258054 3682 1616 109773 1949
61187 89.5 284599 3351 1650 110929 1950
63221 96.2 328975 2099 3099 112075 1951
63639 98.1 346999 1932 3594 113270 1952
64989 99.0 365385 1870 3547 115094 1953
63761 100.0 363112 3578 3350 116219 1954
66019 101.2 397469 2904 3048 117388 1955
67857 104.6 419180 2822 2857 118734 1956
68169 108.4 442769 2936 2798 120445 1957
66513 110.8 444546 4681 2637 121950 1958
68655 112.6 482704 3813 2552 123366 1959
69564 114.2 502601 3931 2514 125368 1960
69331 115.7 518173 4806 2572 127852 1961
70551 116.9 554894 4007 2827 130081 1962"""

CERTIFIED = ["-3482258.63459582", "15.0618722713733", "-0.0358191792925910", "-2.02022980381683", "-1.03322686717359",
             "-0.0511041056535807", "1829.15146461355"]
CERTIFIED_SIGMA, CERTIFIED_R2 = "304.854073561965", "0.995479004577296"


def inverse(a):
    n = len(a)
    work = [row[:] + [Fraction(int(i == j)) for j in range(n)] for i, row in enumerate(a)]
    for i in range(n):
        pivot = next(r for r in range(i, n) if work[r][i] != 0)
        work[i], work[pivot] = work[pivot], work[i]
        work[i] = [v / work[i][i] for v in work[i]]
        for r in range(n):
            if r != i and work[r][i] != 0:
                work[r] = [v - work[r][i] * u for v, u in zip(work[r], work[i])]
    return [row[n:] for row in work]


def decimal(q):
    return Decimal(q.numerator) / Decimal(q.denominator)


def must_round_to(value, certified):
    digits = Decimal(certified)
    if value.quantize(digits) != digits:
        raise SystemExit(f"{value} does not round to {certified}")


rows = [[Fraction(cell) for cell in line.split()] for line in ROWS.splitlines()]
y = [r[0] for r in rows]
x = [[Fraction(1)] + r[1:] for r in rows]
n, k = len(x), len(x[0])
cross = inverse([[sum(r[i] * r[j] for r in x) for j in range(k)] for i in range(k)])
xy = [sum(r[i] * v for r, v in zip(x, y)) for i in range(k)]
b = [sum(c * v for c, v in zip(row, xy)) for row in cross]
sse = sum((v - sum(c * u for c, u in zip(r, b))) ** 2 for r, v in zip(x, y))
mean = sum(y) / n
mse = sse / (n - k)
sigma, r2 = decimal(mse).sqrt(), decimal(1 - sse / sum((v - mean) ** 2 for v in y))

for value, certified in zip(b, CERTIFIED):
    must_round_to(decimal(value), certified)
must_round_to(sigma, CERTIFIED_SIGMA)
must_round_to(r2, CERTIFIED_R2)

errors = [decimal(mse * cross[i][i]).sqrt() for i in range(k)]
with open(pathlib.Path(__file__).with_name("longley_exact.txt"), "w", encoding="ascii") as out:
    out.write("case longley_exact\n")
    for name, values in [("y", y), ("x", [r[j] for j in range(1, k) for r in x]),
                         ("coefficients", b), ("standard_errors", errors), ("sigma_r2", [sigma, r2])]:
        columns = k - 1 if name == "x" else 1
        cells = [v if isinstance(v, Decimal) else decimal(v) for v in values]
        out.write(f"{name} {len(cells) // columns} {columns} " + " ".join(f"{c:.16e}" for c in cells) + "\n")
