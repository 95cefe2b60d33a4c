/** The regularised incomplete gamma function, both tails. */
#pragma once

#include "kernel/distributions/tail_pair.h"
#include "kernel/distributions/two_double.h"

namespace korvenrg::distributions {

/** P(a, x) (lower) and Q(a, x) (upper) for finite a > 0 and finite x > 0; weight = x^a e^-x / gamma(a), the
    derivative of lower with respect to log x. Relative error below 1e-13 in both tails, see docs/accuracy.md.
    The methods, in this order:
      the uniform expansion (uniform_expansion.h) where a is large and x not too far out;
      for x up to a + 3/4 the continued fraction of P, Q being one minus it, beyond Legendre's of Q. */
TailPair GammaTails(double a, TwoDouble x);

/** P(a, x). x <= 0 gives 0, +infinity gives 1; a <= 0, infinite or NaN gives NaN, so does NaN x. */
double IncompleteGamma(double a, double x);

/** Q(a, x) = 1 - P(a, x), computed directly. */
double IncompleteGammaComplement(double a, double x);

}  // namespace korvenrg::distributions
