/** The line search that the likelihood fits of this folder share. */
#pragma once

#include <vector>

#include "core/limits.h"
#include "core/matrix.h"

namespace korvenrg::logistic {

/** A step is an improvement when the log-likelihood rises by more than this. */
inline constexpr double kSmallestRise = kEps;

/**
 * Moves back along a step that did not raise the log-likelihood.
 *
 * At move i = 1, 2, .. `moves` the parameters are evaluated; if the log-likelihood rose, the search stops. Otherwise they
 * move back by 2^-i of the step. After the last move they are not evaluated again.
 *
 * @param parameters  new parameters in, the point reached out
 * @param back        old parameters - new parameters
 * @param rise        log-likelihood at the parameters as they stand less that at the old ones; called with the number of
 *                    the move
 * @return whether a point was accepted
 */
template <typename Rise>
bool SearchBack(matrix<double>& parameters, const std::vector<double>& back, int moves, Rise rise)
{
    double share = 1.0;
    for (int move = 1; move <= moves; ++move) {
        if (rise(move) > kSmallestRise) return true;
        share *= 0.5;
        for (std::size_t i = 0; i < back.size(); ++i) {
            parameters.data[i] += share * back[i];
        }
    }
    return false;
}

}  // namespace korvenrg::logistic
