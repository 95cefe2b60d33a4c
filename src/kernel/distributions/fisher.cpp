#include "kernel/distributions/fisher.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/chi_square.h"
#include "kernel/distributions/degrees_of_freedom.h"
#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/incomplete_beta.h"
#include "kernel/distributions/incomplete_gamma.h"
#include "kernel/distributions/normal.h"
#include "kernel/distributions/quantile_search.h"
#include "kernel/distributions/student.h"

using namespace korvenrg::distributions;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kLeastOdds = 1e-200;  // df1 F / df2 outside this range leaves one term of the tail only
constexpr double kMostOdds = 1e200;
constexpr double kLogLargest = 709.78;  // log of the largest double
constexpr double kFarStartLog = 10.0;   // |log F| beyond which the normal start is not trusted (tuned)
constexpr double kLeastNormalHalfDf =
    0.75;  // both halves of df above it: the normal start of the quantile (tuned)

TailPair Mirrored(const TailPair& tails)
{
    return {tails.upper, tails.lower, tails.weight, -tails.slope, tails.deviance};
}

/** log of the upper tail of F with 2 and df2 degrees of freedom is minus (df2 / 2) log(1 + 2 F / df2). */
double PowerTailExponent(double F, double df2)
{
    return 0.5 * df2 * std::log1p(2 / df2 * F);
}

/** Both tails with 2 and df2 degrees of freedom in the closed form, exponent = PowerTailExponent. */
TailPair TailsOfTwoDf(double F, double df2, double exponent)
{
    const double upper = std::exp(-exponent);
    const double odds = 2 / df2 * F;
    const double slope = (1 - F) / (1 + odds);
    return {-std::expm1(-exponent), upper, F / (1 + odds) * upper, slope, exponent};
}

/** Both tails with 1 and df2 degrees of freedom as those of Student's t = sqrt(F). */
TailPair TailsOfOneDf(double t, double df2)
{
    TailPair tails = FastStudentTails(t, df2);
    tails.weight *= 0.5;
    tails.slope *= 0.5;
    return tails;
}

/** Whether a closed form or a faster method serves F with df1 = 1 or 2. */
bool HasShortForm(double F, double df1, double df2)
{
    constexpr double kDeepExponent = 20.0;  // beyond, its rounding would show in the tail
    if (!(F > kLeastOdds && F < kMostOdds)) return false;
    if (df1 == 2) return PowerTailExponent(F, df2) < kDeepExponent;
    return df1 == 1 && HasFastStudentTails(std::sqrt(F), df2);
}

TailPair ShortForm(double F, double df1, double df2)
{
    return df1 == 2 ? TailsOfTwoDf(F, df2, PowerTailExponent(F, df2)) : TailsOfOneDf(std::sqrt(F), df2);
}

/** Both tails for 0 < F < infinity and finite degrees of freedom, with derivatives by log F: df1 F / df2
    are the odds of a beta variable with parameters df1/2 and df2/2 (Abramowitz & Stegun 1964, 26.6.2). */
TailPair FiniteTails(double F, double df1, double df2)
{
    if (HasShortForm(F, df1, df2)) return ShortForm(F, df1, df2);
    if (HasShortForm(1 / F, df2, df1)) return Mirrored(ShortForm(1 / F, df2, df1));
    const double a = 0.5 * df1;
    const double b = 0.5 * df2;
    const double odds = df1 / df2 * F;
    if (odds > kLeastOdds && odds < kMostOdds) {
        const double y = 1 / (1 + odds);
        return BetaTails(a, b, {odds * y, y, a * (1 - F) * y, ExactProduct(df1, F), {df2, 0}});
    }
    const TwoDouble logOdds = Add(Add(Log({df1, 0}), Log({F, 0})), Negative(Log({df2, 0})));
    return BetaTailsOfExtreme(a, b, logOdds);
}

/** Both tails of 1, to which F tends when both degrees of freedom are infinite. */
TailPair TailsOfOne(double F)
{
    return F < 1 ? TailPair{0, 1, 0, 0, 0} : TailPair{1, 0, 0, 0, 0};
}

TailPair FisherTails(double F, double df1, double df2)
{
    if (std::isnan(F) || !IsDf(df1) || !IsDf(df2)) return {kNaN, kNaN, kNaN, kNaN, kNaN};
    if (F <= 0) return {0, 1, 0, 0, 0};
    if (std::isinf(F)) return {1, 0, 0, 0, 0};
    const bool isInfinite1 = df1 >= kInfiniteDf;
    const bool isInfinite2 = df2 >= kInfiniteDf;
    if (isInfinite1 && isInfinite2) return TailsOfOne(F);
    if (isInfinite2) return ChiSquareTails(ExactProduct(df1, F), df1);
    if (isInfinite1) {
        const TailPair mirror = ChiSquareTails(Divide({df2, 0}, F), df2);
        return {mirror.upper, mirror.lower, 0, 0, 0};
    }
    return FiniteTails(F, AtLeastSmallestDf(df1), AtLeastSmallestDf(df2));
}

