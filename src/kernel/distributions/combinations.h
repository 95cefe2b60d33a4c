/** Combinations one after the other. */
#pragma once

#include "core/matrix.h"

/**
 * The next combination of k out of the numbers 0 to n - 1, after J. Kurtzberg's form of state (1962,
 * "Algorithm 94: Combination"): the state is the combination itself, ascending in its first k cells.
 *
 * The order is descending with the highest member changing slowest: the first is (n - k, ..., n - 1), the
 * last (0, 1, ..., k - 1), and all combinations with a given highest member stand together. Each combination
 * comes once; after the last the first comes again.
 *
 * A state that is no combination starts the sequence, a zero state among them: with k of 2 or more two equal
 * cells are none, and with k = 1 the state (0) is the last combination, after which the first comes anyway.
 * With k < 1 or n < k there is no combination, and the state stays.
 *
 * @param state  at least k cells, in/out; cells behind the first k stay
 */
void cKurtzberg(int n, int k, matrix<int>* state);
