#!/usr/bin/env python3
"""Derives every coefficient table of src/kernel/distributions/coefficients.h in multiprecision and writes that file.

    python3 tools/distribution_coefficients.py > src/kernel/distributions/coefficients.h

Polynomials come from Chebyshev interpolation at 60 digits, truncated below KEEP of the largest coefficient and
rewritten in powers of the scaled variable t in -1..1. The uniform expansion of the beta distribution is derived in exact
rational arithmetic (function uniform_expansion). Needs mpmath.
"""
from fractions import Fraction
import mpmath as mp

mp.mp.dps = 60
KEEP = mp.mpf("2e-18")
NODES = 60


def chebyshev_coefficients(f, low, high):
    middle, half = (mp.mpf(low) + high) / 2, (mp.mpf(high) - low) / 2
    angles = [mp.pi * (j + mp.mpf(1) / 2) / NODES for j in range(NODES)]
    values = [f(middle + half * mp.cos(angle)) for angle in angles]
    c = [2 * mp.fsum(v * mp.cos(k * angle) for v, angle in zip(values, angles)) / NODES for k in range(NODES)]
    c[0] /= 2
    return c


def power_coefficients(c):
    """Chebyshev sum to powers of t, by T(k+1) = 2 t T(k) - T(k-1)."""
    total = [mp.mpf(0)] * len(c)
    previous, current = [mp.mpf(1)], [mp.mpf(0), mp.mpf(1)]
    for k, ck in enumerate(c):
        term = previous if k == 0 else current
        for i, v in enumerate(term):
            total[i] += ck * v
        if k >= 1:
            following = [mp.mpf(0)] + [2 * v for v in current]
            for i, v in enumerate(previous):
                following[i] -= v
            previous, current = current, following
    return total


def polynomial(f, low, high):
    c = chebyshev_coefficients(f, low, high)
    scale = max(abs(v) for v in c)
    count = max(k for k, v in enumerate(c) if abs(v) > KEEP * scale) + 1
    return power_coefficients(c[:count])


def rational(f, low, high, degree):
    """Numerator and denominator of the given degree in the plain variable, by interpolation at the Chebyshev points;
    the denominator starts with 1."""
    count = 2 * degree + 1
    middle, half = (mp.mpf(low) + high) / 2, (mp.mpf(high) - low) / 2
    rows, right = mp.matrix(count, count), mp.matrix(count, 1)
    for i in range(count):
        x = middle + half * mp.cos(mp.pi * (i + mp.mpf(1) / 2) / count)
        value = f(x)
        for j in range(degree + 1):
            rows[i, j] = x ** j
        for j in range(1, degree + 1):
            rows[i, degree + j] = -value * x ** j
        right[i] = value
    solution = mp.lu_solve(rows, right)
    return [solution[j] for j in range(degree + 1)], [mp.mpf(1)] + [solution[degree + j] for j in range(1, degree + 1)]


def literal(value):
    return repr(float(value))


def high_low(value):
    high = float(value)
    return "{" + repr(high) + ", " + repr(float(value - mp.mpf(high))) + "}"


def print_array(comment, name, values):
    print(f"/** {comment} */")
    print(f"inline constexpr double {name}[] = {{")
    for v in values:
        print(f"    {literal(v)},")
    print("};\n")


def print_pairs(comment, name, values):
    print(f"/** {comment} */")
    print(f"inline constexpr TwoDouble {name}[] = {{")
    for v in values:
        print(f"    {high_low(v)},")
    print("};\n")


# ---- functions to fit ----------------------------------------------------------------------------------------------

def stirling_error(z):
    return mp.loggamma(z) - (z - mp.mpf(1) / 2) * mp.log(z) + z - mp.log(2 * mp.pi) / 2


def limit_free(f, *roots):
    """f evaluated beside a removable singularity by stepping off it."""
    def g(x):
        for root in roots:
            if abs(x - root) < mp.mpf("1e-25"):
                x = x + mp.mpf("1e-22")
        return f(x)
    return g


def erfcx(z):
    return mp.exp(z * z) * mp.erfc(z)


