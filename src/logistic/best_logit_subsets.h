/** The best subset of factors of each size for a logit model. */
#pragma once

#include "logistic/logit_state.h"

namespace korvenrg::logistic {

/**
 * Fits every subset of the active factors whose size is within the limits (both cut to the number of active factors),
 * keeps the best of each size in oModels and leaves the best of all in run.fit, fitted once more.
 *
 * A subset whose fit fails is tried without some columns of its qualitative factors: the most columns first, and the
 * factors that lose one no longer count in its size. After kMostRefits tries it is given up.
 *
 * @return 0, or kNoSubsetFitted when no size has a best model
 */
int Log_BestSelection(LogitRun& run);

/** Fits of parts of one subset. */
inline constexpr int kMostRefits = 10000;

/**
 * All subsets of `size` of the columns, in the order in which they are tried: sorted by the factor of each member in
 * turn, and within a factor by falling column number.
 *
 * @param columns  ascending
 */
std::vector<std::vector<int>> PartsInOrder(const FactorDescription& factors,
                                           const std::vector<int>& columns,
                                           int size);

}  // namespace korvenrg::logistic
