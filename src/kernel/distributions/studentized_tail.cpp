#include "kernel/distributions/studentized_tail.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/degrees_of_freedom.h"
#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/student.h"
#include "kernel/distributions/trapezoidal.h"

namespace korvenrg::distributions {

namespace {

constexpr double kTwoPi = 6.28318530717958647693;
constexpr double kLeastScaleDf = 0.1;   // fewer degrees of freedom count as these
constexpr double kFarRatio = 1e100;     // of t to sqrt(df), from which 1 + ratio^2 is ratio^2
constexpr double kWidestStep = 0.3;     // first step of the outer rule (tuned)
constexpr double kStepInSpreads = 1.0;  // the same in spreads of the scale's logarithm (tuned)

// Less confidence than this is looked for by the lower tail: one minus the upper one, which is faster, has lost a digit.
constexpr double kLeastByUpperTail = 0.1;

/** Density of y = log s, where df s^2 is chi-square:
        2 sqrt(a / (2 pi)) exp(-delta(a) + a (log(1 + v) - v)),  a = df / 2,  1 + v = s^2 = e^(2y),
    with the Stirling error delta: no large terms cancel. */
class LogScaleDensity
{
  public:
    explicit LogScaleDensity(double df)
        : a_(0.5 * df), front_(2 * std::sqrt(a_ / kTwoPi) * std::exp(-StirlingError(a_)))
    {
    }

    double operator()(double y) const
    {
        const double v = std::expm1(2 * y);
        const double deviance = std::fabs(v) < 0.25 ? Log1pMinusX(v) : 2 * y - v;
        return front_ * std::exp(a_ * deviance);
    }

  private:
    double a_;
    double front_;
};

/** P = integral of P(normal maximum beyond t s) over the law of s = e^y. For t > 0 the integrand has its peak
    between y = 0 and the centre below, which is where it lies for a tail like exp(-t^2 s^2 / 2). To the right
    it falls double-exponentially; y = centre + (z + 1 - e^-z) / 2 makes it do so on the left, too, where
    few degrees of freedom leave only e^(df y). Source of the mapping: H. Takahasi & M. Mori (1974), Double
    exponential formulas for numerical integration. */
double TailOverScale(const ComparisonLaw& law, double df, double t, Side side)
{
    const LogScaleDensity density(df);
    const double ratio = std::fabs(t) / std::sqrt(df);
    const double centre =
        ratio < kFarRatio ? -0.5 * std::log1p(ratio * ratio) : 0.5 * std::log(df) - std::log(std::fabs(t));
    const auto integrand = [&](double z) {
        const double decay = std::expm1(-z);
        const double y = centre + 0.5 * (z - decay);
        const double weight = density(y) * (1 + 0.5 * decay);
        return weight == 0 ? 0 : weight * NormalMaximumTail(law, t * std::exp(y), side);
    };
    return IntegrateOutward(integrand, std::fmin(kWidestStep, kStepInSpreads / std::sqrt(2 * df)));
}

}  // namespace

double StudentizedTail(const ComparisonLaw& law, double df, double t, Side side)
{
    if (std::isinf(t)) return (t > 0) == (side == Side::kLower) ? 1 : 0;
    if (law.kind != ComparisonKind::kOneSided && t <= 0) return side == Side::kLower ? 0 : 1;
    if (df >= kInfiniteDf) return NormalMaximumTail(law, t, side);
    return TailOverScale(law, std::fmax(df, kLeastScaleDf), t, side);
}

namespace {

/** What is looked for: the side and value of the tail, and the number of independent comparisons with which it is
    compared. */
struct QuantileGoal
{
    Side side;
    double tail;
    int comparisons;
    int sides;
};

/** A tail as that of a single comparison, in Student's deviate: about linear in t, which makes the secant method
    fast. The single one is that of which goal.comparisons independent ones give the same tail (Z. Sidak 1967,
    Rectangular confidence regions for the means of multivariate normal distributions). */
double EquivalentDeviate(const QuantileGoal& goal, double df, double tail)
{
    const double logInside = goal.side == Side::kLower ? std::log(tail) : std::log1p(-tail);
    return -InvCDFStudent(-std::expm1(logInside / goal.comparisons) / goal.sides, df);
}

/** A point of the search with its distance from the goal. */
struct SearchPoint
{
    double t;
    double residual;
};

/** The middle of a bracket, about in the logarithm; beyond t where an end is open. */
double MiddleOf(const Interval& bracket, double t)
{
    if (std::isinf(bracket.high)) return t + (1 + std::fabs(t));
    if (std::isinf(bracket.low)) return t - (1 + std::fabs(t));
    return std::sinh(0.5 * (std::asinh(bracket.low) + std::asinh(bracket.high)));
}

/** The secant method on the equivalent deviate, kept within a bracket, with a halving of it now and then. Starts from
    the value that independent comparisons would have, with the deviate as proportional to t. */
double SearchComparisonQuantile(const ComparisonLaw& law,
                                double df,
                                const QuantileGoal& goal,
                                Interval bracket)
{
    constexpr int kMostSteps = 150;         // bounds the loop; 3 to 6 are usual
    constexpr int kHalvingPeriod = 6;       // a halving after so many steps, should the secants be slow
    constexpr double kLastProduct = 1e-12;  // of the last two relative steps: what the secant method errs by

    const double target = EquivalentDeviate(goal, df, goal.tail);
    SearchPoint before = {0, 0};
    double t = target;
    for (int i = 0; i < kMostSteps && std::isfinite(t); i++) {
        const double deviate = EquivalentDeviate(goal, df, StudentizedTail(law, df, t, goal.side));
        const SearchPoint now = {t, deviate - target};
        if (now.residual == 0) return t;
        (now.residual < 0 ? bracket.low : bracket.high) = t;

        const double slope = i == 0 ? deviate / t : (now.residual - before.residual) / (now.t - before.t);
        const double next = t - now.residual / slope;
        const bool isInside = next > bracket.low && next < bracket.high;
        const bool isExact = std::fabs((next - t) * (t - before.t)) <= kLastProduct * t * t;
        if (isInside && isExact) return next;
        before = now;
        t = isInside && (i + 1) % kHalvingPeriod != 0 ? next : MiddleOf(bracket, t);
        if (t == before.t) return t;
    }
    return t;
}

}  // namespace

// The sign of a one-sided quantile follows from the chance that all differences are negative, in which the scale has
// no part. Beyond it on the negative side the comparisons share the scale and count as one.
double StudentizedQuantile(const ComparisonLaw& law, double df, double confidence)
{
    df = std::fmax(df, kLeastScaleDf);
    const bool isOneSided = law.kind == ComparisonKind::kOneSided;
    QuantileGoal goal = {Side::kUpper, 1 - confidence, law.comparisons, isOneSided ? 1 : 2};
    if (confidence < kLeastByUpperTail) goal = {Side::kLower, confidence, law.comparisons, goal.sides};
    if (!isOneSided || NormalMaximumTail(law, 0, Side::kLower) < confidence)
        return SearchComparisonQuantile(law, df, goal, {0, HUGE_VAL});
    goal.comparisons = 1;
    return SearchComparisonQuantile(law, df, goal, {-HUGE_VAL, 0});
}

}  // namespace korvenrg::distributions