def normal_quantile_of_log(log_tail):
    """z >= 0 with log P(Z > z) = log_tail, by Newton's iteration."""
    z = mp.sqrt(max(mp.mpf("0.01"), -2 * log_tail - mp.log(2 * mp.pi * max(mp.mpf(1), -2 * log_tail))))
    for _ in range(100):
        scaled = erfcx(z / mp.sqrt(2)) / 2
        step = (mp.log(scaled) - z * z / 2 - log_tail) * scaled * mp.sqrt(2 * mp.pi)
        z += step
        if abs(step) < mp.mpf(10) ** -50 * abs(z):
            return z
    raise ArithmeticError("no convergence")


def central_normal_quantile(square):
    """z / q with P(Z <= z) = 1/2 + q, from q^2."""
    q = mp.sqrt(square)
    if q < mp.mpf("1e-20"):
        return mp.sqrt(2 * mp.pi)
    return mp.sqrt(2) * mp.erfinv(2 * q) / q


# ---- uniform expansion of the beta distribution -------------------------------------------------------------------

def poly_mul(p, q):
    out = [Fraction(0)] * (len(p) + len(q) - 1)
    for i, a in enumerate(p):
        for j, b in enumerate(q):
            out[i + j] += a * b
    return out


def poly_add(p, q, factor=Fraction(1)):
    out = [Fraction(0)] * max(len(p), len(q))
    for i, a in enumerate(p):
        out[i] += a
    for i, b in enumerate(q):
        out[i] += factor * b
    return out


def series_mul(f, g, order):
    out = [[Fraction(0)] for _ in range(order)]
    for i in range(min(order, len(f))):
        for j in range(min(order - i, len(g))):
            out[i + j] = poly_add(out[i + j], poly_mul(f[i], g[j]))
    return out


def uniform_expansion(terms):
    """The density of the beta distribution in the variable that makes its exponent a normal one.

    With r = a + b, x0 = a / r, y0 = b / r, w = x0 y0, D = y0 - x0, and sigma^2 / 2 = a log(x0 / t) + b log(y0 / (1 - t)),
    sigma < 0 below the mean,
        dt / (t (1 - t)) = e (1 + f_1 (e sigma) + f_2 (e sigma)^2 + ...) d sigma,  e = 1 / sqrt(r w),
    where f_j is a polynomial in w for even j, D times one for odd j. Returns those polynomials for j = 1 .. terms.

    Derivation: t = x0 + sqrt(w) tau and eta = sigma / sqrt(r) give eta^2 / 2 = sum_n tau^n p_n / (n w^(n/2 - 1)),
    p_n = (-1)^n y0^(n-1) + x0^(n-1); sqrt(w) is set to 1 and restored by counting the powers. For b to infinity
    (w = 0, D = 1) these are the coefficients of the gamma distribution."""
    order = terms + 2
    x0, y0 = [Fraction(1, 2), Fraction(-1, 2)], [Fraction(1, 2), Fraction(1, 2)]   # polynomials in D

    def power(p, n):
        out = [Fraction(1)]
        for _ in range(n):
            out = poly_mul(out, p)
        return out

    # eta^2/2 = tau^2/2 (1 + s1 tau + s2 tau^2 + ...)
    s = []
    for k in range(order):
        n = k + 2
        p_n = poly_add(power(x0, n - 1), power(y0, n - 1), Fraction((-1) ** n))
        s.append([Fraction(2, n) * v for v in p_n])
    # root of the bracket: g with g^2 = s
    g = [[Fraction(1)]]
    for k in range(1, order):
        rest = s[k]
        for i in range(1, k):
            rest = poly_add(rest, poly_mul(g[i], g[k - i]), Fraction(-1))
        g.append([v / 2 for v in rest])
    # eta = tau g(tau); the exponent's derivative is eta d eta / d tau = tau (sum_k n/2 s_k tau^k) and also equals
    # tau w / (t (1 - t)), so dt / (t (1-t)) = sqrt(w)/w * (eta / tau) d eta = w^(-1/2) g(tau(eta)) d eta.
    # Lagrange inversion: [eta^j] g(tau(eta)) = 1/j [tau^(j-1)] g'(tau) g(tau)^(-j), j >= 1.
    inverse = [[Fraction(1)]]
    for k in range(1, order):
        rest = [Fraction(0)]
        for i in range(1, k + 1):
            rest = poly_add(rest, poly_mul(g[i], inverse[k - i]), Fraction(-1))
        inverse.append(rest)
    derivative = [[Fraction(k + 1) * v for v in g[k + 1]] for k in range(order - 1)]
    table = []
    for j in range(1, terms + 1):
        product = derivative
        for _ in range(j):
            product = series_mul(product, inverse, j)
        table.append(polynomial_in_w([v / j for v in product[j - 1]], j % 2))
    return table


