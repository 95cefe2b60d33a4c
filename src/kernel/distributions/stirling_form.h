/** Pieces of the probability of a table of counts by Stirling's formula, after C. Loader (2000), Fast and accurate
    computation of binomial probabilities: the exponent is a sum of deviances of the counts from their expectations,
    each at least 0, so nothing cancels. */
#pragma once

#include <cmath>

#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/two_double.h"

namespace korvenrg::distributions {

constexpr double kCountTolerance = 1e-7;     // added to counts that come from sums
constexpr double kMostCount = 0x1p53;        // whole numbers are exact up to here
constexpr double kDeepCountDeviance = 20.0;  // beyond it the exponent is formed in two-doubles

inline bool IsCount(double n)
{
    return n >= 0 && n <= kMostCount;
}

/** log n! = n log n - n + log sqrt(2 pi n) + delta(n): the correction delta(n), 0 for n = 0 where the root is left
    out too. */
inline double StirlingCorrection(double n)
{
    return n == 0 ? 0 : StirlingError(n);
}

/** count log(count / expected) - count + expected >= 0, excess = count - expected. */
inline double CountDeviance(double count, double expected, double excess)
{
    constexpr double kRatioStart = -0.5;  // log(1 + u) is taken from 1 + u itself below
    if (count == 0) return -excess;
    const double u = -excess / count;
    return -count * (u < kRatioStart ? std::log(expected / count) - u : Log1pMinusX(u));
}

/** count log(count / expected) as a two-double; ratio = count / expected. */
inline TwoDouble CountExponent(double count, TwoDouble ratio)
{
    return Multiply(Log(ratio), count);
}

}  // namespace korvenrg::distributions
