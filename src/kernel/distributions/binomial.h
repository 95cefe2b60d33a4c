/** The binomial distribution. */
#pragma once

/**
 * P(X <= k), or P(X > k) with lower = 0, for the number X of successes in n independent trials.
 *
 * @param k      real; a fraction is cut off, after 1e-7 is added for counts that come from sums. Below 0 no X is
 *               possible, from n on every one: 0 and 1, also for infinite k
 * @param n      trials, rounded to the nearest whole number, 0 to 2^53
 * @param p      probability of a success, 0 to 1, the ends included (X is 0, or n); n = 0 makes X 0
 * @param lower  0: the upper tail
 * @return NaN for a NaN, for p outside 0..1, and for n negative, infinite or above 2^53
 *
 * P(X > k) = I_p(k + 1, n - k), the incomplete beta function (Abramowitz & Stegun 1964, 26.5.24), with 1 - p free of
 * rounding. Relative accuracy 1e-13 in both tails, see docs/accuracy.md; a tail is never one minus the other where
 * that is small.
 */
double CDFBinomial(double k, double n, double p, short lower = -1);

/**
 * P(X = k), for the same X.
 *
 * @param k  within 1e-7 of a whole number, else 0; below 0 or above n the probability is 0
 * @param n  trials, as above
 * @param p  probability of a success, as above
 * @return NaN for the same n and p as above, and for a NaN
 *
 * The saddle point form of C. Loader (2000), Fast and accurate computation of binomial probabilities: Stirling's
 * formula with the deviances of k and n - k from their expectations. Relative accuracy 1e-14.
 */
double PDFBinomial(double k, double n, double p);
