/** The regularised incomplete gamma function, both tails. */
#pragma once

#include "kernel/distributions/tail_pair.h"
#include "kernel/distributions/two_double.h"

namespace korvenrg::distributions {

/** P(a, x) (lower) and Q(a, x) (upper) for finite a > 0 and finite x > 0; weight = x^a e^-x / gamma(a), the
   derivative of lower with respect to log x. Relative error about 1e-14 in both tails for a up to 1e15. */
TailPair GammaTails(double a, TwoDouble x);

/** P(a, x). x <= 0 gives 0, +infinity gives 1; a <= 0, infinite or NaN gives NaN, so does NaN x. */
double IncompleteGamma(double a, double x);

/** Q(a, x) = 1 - P(a, x), computed directly. */
double IncompleteGammaComplement(double a, double x);

}  // namespace korvenrg::distributions
