/** The permutation distribution of a sum of scores. */
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace korvenrg::distributions {

/** A limit on the time of a computation, in elapsed units of the clock. */
struct TimeLimit
{
    bool active = false;
    double start = 0.0;
    double units = 0.0;

    bool Passed() const;
};

/**
 * P(sum <= limit) for the sum of m scores drawn from `scores` without replacement, all sets alike; exact but
 * for rounding, in the smallest tails too. Shift algorithm (Streitberg & Roehmel 1986): the objects enter one
 * by one, and the probability that a set of k of the first i has the sum s is (i - k)/i times that of the
 * first i - 1 plus k/i times that of sets of k - 1 with the sum s less the score of the i-th. All terms are
 * probabilities, so nothing overflows.
 *
 * @param scores  not negative; m of them at most
 * @return nothing when the time limit has passed or the table would have more than 2^26 cells
 */
std::optional<double> LowerTailOfSum(const std::vector<int>& scores,
                                     int m,
                                     std::int64_t limit,
                                     const TimeLimit& timeLimit);

}  // namespace korvenrg::distributions
