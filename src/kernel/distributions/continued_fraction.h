/** Evaluation of a continued fraction with a bounded number of steps. */
#pragma once

#include <cmath>

namespace korvenrg::distributions {

/** Partial numerator and denominator of one step. */
struct FractionStep
{
    double alpha;
    double beta;
};

/** alpha(1) / (beta(1) + alpha(2) / (beta(2) + ...)), where Next() returns the steps in turn.

    Euler's forward recurrence after the equivalence transformation that makes all denominators 1, so that the
    only chain of dependent operations is one product and one sum a step. The difference of two convergents is
    followed as the product of the partial numerators, which does not cancel: the stopping rule
        |f(n) - f(n-1)| <= kFractionTolerance |f(n)|
    therefore holds below the rounding of f.
    Source: W. B. Jones & W. J. Thron (1980), Continued Fractions: Analytic Theory and Applications,
    chapter 2. */
template <class Steps>
double ContinuedFraction(Steps& steps)
{
    constexpr double kFractionTolerance = 1e-17;
    constexpr int kMostSteps = 4000;  // bounds the loop; the regions of use need fewer than 300
    constexpr double kLarge = 1e100;
    constexpr double kSmall = 1e-100;

    FractionStep step = steps.Next();
    double beta = step.beta;
    double previousNumerator = 0, numerator = step.alpha / beta;
    double previousDenominator = 1, denominator = 1;
    double difference = numerator;
    for (int n = 2; n <= kMostSteps; n++) {
        step = steps.Next();
        const double ratio = step.alpha / (beta * step.beta);
        beta = step.beta;
        const double nextNumerator = numerator + ratio * previousNumerator;
        const double nextDenominator = denominator + ratio * previousDenominator;
        previousNumerator = numerator;
        previousDenominator = denominator;
        numerator = nextNumerator;
        denominator = nextDenominator;
        difference *= -ratio;
        if (std::fabs(difference) <= kFractionTolerance * std::fabs(numerator * previousDenominator)) break;
        if (denominator > kLarge) {
            numerator *= kSmall;
            denominator *= kSmall;
            previousNumerator *= kSmall;
            previousDenominator *= kSmall;
            difference *= kSmall * kSmall;
        }
    }
    return numerator / denominator;
}

}  // namespace korvenrg::distributions
