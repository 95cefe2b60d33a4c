/** The uniform asymptotic expansion that the beta and gamma distributions share where their parameters are
    large. */
#pragma once

#include "kernel/distributions/tail_pair.h"

namespace korvenrg::distributions {

/** A beta distribution (or, with w = 0 and skew = 1, a gamma distribution) at one point, by its normal
    variable sigma. */
struct NormalForm
{
    double harmonic;   // r w = a b / (a + b); a for the gamma distribution
    double w;          // x0 y0, the product of the mean and its complement
    double skew;       // y0 - x0
    double deviance;   // sigma^2 / 2, the exponent: the density is proportional to exp(-deviance)
    double belowMean;  // its sign is that of -sigma; becomes the slope of the result
    double weight;     // x^a y^b / B(a, b), or x^a e^-x / gamma(a)
};

/** Whether the expansion reaches full accuracy: the parameters are large and sigma / sqrt(harmonic) is
    small. */
bool HasNormalForm(double harmonic, double deviance);

/** Both tails. Each is formed directly on its own side of the mean, as a normal tail plus a correction
    that is smaller by the factor sigma / sqrt(harmonic). */
TailPair TailsOfNormalForm(const NormalForm& form);

}  // namespace korvenrg::distributions
