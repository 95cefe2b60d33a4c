/**
 * The studentized range by a fixed quadrature scheme: what the procedures of Tukey, Games and Howell, and
 * Dunnett (C) report is this scheme's value, with its errors (docs/accuracy.md has them). The laws of
 * kernel/distributions/comparison_laws.h compute the same distribution to rounding and serve the others.
 *
 * Source of the method: Copenhaver and Holland 1988, "Computation of the distribution of the maximum studentized
 * range statistic with application to multiple significance testing of simple effects"; start of the inverse:
 * Odeh and Evans 1974, "Algorithm AS 70: the percentage points of the normal distribution".
 *
 * NaN arguments, and df of 0 or less, end in NaN, 0 or -1 after a bounded number of steps.
 */
#pragma once

namespace korvenrg::comparisons {

/**
 * P(largest of rr ranges of cc standard normals <= w).
 *
 * @param saturated  out: whether the result was 1 by rounding. A w of 16 or more gives 1 unsaturated.
 */
double WProb(double w, double rr, double cc, bool& saturated);

/** P(largest of rr studentized ranges of cc means <= q), df degrees of freedom. */
double PTukey(double q, double rr, double cc, double df);

/** q with PTukey = p to 0.0001 in q; 0 for p = 0, -1 when 49 secant steps do not reach it. */
double QTukey(double p, double rr, double cc, double df);

/** The first point of that search. */
double QTukeyStart(double p, double cc, double df);

}  // namespace korvenrg::comparisons
