#include "kernel/distributions/chi_square.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/degrees_of_freedom.h"
#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/incomplete_gamma.h"
#include "kernel/distributions/normal.h"

namespace korvenrg::distributions {

namespace {

constexpr double kPointDf = 1e32;  // from here the whole distribution fits between two doubles beside df

/** log x where the power law of the lower tail, (x/2)^a / gamma(a + 1), reaches the probability. */
double PowerTailLog(double probability, double a)
{
    return std::log(2.0) + (std::log(probability) + GammaLn(a + 1)) / a;
}

/** The cube-root normal approximation: E. B. Wilson & M. M. Hilferty (1931), The distribution of
    chi-square. */
double WilsonHilferty(double z, double df)
{
    const double c = 2 / (9 * df);
    const double root = 1 - c + z * std::sqrt(c);
    return df * root * root * root;
}

/** Half of chi-square with two degrees of freedom is exponential. */
TailPair ExponentialTails(TwoDouble h)
{
    const double upper = TimesExp(1, Negative(h));
    return {-std::expm1(-h.high), upper, h.high * upper, 1 - h.high, h.high};
}

}  // namespace

TailPair ChiSquareTails(TwoDouble x, double df)
{
    if (x.high <= 0) return {0, 1, 0, 0, 0};
    if (std::isinf(x.high)) return {1, 0, 0, 0, 0};
    if (df >= kPointDf) {
        const double lower = x.high < df ? 0 : x.high > df ? 1 : 0.5;
        return {lower, 1 - lower, 0, 0, 0};
    }
    if (df == 2) return ExponentialTails({0.5 * x.high, 0.5 * x.low});
    return GammaTails(0.5 * AtLeastSmallestDf(df), {0.5 * x.high, 0.5 * x.low});
}

double ChiSquareQuantileStart(TailTarget target, double df)
{
    const double lowerP = target.isLower ? target.probability : 1 - target.probability;
    const double power = std::exp(std::fmin(PowerTailLog(lowerP, 0.5 * df), std::log(df)));
    const double z = InvCDFNormalStd(target.probability) * (target.isLower ? 1 : -1);
    return std::fmax(WilsonHilferty(z, df), power);
}

double ChiSquareQuantile(TailTarget target, double df)
{
    if (df >= kPointDf) return df;
    if (df == 2)
        return -2 * (target.isLower ? std::log1p(-target.probability) : std::log(target.probability));
    df = AtLeastSmallestDf(df);
    const double start = ChiSquareQuantileStart(target, df);
    return SearchQuantile([df](double x) { return ChiSquareTails({x, 0}, df); }, target, start);
}

}  // namespace korvenrg::distributions

using namespace korvenrg::distributions;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

double CDFChiSq(double x, double df, short lower)
{
    if (std::isnan(x) || !IsDf(df)) return kNaN;
    const TailPair tails = ChiSquareTails({x, 0}, df);
    return lower != 0 ? tails.lower : tails.upper;
}

double pValChiSq(double x, double df)
{
    return CDFChiSq(x, df, 0);
}

double InvCDFChiSq(double p, double df)
{
    if (!(p >= 0 && p <= 1) || !IsDf(df)) return kNaN;
    if (p == 0) return 0;
    if (p == 1) return kInfinity;
    return ChiSquareQuantile(SmallerTail(p), df);
}
