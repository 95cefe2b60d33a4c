#include "kernel/distributions/gamma_functions.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/coefficients.h"
#include "kernel/distributions/polynomial.h"
#include "kernel/distributions/two_double.h"

namespace korvenrg::distributions {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kPi = 3.14159265358979323846;
constexpr double kHalfLogTwoPi = 0.918938533204672741780;
constexpr TwoDouble kHalfLogTwoPiPair = {0.9189385332046728, -3.8782941580672414e-17};
constexpr double kStirlingStart = 8.0;        // the Stirling series reaches full accuracy from here
constexpr double kShortStirlingStart = 32.0;  // and needs five terms from here
constexpr double kPolygammaStart = 10.0;      // likewise the asymptotic series of digamma and trigamma
constexpr double kLogGammaStirling =
    3.0;  // from here (z - 1/2) log z - z + ... loses no digits to cancellation
constexpr double kLeastRatioStirling = 8.0;  // from here the ratio of two gammas is taken without a shift
constexpr double kGammaStirling = 24.0;      // below it gamma is a product down to 1..2, exact at integers
constexpr double kGammaOverflow = 171.7;
constexpr double kGammaUnderflow = -184.0;  // gamma rounds to 0 below
constexpr double kTinyForGamma = 1e-16;     // gamma(x) = 1/x to the last digit below
constexpr double kLogRatioSeriesEnd = 0.3;  // log1p(x) - x by its series up to here
constexpr double kErfSeriesEnd = 0.75;
constexpr double kErfcxMiddleStart = 2.0;
constexpr double kErfcxFarStart = 6.0;
constexpr double kErfcUnderflow = 27.3;

bool IsPole(double x)
{
    return x <= 0 && x == std::floor(x);
}

/** sin(pi x): the argument is reduced exactly first. */
double SinPi(double x)
{
    double reduced = x - 2 * std::round(x / 2);  // -1..1
    if (reduced > 0.5) reduced = 1 - reduced;
    if (reduced < -0.5) reduced = -1 - reduced;
    return std::sin(kPi * reduced);
}

/** cos(pi x) / sin(pi x), the argument reduced exactly to -1/2..1/2. */
double CotPi(double x)
{
    const double reduced = x - std::round(x);
    if (std::fabs(reduced) <= 0.25) return 1 / std::tan(kPi * reduced);
    return std::tan(kPi * (reduced > 0 ? 0.5 - reduced : -0.5 - reduced));
}

/** Stirling's series, z >= kStirlingStart (J. Stirling; Abramowitz & Stegun 1964, 6.1.40-42). */
double StirlingSeries(double z)
{
    const double inverse = 1 / z;
    const double square = inverse * inverse;
    if (z >= kShortStirlingStart) {
        const double* c = kStirlingSeries;
        return inverse * (c[0] + square * (c[1] + square * (c[2] + square * (c[3] + square * c[4]))));
    }
    return inverse * Polynomial(kStirlingSeries, square);
}

/** log gamma for x > 0. */
double LogGammaOfPositive(double x)
{
    if (x >= kLogGammaStirling) {
        const double main = (x - 0.5) * (std::log(x) - 1);
        return main + (StirlingError(x) + (kHalfLogTwoPi - 0.5));
    }
    if (x > 2) return LogGammaOf1Plus(x - 2) + std::log1p(x - 2);
    if (x >= 1) return LogGammaOf1Plus(x - 1);
    return LogGammaOf1Plus(x) - (x > 0.5 ? std::log1p(x - 1) : std::log(x));
}

/** gamma on 0 < x < kGammaStirling by the recurrence from 1..2. */
double GammaByProduct(double x)
{
    if (x < 1) return 1 / (x * Polynomial(kReciprocalGammaFrom1, 2 * x - 1));
    double product = 1;
    while (x > 2) {
        x -= 1;
        product *= x;
    }
    if (x == 1 || x == 2) return product;
    return product / Polynomial(kReciprocalGammaFrom1, 2 * x - 3);
}

/** log gamma(x) for x >= kGammaStirling as a two-double,
    (x - 1/2) (log x - 1) + (log(2 pi) - 1) / 2 + delta(x). */
TwoDouble StirlingExponent(double x)
{
    const TwoDouble main = Multiply(Add(Log({x, 0}), -1), x - 0.5);
    return Add(main, Add(Add(kHalfLogTwoPiPair, -0.5), StirlingError(x)));
}

/** gamma(x) for x < 0 from gamma(x) gamma(-x) = -pi / (x sin(pi x)) (Abramowitz & Stegun 1964, 6.1.17):
    -x is exact, 1 - x would not be. */
double GammaByReflection(double x)
{
    if (x < kGammaUnderflow) return 0;
    const double reflected = -kPi / (x * SinPi(x));
    if (-x < kGammaStirling) return reflected / GammaByProduct(-x);
    return TimesExp(reflected, Negative(StirlingExponent(-x)));
}

/** digamma for x >= 1. */
double DigammaFrom1(double x)
{
    if (x >= kPolygammaStart) {
        const double square = 1 / (x * x);
        return std::log(x) - 0.5 / x - square * Polynomial(kDigammaSeries, square);
    }
    double shifted = 0;
    while (x > 2) {
        x -= 1;
        shifted += 1 / x;
    }
    const double distance = (x - kDigammaZero.high) - kDigammaZero.low;
    return distance * Polynomial(kDigammaFrom1, 2 * x - 3) + shifted;
}

/** trigamma for x > 0: recurrence upwards, every term positive, then the asymptotic series. */
double TrigammaOfPositive(double x)
{
    double sum = 0;
    while (x < kPolygammaStart) {
        sum += 1 / (x * x);
        x += 1;
    }
    const double inverse = 1 / x;
    const double square = inverse * inverse;
    return sum + (inverse + 0.5 * square + inverse * square * Polynomial(kTrigammaSeries, square));
}

/** -z^2 as a two-double. */
TwoDouble MinusSquare(double z)
{
    return Negative(ExactProduct(z, z));
}

double ErfOfSmall(double x)
{
    return x * Polynomial(kErfSeries, x * x);
}

/** erfc for z >= kErfSeriesEnd. */
double ErfcTail(double z)
{
    return z > kErfcUnderflow ? 0 : TimesExp(ScaledErfc(z), MinusSquare(z));
}

}  // namespace

