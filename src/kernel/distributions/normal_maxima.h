/** Laws of the largest of several dependent normal deviates: what the multiple-comparison laws become with
    infinite degrees of freedom. */
#pragma once

#include <optional>
#include <vector>

#include "kernel/distributions/equal_range.h"

namespace korvenrg::distributions {

/** Which largest deviate is meant. */
enum class ComparisonKind
{
    kRange,     // of the differences between all pairs of k independent means
    kOneSided,  // of the differences between k - 1 means and a control
    kTwoSided,  // of their absolute values
};

enum class Side
{
    kLower,
    kUpper
};

/** Comparisons that share one correlation factor. */
struct ComparisonGroup
{
    double lambda;  // for a range: not used
    double spread;  // sqrt(1 - lambda^2); for a range: the standard deviation of the mean
    int members;    // how many
};

struct ComparisonLaw
{
    ComparisonKind kind;
    int comparisons;  // k - 1
    std::vector<ComparisonGroup> groups;
    std::optional<EqualRange> equalRange;  // of a range of equal means, when their number allows
};

/** The law that k means with the correlation factors lambda[0..k-2] follow; see comparison_laws.h. Factors
    beyond 0.99999 in absolute value count as that; equal ones are gathered in groups. */
ComparisonLaw MakeComparisonLaw(ComparisonKind kind, const std::vector<double>& lambda);

/** P(largest <= t) or P(largest > t), by one integral over the deviate that the comparisons share (for a
    range: over the largest mean). Relative accuracy about 1e-13 on the upper side as far as doubles reach. */
double NormalMaximumTail(const ComparisonLaw& law, double t, Side side);

}  // namespace korvenrg::distributions
