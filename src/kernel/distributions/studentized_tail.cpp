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
constexpr double kWidestStep = 0.35;    // first step of the outer rule (tuned)
constexpr double kStepInSpreads = 1.0;  // the same in spreads of the scale's logarithm (tuned)

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
    it falls double-exponentially; y = centre + (z - e^-z + 1) / 2 makes it do so on the left, too, where
    few degrees of freedom leave only e^(df y). Source of the mapping: H. Takahasi & M. Mori (1974), Double
    exponential formulas for numerical integration. */
double TailOverScale(const ComparisonLaw& law, double df, double t, Side side)
{
    const LogScaleDensity density(df);
    const double centre = -std::log(std::hypot(1, t / std::sqrt(df)));
    const auto integrand = [&](double z) {
        const double decay = std::exp(-z);
        const double y = centre + 0.5 * (z - decay + 1);
        const double weight = density(y) * 0.5 * (1 + decay);
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

/** The level of a single comparison of which law.comparisons independent ones would give the tail, as Student's
    deviate: about linear in t on both sides, which makes the secant method fast. Z. Sidak (1967), Rectangular
    confidence regions for the means of multivariate normal distributions. */
double EquivalentDeviate(const ComparisonLaw& law, double df, double tail, Side side)
{
    const double sides = law.kind == ComparisonKind::kOneSided ? 1 : 2;
    const double logInside = side == Side::kLower ? std::log(tail) : std::log1p(-tail);
    const double outside = -std::expm1(logInside / law.comparisons) / sides;
    if (outside > 0.5) return InvCDFStudent(std::exp(logInside / law.comparisons), df);
    return -InvCDFStudent(outside, df);
}

/** The step of the secant method from the newer of two points, or Newton's with slope 1. */
struct SecantPoint
{
    double t;
    double residual;
};

}  // namespace

double StudentizedQuantile(const ComparisonLaw& law, double df, double confidence)
{
    constexpr int kMostSteps = 60;       // bounds the loop; 4 to 6 are usual
    constexpr double kExactStep = 1e-6;  // a relative step after which the secant method stands still

    df = std::fmax(df, kLeastScaleDf);
    const Side side = confidence < 0.5 ? Side::kLower : Side::kUpper;
    const double target = side == Side::kLower ? confidence : 1 - confidence;
    const double goal = EquivalentDeviate(law, df, target, side);
    const bool isPositive = law.kind != ComparisonKind::kOneSided;
    double below = isPositive ? 0 : -HUGE_VAL, above = HUGE_VAL;
    SecantPoint before = {}, now = {};
    double t = goal;
    double slope = 1;
    for (int i = 0; i < kMostSteps; i++) {
        before = now;
        const double tail = StudentizedTail(law, df, t, side);
        now = {t, EquivalentDeviate(law, df, tail, side) - goal};
        if (now.residual == 0) return t;
        (now.residual < 0 ? below : above) = t;
        if (i > 0) slope = (now.residual - before.residual) / (now.t - before.t);
        double step = -now.residual / slope;
        double next = t + step;
        if (!(next > below && next < above)) {
            if (std::isinf(above)) next = t + (std::fabs(t) + 1);
            else if (std::isinf(below)) next = t - (std::fabs(t) + 1);
            else next = 0.5 * (below + above);
            if (next == t) return t;
        } else if (std::fabs(step) <= kExactStep * std::fabs(t)) {
            return next;
        }
        t = next;
    }
    return t;
}

}  // namespace korvenrg::distributions
