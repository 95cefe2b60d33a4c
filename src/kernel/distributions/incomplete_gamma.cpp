#include "kernel/distributions/incomplete_gamma.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/coefficients.h"
#include "kernel/distributions/continued_fraction.h"
#include "kernel/distributions/gamma_functions.h"

namespace korvenrg::distributions {

namespace {

constexpr double kTwoPi = 6.28318530717958647693;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMeanExpansionStart = 30.0;  // a from which kMeanExpansion is exact to 1e-19 (derived)
constexpr double kCentralWidth = 2.0;         // standard deviations about the mean for the central series (tuned)
constexpr int kMostCentralTerms = 200;        // bounds the loop; needs about 40
constexpr double kCentralTolerance = 1e-17;   // relative size of the first term left out
constexpr double kUpperSideStart = 0.5;       // the upper tail's fraction serves from a + this (tuned)
constexpr double kNoTail = -800.0;            // exp of less is 0
constexpr double kSmallestRatio = 1e-250;     // x / a below it has only its leading term; keeps two-doubles normal

/** x^a e^-x / gamma(a) = sqrt(a / (2 pi)) exp(a log(x / a) + a - x - delta(a)), the exponent as a two-double.
    The deviance form after C. Loader (2000), Fast and accurate computation of binomial probabilities. */
double WeightAt(double a,
                TwoDouble x,
                TwoDouble distance)
{
    const TwoDouble logRatio = x.high / a < kSmallestRatio ? Add(Log(x), Negative(Log({a, 0}))) : Log(Divide(x, a));
    const TwoDouble exponent = Add(Multiply(logRatio, a), Negative(distance));
    if (exponent.high < kNoTail) return 0;
    return TimesExp(std::sqrt(a / kTwoPi), Add(exponent, -StirlingError(a)));
}

/** The steps of the continued fraction of P(a, x) gamma(a) e^x / x^a: the limit for b to infinity, x to x / b of the
    fraction of A. R. DiDonato & A. H. Morris (1992), Significant digit computation of the incomplete beta function
    ratios:
        alpha(n+1) = (a+n-1) n x^2 / (a+2n-1)^2
        beta(n+1)  = n + n x / (a+2n-1) + (a+n) (a - x + 1 + 2n) / (a+2n+1). */
class LowerSteps
{
public:
    LowerSteps(double a,
               double x,
               double distance)
        : a_(a), x_(x), base_(1 - distance)
    {
    }

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
    UpperSteps(double a,
               double distance)
        : a_(a), base_(distance + 1)
    {
    }

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

/** P(a, a) - 1/2 from the asymptotic series derived in tools/distribution_coefficients.py (mean_expansion, w = 0). */
double ExcessAtMean(double a)
{
    double sum = 0;
    for (int m = kMeanTerms - 1; m >= 0; m--)
        sum = sum / a + kMeanExpansion[m][0];
    return -std::sqrt(a / kTwoPi) * std::exp(-StirlingError(a)) / a * sum;
}

/** [P(a, x) - P(a, a)] gamma(a) e^x / x^a as a power series in s = x - a. With h the quotient, x h' - s h = 1 gives for
    the terms t(n) = h(n) s^n
        t(n+1) = [s^2 t(n-1) - n s t(n)] / (a (n + 1)),  t(0) = 0, t(1) = s / a. */
double CentralSeries(double a,
                     double s)
{
    const double odd = s / a;
    const double even = s * odd;
    double before = 0;
    double term = odd;
    double total = term;
    for (int n = 1; n < kMostCentralTerms; n++) {
        const double next = (even * before - n * odd * term) / (n + 1);
        before = term;
        term = next;
        total += term;
        if (std::fabs(term) + std::fabs(before) <= kCentralTolerance * std::fabs(total)) break;
    }
    return total;
}

bool IsCentral(double a,
               double distance)
{
    return a >= kMeanExpansionStart && distance * distance <= kCentralWidth * kCentralWidth * a;
}

}  // namespace

TailPair GammaTails(double a,
                    TwoDouble x)
{
    const TwoDouble fromMean = Add(x, -a);
    const double distance = fromMean.high;
    const double weight = WeightAt(a, x, fromMean);

    if (IsCentral(a, distance)) {
        const double excess = ExcessAtMean(a) + weight * CentralSeries(a, distance);
        return {0.5 + excess, 0.5 - excess, weight, -distance};
    }
    if (distance <= kUpperSideStart) {
        LowerSteps steps(a, x.high, distance);
        const double lower = weight == 0 ? 0 : weight * ContinuedFraction(steps);
        return {lower, 1 - lower, weight, -distance};
    }
    UpperSteps steps(a, distance);
    const double upper = weight == 0 ? 0 : weight * ContinuedFraction(steps);
    return {1 - upper, upper, weight, -distance};
}

namespace {

TailPair CheckedGammaTails(double a,
                           double x)
{
    if (std::isnan(x) || !(a > 0) || std::isinf(a)) return {kNaN, kNaN, kNaN, kNaN};
    if (x <= 0) return {0, 1, 0, a};
    if (std::isinf(x)) return {1, 0, 0, -x};
    return GammaTails(a, {x, 0});
}

}  // namespace

double IncompleteGamma(double a,
                       double x)
{
    return CheckedGammaTails(a, x).lower;
}

double IncompleteGammaComplement(double a,
                                 double x)
{
    return CheckedGammaTails(a, x).upper;
}

}  // namespace korvenrg::distributions