def polynomial_in_w(p, parity):
    """Rewrites a polynomial in D of one parity as D^parity times a polynomial in w, by D^2 = 1 - 4 w."""
    out = [Fraction(0)]
    d_squared = [Fraction(1)]
    for i in range(parity, len(p), 2):
        assert i == 0 or p[i - 1] == 0
        out = poly_add(out, d_squared, p[i])
        d_squared = poly_mul(d_squared, [Fraction(1), Fraction(-4)])
    while len(out) > 1 and out[-1] == 0:
        out.pop()
    return out


# ---- the file ------------------------------------------------------------------------------------------------------

def main():
    print("/** Coefficients of the distribution functions; written by tools/distribution_coefficients.py, which derives each")
    print("    of them in multiprecision. Not edited by hand. */")
    print("#pragma once\n")
    print('#include "kernel/distributions/two_double.h"\n')
    print("// clang-format off\n")
    print("namespace korvenrg::distributions {\n")

    print_pairs("log(i / 128), i = 90..182, to 106 bits.", "kLogOfGrid", [mp.log(mp.mpf(i) / 128) for i in range(90, 183)])
    ln2_high = mp.mpf(int(mp.log(2) * 2 ** 40)) / 2 ** 40
    print("/** log 2 in three pieces: the first has 40 bits, so that its multiples by an exponent are exact. */")
    print(f"inline constexpr double kLog2Head = {literal(ln2_high)};")
    print(f"inline constexpr TwoDouble kLog2Rest = {high_low(mp.log(2) - ln2_high)};\n")
    print("/** One third to 106 bits. */")
    print(f"inline constexpr TwoDouble kThird = {high_low(mp.mpf(1) / 3)};\n")

    for low in (1, 2, 4):
        print_array(f"Stirling error of log gamma on {low}..{2 * low}, powers of t = (z - {low * 1.5:g}) / {low * 0.5:g}.",
                    f"kStirlingFrom{low}", polynomial(stirling_error, low, 2 * low))
    print_array("Stirling series: B(2n) / (2n (2n-1)), n = 1, 2, ...", "kStirlingSeries",
                [mp.bernoulli(2 * n) / (2 * n * (2 * n - 1)) for n in range(1, 12)])
    print_array("The Stirling error at 0, 1/2, 1, ..., 15/2; the entry of 0 is not used.", "kStirlingOfHalves",
                [mp.mpf(0)] + [stirling_error(mp.mpf(k) / 2) for k in range(1, 16)])
    print_array("2 / (2n + 1), n = 1, 2, ...: the series of log((1 + r) / (1 - r)) after its first term.",
                "kLogRatioSeries", [mp.mpf(2) / (2 * n + 1) for n in range(1, 12)])
    print_array("The powers of x^2, x^4, ... in sqrt(x / sinh x).", "kStudentSeries", student_series(9))
    print_array("log gamma(x) / ((x - 1)(x - 2)) on 1..2, powers of t = 2 x - 3.", "kLogGammaFrom1",
                polynomial(limit_free(lambda x: mp.loggamma(x) / ((x - 1) * (x - 2)), 1, 2), 1, 2))
    print_array("1 / gamma(x) on 1..2, powers of t = 2 x - 3.", "kReciprocalGammaFrom1",
                polynomial(mp.rgamma, 1, 2))
    root = mp.findroot(mp.digamma, 1.4616)
    print("/** The positive zero of digamma to 106 bits. */")
    print(f"inline constexpr TwoDouble kDigammaZero = {high_low(root)};\n")
    print_array("digamma(x) / (x - kDigammaZero) on 1..2, powers of t = 2 x - 3.", "kDigammaFrom1",
                polynomial(limit_free(lambda x: mp.digamma(x) / (x - root), root), 1, 2))
    print_array("Digamma series: B(2n) / (2n), n = 1, 2, ...", "kDigammaSeries",
                [mp.bernoulli(2 * n) / (2 * n) for n in range(1, 12)])
    print_array("Trigamma series: B(2n), n = 1, 2, ...", "kTrigammaSeries",
                [mp.bernoulli(2 * n) for n in range(1, 12)])
    print_array("erf(x) / x in powers of x^2, |x| <= 0.75.", "kErfSeries",
                [2 / mp.sqrt(mp.pi) * (-1) ** n / (mp.factorial(n) * (2 * n + 1)) for n in range(16)])
    print_coefficients_of_erfcx()
    print_normal_quantile()
    print_uniform_expansion(18)
    print("}  // namespace korvenrg::distributions")