// The zeros at both ends are factored out.
double LogGammaOf1Plus(double d)
{
    return d * (d - 1) * Polynomial(kLogGammaFrom1, 2 * d - 1);
}

// (z - 1/2) log(1 + k/z) + k log(z + k) - k + delta(z + k) - delta(z), every term of the size of k; below
// kLeastRatioStirling shifted upwards, which leaves less of the rounding of delta.
double LogGammaRatio(double z, double k)
{
    double shift = 0;
    for (; z < kLeastRatioStirling; z += 1)
        shift += std::log1p(k / z);
    const double main = (z - 0.5) * std::log1p(k / z) + k * (std::log(z + k) - 1);
    return main + (StirlingError(z + k) - StirlingError(z)) - shift;
}

double StirlingError(double z)
{
    if (z >= kStirlingStart) return StirlingSeries(z);
    const double halves = 2 * z;
    const int index = static_cast<int>(halves);
    if (halves == index && index > 0) return kStirlingOfHalves[index];
    if (z >= 4) return Polynomial(kStirlingFrom4, 0.5 * (z - 6));
    if (z >= 2) return Polynomial(kStirlingFrom2, z - 3);
    if (z >= 1) return Polynomial(kStirlingFrom1, 2 * z - 3);
    // gamma(z) = gamma(z + 1) / z; log(1 + 1/z) is taken apart where 1/z would overflow the correction
    const double logRatio = z > kTinyForGamma ? std::log1p(1 / z) : -std::log(z);
    return StirlingError(z + 1) + ((z + 0.5) * logRatio - 1);
}

// B(a, b) = sqrt(2 pi r / (a b)) (a/r)^a (b/r)^b exp(delta(a) + delta(b) - delta(r)), r = a + b.
double LogBeta(double a, double b)
{
    const double small = std::fmin(a, b);
    const double large = std::fmax(a, b);
    const double sum = a + b;
    const double powers = small * std::log(small / sum) - large * std::log1p(small / large);
    const double corrections = (StirlingError(large) - StirlingError(sum)) + StirlingError(small);
    return powers + corrections + 0.5 * std::log(2 * kPi / small * (sum / large));
}

