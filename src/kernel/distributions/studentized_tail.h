/** Multiple-comparison laws with an estimated standard deviation, from a law built by MakeComparisonLaw. */
#pragma once

#include <cstdint>
#include <unordered_map>

#include "kernel/distributions/normal_maxima.h"

namespace korvenrg::distributions {

/** P(largest <= t) or P(largest > t) for df > 0, perhaps infinite. */
double StudentizedTail(const ComparisonLaw& law, double df, double t, Side side);

/** t with P(largest <= t) = confidence, 0 < confidence < 1. */
double StudentizedQuantile(const ComparisonLaw& law, double df, double confidence);

/**
 * The studentized range of k equal means on the scale of t, for many arguments at the same degrees of freedom: the same
 * values as above to some 1e-14.
 *
 * The rule over y = log s takes its points where log t + y is a multiple of one step. What it needs there, the tail
 * of the range of k normals at t s, is then shared by all t, and is computed once.
 */
class SharedRangeTails
{
  public:
    /** means of at least 2, df above 0, perhaps infinite. */
    SharedRangeTails(int means, double df);

    /** P(range > t); NaN for NaN. */
    double Upper(double t);

    /** t with P(range <= t) = confidence, 0 < confidence < 1. */
    double Critical(double confidence);

  private:
    bool IsShared(double t) const;
    double NormalTailAt(std::int64_t key);
    double TailOverSharedScale(double t);

    ComparisonLaw law_;
    double df_;
    double step_;  ///< first step of the rule
    std::unordered_map<std::int64_t, double>
        tails_;  ///< of normals, by log(t s) in units of a fraction of the step
};

}  // namespace korvenrg::distributions