def student_series(terms):
    """Coefficients c_j of sqrt(x / sinh x) = 1 + sum_j c_j x^(2j), from its square's reciprocal sinh(x) / x."""
    s = [Fraction(1, int(mp.factorial(2 * j + 1))) for j in range(terms + 1)]
    reciprocal, root = [Fraction(1)], [Fraction(1)]
    for j in range(1, terms + 1):
        reciprocal.append(-sum(s[i] * reciprocal[j - i] for i in range(1, j + 1)))
    for j in range(1, terms + 1):
        root.append((reciprocal[j] - sum(root[i] * root[j - i] for i in range(1, j))) / 2)
    return [mp.mpf(v.numerator) / v.denominator for v in root[1:]]


def print_uniform_expansion(terms):
    table = uniform_expansion(terms)
    width = max(len(row) for row in table)
    print("/** The coefficients f_j of the beta density in its normal variable, j = 1, 2, ... (see uniform_expansion in")
    print("    tools/distribution_coefficients.py): row j - 1 holds the powers of w, for odd j to be multiplied by D. */")
    print(f"inline constexpr int kUniformTerms = {terms};")
    print(f"inline constexpr double kUniformExpansion[kUniformTerms][{width}] = {{")
    for row in table:
        row = row + [Fraction(0)] * (width - len(row))
        print("    {" + ", ".join(literal(mp.mpf(v.numerator) / v.denominator) for v in row) + "},")
    print("};\n")


def print_coefficients_of_erfcx():
    for name, low, high in (("Near", 0, 2), ("Middle", 2, 6)):
        print_array(f"exp(z^2) erfc(z) on {low}..{high}, powers of t = (z - {(low + high) / 2:g}) / {(high - low) / 2:g}.",
                    f"kErfcx{name}", polynomial(erfcx, low, high))
    print_array("z exp(z^2) erfc(z) for z >= 6, powers of t = 72 / z^2 - 1.", "kErfcxFar",
                polynomial(lambda t: 1 / mp.sqrt(mp.pi) if t == -1 else far_erfcx(t), -1, 1))


def print_normal_quantile():
    edge = mp.mpf("0.425")
    print_rational("z / q in powers of 0.425^2 - q^2, where P(Z <= z) = 1/2 + q", "kNormalCentral",
                   lambda r: central_normal_quantile(abs(edge ** 2 - r)), 0, edge ** 2, 8)
    for name, low, high, degree in (("Near", "1.6", 5, 8), ("Middle", 5, 11, 7), ("Far", 11, "27.5", 6)):
        origin = mp.mpf(low)
        print_rational(f"z in powers of r - {low}, where r = sqrt(-log P(Z > z)), r up to {high}", f"kNormal{name}",
                       lambda d: normal_quantile_of_log(-(origin + d) ** 2), 0, mp.mpf(high) - origin, degree)


def print_rational(comment, name, f, low, high, degree):
    numerator, denominator = rational(f, low, high, degree)
    print_array(f"Normal quantile, numerator of {comment}.", f"{name}Over", numerator)
    print_array(f"Normal quantile, denominator of {comment}.", f"{name}Under", denominator)


def far_erfcx(t):
    z = mp.sqrt(72 / (t + 1))
    if z > 300:
        return (1 - 1 / (2 * z ** 2) + 3 / (4 * z ** 4) - 15 / (8 * z ** 6)) / mp.sqrt(mp.pi)
    return z * erfcx(z)


if __name__ == "__main__":
    main()
