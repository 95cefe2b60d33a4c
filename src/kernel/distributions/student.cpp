#include "kernel/distributions/student.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/degrees_of_freedom.h"
#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/incomplete_beta.h"
#include "kernel/distributions/normal.h"
#include "kernel/distributions/quantile_search.h"
#include "kernel/distributions/student_expansion.h"

using namespace korvenrg::distributions;

namespace korvenrg::distributions {

bool HasFastStudentTails(double t, double df)
{
    return df == 1 || df == 2 || HasStudentExpansion(t, df);
}

}  // namespace korvenrg::distributions

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kLeastOdds = 1e-200;  // t^2 / df outside this range leaves one term of the tail only
constexpr double kMostOdds = 1e200;
constexpr double kCentralStart = 0.25;   // for tails above it the probability between 0 and t is inverted
constexpr double kPowerTailOdds = 30.0;  // t^2 / df from which the tail's power law starts the search (tuned)

/** The closed form for one degree of freedom: P(|T| > t) = 2/pi atan(1/t). */
TailPair CauchyTails(double t)
{
    constexpr double kTwoOverPi = 0.636619772367581343076;
    const double weight = kTwoOverPi / (t + 1 / t);
    return {kTwoOverPi * std::atan(t),
            kTwoOverPi * std::atan(1 / t),
            weight,
            (1 / t - t) / (t + 1 / t),
            -std::log(weight)};
}

/** The closed form for two: P(|T| <= t) = t / r with r^2 = 2 + t^2, and 1 - t / r = 2 / (r (r + t)). */
TailPair TailsOfTwoDf(double t)
{
    const double r = std::hypot(1.41421356237309504880, t);
    const double weight = 2 * (t / r) / r / r;
    return {t / r, 2 / r / (r + t), weight, 1 - 3 * (t / r) * (t / r), -std::log(weight)};
}

/** P(|T| <= t) and P(|T| > t) for 0 < t < infinity and finite df, with derivatives by log t: t^2 / df are
    the odds of a beta variable with parameters 1/2 and df/2 (Abramowitz & Stegun 1964, 26.7.1). */
TailPair TwoSidedTails(double t, double df)
{
    if (df == 1) return CauchyTails(t);
    if (df == 2) return TailsOfTwoDf(t);
    if (HasStudentExpansion(t, df)) return StudentTailsByExpansion(t, df);
    const double odds = t / df * t;
    TailPair tails;
    if (odds > kLeastOdds && odds < kMostOdds) {
        const double y = 1 / (1 + odds);
        tails =
            BetaTails(0.5, 0.5 * df, {odds * y, y, 0.5 * (1 - t) * (1 + t) * y, ExactProduct(t, t), {df, 0}});
    } else {
        const TwoDouble logT = Log({t, 0});
        const TwoDouble logOdds = Add(Add(logT, logT), Negative(Log({df, 0})));
        tails = BetaTailsOfExtreme(0.5, 0.5 * df, logOdds);
    }
    tails.weight *= 2;
    tails.slope *= 2;
    return tails;
}

/** Half of P(|T| <= t) or of P(|T| > t) for any t >= 0. */
struct HalfTails
{
    double between;
    double beyond;
};

HalfTails HalfTailsAt(double t, double df)
{
    if (t == 0) return {0, 0.5};
    if (std::isinf(t)) return {0.5, 0};
    if (df >= kInfiniteDf) return {0.5 * derf(t * 0.707106781186547524401), pValNormalStd(t)};
    const TailPair tails = TwoSidedTails(t, df);
    return {0.5 * tails.lower, 0.5 * tails.upper};
}

/** log t where the power law P(|T| > t) = (df / t^2)^(df/2) / (df/2 B(1/2, df/2)) reaches the probability. */
double PowerTailLog(double probability, double df)
{
    const double b = 0.5 * df;
    return 0.5 * (std::log(df) - (std::log(probability) + std::log(b) + LogBeta(0.5, b)) / b);
}

/** The inverse of z = (8 df + 1) / (8 df + 3) sqrt(df log(1 + t^2 / df)), D. L. Wallace (1959), Bounds on
   normal approximations to Student's and the chi-square distributions. */
double WallaceQuantile(double tail, double df)
{
    const double z = InvCDFNormalStd(tail) * (8 * df + 3) / (8 * df + 1);
    return std::sqrt(df * std::expm1(z * z / df));
}

/** The start of the quantile: the normal approximation, or the tail's power law where it is far out. */
double QuantileStart(double tail, double df)
{
    const double start = WallaceQuantile(tail, df);
    return start / df * start < kPowerTailOdds ? start : std::exp(PowerTailLog(2 * tail, df));
}

/** The quantile of one degree of freedom, cot(pi tail). */
double CauchyQuantile(double tail)
{
    constexpr double kPi = 3.14159265358979323846;
    return tail > kCentralStart ? std::tan(kPi * (0.5 - tail)) : 1 / std::tan(kPi * tail);
}

/** t > 0 with P(T > t) = tail, 0 < tail < 1/2. */
double QuantileOfTail(double tail, double df)
{
    if (df == 1) return CauchyQuantile(tail);
    if (df == 2) return (1 - 2 * tail) / std::sqrt(2 * tail * (1 - tail));
    if (df >= kInfiniteDf) return -InvCDFNormalStd(tail);
    const bool isCentral = tail > kCentralStart;
    const TailTarget target = {2 * (isCentral ? 0.5 - tail : tail), isCentral};
    return SearchQuantile([df](double t) { return TwoSidedTails(t, df); }, target, QuantileStart(tail, df));
}

}  // namespace

namespace korvenrg::distributions {

TailPair FastStudentTails(double t, double df)
{
    return TwoSidedTails(t, df);
}

}  // namespace korvenrg::distributions

double CDFStudent(double t, double df, short lower)
{
    if (std::isnan(t) || !IsDf(df)) return kNaN;
    const HalfTails half = HalfTailsAt(std::fabs(t), AtLeastSmallestDf(df));
    const bool isFarTail = (t < 0) == (lower != 0);
    return isFarTail ? half.beyond : 0.5 + half.between;
}

double pValStudent(double t, double df)
{
    return CDFStudent(std::fabs(t), df, 0);
}

double InvCDFStudent(double p, double df)
{
    if (!(p >= 0 && p <= 1) || !IsDf(df)) return kNaN;
    if (p == 0) return -kInfinity;
    if (p == 1) return kInfinity;
    if (p == 0.5) return 0;
    df = AtLeastSmallestDf(df);
    return p < 0.5 ? -QuantileOfTail(p, df) : QuantileOfTail(1 - p, df);
}