/** log F where the power law of the lower tail, (df1 F / df2)^a / (a B(a, b)), reaches the probability. */
double PowerTailLog(double probability, double a, double b)
{
    return std::log(b / a) + (std::log(probability) + std::log(a) + LogBeta(a, b)) / a;
}

/** log F from the normal quantile z of p (Abramowitz & Stegun 1964, 26.5.22). */
double NormalStartLog(double z, double a, double b)
{
    const double u = 1 / (2 * a - 1);
    const double v = 1 / (2 * b - 1);
    const double lambda = (z * z - 3) / 6;
    const double h = 2 / (u + v);
    return 2 * (z * std::sqrt(std::fmax(h + lambda, 0.0)) / h + (v - u) * (lambda + 5.0 / 6 - 2 / (3 * h)));
}

/** p as a tail of the reciprocal variable. */
TailTarget OppositeTail(double p)
{
    const TailTarget target = SmallerTail(p);
    return {target.probability, !target.isLower};
}

/** log F where the smaller df is alone responsible for the variation: F or 1 / F is chi-square over that
    df. */
double ChiSquareStartLog(double p, double df1, double df2)
{
    if (df1 <= df2) return std::log(ChiSquareQuantileStart(SmallerTail(p), df1) / df1);
    return -std::log(ChiSquareQuantileStart(OppositeTail(p), df2) / df2);
}

/** A start for log F: the normal one, or with few degrees of freedom the chi-square one. Far out, and for the
    latter always, it is kept between the power laws of the two tails, which are bounds of the quantile. */
double QuantileStartLog(double p, double df1, double df2)
{
    const double a = 0.5 * df1;
    const double b = 0.5 * df2;
    const bool hasNormalStart = a > kLeastNormalHalfDf && b > kLeastNormalHalfDf;
    const double start =
        hasNormalStart ? NormalStartLog(InvCDFNormalStd(p), a, b) : ChiSquareStartLog(p, df1, df2);
    if (hasNormalStart && std::fabs(start) < kFarStartLog) return start;
    return std::fmin(std::fmax(start, PowerTailLog(p, a, b)), -PowerTailLog(1 - p, b, a));
}

/** F with 2 and df2 degrees of freedom whose upper tail is exp(-exponent), from the closed form. */
double QuantileOfTwoDf(double exponent, double df2)
{
    return 0.5 * df2 * std::expm1(2 / df2 * exponent);
}

double FiniteQuantile(double p, double df1, double df2)
{
    constexpr double kDeepExponent = 20.0;  // beyond, the rounding of the logarithm would show in the tail
    const double upperExponent = -std::log1p(-p);
    if (df1 == 2 && upperExponent < kDeepExponent) return QuantileOfTwoDf(upperExponent, df2);
    const double lowerExponent = -std::log(p);
    if (df2 == 2 && lowerExponent < kDeepExponent) return 1 / QuantileOfTwoDf(lowerExponent, df1);
    const double logStart = QuantileStartLog(p, df1, df2);
    if (logStart < -kLogLargest) return 0;
    if (logStart > kLogLargest) return kInfinity;
    return SearchQuantile([df1, df2](double F) { return FiniteTails(F, df1, df2); },
                          SmallerTail(p),
                          std::exp(logStart));
}

}  // namespace

double CDFFisher(double F, double df1, double df2, short lower)
{
    const TailPair tails = FisherTails(F, df1, df2);
    return lower != 0 ? tails.lower : tails.upper;
}

double pValFisher(double F, double df1, double df2)
{
    return FisherTails(F, df1, df2).upper;
}

double InvCDFFisher(double p, double df1, double df2)
{
    if (!(p >= 0 && p <= 1) || !IsDf(df1) || !IsDf(df2)) return kNaN;
    if (p == 0) return 0;
    if (p == 1) return kInfinity;
    const bool isInfinite1 = df1 >= kInfiniteDf;
    const bool isInfinite2 = df2 >= kInfiniteDf;
    if (isInfinite1 && isInfinite2) return 1;
    if (isInfinite2) return ChiSquareQuantile(SmallerTail(p), df1) / df1;
    if (isInfinite1) return df2 / ChiSquareQuantile(OppositeTail(p), df2);
    return FiniteQuantile(p, AtLeastSmallestDf(df1), AtLeastSmallestDf(df2));
}
