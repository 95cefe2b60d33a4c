/** The distributions in 70-digit arithmetic: the oracle of the reference tables and of the accuracy
    programme. Slow and plain, by formulas other than the engine's: Boost.Math's gamma functions, power
    series, and the classical continued fractions by Lentz's method. */
#pragma once

#include <boost/math/constants/constants.hpp>
#include <boost/math/special_functions/digamma.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/trigamma.hpp>
#include <boost/multiprecision/cpp_bin_float.hpp>

namespace reference {

using Real =
    boost::multiprecision::number<boost::multiprecision::cpp_bin_float<70>, boost::multiprecision::et_off>;

struct Tails
{
    Real lower;
    Real upper;
};

inline const Real kTiny = pow(Real(10), -68);

/** f = b0 + a1 / (b1 + a2 / (b2 + ...)) by Lentz's method; step(n, a, b) gives the n-th pair. */
template <class Step>
Real Lentz(Real b0, Step step)
{
    const Real least = pow(Real(10), -1000);
    Real f = b0 == 0 ? least : b0;
    Real c = f, d = 0;
    for (int n = 1; n < 2000000; n++) {
        Real a, b;
        step(n, a, b);
        d = b + a * d;
        if (d == 0) d = least;
        c = b + a / c;
        if (c == 0) c = least;
        d = 1 / d;
        const Real delta = c * d;
        f *= delta;
        if (abs(delta - 1) < kTiny) return f;
    }
    throw std::runtime_error("no convergence");
}

/** log gamma by Stirling's series after a shift beyond 60. */
inline Real LogGamma(Real z)
{
    static const std::vector<Real> bernoulli = [] {
        std::vector<Real> b(46);
        boost::math::bernoulli_b2n<Real>(0, 46, b.begin());
        return b;
    }();
    Real product = 1;
    while (z < 60) {
        product *= z;
        z += 1;
    }
    Real sum = 0, power = z;
    for (unsigned n = 1; n < bernoulli.size(); n++) {
        sum += bernoulli[n] / (2 * n * (2 * n - 1) * power);
        power *= z * z;
    }
    const Real half = Real(1) / 2;
    return (z - half) * log(z) - z + half * log(2 * boost::math::constants::pi<Real>()) + sum - log(product);
}

/** I_x(a, b) by Abramowitz & Stegun 26.5.8, for x below about the mean. */
inline Real BetaByFraction(Real a, Real b, Real x, Real y)
{
    const Real front = exp(a * log(x) + b * log(y) + LogGamma(a + b) - LogGamma(a) - LogGamma(b)) / a;
    const Real fraction = Lentz(Real(1), [&](int n, Real& alpha, Real& beta) {
        const int m = n / 2;
        beta = 1;
        if (n % 2 == 1)
            alpha = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1));
        else
            alpha = m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m));
    });
    return front / fraction;
}

inline Tails Beta(Real a, Real b, Real x, Real y)
{
    if (x * (a + b + 2) <= a + 1) {
        const Real lower = BetaByFraction(a, b, x, y);
        return {lower, 1 - lower};
    }
    const Real upper = BetaByFraction(b, a, y, x);
    return {1 - upper, upper};
}

inline Tails Gamma(Real a, Real x)
{
    const Real front = exp(a * log(x) - x - LogGamma(a));
    if (x <= a + 1) {
        Real term = 1 / a, sum = term;
        for (int n = 1; term > sum * kTiny; n++) {
            term *= x / (a + n);
            sum += term;
        }
        return {front * sum, 1 - front * sum};
    }
    const Real fraction = Lentz(x + 1 - a, [&](int n, Real& alpha, Real& beta) {
        alpha = -n * (n - a);
        beta = x + 2 * n + 1 - a;
    });
    return {1 - front / fraction, front / fraction};
}

inline Tails Normal(Real z)
{
    const Real root = sqrt(Real(2));
    return {boost::math::erfc(Real(-z / root)) / 2, boost::math::erfc(Real(z / root)) / 2};
}

inline Tails ChiSquare(Real x, Real df)
{
    return Gamma(df / 2, x / 2);
}

inline Tails Fisher(Real F, Real df1, Real df2)
{
    const Real whole = df1 * F + df2;
    return Beta(df1 / 2, df2 / 2, df1 * F / whole, df2 / whole);
}

inline Tails Student(Real t, Real df)
{
    if (t == 0) return {Real(1) / 2, Real(1) / 2};
    const Tails two = Fisher(t * t, 1, df);
    const Real far = two.upper / 2, near = (1 + two.lower) / 2;
    return t > 0 ? Tails{near, far} : Tails{far, near};
}

inline Real LogCombinations(const Real& n, const Real& k)
{
    return LogGamma(n + 1) - LogGamma(k + 1) - LogGamma(n - k + 1);
}

/** The sum of a unimodal sequence from first on in steps of +1 or -1; ratio(i) is the term that follows the i-th over
    it, 0 at the end. */
template <class Ratio>
Real SumOutward(Real first, double from, int direction, const Ratio& ratio)
{
    Real sum = 0, before = 0, term = first;
    for (Real i = from; term > 0 && (term > sum * Real(1e-40) || term > before); i += direction) {
        sum += term;
        before = term;
        term *= ratio(i);
    }
    return sum;
}

/** P(X <= t) and P(X > t), each summed by itself from t outward; t within the range of X. */
inline Tails Hypergeometric(double t, double marked, double unmarked, double drawn)
{
    const Real k = marked, rest = unmarked, m = drawn;
    const auto sumFrom = [&](double x, int direction) {
        if (x > std::min(marked, drawn)) return Real(0);
        const Real first =
            exp(LogCombinations(k, x) + LogCombinations(rest, m - x) - LogCombinations(k + rest, m));
        return SumOutward(first, x, direction, [&](const Real& i) {
            return direction > 0 ? Real((k - i) * (m - i) / ((i + 1) * (rest - m + i + 1)))
                                 : Real(i * (rest - m + i) / ((k - i + 1) * (m - i + 1)));
        });
    };
    return {sumFrom(t, -1), sumFrom(t + 1, 1)};
}

/** P(X = k) for 0 < p < 1. */
inline Real BinomialPoint(double k, double n, double p)
{
    return exp(LogCombinations(n, k) + k * log(Real(p)) + (Real(n) - k) * log(1 - Real(p)));
}

/** P(X <= k) and P(X > k) for 0 <= k < n: the one on the side of k is summed from k outward. */
inline Tails Binomial(double k, double n, double p)
{
    const Real odds = Real(p) / (1 - Real(p)), trials = n;
    if (k < n * p) {
        const Real lower = SumOutward(BinomialPoint(k, n, p), k, -1, [&](const Real& i) {
            return Real(i / ((trials - i + 1) * odds));
        });
        return {lower, 1 - lower};
    }
    const Real upper = SumOutward(BinomialPoint(k + 1, n, p), k + 1, 1, [&](const Real& i) {
        return Real((trials - i) * odds / (i + 1));
    });
    return {1 - upper, upper};
}

}  // namespace reference
