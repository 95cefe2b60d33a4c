/** The search that all quantiles of positive variables share. */
#pragma once

#include <cmath>

#include "kernel/distributions/tail_pair.h"

namespace korvenrg::distributions {

/** The probability that a quantile is asked for, on the side where it has its digits. */
struct TailTarget
{
    double probability;
    bool isLower;
};

/** p as a tail of at most one half; 1 - p is exact above one half. */
inline TailTarget SmallerTail(double p)
{
    if (p <= 0.5) return {p, true};
    return {1 - p, false};
}

/** log(tail / probability) and its derivative with respect to log v. */
struct LogResidual
{
    double value;
    double derivative;
};

/** The residual where the tail underflows, from the normal approximation tail = exp(-deviance) / sqrt(4 pi
   deviance): good enough to leave that region in one step. */
inline LogResidual ResidualOfVanished(const TailPair& tails, TailTarget target)
{
    constexpr double kFourPi = 12.5663706143591729539;
    const double logTail = -tails.deviance - 0.5 * std::log(kFourPi * tails.deviance);
    const double slope = std::fabs(tails.slope);
    return {logTail - std::log(target.probability), target.isLower ? slope : -slope};
}

inline LogResidual ResidualOf(const TailPair& tails, TailTarget target)
{
    constexpr double kVanished = 1e-305;
    const double tail = target.isLower ? tails.lower : tails.upper;
    if (tail < kVanished && tails.deviance > 1) return ResidualOfVanished(tails, target);
    const double ratio = (tail - target.probability) / target.probability;
    const double derivative = (target.isLower ? tails.weight : -tails.weight) / tail;
    const bool isNear = std::fabs(ratio) < 0.5;
    return {isNear ? std::log1p(ratio) : std::log(tail) - std::log(target.probability), derivative};
}

/** v > 0 whose tail is the target: Halley's iteration for log(tail) against log(v), where power tails are
   straight lines.
      1. evaluate both tails at v, narrow the bracket by the residual's sign
      2. Halley's step from the residual g, its derivative g' and g'' = g' (slope - g'), of at most
   kLongestStep
      3. a step out of the bracket, or one that is not a number, is replaced by the bracket's middle (in log
   v) or by a longest step
      4. stop after the step whose residual was below kCubicReach: its cube is below rounding; or when v
   stands still. Source of the step: E. Halley (1694); of the transformation: the monotone log-concave tails.
 */
template <class TailsAt>
double SearchQuantile(const TailsAt& tailsAt, TailTarget target, double start)
{
    constexpr int kMostSteps = 200;        // bounds the loop; 2 to 4 are usual
    constexpr double kLongestStep = 50.0;  // in log v
    constexpr double kCubicReach = 3e-6;  // a residual whose third power is below the rounding of 1 (derived)
    constexpr double kLeastHalley =
        0.25;  // least denominator of Halley's step: at most four Newton steps long

    double v = start;
    double below = 0;
    double above = HUGE_VAL;
    for (int i = 0; i < kMostSteps && v > 0 && v < HUGE_VAL; i++) {
        const TailPair tails = tailsAt(v);
        const LogResidual residual = ResidualOf(tails, target);
        if (residual.value == 0) return v;
        const bool isTooLow = (residual.value < 0) == target.isLower;
        (isTooLow ? below : above) = v;

        const double newton = -residual.value / residual.derivative;
        const double halley =
            newton / std::fmax(kLeastHalley, 1 + 0.5 * newton * (tails.slope - residual.derivative));
        double step = std::fmin(std::fmax(halley, -kLongestStep), kLongestStep);
        if (!std::isfinite(halley) || (step > 0) != isTooLow) step = isTooLow ? kLongestStep : -kLongestStep;
        double next = v + v * std::expm1(step);
        if (std::fabs(residual.value) <= kCubicReach) return next;
        if (next <= below || next >= above) {
            if (below == 0 || std::isinf(above))
                next = v * std::exp(step);
            else
                next = std::sqrt(below) * std::sqrt(above);
        }
        if (next == v) return v;
        v = next;
    }
    return v;
}

}  // namespace korvenrg::distributions
