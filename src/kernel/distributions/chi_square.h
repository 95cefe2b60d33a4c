/** The chi-square distribution, real degrees of freedom above 0 (those below 1e-100 count as 1e-100).
    Infinite ones give all probability at infinity. df of 0, negative or NaN gives NaN; so does NaN x. */
#pragma once

#include "kernel/distributions/quantile_search.h"
#include "kernel/distributions/tail_pair.h"
#include "kernel/distributions/two_double.h"

/** P(X <= x) with lower other than 0, P(X > x) with lower = 0. Relative error below 1e-13 in both tails.
    x <= 0 gives 0 and 1, x = +infinity gives 1 and 0. */
double CDFChiSq(double x, double df, short lower = -1);

/** The upper tail P(X > x). */
double pValChiSq(double x, double df);

/** x with P(X <= x) = p. 0 gives 0, 1 gives +infinity, p outside 0..1 gives NaN; a quantile below the
    smallest double gives 0. */
double InvCDFChiSq(double p, double df);

namespace korvenrg::distributions {

/** Both tails at x >= 0, for df > 0. */
TailPair ChiSquareTails(TwoDouble x, double df);

/** An approximation of ChiSquareQuantile: the larger of the cube-root normal one and the power law of the
    lower tail, which is a lower bound. 0 where it underflows. */
double ChiSquareQuantileStart(TailTarget target, double df);

/** x whose tail is the target, for a finite df > 0 and a probability between 0 and 1. */
double ChiSquareQuantile(TailTarget target, double df);

}  // namespace korvenrg::distributions
