/** Multiple-comparison laws with an estimated standard deviation, from a law built by MakeComparisonLaw. */
#pragma once

#include "kernel/distributions/normal_maxima.h"

namespace korvenrg::distributions {

/** P(largest <= t) or P(largest > t) for df > 0, perhaps infinite. */
double StudentizedTail(const ComparisonLaw& law, double df, double t, Side side);

/** t with P(largest <= t) = confidence, 0 < confidence < 1. */
double StudentizedQuantile(const ComparisonLaw& law, double df, double confidence);

}  // namespace korvenrg::distributions
