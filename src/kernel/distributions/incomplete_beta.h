/** The regularised incomplete beta function, both tails. */
#pragma once

#include "kernel/distributions/tail_pair.h"
#include "kernel/distributions/two_double.h"

namespace korvenrg::distributions {

/** A point x of 0..1 with its complement y = 1 - x, as the two tails need it for given parameters a and b. */
struct BetaPoint
{
    double x;
    double y;
    double belowMean;    // a y - b x = (a + b) (a / (a + b) - x), free of cancellation
    TwoDouble oddsOver;  // x / y without rounding is oddsOver / oddsUnder
    TwoDouble oddsUnder;
};

/** I_x(a, b) (lower) and 1 - I_x(a, b) = I_y(b, a) (upper) for finite a, b > 0 and odds x / y in
    1e-250..1e250; weight = x^a y^b / B(a, b), the derivative of lower with respect to log(x/y).
    Relative error below 1e-13 in both tails, see docs/accuracy.md. The methods, in this order:
      the uniform expansion (uniform_expansion.h) where a b / (a + b) is large and the point not too far out;
      else the continued fraction of the tail on whose side of the mean, about, the point lies; the other
      tail, then at least 1/70 for a, b >= 1/20, is one minus it. */
TailPair BetaTails(double a, double b, const BetaPoint& point);

/** The same where one side of the point is so small that only the leading term counts: logOdds = log(x / y),
    below -log(max(1, a, b)) - 40 or above its mirror image. Serves arguments whose odds overflow. */
TailPair BetaTailsOfExtreme(double a, double b, TwoDouble logOdds);

/** I_x(a, b) with the complement y = 1 - x passed along: the smaller of the two is taken as exact.
    a, b > 0, infinite ones excluded; x <= 0 gives 0, y <= 0 gives 1; NaN or other arguments give NaN. */
double IncompleteBeta(double a, double b, double x, double y);

/** 1 - I_x(a, b), computed as I_y(b, a). */
double IncompleteBetaComplement(double a, double b, double x, double y);

}  // namespace korvenrg::distributions
