/** The hypergeometric distribution. */
#pragma once

/**
 * P(X <= t), or P(X > t) with lower = 0, for the number X of marked objects among those drawn without
 * replacement.
 *
 * @param t         real; a fraction is cut off, after 1e-7 is added for counts that come from sums
 * @param marked    marked objects in the population, rounded to the nearest whole number, at least 0
 * @param unmarked  the others, likewise
 * @param drawn     size of the sample, likewise, at most the population
 * @return NaN for a NaN or an impossible argument, and for a population above 2^53
 *
 * Relative accuracy 1e-13 in both tails. The tail that is asked for is summed from t outward, unless it is the
 * greater one. The first probability and every 256th are formed by Stirling's series from the deviations of the
 * 2 x 2 table from its expectation (C. Loader 2000, Fast and accurate computation of binomial probabilities),
 * those between by their ratios. Steps: about eight standard deviations of X at most.
 */
double CDFHyperG(double t, double marked, double unmarked, double drawn, short lower = -1);
