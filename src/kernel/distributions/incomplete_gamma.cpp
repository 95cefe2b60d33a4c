#include "kernel/distributions/incomplete_gamma.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/continued_fraction.h"
#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/uniform_expansion.h"

namespace korvenrg::distributions {

namespace {

constexpr double kTwoPi = 6.28318530717958647693;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kUpperSideStart = 0.75;  // the upper tail's fraction serves from a + this (tuned)
constexpr double kSmallShape = 0.1;       // below it one minus the lower tail would cost the upper one digits
constexpr double kVanishingDeviance = 800.0;  // exp of its negative is 0
constexpr double kDeepDeviance = 20.0;        // beyond it the exponent is formed in two-doubles (tuned)
constexpr double kRatioStart = -0.5;          // log(1 + u) is taken from 1 + u itself below
constexpr double kSmallestRatio =
    1e-250;  // x / a below it has only its leading term; keeps two-doubles normal

double DeepWeight(double a, TwoDouble x, TwoDouble distance)
{
    const TwoDouble logRatio =
        x.high / a < kSmallestRatio ? Add(Log(x), Negative(Log({a, 0}))) : Log(Divide(x, a));
    const TwoDouble exponent = Add(Multiply(logRatio, a), Negative(distance));
    return TimesExp(std::sqrt(a / kTwoPi), Add(exponent, -StirlingError(a)));
}

/** -[a log(x / a) + a - x] = -a g(distance / a), distance = x - a, g(u) = log(1 + u) - u <= 0.
    The deviance form after C. Loader (2000), Fast and accurate computation of binomial probabilities. */
double DevianceAt(double a, double x, double distance)
{
    const double u = distance / a;
    return -a * (u < kRatioStart ? std::log(x / a) - u : Log1pMinusX(u));
}

/** x^a e^-x / gamma(a) = sqrt(a / (2 pi)) exp(-deviance - delta(a)). The rounding of the deviance reaches
    it multiplied by the deviance's size: the deep tail takes two-doubles. */
double WeightAt(double a, TwoDouble x, TwoDouble distance, double deviance)
{
    if (!(deviance < kVanishingDeviance)) return 0;
    if (deviance > kDeepDeviance) return DeepWeight(a, x, distance);
    return std::sqrt(a / kTwoPi) * std::exp(-deviance - StirlingError(a));
}

/** The steps of the continued fraction of P(a, x) gamma(a) e^x / x^a:
        alpha(n+1) = (a+n-1) n x^2 / (a+2n-1)^2
        beta(n+1)  = n + n x / (a+2n-1) + (a+n) (a - x + 1 + 2n) / (a+2n+1),
    the limit of the fraction of the incomplete beta function (see incomplete_beta.cpp) for b to infinity and
    x to x / b. */
class LowerSteps
{
  public:
    LowerSteps(double a, double x, double distance) : a_(a), x_(x), base_(1 - distance) {}

    FractionStep Next()
    {
        const double n = n_;
        n_ += 1;
        const double following = 1 / (a_ + 2 * n + 1);
        const double main = (a_ + n) * following * (base_ + 2 * n);
        if (n == 0) {
            inverse_ = following;
            return {1, main};
        }
        const double scaled = x_ * inverse_;
        inverse_ = following;
        return {(a_ + n - 1) * scaled * n * scaled, n + n * scaled + main};
    }

  private:
    double a_, x_, base_;
    double n_ = 0;
    double inverse_ = 0;  // 1 / (a + 2n - 1)
};

/** The steps of Legendre's fraction of Q(a, x) gamma(a) e^x / x^a, even part:
        alpha(n+1) = n (a - n),  beta(n+1) = x - a + 1 + 2n  (Abramowitz & Stegun 1964, 6.5.31). */
class UpperSteps
{
  public:
    UpperSteps(double a, double distance) : a_(a), base_(distance + 1) {}

    FractionStep Next()
    {
        const double n = n_;
        n_ += 1;
        return {n == 0 ? 1 : n * (a_ - n), base_ + 2 * n};
    }

  private:
    double a_, base_;
    double n_ = 0;
};

/** Q(a, x) for small a and x up to about 1. With 1 + a s = sum_n a (-x)^n / (n! (a + n)) is
        P = exp(L) (1 + a s),  L = a log x - log gamma(1 + a),
    so Q = -(exp(L) - 1) - exp(L) a s: two terms of the size of Q. Source: N. M. Temme (1994), A set of
    algorithms for the incomplete gamma functions. */
double UpperOfSmallShape(double a, double x)
{
    constexpr int kMostTerms = 40;
    constexpr double kSeriesEnd = 1e-18;
    double power = 1;
    double sum = 0;
    for (int n = 1; n <= kMostTerms && std::fabs(power) > kSeriesEnd; n++) {
        power *= -x / n;
        sum += power / (a + n);
    }
    const double logPower = a * std::log(x) - LogGammaOf1Plus(a);
    return -std::expm1(logPower) - std::exp(logPower) * a * sum;
}

}  // namespace

TailPair GammaTails(double a, TwoDouble x)
{
    const TwoDouble fromMean = Add(x, -a);
    const double distance = fromMean.high;
    const double deviance = DevianceAt(a, x.high, distance);
    const double weight = WeightAt(a, x, fromMean, deviance);
    if (HasNormalForm(a, deviance)) return TailsOfNormalForm({a, 0, 1, deviance, -distance, weight});

    if (distance <= kUpperSideStart) {
        LowerSteps steps(a, x.high, distance);
        const double lower = weight == 0 ? 0 : AtMostOne(weight * ContinuedFraction(steps));
        if (a < kSmallShape && lower > 0.5) {
            const double upper = UpperOfSmallShape(a, x.high);
            return {1 - upper, upper, weight, -distance, deviance};
        }
        return {lower, 1 - lower, weight, -distance, deviance};
    }
    UpperSteps steps(a, distance);
    const double upper = weight == 0 ? 0 : weight * ContinuedFraction(steps);
    return {1 - upper, upper, weight, -distance, deviance};
}

namespace {

TailPair CheckedGammaTails(double a, double x)
{
    if (std::isnan(x) || !(a > 0) || std::isinf(a)) return {kNaN, kNaN, kNaN, kNaN, kNaN};
    if (x <= 0) return {0, 1, 0, a, 0};
    if (std::isinf(x)) return {1, 0, 0, -x, 0};
    return GammaTails(a, {x, 0});
}

}  // namespace

double IncompleteGamma(double a, double x)
{
    return CheckedGammaTails(a, x).lower;
}

double IncompleteGammaComplement(double a, double x)
{
    return CheckedGammaTails(a, x).upper;
}

}  // namespace korvenrg::distributions
