/** The range of degrees of freedom that the distributions distinguish. */
#pragma once

#include <cmath>

namespace korvenrg::distributions {

/** Degrees of freedom from which Student's and Fisher's distributions are replaced by their limits: the
    difference is below rounding. */
inline constexpr double kInfiniteDf = 1e20;

/** Smaller positive degrees of freedom count as this number, where the tails have reached their limits
    for df to 0. */
inline constexpr double kLeastDf = 1e-100;

/** Whether df is one: positive, perhaps infinite, not NaN. */
inline bool IsDf(double df)
{
    return df > 0;
}

inline double AtLeastSmallestDf(double df)
{
    return std::fmax(df, kLeastDf);
}

}  // namespace korvenrg::distributions
