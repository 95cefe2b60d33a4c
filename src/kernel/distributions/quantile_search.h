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

/** The residual where the tail underflows, by tail = exp(-deviance) / sqrt(4 pi deviance) as for the normal
    distribution: good enough to leave that region in a few steps. */
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

/** Between which points of v the target lies. */
struct Bracket
{
    double below = 0;
    double above = HUGE_VAL;
};

/** Halley's step in log v for the residual g: with g'' = g' (slope - g') and Newton's step n = -g / g', it is
    n / (1 + n (slope - g') / 2). At most kLongestStep, in the direction that the residual's sign asks for.
    Source: J. F. Traub (1964), Iterative Methods for the Solution of Equations. */
inline double HalleyStep(const LogResidual& residual, double slope, bool isTooLow)
{
    constexpr double kLongestStep = 50.0;       // in log v
    constexpr double kLeastDenominator = 0.25;  // at most four of Newton's steps
    const double newton = -residual.value / residual.derivative;
    const double denominator = 1 + 0.5 * newton * (slope - residual.derivative);
    const double step = newton / std::fmax(kLeastDenominator, denominator);
    const double direction = isTooLow ? 1 : -1;
    if (!std::isfinite(step) || step * direction <= 0) return direction * kLongestStep;
    return direction * std::fmin(std::fabs(step), kLongestStep);
}

/** v moved by a step in log v; a step out of a closed bracket goes to the bracket's middle in log v. */
inline double MoveWithin(const Bracket& bracket, double v, double step)
{
    const double next = v + v * std::expm1(step);
    if (next > bracket.below && next < bracket.above) return next;
    const bool isClosed = bracket.below > 0 && bracket.above < HUGE_VAL;
    return isClosed ? std::sqrt(bracket.below) * std::sqrt(bracket.above) : v * std::exp(step);
}

/** v > 0 whose tail is the target: Halley's iteration on log(tail) against log(v), where power tails are
    straight lines and the tails of log-concave densities are concave.
      1. evaluate both tails at v
      2. narrow the bracket by the sign of the residual
      3. move by Halley's step, within the bracket
      4. stop once the residual was small enough for the step to be exact, or when v stands still. */
template <class TailsAt>
double SearchQuantile(const TailsAt& tailsAt, TailTarget target, double start)
{
    constexpr int kMostSteps = 200;       // bounds the loop; 1 to 4 are usual
    constexpr double kExactReach = 3e-6;  // a residual whose third power is below the rounding of 1 (derived)

    double v = start;
    Bracket bracket;
    for (int i = 0; i < kMostSteps && v > 0 && v < HUGE_VAL; i++) {
        const TailPair tails = tailsAt(v);
        const LogResidual residual = ResidualOf(tails, target);
        if (residual.value == 0) return v;
        const bool isTooLow = (residual.value < 0) == target.isLower;
        (isTooLow ? bracket.below : bracket.above) = v;

        const double step = HalleyStep(residual, tails.slope, isTooLow);
        if (std::fabs(residual.value) <= kExactReach) return v + v * std::expm1(step);
        const double next = MoveWithin(bracket, v, step);
        if (next == v) return v;
        v = next;
    }
    return v;
}

}  // namespace korvenrg::distributions