// With r = x / (2 + x) is log1p(x) = 2 (r + r^3/3 + ...) and 2 r - x = -r x, hence
//     log1p(x) - x = r (2 r^2/3 + 2 r^4/5 + ... - x).
double Log1pMinusX(double x)
{
    if (std::fabs(x) > kLogRatioSeriesEnd) return std::log1p(x) - x;
    const double r = x / (2 + x);
    const double square = r * r;
    return r * (square * Polynomial(kLogRatioSeries, square) - x);
}

double ScaledErfc(double z)
{
    if (z < kErfcxMiddleStart) return Polynomial(kErfcxNear, z - 1);
    if (z < kErfcxFarStart) return Polynomial(kErfcxMiddle, 0.5 * (z - 4));
    return Polynomial(kErfcxFar, 72 / (z * z) - 1) / z;
}

double GammaFunction(double x)
{
    if (std::isnan(x) || x == -kInfinity) return kNaN;
    if (x == 0) return 1 / x;
    if (IsPole(x)) return kNaN;
    if (std::fabs(x) < kTinyForGamma) return 1 / x;
    if (x < 0) return GammaByReflection(x);
    if (x < kGammaStirling) return GammaByProduct(x);
    return x > kGammaOverflow ? kInfinity : TimesExp(1, StirlingExponent(x));
}

}  // namespace korvenrg::distributions

using namespace korvenrg::distributions;

double GammaLn(double x)
{
    if (std::isnan(x)) return x;
    if (std::isinf(x) || IsPole(x)) return kInfinity;
    if (std::fabs(x) < kTinyForGamma) return -std::log(std::fabs(x));
    if (x > 0) return LogGammaOfPositive(x);
    return std::log(-kPi / (x * std::fabs(SinPi(x)))) - LogGammaOfPositive(-x);
}

// Below 1: psi(x) = psi(x + 1) - 1/x; below 0: psi(x) = psi(1 - x) - pi cot(pi x)
// (Abramowitz & Stegun 1964, 6.3.5-7).
double Digamma(double x)
{
    if (std::isnan(x) || x == -kInfinity || IsPole(x)) return kNaN;
    if (x == kInfinity) return x;
    if (x >= 1) return DigammaFrom1(x);
    if (x > 0) return DigammaFrom1(x + 1) - 1 / x;
    return DigammaFrom1(1 - x) - kPi * CotPi(x);
}

// Below 0: psi'(x) = pi^2 / sin^2(pi x) - psi'(1 - x) (Abramowitz & Stegun 1964, 6.4.7).
double Trigamma(double x)
{
    if (std::isnan(x) || x == -kInfinity) return kNaN;
    if (x == kInfinity) return 0;
    if (IsPole(x)) return kInfinity;
    if (x > 0) return TrigammaOfPositive(x);
    const double sine = SinPi(x);
    return (kPi / sine) * (kPi / sine) - TrigammaOfPositive(1 - x);
}

double derf(double x)
{
    if (std::isnan(x)) return x;
    if (std::fabs(x) <= kErfSeriesEnd) return ErfOfSmall(x);
    return x > 0 ? 1 - ErfcTail(x) : ErfcTail(-x) - 1;
}

double derfc(double x)
{
    if (std::isnan(x)) return x;
    if (x >= kErfSeriesEnd) return ErfcTail(x);
    return x > -kErfSeriesEnd ? 1 - ErfOfSmall(x) : 2 - ErfcTail(-x);
}

// With m = n - k: C(n, k) = sqrt(n / (2 pi k m)) (n/k)^k (n/m)^m exp(delta(n) - delta(k) - delta(m)); no
// large terms cancel. For k below 1 the result itself is of the size of k, so each term has to be.
double cLogCnk(double n, double k)
{
    if (std::isnan(n) || std::isnan(k) || n < 0) return kNaN;
    if (k < 0 || k > n) return -kInfinity;
    k = std::fmin(k, n - k);
    if (k == 0) return 0;
    if (std::isinf(n)) return kInfinity;
    const double m = n - k;
    if (k < 1) return LogGammaRatio(m + 1, k) - LogGammaOf1Plus(k);
    const double powers = k * std::log(n / k) - m * std::log1p(-k / n);
    return powers + 0.5 * std::log(n / (2 * kPi * k * m)) +
           (StirlingError(n) - StirlingError(k) - StirlingError(m));
}
