/** The tail of Student's distribution with many degrees of freedom. */
#pragma once

#include "kernel/distributions/tail_pair.h"

namespace korvenrg::distributions {

/** Whether StudentTailsByExpansion reaches full accuracy at t > 0. */
bool HasStudentExpansion(double t, double df);

/** P(|T| <= t) and P(|T| > t) with derivatives by log t, as a normal distribution of s,
    s^2 = (df - 1/2) log(1 + t^2 / df), with small corrections. */
TailPair StudentTailsByExpansion(double t, double df);

}  // namespace korvenrg::distributions
