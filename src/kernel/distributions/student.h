/** Student's t distribution, real degrees of freedom above 0 (those below 1e-100 count as 1e-100);
    infinite ones give the normal distribution. df of 0, negative or NaN gives NaN; so does NaN t. */
#pragma once

#include "kernel/distributions/tail_pair.h"

/** P(T <= t) with lower other than 0, P(T > t) with lower = 0. Relative error below 1e-13 in both tails.
    -infinity and +infinity give 0 and 1. */
double CDFStudent(double t, double df, short lower = -1);

/** One upper tail of |t|, P(T > |t|): at most 1/2. Callers double it for a two-sided test. */
double pValStudent(double t, double df);

/** t with P(T <= t) = p. 0 gives -infinity, 1 gives +infinity, p outside 0..1 gives NaN; a quantile
    beyond the largest double gives infinity. */
double InvCDFStudent(double p, double df);

namespace korvenrg::distributions {

/** Whether FastStudentTails serves: a closed form (1 and 2 degrees of freedom) or the expansion for many. */
bool HasFastStudentTails(double t, double df);

/** P(|T| <= t) and P(|T| > t) for t > 0 with derivatives by log t. */
TailPair FastStudentTails(double t, double df);

}  // namespace korvenrg::distributions
